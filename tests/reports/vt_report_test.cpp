// The VT report over simulated files: golden reports (each case also asserts the lines it
// is about, so a golden cannot freeze a wrong report), the open-line effect of event files,
// selections, damage, printing lines, hostile input, and the driver end to end.
#include <gtest/gtest.h>

#include <filesystem>

#include "pipeline/convertmain.h"
#include "reports/plain_time.h"
#include "test_util.h"
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Kind;
using test::find_line;
using test::Keys;
using test::lines_of;
using test::vt_sim;

struct VtReport : ::testing::Test, test::VtReportFixture {
    VtReport() : VtReportFixture("en-US") {}
};
struct VtReportDe : ::testing::Test, test::VtReportFixture {
    VtReportDe() : VtReportFixture("de-DE") {}
};

reclib::SimOptions with_blocks(Kind kind, int alarms = 2, int messages = 2) {
    auto o = vt_sim(kind);
    o.alarms = alarms;
    o.messages = messages;
    o.batch = true;
    return o;
}

const Keys kBlocksOn{{"alarminclusive", "1"},
                     {"messageinclusive", "1"},
                     {"userdef2", "Second text"},
                     {"userdef3", "Third"}};

int count_records(const std::string& xls, std::uint16_t id) {
    std::string error;
    const auto records = test::walk_biff2(xls, error);
    EXPECT_EQ(error, "");
    int n = 0;
    for (const auto& r : records) n += r.id == id ? 1 : 0;
    return n;
}

TEST_F(VtReport, EventFileWithEveryBlock) {
    options(kBlocksOn);
    const std::string csv = convert(make(with_blocks(Kind::Event), "ev.oge"), "ev");
    EXPECT_EQ(errors, 0);
    test::expect_golden("event_blocks_en.csv", csv);

    const auto l = lines_of(csv);
    ASSERT_GT(l.size(), 50u);
    EXPECT_EQ(l[0], "\"Filename\",\"ev.oge\",");
    // The free texts land behind "Software", the last one first.
    EXPECT_EQ(l[1], "\"Software\",\"qumbrel 1.0.0\",\"Third\",\"Second text\",");
    // "Serial no. release" stands on a line of its own at its column.
    const int head = find_line(l, "\"Channel\",\"Level\",\"Type\"");
    ASSERT_GT(head, 0);
    EXPECT_TRUE(l[head].ends_with(",\"Date release\",\"Time release\",")) << l[head];
    EXPECT_EQ(l[head + 1], ",,,,,,,,\"Serial no. release\"");
    // The first alarm has no occurrence serial; a released alarm gets its release serial
    // on a line of its own.
    EXPECT_EQ(l[head + 2],
              "2,1,\"Rate of change High\",\"3/5/2024\",\"10:00:07 AM.00\",,"
              "\"3/5/2024\",\"10:00:17 AM.00\"");
    EXPECT_EQ(l[head + 3], ",,,,,,,,1");
    EXPECT_EQ(l[head + 4], "1,3,\"Delay High\",\"3/5/2024\",\"10:00:06 AM.00\",2,\"\",\"\",");
    const int trigger = find_line(l, "\"Serial no.\",\"Date\"") + 3;
    EXPECT_EQ(l[trigger], "0,\"1/1/1970\",\"12:00:00 AM.00\",0,\"Trigger\",\"\",\"None\",");
    EXPECT_EQ(l[trigger + 1], "\"\",");
    EXPECT_NE(find_line(l, "\"Batchno\",0,"), -1);
    EXPECT_NE(find_line(l, "\"Manager\",\"Manager\","), -1);
    const int chno = find_line(l, "Channel No,\"Channel No\",1,2,3,");
    ASSERT_NE(chno, -1);
    EXPECT_EQ(l[chno + 1], "\"Name\",,\"Tag 1\",\"Tag 2\",\"Tag 3\"");
    EXPECT_EQ(l[chno + 3], "\"date\",\"time\",\"value\",\"value\",\"value\",");
    // Twelve samples, whole-second rate: plain times.
    ASSERT_EQ(l.size(), static_cast<std::size_t>(chno + 4 + 12));
    EXPECT_EQ(l[chno + 4], "\"3/5/2024\",\"10:00:00 AM\",-27.7,-223.8,304.5,");
}

TEST_F(VtReport, EventFileAsXls) {
    options(kBlocksOn, {{"Channels", "3"}});
    p->opt.targetformat = 1;
    const std::string xls = convert(make(with_blocks(Kind::Event), "ev.oge"), "ev");
    EXPECT_EQ(errors, 0);
    test::expect_golden("event_ch3_en.xls", xls);
    // XLS is not touched by the open CSV line: all twelve values of channel 3 are there.
    EXPECT_EQ(count_records(xls, 0x03), 12);
}

TEST_F(VtReportDe, EventFileWithOneChannelKeepsItsSampleLinesOpen) {
    options({}, {{"Channels", "3"}});
    const std::string csv = convert(make(vt_sim(Kind::Event), "ev.oge"), "ev");
    test::expect_golden("event_ch3_de.csv", csv);
    const auto l = lines_of(csv);
    EXPECT_EQ(l[find_line(l, "\"Number of Data\"")], "\"Number of Data\";12;");
    EXPECT_NE(find_line(l, "Channel No;\"Channel No\";3;"), -1);
    EXPECT_NE(find_line(l, "\"Name\";;\"Tag 3\""), -1);
    // The walk stops at channel 3 with no line end: no sample line reaches the file.
    EXPECT_EQ(l.back(), "\"date\";\"time\";\"value\";");
    // The line left open is dropped with the report: the next report starts clean.
    EXPECT_EQ(convert(make(vt_sim(Kind::Event), "ev.oge"), "again"), csv);
}

TEST_F(VtReport, DisplayFileInTheOrderOfTheChannelList) {
    options({}, {{"Channels", "5|3"}});
    auto o = vt_sim(Kind::Display, 5, 4);
    const std::string csv = convert(make(o, "di.ogd"), "di");
    test::expect_golden("display_5_3_en.csv", csv);
    const auto l = lines_of(csv);
    // Channel 5 is inserted ahead of channel 3; its column pair comes first.
    const int name = find_line(l, "\"Name\"");
    ASSERT_NE(name, -1);
    EXPECT_EQ(l[name], "\"Name\",,\"Tag 5\",,,\"Tag 3\"");
    EXPECT_EQ(l[name + 2], "\"date\",\"time\",\"min\",\"max\",,,\"min\",\"max\"");
    // A display file's maximum carries the line end: every sample has its line.
    EXPECT_EQ(l.size(), static_cast<std::size_t>(name + 3 + 4));

    p->opt.targetformat = 1;
    const std::string xls = convert(make(o, "di.ogd"), "di");
    test::expect_golden("display_5_3_en.xls", xls);
    // min and max of two channels as text cells: 4 samples x 4 cells, plus the labels.
    EXPECT_EQ(count_records(xls, 0x03), 0);
}

TEST_F(VtReport, RowZeroAndColumnTwo) {
    options({{"row", "0"}, {"col", "2"}});
    const std::string csv = convert(make(vt_sim(Kind::Event, 2, 3), "ev.oge"), "ev");
    test::expect_golden("event_row0_col2_en.csv", csv);
    const auto l = lines_of(csv);
    // "Filename" has row 0 and is not placed; its line end leaves an empty line.
    EXPECT_EQ(l[0], "");
    // From column 2: one empty field ahead, no trailing separator.
    EXPECT_EQ(l[1], ",\"Software\",\"qumbrel 1.0.0\"");
    EXPECT_EQ(l.back().substr(0, 12), ",\"3/5/2024\",");

    p->opt.targetformat = 1;
    const std::string xls = convert(make(vt_sim(Kind::Event, 2, 3), "ev.oge"), "ev");
    EXPECT_EQ(xls.find("Filename"), std::string::npos);
    EXPECT_NE(xls.find("Software"), std::string::npos);
}

TEST_F(VtReport, ChannelListVariants) {
    const std::string src = make(vt_sim(Kind::Event, 3, 3), "ev.oge");
    options();
    const std::string all = convert(src, "all");
    options({}, {{"Channels", "all"}});
    EXPECT_EQ(convert(src, "lower"), all);

    // No entries: no channel is reported, the rows carry date and time only.
    options({}, {{"Channels", ""}});
    const std::string none = convert(src, "none");
    test::expect_golden("event_nochannels_en.csv", none);
    const auto l = lines_of(none);
    EXPECT_NE(find_line(l, "Channel No,\"Channel No\","), -1);
    EXPECT_EQ(l.back(), "\"3/5/2024\",\"10:00:02 AM\",");
}

TEST_F(VtReport, TimeSelection) {
    const std::string src = make(vt_sim(Kind::Event, 2, 12), "ev.oge");
    options({}, {{"TimeSelect", "1"}, {"TimeStart", "10:00:03"}, {"TimeStop", "10:00:05"}});
    auto l = lines_of(convert(src, "window"));
    int titles = find_line(l, "\"date\",\"time\"");
    ASSERT_NE(titles, -1);
    ASSERT_EQ(l.size(), static_cast<std::size_t>(titles + 1 + 12));
    // From the start up to and including the stop; the rest leave empty lines.
    std::vector<std::string> data(l.begin() + titles + 1, l.end());
    for (int s = 0; s < 12; ++s) {
        if (s >= 3 && s <= 5) {
            EXPECT_EQ(data[s].substr(0, 25),
                      "\"3/5/2024\",\"10:00:0" + std::to_string(s) + " AM\",");
        } else {
            EXPECT_EQ(data[s], "") << s;
        }
    }

    options({}, {{"TimeSelect", "1"}, {"TimeStart", "11:00:00"}, {"TimeStop", "12:00:00"}});
    const std::string empty = convert(src, "empty");
    test::expect_golden("event_timeselect_none_en.csv", empty);
    l = lines_of(empty);
    titles = find_line(l, "\"date\",\"time\"");
    ASSERT_EQ(l.size(), static_cast<std::size_t>(titles + 1 + 12));
    for (std::size_t i = titles + 1; i < l.size(); ++i) EXPECT_EQ(l[i], "");

    // XLS: unselected samples take no row number.
    options({{"targetformat", "1"}},
            {{"TimeSelect", "1"}, {"TimeStart", "10:00:03"}, {"TimeStop", "10:00:05"}});
    EXPECT_EQ(count_records(convert(src, "window"), 0x03), 3 * 2);
}

TEST_F(VtReport, ScaleRowsOnlyFromAValueOfOne) {
    const std::string src = make(vt_sim(Kind::Display, 2, 2), "di.ogd");
    options({{"scaleinfoinclusive", "1"}});
    EXPECT_EQ(convert(src, "file").find("Color"), std::string::npos);

    p->opt.scaleinfoinclusive = 1;
    const std::string csv = convert(src, "memory");
    test::expect_golden("display_scale_en.csv", csv);
    const auto l = lines_of(csv);
    const int color = find_line(l, "Color,\"Color\",");
    ASSERT_NE(color, -1);
    EXPECT_EQ(l[color], "Color,\"Color\",0,,0");
    EXPECT_EQ(l[color + 1], "0,0,0,,0");
    EXPECT_EQ(l[color + 2], "Scale min,\"Scale min\",,,");
    EXPECT_EQ(l[color + 3], "Scale max,\"Scale max\",,,");
    EXPECT_EQ(l[color + 4].substr(0, 7), "\"Name\",");

    // Type 48 leaves the colour row out of the sheet, its label apart.
    p->opt.targetformat = 1;
    const std::string xls = convert(src, "memory");
    std::size_t n = 0;
    for (std::size_t at = xls.find("Color"); at != std::string::npos;
         at = xls.find("Color", at + 1))
        ++n;
    EXPECT_EQ(n, 1u);
}

TEST_F(VtReport, BlocksSwitchedOff) {
    options();
    auto o = with_blocks(Kind::Event);
    o.batch = false;
    const std::string csv = convert(make(o, "ev.oge"), "ev");
    test::expect_golden("event_blocks_off_en.csv", csv);
    const auto l = lines_of(csv);
    const int alarms = find_line(l, "\"Alarms\",2,");
    ASSERT_NE(alarms, -1);
    EXPECT_EQ(l[alarms + 1], "\"Messages\",2,");
    EXPECT_EQ(l[alarms + 2], "Channel No,\"Channel No\",1,2,3,");
    EXPECT_EQ(find_line(l, "\"Batchname\""), -1);
}

TEST_F(VtReport, DamagedFile) {
    options();
    const std::string src = make(vt_sim(Kind::Event, 2, 3), "bad.oge", true);
    const std::string csv = convert(src, "bad");
    EXPECT_EQ(errors, 1);
    test::expect_golden("event_damaged_en.csv", csv);
    EXPECT_EQ(csv,
              "\"Filename\",\"bad.oge\",\r\n\"Software\",\"qumbrel 1.0.0\",\r\n"
              "\"File damaged [CRC Error]\",\r\n");

    const std::string full = convert(src, "bad", kTrue);
    EXPECT_EQ(errors, 0);
    test::expect_golden("event_damaged_interactive_en.csv", full);
    const auto l = lines_of(full);
    EXPECT_EQ(l[find_line(l, "\"File Message\"")],
              "\"File Message\",\"Simulated recording <File damaged [CRC Error]>\",");
    EXPECT_EQ(l.back().substr(0, 11), "\"3/5/2024\",");

    p->opt.targetformat = 1;
    const std::string xls = convert(src, "bad");
    EXPECT_EQ(errors, 1);
    std::string error;
    test::walk_biff2(xls, error);
    EXPECT_EQ(error, "");  // closed properly
    EXPECT_NE(xls.find("File damaged [CRC Error]"), std::string::npos);
}

TEST_F(VtReport, FreeTextsAreReadOnEveryRun) {
    options({{"userdef1", "One"}});
    const std::string src = make(vt_sim(Kind::Event, 1, 1), "ev.oge");
    EXPECT_EQ(lines_of(convert(src, "a"))[1], "\"Software\",\"qumbrel 1.0.0\",\"One\",");
    clsINI(p->run.strOptionFile).CreateKeyValue("file", "userdef4", "Four");
    EXPECT_EQ(lines_of(convert(src, "b"))[1], "\"Software\",\"qumbrel 1.0.0\",\"Four\",\"One\",");
}

TEST_F(VtReport, PlainTimesOutliveTheReport) {
    options();
    auto fast = vt_sim(Kind::Event, 1, 2);
    fast.intervalMs = 500;
    const std::string fastSrc = make(fast, "fast.oge");
    EXPECT_FALSE(p->state<PlainTimeState>().plainTime);
    auto l = lines_of(convert(fastSrc, "a"));
    EXPECT_EQ(l[find_line(l, "\"Sample Rate\"")], "\"Sample Rate\",\"0.500 sec\",");
    EXPECT_EQ(l.back().substr(0, 29), "\"3/5/2024\",\"10:00:00 AM.500\",");

    convert(make(vt_sim(Kind::Event, 1, 2), "slow.oge"), "b");
    EXPECT_TRUE(p->state<PlainTimeState>().plainTime);
    l = lines_of(convert(fastSrc, "c"));
    EXPECT_EQ(l.back().substr(0, 25), "\"3/5/2024\",\"10:00:00 AM\",");
}

TEST_F(VtReportDe, FractionalRateWithADecimalComma) {
    options();
    auto fast = vt_sim(Kind::Event, 1, 2);
    fast.intervalMs = 500;
    auto l = lines_of(convert(make(fast, "fast.oge"), "a"));
    EXPECT_EQ(l[find_line(l, "\"Sample Rate\"")], "\"Sample Rate\";\"0,500 sec\";");
    EXPECT_FALSE(p->state<PlainTimeState>().plainTime);
    // The date reads as a number under de-DE (dots as thousands separators): unquoted.
    EXPECT_EQ(l.back().substr(0, 26), "05.03.2024;\"10:00:00.500\";");
}

TEST_F(VtReport, StatusLinesAndPrinting) {
    options();
    p->opt.printfile = kTrue;
    p->opt.printfile2 = kTrue;
    const std::string src = make(vt_sim(Kind::Event, 1, 20), "ev.oge");
    convert(src, "ev");
    const std::string base = p.dir.file("ev");
    const std::vector<std::string> want{"Creating file...",
                                        "Converting...",
                                        "Values 10/20",
                                        "Values 20/20",
                                        "Closing file...",
                                        "Finished.",
                                        "Printing " + base + "...",
                                        "Printing " + base + " finished",
                                        "Printing " + base + "...",
                                        "Printing " + base + " finished"};
    EXPECT_EQ(p.host.lines, want);

    p.host.lines.clear();
    p->opt.printfile2 = kFalse;
    p->opt.targetformat = 1;
    convert(src, "ev");
    EXPECT_EQ(p.host.lines.back(),
              "Printing " + base + " not posible, only csv-format or Excel with template posible.");
}

TEST_F(VtReport, HostileInputEndsCleanly) {
    // Not a recorder file: no file type, so the report ends with the message count.
    options();
    const std::string junk = p.dir.file("junk.oge");
    testing::write_file(junk, std::string(300, '\x7F'));
    auto l = lines_of(convert(junk, "junk"));
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(l.back(), "\"Messages\",0,");

    // A cut file: whatever the reader makes of it, the report is closed.
    const std::string whole = testing::read_file(make(vt_sim(Kind::Event, 3, 50), "cut.oge"));
    testing::write_file(p.dir.file("cut.oge"), whole.substr(0, whole.size() / 2));
    p->opt.targetformat = 1;
    const std::string xls = convert(p.dir.file("cut.oge"), "cut");
    std::string error;
    test::walk_biff2(xls, error);
    EXPECT_EQ(error, "");

    // A row offset beyond 32 bits is a run-time failure: logged, output closed, counted.
    p->opt.targetformat = 0;
    p->opt.row = "1e12";
    convert(p.dir.file("cut.oge"), "big");
    EXPECT_EQ(errors, 1);
    EXPECT_NE(error_log().find("fkt_VTconvertCSVXLS(" + p.dir.file("cut.oge")), std::string::npos);

    // A header that claims more channels than any recorder has: refused, not allocated.
    p->opt.row = "1";
    auto f = reclib::simulate(vt_sim(Kind::Event, 2, 3));
    f.header.set("extChCount", 5000000);
    std::string why;
    ASSERT_TRUE(reclib::write_file(f, p.dir.file("wide.oge"), {}, &why)) << why;
    convert(p.dir.file("wide.oge"), "wide");
    EXPECT_EQ(errors, 1);
    EXPECT_NE(error_log().find("(Kanalheader definieren)"), std::string::npos);

    // A format the generator does not write.
    p->opt.targetformat = 5;
    EXPECT_EQ(fkt_VTconvertCSVXLS(*p, junk, p.dir.file("x"), kFalse), 1);
    EXPECT_NE(error_log().find(" - Datei öffnen fehlgeschlagen"), std::string::npos);
}

TEST_F(VtReport, DriverRenamesTheReport) {
    const std::string out = p.dir.file("out");
    std::filesystem::create_directories(out);
    options({{"targetpath", out}, {"binfilemodus", "2"}});
    const std::string src = make(vt_sim(Kind::Event, 2, 5), "run.oge");
    const std::string direct = convert(src, "direct");
    EXPECT_FALSE(fkt_convertmain(*p, src, "", "", kFalse).failed());
    EXPECT_EQ(testing::read_file(out + "/run.csv"), direct);
    EXPECT_FALSE(std::filesystem::exists(out + "/run.tmp"));

    options({{"targetpath", out}, {"binfilemodus", "2"}, {"targetformat", "1"}});
    EXPECT_FALSE(fkt_convertmain(*p, src, "", "", kTrue).failed());
    EXPECT_EQ(testing::read_file(out + "/run.xls"), convert(src, "direct"));

    // A damaged file ends as an ".Error" report.
    options({{"targetpath", out}, {"binfilemodus", "2"}});
    const std::string bad = make(vt_sim(Kind::Event, 2, 5), "bad.oge", true);
    EXPECT_TRUE(fkt_convertmain(*p, bad, "", "", kFalse).failed());
    EXPECT_TRUE(std::filesystem::exists(out + "/bad.csv.Error.csv"));
}

}  // namespace
}  // namespace qumbrel
