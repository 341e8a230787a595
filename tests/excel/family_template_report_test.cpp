// The template reports of VU, VQ, KL and HN over simulated files and a template made by
// openpyxl (tests/excel/make_templates.py: family.xlsx), read back by openpyxl and compared
// with the CSV report of the same file: the families' own header keywords and batch texts,
// alarm marks beside the values, logarithmic channels, the families' list slots, the VQ
// operation log and signature, HN data files, and KL's literal ".xls".
#include <cmath>
#include <cstdlib>

#include "excel/automation.h"
#include "excel/template_reports.h"
#include "excel/workbook_template.h"
#include "tests/excel/template_fixture.h"

namespace qumbrel {
namespace {

using reclib::Family;
using reclib::Kind;
using test::Keys;
using test::Sheet;
using test::unquote;
using test::value_of;
using Generator = int (*)(Program&, const std::string&, const std::string&, Flag);

struct FamilyTemplate : ::testing::Test, test::VtReportFixture {
    FamilyTemplate() : VtReportFixture("en-US") {}

    void SetUp() override {
        if (test::template_folder().empty())
            GTEST_SKIP() << "python3-openpyxl is needed to make the templates";
    }

    reclib::SimOptions sim(Family family, Kind kind, int samples = 8) {
        auto o = test::vt_sim(kind, 2, samples);
        o.family = family;
        o.alarms = 2;
        o.messages = 3;
        o.batch = true;
        return o;
    }

    std::vector<std::vector<std::string>> csv_samples(const std::string& src, Generator csv) {
        return test::csv_samples(*this, src, csv);
    }

    Sheet fill(const std::string& src, const std::string& base, Generator report, Keys more = {}) {
        more.try_emplace("targetformat", "2");
        more.try_emplace("excelsourcefile", test::template_folder() + "/family.xlsx");
        more.try_emplace("alarminclusive", "1");
        more.try_emplace("messageinclusive", "1");
        options(more);
        fkt_excelformat(*p, p->opt.excelsourcefile, kFalse);
        workbook = p.dir.file(base) + p->state<ExcelSession>().extension;
        EXPECT_TRUE(fkt_exceltemplate(*p, p->opt.excelsourcefile, workbook));
        result = report(*p, src, p.dir.file(base), kFalse);
        return test::read_workbook(workbook, p.dir.file("back.txt"), false);
    }

    int result = -1;
    std::string workbook;
};

std::string text_of(const Sheet& s, const std::string& cell) {
    const auto it = s.find(cell);
    if (it == s.end() || !it->second.starts_with("s\t'")) return "<none>";
    return it->second.substr(3, it->second.size() - 4);
}

// Channel 1's values against the CSV report's third column, row by row.
void expect_values(const Sheet& s, const std::vector<std::vector<std::string>>& csv) {
    ASSERT_FALSE(csv.empty());
    for (std::size_t k = 0; k < csv.size(); ++k) {
        SCOPED_TRACE(k);
        const std::string row = std::to_string(10 + k);
        ASSERT_GE(csv[k].size(), 3u);
        EXPECT_EQ(text_of(s, "A" + row), unquote(csv[k][0]));
        EXPECT_DOUBLE_EQ(value_of(s, "C" + row), std::stod(unquote(csv[k][2])));
    }
    EXPECT_FALSE(s.contains("A" + std::to_string(10 + csv.size())));
}

TEST_F(FamilyTemplate, VuEventFileWithBatchTextsMarksAndStatus) {
    const std::string src = make(sim(Family::VU, Kind::Event), "v.ose");
    const auto csv = csv_samples(src, fkt_VUconvertCSVXLS);
    const Sheet s = fill(src, "vu", fkt_VUconvertXLSTPL);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(p->state<ExcelSession>().failed);
    EXPECT_EQ(text_of(s, "B1"), "v.ose");
    EXPECT_EQ(value_of(s, "B3"), 0);  // extchannelcount
    EXPECT_FALSE(s.contains("B4"));   // operatinglogcount: VQ only
    EXPECT_NE(text_of(s, "B8"), "<none>");
    EXPECT_EQ(value_of(s, "B9"), 3);
    expect_values(s, csv);
    for (int k = 0; k < 8; ++k) EXPECT_TRUE(s.contains("E" + std::to_string(10 + k))) << k;
    EXPECT_TRUE(std::isfinite(value_of(s, "A30")));
    EXPECT_NE(text_of(s, "B30"), "<none>");  // altypeshort
    EXPECT_NE(text_of(s, "C30"), "<none>");  // alstatus
    EXPECT_FALSE(s.contains("D30"));         // alackno: not a VU slot
    EXPECT_EQ(text_of(s, "F30"), "Message 1");
}

// A logarithmic channel is written as its decade; one without a scale span gives no value
// and the report goes on.
TEST_F(FamilyTemplate, VuLogarithmicChannelsAndAZeroSpan) {
    const std::string src = p.dir.file("edges.osd");
    ASSERT_EQ(std::system((QUMBREL_BIN_DIR "/recsim --scenario " QUMBREL_SOURCE_DIR
                                           "/docs/scenarios/vu_edges.json --out '" +
                           src + "' >/dev/null")
                              .c_str()),
              0);
    const auto csv = csv_samples(src, fkt_VUconvertCSVXLS);
    const Sheet s = fill(src, "edges", fkt_VUconvertXLSTPL);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(p->state<ExcelSession>().failed);
    ASSERT_GE(csv.size(), 4u);
    // Channel 1 (decades -1 to 3 over 0 to 100): the CSV shows the same conversion.
    for (std::size_t k = 0; k < 4; ++k) {
        const std::string row = std::to_string(10 + k);
        EXPECT_NEAR(value_of(s, "C" + row), std::stod(unquote(csv[k][2])),
                    1e-9 * std::abs(std::stod(unquote(csv[k][2]))) + 1e-12)
            << row;
    }
    EXPECT_FALSE(s.contains("F10"));  // channel 2: zero span
}

TEST_F(FamilyTemplate, VqOperationLogSignatureAndAcknowledgement) {
    const std::string src = make(sim(Family::VQ, Kind::Event), "q.obe");
    const auto csv = csv_samples(src, fkt_VQconvertCSVXLS);
    Sheet s = fill(src, "vq", fkt_VQconvertXLSTPL);
    EXPECT_EQ(result, 0);
    expect_values(s, csv);
    EXPECT_TRUE(std::isfinite(value_of(s, "B4")));      // operatinglogcount
    EXPECT_EQ(value_of(s, "B9"), 3);                    // eventcount by the main report
    EXPECT_TRUE(std::isfinite(value_of(s, "D30")));     // alackno
    EXPECT_FALSE(s.contains("E10"));                    // no alarm marks in VQ
    EXPECT_FALSE(s.contains("I30"));                    // operation log: option off
    EXPECT_EQ(s.at("K1#comment"), "signer goes here");  // nothing written: kept
    EXPECT_FALSE(s.contains("K2"));

    s = fill(src, "vq2", fkt_VQconvertXLSTPL,
             {{"operatinloginclusive", "1"}, {"signatureinclusive", "1"}});
    const double logs = value_of(s, "B4");
    ASSERT_GT(logs, 0);
    EXPECT_EQ(value_of(s, "I30"), 1);
    EXPECT_EQ(value_of(s, "I" + std::to_string(29 + static_cast<int>(logs))), logs);
    EXPECT_NE(text_of(s, "J30"), "<none>");
    EXPECT_FALSE(s.contains("K1#comment"));
    EXPECT_NE(text_of(s, "K2"), "<none>");  // signsts
}

TEST_F(FamilyTemplate, HnDataFileWithUnitsAndMarks) {
    auto o = sim(Family::HN, Kind::Event);
    o.batch = false;
    const std::string src = make(o, "h.hnd");
    const auto csv = csv_samples(src, fkt_HNconvertCSVXLS);
    const Sheet s = fill(src, "hn", fkt_HNconvertXLSTPL);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(p->state<ExcelSession>().failed);
    EXPECT_EQ(text_of(s, "B2"), "DATA");
    EXPECT_NE(text_of(s, "B6"), "<none>");  // filestatus
    EXPECT_TRUE(std::isfinite(value_of(s, "B7")));
    expect_values(s, csv);
    EXPECT_NE(text_of(s, "H30"), "<none>");  // evgroup
    EXPECT_FALSE(s.contains("G30"));         // evgroupno: KL only
}

// qmb2ch1al puts channel 1's marks on the second sheet; its data stays on the first.
TEST_F(FamilyTemplate, MarksOfAChannelOnTheSecondSheet) {
    auto o = sim(Family::VU, Kind::Event, 4);
    const std::string vu = make(o, "marks.ose");
    options({{"targetformat", "2"}, {"excelsourcefile", test::template_folder() + "/marks.xlsx"}});
    fkt_excelformat(*p, p->opt.excelsourcefile, kFalse);
    const std::string target = p.dir.file("marks") + p->state<ExcelSession>().extension;
    ASSERT_TRUE(fkt_exceltemplate(*p, p->opt.excelsourcefile, target));
    EXPECT_EQ(fkt_VUconvertXLSTPL(*p, vu, p.dir.file("marks"), kFalse), 0);
    const Sheet s = test::read_workbook(target, p.dir.file("back.txt"), true);
    for (int k = 0; k < 4; ++k) {
        const std::string r = std::to_string(k);
        EXPECT_TRUE(std::isfinite(value_of(s, "Data!B" + std::to_string(2 + k)))) << r;
        EXPECT_TRUE(s.contains("Marks!B" + std::to_string(5 + k))) << r;
        EXPECT_FALSE(s.contains("Data!C" + std::to_string(2 + k))) << r;
    }
}

// KL opens its report as ".xls" whatever the template: with an ".xlsx" template the opening
// fails, is recorded, and the conversion is marked failed so that the source stays.
TEST_F(FamilyTemplate, KlWithAnXlsxTemplateFailsAtTheOpen) {
    const std::string src = make(sim(Family::KL, Kind::Event), "k.kle");
    const Sheet s = fill(src, "kl", fkt_KLconvertXLSTPL);
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(p->state<ExcelSession>().failed);
    EXPECT_NE(error_log().find("fkt_KLconvertXLSTPL"), std::string::npos) << error_log();
    EXPECT_FALSE(s.contains("B1"));  // the copy is the template as it was
}

}  // namespace
}  // namespace qumbrel
