// The VT report over simulated files: golden reports (each case also asserts the lines it
// is about, so a golden cannot freeze a wrong report), selections, damage and hostile
// input. The driver's runs over VT files are in tests/app.
#include <gtest/gtest.h>

#include <algorithm>

#include "reports/plain_time.h"
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

reclib::SimOptions with_blocks(bool batch = true) {
    auto o = vt_sim(Kind::Event);
    o.alarms = o.messages = 2;
    o.batch = batch;
    return o;
}

int count_numbers(const std::string& xls) {  // NUMBER records of a sheet
    std::string error;
    const auto records = test::walk_biff2(xls, error);
    EXPECT_EQ(error, "");
    return static_cast<int>(std::ranges::count_if(records, [](auto& r) { return r.id == 0x03; }));
}

// Converts `src` twice (the next report starts clean), compares with the golden report.
std::string golden(test::VtReportFixture& f, const char* name, const std::string& src,
                   int errors = 0, Flag interactive = kFalse) {
    const std::string bytes = f.convert(src, "r", interactive);
    EXPECT_EQ(f.errors, errors);
    test::expect_golden(name, bytes);
    EXPECT_EQ(f.convert(src, "again", interactive), bytes);
    return bytes;
}

TEST_F(VtReport, EventFileWithEveryBlock) {
    Keys on{{"alarminclusive", "1"}, {"messageinclusive", "1"}, {"userdef2", "Second text"}};
    on["userdef3"] = "Third";
    options(on);
    const std::string src = make(with_blocks(), "ev.oge");
    const std::string csv = golden(*this, "event_blocks_en.csv", src);
    const auto l = lines_of(csv);
    // The free texts land behind "Software", the last one first.
    EXPECT_EQ(l[1], "\"Software\",\"qumbrel 1.0.0\",\"Third\",\"Second text\",");
    // A released alarm gets its release serial on a line of its own.
    const int alarm = find_line(l, "2,1,\"Rate of change High\"");
    ASSERT_NE(alarm, -1);
    EXPECT_EQ(l[alarm + 1], ",,,,,,,,1");
    options(on, {{"Channels", "all"}});  // "ALL" in any case
    EXPECT_EQ(convert(src, "lower"), csv);
    // XLS is not touched by the open CSV line: all twelve values of channel 3 are there.
    on["targetformat"] = "1";
    options(on, {{"Channels", "3"}});
    EXPECT_EQ(count_numbers(golden(*this, "event_ch3_en.xls", src)), 12);
}

TEST_F(VtReport, BlocksSwitchedOff) {
    options();
    const auto l =
        lines_of(golden(*this, "event_blocks_off_en.csv", make(with_blocks(false), "ev.oge")));
    // Only the counts of the blocks remain.
    const int alarms = find_line(l, "\"Alarms\",2,");
    ASSERT_NE(alarms, -1);
    EXPECT_EQ(l[alarms + 1], "\"Messages\",2,");
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

TEST_F(VtReport, RowZeroColumnTwoAndNoChannels) {
    options({{"row", "0"}, {"col", "2"}});
    const std::string src = make(vt_sim(Kind::Event, 2, 3), "ev.oge");
    auto l = lines_of(golden(*this, "event_row0_col2_en.csv", src));
    // "Filename" has row 0 and is not placed; its line end leaves an empty line. From
    // column 2: one empty field ahead, no trailing separator.
    EXPECT_EQ(l[0], "");
    EXPECT_EQ(l[1], ",\"Software\",\"qumbrel 1.0.0\"");
    options({}, {{"Channels", ""}});  // date and time remain
    l = lines_of(
        golden(*this, "event_nochannels_en.csv", make(vt_sim(Kind::Event, 3, 3), "ev.oge")));
    EXPECT_EQ(l.back(), "\"3/5/2024\",\"10:00:02 AM\",");
}

TEST_F(VtReport, TimeSelection) {
    const std::string src = make(vt_sim(Kind::Event, 2, 12), "ev.oge");
    options({}, {{"TimeSelect", "1"}, {"TimeStart", "11:00:00"}, {"TimeStop", "12:00:00"}});
    auto l = lines_of(golden(*this, "event_timeselect_none_en.csv", src));
    const int titles = find_line(l, "\"date\",\"time\"");
    ASSERT_EQ(l.size(), static_cast<std::size_t>(titles + 1 + 12));  // no match: empty lines
    EXPECT_TRUE(std::all_of(l.begin() + titles + 1, l.end(), [](auto& s) { return s.empty(); }));
    // From the start up to and including the stop; the rest leave empty lines.
    Keys window{{"TimeSelect", "1"}, {"TimeStart", "10:00:03"}, {"TimeStop", "10:00:05"}};
    options({}, window);
    l = lines_of(convert(src, "window"));
    ASSERT_EQ(l.size(), static_cast<std::size_t>(titles + 1 + 12));
    EXPECT_TRUE(l[titles + 4].starts_with("\"3/5/2024\",\"10:00:03")) << l[titles + 4];
    EXPECT_TRUE(l[titles + 6].starts_with("\"3/5/2024\",\"10:00:05")) << l[titles + 6];
    EXPECT_EQ(std::count(l.begin() + titles + 1, l.end(), ""), 9);
    options({{"targetformat", "1"}}, window);  // XLS: unselected samples take no row
    EXPECT_EQ(count_numbers(convert(src, "window")), 3 * 2);
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
}

TEST_F(VtReportDe, FractionalRateWithADecimalCommaKeepsTheMilliseconds) {
    options();
    auto fast = vt_sim(Kind::Event, 1, 2);
    fast.intervalMs = 500;
    const auto l = lines_of(convert(make(fast, "fast.oge"), "a"));
    EXPECT_EQ(l[find_line(l, "\"Sample Rate\"")], "\"Sample Rate\";\"0,500 sec\";");
    EXPECT_FALSE(p->state<PlainTimeState>().plainTime);
    // The date reads as a number under de-DE (dots as thousands separators): unquoted.
    EXPECT_EQ(l.back().substr(0, 26), "05.03.2024;\"10:00:00.500\";");
}

// The free texts are read from the option file on every run, not from the loaded options.
TEST_F(VtReport, FreeTextsAreReadOnEveryRun) {
    options({{"userdef1", "One"}});
    const std::string src = make(vt_sim(Kind::Event, 1, 1), "ev.oge");
    EXPECT_EQ(lines_of(convert(src, "a"))[1], "\"Software\",\"qumbrel 1.0.0\",\"One\",");
    clsINI(p->run.strOptionFile).CreateKeyValue("file", "userdef4", "Four");
    EXPECT_EQ(lines_of(convert(src, "b"))[1], "\"Software\",\"qumbrel 1.0.0\",\"Four\",\"One\",");
}

// Once a file with whole-second samples sets the plain-time state, later reports keep it.
TEST_F(VtReport, PlainTimesOutliveTheReport) {
    options();
    auto fast = vt_sim(Kind::Event, 1, 2);
    fast.intervalMs = 500;
    const std::string fastSrc = make(fast, "fast.oge");
    EXPECT_EQ(lines_of(convert(fastSrc, "a")).back().substr(0, 29),
              "\"3/5/2024\",\"10:00:00 AM.500\",");
    convert(make(vt_sim(Kind::Event, 1, 2), "slow.oge"), "b");
    EXPECT_TRUE(p->state<PlainTimeState>().plainTime);
    EXPECT_EQ(lines_of(convert(fastSrc, "c")).back().substr(0, 25),
              "\"3/5/2024\",\"10:00:00 AM\",");
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
    EXPECT_EQ(lines_of(convert(junk, "junk")).back(), "\"Messages\",0,");
    EXPECT_EQ(errors, 0);
    // A cut file: whatever the reader makes of it, the report is closed.
    const std::string cut = p.dir.file("cut.oge");
    const std::string whole = testing::read_file(make(vt_sim(Kind::Event, 3, 50), "cut.oge"));
    testing::write_file(cut, whole.substr(0, whole.size() / 2));
    p->opt.targetformat = 1;
    std::string error;
    test::walk_biff2(convert(cut, "cut"), error);
    EXPECT_EQ(error, "");
    // A damaged file: the sheet says so and is closed properly.
    const std::string bad = convert(make(vt_sim(Kind::Event, 2, 3), "bad.oge", true), "bad");
    EXPECT_NE(bad.find("File damaged"), std::string::npos);
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(count_numbers(bad), 0);
    // A row offset beyond 32 bits is a run-time failure: logged, output closed, counted.
    p->opt.targetformat = 0;
    p->opt.row = "1e12";
    convert(cut, "big");
    EXPECT_EQ(errors, 1);
    EXPECT_NE(error_log().find("fkt_VTconvertCSVXLS(" + cut), std::string::npos);
    // A header that claims more channels than any recorder has: refused, not allocated.
    p->opt.row = "1";
    auto f = reclib::simulate(vt_sim(Kind::Event, 2, 3));
    f.header.set("extChCount", 5000000);
    ASSERT_TRUE(reclib::write_file(f, p.dir.file("wide.oge"), {}, &error)) << error;
    convert(p.dir.file("wide.oge"), "wide");
    EXPECT_EQ(errors, 1);
    EXPECT_NE(error_log().find("(Kanalheader definieren)"), std::string::npos);
    // A format the generator does not write.
    p->opt.targetformat = 5;
    EXPECT_EQ(fkt_VTconvertCSVXLS(*p, junk, p.dir.file("x"), kFalse), 1);
    EXPECT_NE(error_log().find(" - Datei öffnen fehlgeschlagen"), std::string::npos);
}

}  // namespace
}  // namespace qumbrel
