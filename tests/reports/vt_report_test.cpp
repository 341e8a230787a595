// The VT report over simulated files: golden reports (each case also asserts the lines it
// is about, so a golden cannot freeze a wrong report), the open-line effect of event files,
// selections, damage, printing lines, hostile input, and the driver end to end.
#include <gtest/gtest.h>

#include <algorithm>
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

reclib::SimOptions with_blocks(Kind kind) {
    auto o = vt_sim(kind);
    o.alarms = 2;
    o.messages = 2;
    o.batch = true;
    return o;
}

const Keys kBlocksOn{{"alarminclusive", "1"},
                     {"messageinclusive", "1"},
                     {"userdef2", "Second text"},
                     {"userdef3", "Third"}};

int count_numbers(const std::string& xls) {  // NUMBER records of a sheet
    std::string error;
    const auto records = test::walk_biff2(xls, error);
    EXPECT_EQ(error, "");
    return static_cast<int>(std::count_if(records.begin(), records.end(),
                                          [](const test::Record& r) { return r.id == 0x03; }));
}

// Converts `src` (again, too: the next report starts clean), compares with the golden
// report and gives its bytes; the callers assert the lines each case is about, so that a
// golden cannot freeze a wrong report.
std::string golden(test::VtReportFixture& f, const char* name, const std::string& src,
                   int errors = 0, Flag interactive = kFalse) {
    const std::string bytes = f.convert(src, "r", interactive);
    EXPECT_EQ(f.errors, errors);
    test::expect_golden(name, bytes);
    EXPECT_EQ(f.convert(src, "again", interactive), bytes);
    return bytes;
}

TEST_F(VtReport, EventFileWithEveryBlock) {
    options(kBlocksOn);
    const auto l =
        lines_of(golden(*this, "event_blocks_en.csv", make(with_blocks(Kind::Event), "ev.oge")));
    // The free texts land behind "Software", the last one first.
    EXPECT_EQ(l[1], "\"Software\",\"qumbrel 1.0.0\",\"Third\",\"Second text\",");
    // A released alarm gets its release serial on a line of its own.
    const int alarm = find_line(l, "2,1,\"Rate of change High\"");
    ASSERT_NE(alarm, -1);
    EXPECT_EQ(l[alarm + 1], ",,,,,,,,1");
}

TEST_F(VtReport, EventFileAsXls) {
    Keys file = kBlocksOn;
    file["targetformat"] = "1";
    options(file, {{"Channels", "3"}});
    const std::string xls =
        golden(*this, "event_ch3_en.xls", make(with_blocks(Kind::Event), "ev.oge"));
    // XLS is not touched by the open CSV line: all twelve values of channel 3 are there.
    EXPECT_EQ(count_numbers(xls), 12);
}

TEST_F(VtReport, BlocksSwitchedOff) {
    options();
    auto o = with_blocks(Kind::Event);
    o.batch = false;
    const auto l = lines_of(golden(*this, "event_blocks_off_en.csv", make(o, "ev.oge")));
    // Only the counts of the blocks remain, right before the channel rows.
    const int alarms = find_line(l, "\"Alarms\",2,");
    ASSERT_NE(alarms, -1);
    EXPECT_EQ(l[alarms + 1], "\"Messages\",2,");
    EXPECT_EQ(l[alarms + 2], "Channel No,\"Channel No\",1,2,3,");
}

TEST_F(VtReportDe, EventFileWithOneChannelKeepsItsSampleLinesOpen) {
    options({}, {{"Channels", "3"}});
    const auto l = lines_of(golden(*this, "event_ch3_de.csv", make(vt_sim(Kind::Event), "ev.oge")));
    // The walk stops at channel 3 with no line end: no sample line reaches the file.
    EXPECT_NE(find_line(l, "\"Name\";;\"Tag 3\""), -1);
    EXPECT_EQ(l.back(), "\"date\";\"time\";\"value\";");
}

TEST_F(VtReport, DisplayFileInTheOrderOfTheChannelList) {
    options({}, {{"Channels", "5|3"}});
    const std::string src = make(vt_sim(Kind::Display, 5, 4), "di.ogd");
    const auto l = lines_of(golden(*this, "display_5_3_en.csv", src));
    // Channel 5 is inserted ahead of channel 3; a display file's maximum carries the line
    // end, so every sample has its line.
    const int name = find_line(l, "\"Name\"");
    ASSERT_NE(name, -1);
    EXPECT_EQ(l[name], "\"Name\",,\"Tag 5\",,,\"Tag 3\"");
    EXPECT_EQ(l.size(), static_cast<std::size_t>(name + 3 + 4));

    p->opt.targetformat = 1;
    EXPECT_EQ(count_numbers(golden(*this, "display_5_3_en.xls", src)), 0);  // min, max: texts
}

TEST_F(VtReport, RowZeroAndColumnTwo) {
    options({{"row", "0"}, {"col", "2"}});
    const auto l = lines_of(
        golden(*this, "event_row0_col2_en.csv", make(vt_sim(Kind::Event, 2, 3), "ev.oge")));
    // "Filename" has row 0 and is not placed; its line end leaves an empty line. From
    // column 2: one empty field ahead, no trailing separator.
    EXPECT_EQ(l[0], "");
    EXPECT_EQ(l[1], ",\"Software\",\"qumbrel 1.0.0\"");
}

TEST_F(VtReport, NoChannelsLeaveDateAndTime) {
    options({}, {{"Channels", ""}});
    const auto l = lines_of(
        golden(*this, "event_nochannels_en.csv", make(vt_sim(Kind::Event, 3, 3), "ev.oge")));
    EXPECT_EQ(l.back(), "\"3/5/2024\",\"10:00:02 AM\",");
}

TEST_F(VtReport, TimeWindowWithoutSamplesLeavesEmptyLines) {
    options({}, {{"TimeSelect", "1"}, {"TimeStart", "11:00:00"}, {"TimeStop", "12:00:00"}});
    const auto l = lines_of(
        golden(*this, "event_timeselect_none_en.csv", make(vt_sim(Kind::Event, 2, 12), "ev.oge")));
    const int titles = find_line(l, "\"date\",\"time\"");
    ASSERT_EQ(l.size(), static_cast<std::size_t>(titles + 1 + 12));
    EXPECT_TRUE(
        std::all_of(l.begin() + titles + 1, l.end(), [](const auto& s) { return s.empty(); }));
}

TEST_F(VtReport, DamagedFile) {
    options();
    const std::string src = make(vt_sim(Kind::Event, 2, 3), "bad.oge", true);
    const auto l = lines_of(golden(*this, "event_damaged_en.csv", src, 1));
    EXPECT_EQ(l.size(), 3u);
    EXPECT_EQ(l.back(), "\"File damaged [CRC Error]\",");
    // Asked interactively, the report goes on with the damage in the file message.
    const auto full = lines_of(golden(*this, "event_damaged_interactive_en.csv", src, 0, kTrue));
    EXPECT_EQ(full[find_line(full, "\"File Message\"")],
              "\"File Message\",\"Simulated recording <File damaged [CRC Error]>\",");
    EXPECT_EQ(full.back().substr(0, 11), "\"3/5/2024\",");
}

TEST_F(VtReport, ChannelListIsCaseBlind) {
    const std::string src = make(vt_sim(Kind::Event, 3, 3), "ev.oge");
    options();
    const std::string all = convert(src, "all");
    options({}, {{"Channels", "all"}});
    EXPECT_EQ(convert(src, "lower"), all);
}

TEST_F(VtReport, TimeSelection) {
    const std::string src = make(vt_sim(Kind::Event, 2, 12), "ev.oge");
    const Keys window{{"TimeSelect", "1"}, {"TimeStart", "10:00:03"}, {"TimeStop", "10:00:05"}};
    options({}, window);
    auto l = lines_of(convert(src, "window"));
    int titles = find_line(l, "\"date\",\"time\"");
    ASSERT_NE(titles, -1);
    ASSERT_EQ(l.size(), static_cast<std::size_t>(titles + 1 + 12));
    // From the start up to and including the stop; the rest leave empty lines.
    for (int s = 0; s < 12; ++s) {
        const std::string& line = l[titles + 1 + s];
        if (s >= 3 && s <= 5)
            EXPECT_TRUE(line.starts_with("\"3/5/2024\",\"10:00:0" + std::to_string(s))) << line;
        else
            EXPECT_EQ(line, "") << s;
    }

    // An event file stopped at its highest channel leaves the selected lines open; the
    // empty call of the next unselected sample writes them as one line, the last first.
    Keys ch2 = window;
    ch2["Channels"] = "2";
    options({}, ch2);
    l = lines_of(convert(src, "open"));
    titles = find_line(l, "\"date\",\"time\",\"value\",");
    ASSERT_NE(titles, -1);
    ASSERT_EQ(l.size(), static_cast<std::size_t>(titles + 1 + 3 + 1 + 5));
    for (int s : {1, 2, 3, 5, 6, 7, 8, 9}) EXPECT_EQ(l[titles + s], "") << s;
    const std::string merged = l[titles + 4];
    const auto at4 = merged.find(",\"3/5/2024\",\"10:00:04 AM\",");
    const auto at3 = merged.find(",\"3/5/2024\",\"10:00:03 AM\",");
    EXPECT_TRUE(merged.starts_with("\"3/5/2024\",\"10:00:05 AM\",")) << merged;
    EXPECT_TRUE(at4 < at3 && at3 != std::string::npos && merged.ends_with(",")) << merged;

    // XLS: unselected samples take no row number.
    options({{"targetformat", "1"}}, window);
    EXPECT_EQ(count_numbers(convert(src, "window")), 3 * 2);
}

TEST_F(VtReport, ScaleRowsOnlyFromAValueOfOne) {
    const std::string src = make(vt_sim(Kind::Display, 2, 2), "di.ogd");
    options({{"scaleinfoinclusive", "1"}});  // the file's "1" is not the value 1
    EXPECT_EQ(convert(src, "file").find("Color"), std::string::npos);

    p->opt.scaleinfoinclusive = 1;
    const std::string csv = convert(src, "memory");
    test::expect_golden("display_scale_en.csv", csv);
    const auto l = lines_of(csv);
    const int color = find_line(l, "Color,\"Color\",");
    ASSERT_NE(color, -1);
    EXPECT_EQ(l[color + 1], "0,0,0,,0");
    EXPECT_EQ(l[color + 2], "Scale min,\"Scale min\",,,");

    // Type 48 leaves the colour row out of the sheet, its label apart.
    p->opt.targetformat = 1;
    const std::string xls = convert(src, "memory");
    EXPECT_NE(xls.find("Color"), std::string::npos);
    EXPECT_EQ(xls.find("Color", xls.find("Color") + 1), std::string::npos);
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
    convert(make(vt_sim(Kind::Event, 1, 20), "ev.oge"), "ev");
    const std::string base = p.dir.file("ev");
    const std::vector<std::string> want{"Creating file...",
                                        "Converting...",
                                        "Values 10/20",
                                        "Values 20/20",
                                        "Closing file...",
                                        "Finished.",
                                        "Printing " + base + "...",
                                        "Printing " + base + " finished"};
    EXPECT_EQ(p.host.lines, want);
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
    // A damaged file: the sheet says so and is closed properly.
    EXPECT_NE(convert(make(vt_sim(Kind::Event, 2, 3), "bad.oge", true), "bad").find("File damaged"),
              std::string::npos);
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(count_numbers(testing::read_file(p.dir.file("bad.xls"))), 0);

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

// The driver runs the VT generator and renames its report (the naming rules themselves
// are tested in tests/pipeline).
TEST_F(VtReport, DriverRenamesTheReport) {
    const std::string out = p.dir.file("out");
    std::filesystem::create_directories(out);
    options({{"targetpath", out}, {"binfilemodus", "2"}});
    const std::string src = make(vt_sim(Kind::Event, 2, 5), "run.oge");
    const std::string direct = convert(src, "direct");
    EXPECT_FALSE(fkt_convertmain(*p, src, "", "", kFalse).failed());
    EXPECT_EQ(testing::read_file(out + "/run.csv"), direct);
    EXPECT_FALSE(std::filesystem::exists(out + "/run.tmp"));
}

}  // namespace
}  // namespace qumbrel
