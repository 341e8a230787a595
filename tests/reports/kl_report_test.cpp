// The KL report over simulated files: golden reports (each also asserting its lines), the
// control and PV blocks and their count rows, the labels kept as they are spelled, TLOG
// files, and a damaged-file corpus.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "reports/kl_report.h"
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Kind;
using test::find_line;
using test::lines_of;
using test::samples_of;

struct KlReport : ::testing::Test, test::VtReportFixture {
    KlReport() : VtReportFixture("en-US") { generator = fkt_KLconvertCSVXLS; }

    reclib::SimOptions sim(Kind kind, int channels = 3, int samples = 12) {
        auto o = test::vt_sim(kind, channels, samples);
        o.family = reclib::Family::KL;
        return o;
    }
    std::string golden(const char* name, const std::string& src, int expectedErrors = 0) {
        const std::string bytes = convert(src, "r");
        EXPECT_EQ(errors, expectedErrors);
        test::expect_golden(name, bytes, "kl");
        return bytes;
    }
};

TEST_F(KlReport, EventFileWithEveryBlock) {
    options({{"alarminclusive", "1"},
             {"messageinclusive", "1"},
             {"ctrleventinclusive", "1"},
             {"pveventinclusive", "1"}});
    auto o = sim(Kind::Event);
    o.alarms = o.messages = 2;
    o.batch = true;
    const auto l = lines_of(golden("event_blocks_en.csv", make(o, "ev.kle")));
    EXPECT_EQ(find_line(l, "\"Number of Ctrl-Channels\",1,"),
              find_line(l, "\"Number of Ext-Channels\",0,") + 1);
    EXPECT_EQ(find_line(l, "\"Alarms\",2,"), find_line(l, "\"File\",\"Event File\",") + 1);
    const int alarms = find_line(l, "\"Channel\",\"Level\",\"Type\"");
    ASSERT_NE(alarms, -1);
    EXPECT_TRUE(
        l[alarms].ends_with("\"Serial no. release\",\"Action\",\"Serial no. ackn\","
                            "\"Date ackn.\",\"Time ackn.\",\"Ackn. Action\","
                            "\"User flag ackn.\","))
        << l[alarms];
    // The first alarm has no cell for its serial of occurrence, the second has one.
    EXPECT_EQ(test::split(l[alarms + 1], ',')[5], "");
    EXPECT_EQ(test::split(l[alarms + 2], ',')[5], "2");
    EXPECT_TRUE(l[find_line(l, "\"Serial no.\",\"Date\"")].ends_with("\"Type\",\"Group\","));
    const int ctrl = find_line(l, "\"No\",\"Date\",\"Time\",\"Loop\"");
    ASSERT_NE(ctrl, -1);
    EXPECT_NE(l[ctrl].find("\"Program Hold\",\"Progam Wait\",\"Change Mode\","), std::string::npos);
    EXPECT_EQ(l[ctrl + 1],
              "1,3/5/2024,\"10:00:00 AM.00\",1,\"LOOP1\",\"°C\",\"STOP\",\"CONTROL\","
              "\"AUTO\",\"RESET\",\"HOLD INVALID\",\"WAIT INVALID\",\"LOCAL\",");
    const int pv = find_line(l, "\"Name\",\"Level\",\"Type\",\"No(ON)\"");
    ASSERT_NE(pv, -1);
    EXPECT_TRUE(l[pv + 1].starts_with("\"PV event\",1,\"PV high-limit\",1,")) << l[pv + 1];
    EXPECT_EQ(find_line(l, "\"Application\",\"Level 1\","), find_line(l, "\"Manager\"") - 2);
    EXPECT_EQ(samples_of(l).size(), 12u);
}

TEST_F(KlReport, CountRowsStandWhenTheBlocksAreOff) {
    options();
    auto o = sim(Kind::Event);
    o.alarms = o.messages = 2;
    const auto l = lines_of(convert(make(o, "ev.kle"), "r"));
    EXPECT_EQ(errors, 0);
    const int messages = find_line(l, "\"Messages\",2,");
    ASSERT_NE(messages, -1);
    EXPECT_EQ(l[messages + 1], "\"Ctrl.Messages\",1,");
    EXPECT_EQ(l[messages + 2], "\"PV.Messages\",1,");
    EXPECT_EQ(find_line(l, "\"No\",\"Date\""), -1);
}

TEST_F(KlReport, DisplayFileCsvAndXls) {
    auto f = reclib::simulate(sim(Kind::Display, 2, 3));
    f.channels[1].info.set("number3", 3).set("number4", 0).set("number5", 2);
    f.channels[1].info.set("scaleLow", 0.0).set("scaleHigh", 10.0).set("decimals", 0);
    f.channels[1].values = {0, 5, 10};
    f.channels[1].values2 = {10, 5, 0};
    const std::string src = p.dir.file("d.kld");
    std::string error;
    ASSERT_TRUE(reclib::write_file(f, src, {}, &error)) << error;
    options();
    const auto rows = samples_of(lines_of(golden("display_en.csv", src)));
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_TRUE(rows[1].ends_with(",10,10,")) << rows[1];  // 10^(5 * 2 / 10 + 0)
    options({{"targetformat", "1"}});
    golden("display_en.xls", src);
}

TEST_F(KlReport, TlogFileIsRefusedAndSaysSo) {
    options();
    auto o = sim(Kind::Tlog);
    const auto l = lines_of(convert(make(o, "t.kle"), "r"));
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(l.back(), "\"TLOG-Files are not jet implemented\",");
    EXPECT_NE(error_log().find("TLOG-Files are not jet implemented"), std::string::npos);
}

TEST_F(KlReport, DamagedCorpusIsConvertedOrRefused) {
    options({{"alarminclusive", "1"},
             {"messageinclusive", "1"},
             {"ctrleventinclusive", "1"},
             {"pveventinclusive", "1"}});
    auto o = sim(Kind::Display, 4, 40);
    o.alarms = o.messages = 3;
    o.batch = true;
    check_damaged_corpus(make(o, "good.kld"), ".kld");
}

}  // namespace
}  // namespace qumbrel
