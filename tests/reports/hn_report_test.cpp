// The HN report over simulated files: golden reports (each also asserting its lines), the
// alarm and mark blocks, the header-only report of a file that is no data file, and a
// damaged-file corpus.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "reports/hn_report.h"
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Kind;
using test::find_line;
using test::lines_of;
using test::samples_of;

struct HnReport : ::testing::Test, test::VtReportFixture {
    HnReport() : VtReportFixture("en-US") { generator = fkt_HNconvertCSVXLS; }

    reclib::SimOptions sim(int channels = 4, int samples = 12) {
        auto o = test::vt_sim(Kind::Event, channels, samples);
        o.family = reclib::Family::HN;
        return o;
    }
    std::string write(const reclib::RecorderFile& f, const std::string& name) {
        const std::string path = p.dir.file(name);
        std::string error;
        if (!reclib::write_file(f, path, {}, &error)) ADD_FAILURE() << error;
        return path;
    }
    std::string golden(const char* name, const std::string& src) {
        const std::string bytes = convert(src, "r");
        EXPECT_EQ(errors, 0);
        test::expect_golden(name, bytes, "hn");
        return bytes;
    }
};

TEST_F(HnReport, DataFileWithEveryBlock) {
    options({{"alarminclusive", "1"}, {"messageinclusive", "1"}});
    auto o = sim();
    o.alarms = o.messages = 2;
    const std::string src = make(o, "a.hnd");
    const auto l = lines_of(golden("data_blocks_en.csv", src));
    EXPECT_EQ(l[2], "\"Device\",\"HN110\",");
    EXPECT_EQ(find_line(l, "\"Number of Data\",12,"), find_line(l, "\"Sample Rate\"") - 1);
    const int alarms = find_line(l, "\"Alarms\",2,");
    ASSERT_NE(alarms, -1);
    EXPECT_EQ(l[alarms + 1], "\"\",");  // the blank row stands at col here
    EXPECT_EQ(l[alarms + 2],
              "\"Channel\",\"Level\",\"Typ\",\"Typ short\",\"On Value\",\"Off Value\",");
    const int marks = find_line(l, "\"Serial no.\",\"Date\",\"Time\",\"Message No\"");
    ASSERT_NE(marks, -1);
    EXPECT_TRUE(l[marks].ends_with("\"Message\",\"Group\",\"Color\","));
    EXPECT_EQ(l[marks + 3], "\"\",") << "no trigger row";
    EXPECT_NE(find_line(l, "\"Comment\",,\"Channel 1\",\"Channel 2\""), -1);
    const auto rows = samples_of(l);
    ASSERT_EQ(rows.size(), 12u);
    // Value cells end the line: one line a sample whatever the selection.
    options({}, {{"Channels", "2"}});
    EXPECT_EQ(samples_of(lines_of(convert(src, "two"))).size(), 12u);

    options({{"alarminclusive", "1"}, {"messageinclusive", "1"}, {"targetformat", "1"}});
    golden("data_blocks_en.xls", src);
}

TEST_F(HnReport, ScaleRowsCarryTheScale) {
    auto f = reclib::simulate(sim(2, 3));
    f.channels[1].info.set("scaleLow", -2.5).set("scaleHigh", 7.0);
    options();
    p->opt.scaleinfoinclusive = 1;
    const auto l = lines_of(convert(write(f, "s.hnd"), "r"));
    const int min = find_line(l, "Scale min,\"Scale min\",");
    ASSERT_NE(min, -1);
    EXPECT_EQ(l[min], "Scale min,\"Scale min\",0,-2.5,");
    EXPECT_EQ(l[min + 1], "Scale max,\"Scale max\",100,7,");
    EXPECT_EQ(l[min - 1], "Channel No,\"Channel No\",1,2,");
}

TEST_F(HnReport, AFileThatIsNoDataFileGetsItsHeaderOnly) {
    auto f = reclib::simulate(sim(2, 3));
    f.header.set("headerType", 3);
    options();
    const auto l = lines_of(convert(write(f, "u.hnd"), "r"));
    EXPECT_EQ(errors, 0);
    EXPECT_NE(find_line(l, "\"File\",\"UNKNOWN\","), -1);
    EXPECT_EQ(find_line(l, "Channel No"), -1);
    EXPECT_EQ(find_line(l, "\"date\""), -1);
}

TEST_F(HnReport, DamagedCorpusIsConvertedOrRefused) {
    options({{"alarminclusive", "1"}, {"messageinclusive", "1"}});
    auto o = sim(4, 40);
    o.alarms = o.messages = 3;
    check_damaged_corpus(make(o, "good.hnd"), ".hnd");
}

}  // namespace
}  // namespace qumbrel
