// The VQ report over simulated files: golden reports under the options that change it
// (each also asserting its lines), the signature rows, the acknowledgement cells that open
// the next CSV line, the filled scale rows, and a damaged-file corpus.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "reports/vq_report.h"
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Kind;
using test::find_line;
using test::Keys;
using test::lines_of;
using test::samples_of;

struct VqReport : ::testing::Test, test::VtReportFixture {
    explicit VqReport(std::string_view region = "en-US") : VtReportFixture(region) {
        generator = fkt_VQconvertCSVXLS;
    }

    static reclib::SimOptions sim(Kind kind, int channels = 3, int samples = 12) {
        auto o = test::vt_sim(kind, channels, samples);
        o.family = reclib::Family::VQ;
        return o;
    }
    std::string golden(const char* name, const std::string& src, int expectedErrors = 0) {
        const std::string bytes = convert(src, "r");
        EXPECT_EQ(errors, expectedErrors);
        test::expect_golden(name, bytes, "vq");
        return bytes;
    }
};
struct VqReportDe : VqReport {
    VqReportDe() : VqReport("de-DE") {}
};

reclib::SimOptions with_blocks(Kind kind) {
    auto o = VqReport::sim(kind);
    o.alarms = o.messages = 2;
    o.batch = true;
    return o;
}

TEST_F(VqReport, EventFileWithSignaturesAndEveryBlock) {
    options({{"alarminclusive", "1"}, {"messageinclusive", "1"}, {"signatureinclusive", "1"}});
    const auto l = lines_of(golden("event_blocks_en.csv", make(with_blocks(Kind::Event), "e.obe")));
    EXPECT_EQ(find_line(l, "\"File\",\"Event File\","), find_line(l, "\"File Message\",") + 1);
    const int log = find_line(l, "\"Operating Log Count\",4,");
    ASSERT_NE(log, -1);
    EXPECT_EQ(l[log + 1],
              "\"Signature 1\",\"3/5/2024 10:00:00 AM.00 / Signer 1 / unsignin / Checked / "
              "HOST\",");
    EXPECT_TRUE(l[log + 2].find("/ PASS /") != std::string::npos);
    EXPECT_TRUE(l[log + 3].find("/ FAIL /") != std::string::npos);
    EXPECT_EQ(l[log + 4], "\"Alarms\",2,");
    // The acknowledgement titles have no line end: the first alarm's line carries them.
    const int first = find_line(l, "\"Channel\",\"Level\",\"Type\"") + 2;
    EXPECT_TRUE(
        l[first].ends_with("\"Serial no. ackn.\",\"Date ackn.\",\"Time ackn.\","
                           "\"User ackn.\",\"User flag ackn.\""))
        << l[first];
    EXPECT_NE(find_line(l, "\"Header 3\",\"Manager\","), -1);
    EXPECT_NE(find_line(l, "\"Batch Comment Time 3\","), -1);
    // Scale rows are filled in this family when the option is set in memory.
    EXPECT_EQ(samples_of(l).size(), 12u);
}

TEST_F(VqReport, WithoutSignaturesTheLogCountMeetsTheAlarms) {
    options();
    auto f = reclib::simulate(sim(Kind::Event));
    f.list("signinSts").clear();
    const std::string src = p.dir.file("n.obe");
    std::string error;
    ASSERT_TRUE(reclib::write_file(f, src, {}, &error)) << error;
    const auto off = lines_of(convert(src, "off"));
    const int log = find_line(off, "\"Operating Log Count\",4,");
    ASSERT_NE(log, -1);
    EXPECT_EQ(off[log + 1], "\"Alarms\",0,");
    // With the option and a file without signatures: three unsigned rows.
    options({{"signatureinclusive", "1"}});
    const auto on = lines_of(convert(src, "on"));
    for (int s = 1; s <= 3; ++s)
        EXPECT_NE(on[find_line(on, "\"Signature " + std::to_string(s))].find("/ unsignin /"),
                  std::string::npos);
}

TEST_F(VqReport, DisplayFileScaleRowsAndXls) {
    options({{"alarminclusive", "1"}});
    p->opt.scaleinfoinclusive = 1;
    const std::string src = make(with_blocks(Kind::Display), "d.obd");
    const auto l = lines_of(golden("display_scale_en.csv", src));
    const int min = find_line(l, "Scale min,\"Scale min\",");
    ASSERT_NE(min, -1);
    EXPECT_EQ(l[min], "Scale min,\"Scale min\",-100,,-100,,-100");
    EXPECT_EQ(l[min + 1], "Scale max,\"Scale max\",100,,100,,100");
    options({{"alarminclusive", "1"}, {"targetformat", "1"}});
    golden("display_en.xls", src);
}

TEST_F(VqReportDe, RowColumnAndOneChannelInGerman) {
    options({{"row", "3"}, {"col", "2"}}, {{"Channels", "2"}});
    const auto l = lines_of(golden("event_row3_col2_ch2_de.csv", make(sim(Kind::Event), "e.obe")));
    // One empty field in front of every line; the row offset moves XLS rows only.
    EXPECT_EQ(l[0], ";\"Filename\";\"e.obe\"");
    EXPECT_NE(find_line(l, ";\"Sample Rate\";\"1,0 sec\""), -1);
    EXPECT_NE(find_line(l, ";\"Start Time\";\"05.03.2024 10:00:00\""), -1);
    // Channel 2 is the highest selected: an event file's lines stay open and never reach
    // the file, as in the VT report.
    EXPECT_EQ(l.back(), ";\"date\";\"time\";\"value\"");
}

TEST_F(VqReport, DamagedCorpusIsConvertedOrRefused) {
    options({{"alarminclusive", "1"}, {"messageinclusive", "1"}, {"signatureinclusive", "1"}});
    auto o = sim(Kind::Display, 4, 40);
    o.alarms = o.messages = 3;
    o.batch = true;
    check_damaged_corpus(make(o, "good.obd"), ".obd");
}

}  // namespace
}  // namespace qumbrel
