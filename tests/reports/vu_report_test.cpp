// The VU report over simulated files: golden reports (each case also asserts the lines it
// is about), the alarm header sharing its CSV line with the first alarm, event lines that
// end at the highest selected channel, logarithmic channels, and rebuilt times.
#include <gtest/gtest.h>

#include <algorithm>

#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "reports/vu_report.h"
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Kind;
using test::find_line;
using test::Keys;
using test::lines_of;
using test::samples_of;

struct VuReport : ::testing::Test, test::VtReportFixture {
    VuReport() : VtReportFixture("en-US") { generator = fkt_VUconvertCSVXLS; }

    reclib::SimOptions sim(Kind kind, int channels = 3, int samples = 12) {
        auto o = test::vt_sim(kind, channels, samples);
        o.family = reclib::Family::VU;
        return o;
    }
    std::string write(const reclib::RecorderFile& f, const std::string& name) {
        const std::string path = p.dir.file(name);
        std::string error;
        if (!reclib::write_file(f, path, {}, &error)) ADD_FAILURE() << error;
        return path;
    }
    std::string golden(const char* name, const std::string& src, int expectedErrors = 0) {
        const std::string bytes = convert(src, "r");
        EXPECT_EQ(errors, expectedErrors);
        test::expect_golden(name, bytes, "vu");
        return bytes;
    }
};

TEST_F(VuReport, EventFileWithEveryBlock) {
    options({{"alarminclusive", "1"}, {"messageinclusive", "1"}});
    auto o = sim(Kind::Event);
    o.alarms = o.messages = 2;
    o.batch = true;
    const std::string src = make(o, "ev.ose");
    const auto l = lines_of(golden("event_blocks_en.csv", src));
    // "File" closes the header block, behind "Group Name"; the alarm count follows.
    const int file = find_line(l, "\"File\",\"Event File\",");
    ASSERT_NE(file, -1);
    EXPECT_TRUE(l[file - 1].starts_with("\"Group Name\","));
    EXPECT_EQ(l[file + 1], "\"Alarms\",2,");
    EXPECT_EQ(find_line(l, "\"Number of Ext-Channels\",0,"),
              find_line(l, "\"Number of Data\"") - 1);
    // The alarm header has no line end: the first alarm shares its line.
    const auto header =
        std::find_if(l.begin(), l.end(),
                     [](const std::string& line) {
                         return line.find("\"Channel\",\"Status\"") != std::string::npos;
                     }) -
        l.begin();
    ASSERT_LT(header, static_cast<long>(l.size()));
    EXPECT_TRUE(l[header].starts_with("1,\"ACK\",4,\"Delay High\",\"tH\",\"3/5/2024\","));
    EXPECT_TRUE(
        l[header].ends_with(",1,\"Channel\",\"Status\",\"Level\",\"Typ\",\"Typ short\","
                            "\"Date\",\"Time\",\"Serial no. occurence\","))
        << l[header];
    EXPECT_TRUE(l[header + 1].ends_with(",2,")) << "the second alarm, with its serial";
    EXPECT_NE(find_line(l, "\"Text 8\",\"Label 8: Text 8\","), -1);
    EXPECT_NE(find_line(l, "\"Batch start action\",\"[KEY]\","), -1);
    EXPECT_EQ(samples_of(l).size(), 12u);
}

TEST_F(VuReport, EventLinesEndAtTheHighestSelectedChannel) {
    // Unlike the VT report, the value carries the line end: channel 3 of 3 closes each
    // line and every sample stays in the CSV.
    options({}, {{"Channels", "3"}});
    const auto rows = samples_of(lines_of(convert(make(sim(Kind::Event), "ev.ose"), "r")));
    ASSERT_EQ(rows.size(), 12u);
    // date, time, the value of channel 3 at position 1, and the line's end.
    for (const auto& row : rows) EXPECT_EQ(std::count(row.begin(), row.end(), ','), 3) << row;
}

TEST_F(VuReport, LogarithmicChannelsAndScaleRows) {
    auto f = reclib::simulate(sim(Kind::Display, 3, 3));
    // Channel 2: decades -1 to 3 over 0 to 100; channel 3: a zero scale span.
    f.channels[1].info.set("number3", 3).set("number4", -1).set("number5", 3);
    f.channels[1].info.set("scaleLow", 0.0).set("scaleHigh", 100.0).set("decimals", 1);
    f.channels[1].values = {0, 500, 1000};
    f.channels[1].values2 = {1000, 500, 0};
    f.channels[2].info.set("number3", 3).set("scaleLow", 50.0).set("scaleHigh", 50.0);
    const std::string src = write(f, "log.osd");
    options();
    p->opt.scaleinfoinclusive = 1;
    const auto l = lines_of(golden("display_log_en.csv", src));
    const auto rows = samples_of(l);
    ASSERT_EQ(rows.size(), 3u);
    const auto cells = [](const std::string& row) { return test::split(row, ','); };
    EXPECT_EQ(cells(rows[0])[4], "0.1");
    EXPECT_EQ(cells(rows[0])[5], "1000");
    EXPECT_EQ(cells(rows[1])[4], "10");
    EXPECT_EQ(cells(rows[2])[4], "1000");
    EXPECT_EQ(cells(rows[2])[6], "0");  // the zero span is logged, the report goes on
    EXPECT_NE(error_log().find("fkt_logvalue of Modul DllVUFileAccess"), std::string::npos);
    // The scale rows: the scale kind, then both scale limits, each under the label 0.
    const int kinds = find_line(l, "0,0,0,,3,,3");
    ASSERT_NE(kinds, -1);
    EXPECT_EQ(l[kinds + 1], "0,0,-100,,0,,50");
    EXPECT_EQ(l[kinds + 2], "0,0,100,,100,,50");

    options({{"targetformat", "1"}});
    p->opt.scaleinfoinclusive = 1;
    golden("display_log_en.xls", src);
}

TEST_F(VuReport, TimesOfOneSecondAreRebuiltAcrossMidnight) {
    auto f = reclib::simulate(sim(Kind::Event, 1, 3));
    const std::int32_t nearMidnight = 1709683199;  // 2024-03-05 23:59:59
    f.seconds.assign(3, nearMidnight);
    f.ticks.assign(3, 0);
    f.header.set("startSeconds", nearMidnight).set("stopSeconds", nearMidnight);
    options();
    const auto rows = samples_of(lines_of(convert(write(f, "same.ose"), "r")));
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_TRUE(rows[0].starts_with("\"3/5/2024\",\"11:59:59 PM\",")) << rows[0];
    EXPECT_TRUE(rows[1].starts_with("\"3/6/2024\",\"12:00:00 AM\",")) << rows[1];
    EXPECT_TRUE(rows[2].starts_with("\"3/6/2024\",\"12:00:01 AM\",")) << rows[2];
    EXPECT_EQ(errors, 0);
}

TEST_F(VuReport, DamagedFileStopsUnlessInteractive) {
    options();
    const std::string src = make(sim(Kind::Event), "bad.ose", true);
    const auto l = lines_of(convert(src, "r"));
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(l.back(), "\"File damaged [CRC Error]\",");
    const auto full = lines_of(convert(src, "r2", kTrue));
    EXPECT_EQ(errors, 0);
    EXPECT_NE(
        find_line(full, "\"File Message\",\"Simulated recording <File damaged [CRC Error]>\","),
        -1);
    EXPECT_EQ(samples_of(full).size(), 12u);
}

// Damaged copies of a good file (cut short, bytes overwritten): each is converted or
// refused with a count of errors, never a crash, and a report never holds more sample
// lines than its header announces.
TEST_F(VuReport, DamagedCorpusIsConvertedOrRefused) {
    options({{"alarminclusive", "1"}, {"messageinclusive", "1"}});
    auto o = sim(Kind::Display, 4, 40);
    o.alarms = o.messages = 3;
    o.batch = true;
    check_damaged_corpus(make(o, "good.osd"), ".osd");
}

}  // namespace
}  // namespace qumbrel
