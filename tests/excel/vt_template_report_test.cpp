// The VT template report over templates made by openpyxl (tests/excel/make_templates.py),
// the filled workbooks read back by openpyxl and compared with the CSV report of the same
// file: header keywords and their comments, right-end matches, channels 1, 2 and 31, the
// lists, display files, time windows, damaged files, the separate alarm workbook, and the
// driver's template branch with its disposal of the source.
#include <cmath>
#include <cstdlib>

#include "excel/automation.h"
#include "excel/template_reports.h"
#include "excel/workbook_template.h"
#include "pipeline/convertmain.h"
#include "tests/excel/template_fixture.h"

namespace qumbrel {
namespace {

using reclib::Kind;
using test::Keys;

using test::Sheet;
using test::unquote;
using test::value_of;

struct VtTemplate : ::testing::Test, test::VtReportFixture {
    VtTemplate() : VtReportFixture("en-US") {}

    void SetUp() override {
        if (test::template_folder().empty())
            GTEST_SKIP() << "python3-openpyxl is needed to make the templates";
    }
    static std::string tpl(const std::string& name) { return test::template_folder() + "/" + name; }

    void template_options(Keys more = {}, Keys user = {}) {
        more.try_emplace("targetformat", "2");
        more.try_emplace("excelsourcefile", tpl("vt.xlsx"));
        more.try_emplace("alarminclusive", "1");
        more.try_emplace("messageinclusive", "1");
        options(more, user);
    }

    // The template report of `src` into <dir>/<base> + extension; the cells read back.
    Sheet fill(const std::string& src, const std::string& base, Flag acceptDamaged = kFalse) {
        fkt_excelformat(*p, p->opt.excelsourcefile, kFalse);
        const std::string target = p.dir.file(base) + p->state<ExcelSession>().extension;
        EXPECT_TRUE(fkt_exceltemplate(*p, p->opt.excelsourcefile, target));
        result = fkt_VTconvertXLSTPL(*p, src, p.dir.file(base), acceptDamaged);
        return read(target);
    }
    Sheet read(const std::string& workbook) {
        return test::read_workbook(workbook, p.dir.file("back.txt"), true);
    }
    std::vector<std::vector<std::string>> csv_samples(const std::string& src) {
        return test::csv_samples(*this, src, fkt_VTconvertCSVXLS);
    }

    int result = -1;
};

TEST_F(VtTemplate, EventFileFillsKeywordsChannelsAndListsAsTheCsvReportShowsThem) {
    auto o = test::vt_sim(Kind::Event, 2, 12);
    o.mathChannels = 1;
    o.alarms = 3;
    o.messages = 2;
    const std::string src = make(o, "a.oge");
    const auto csv = csv_samples(src);
    ASSERT_EQ(csv.size(), 12u);

    template_options({{"userdef1", "Line 4"}});
    const Sheet s = fill(src, "report");
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(p->state<ExcelSession>().failed);
    EXPECT_EQ(s.at("Data!B1"), "s\t'a.oge'");
    EXPECT_FALSE(s.contains("Data!B1#comment"));                 // a written cell loses its comment
    EXPECT_EQ(s.at("Data!F1#comment"), "batch name goes here");  // no batch: kept
    EXPECT_FALSE(s.contains("Data!F1")) << s.at("Data!F1");
    EXPECT_EQ(value_of(s, "Data!B4"), 12);
    EXPECT_EQ(value_of(s, "Data!B5"), 2);  // eventcount
    EXPECT_EQ(s.at("Data!B6"), "s\t'Line 4'");
    EXPECT_EQ(s.at("Data!D2"), "s\t'" + p->info.program_name() + "'");
    EXPECT_NE(s.at("Data!D1").find("2024 10:00:00"), std::string::npos)  // foo_starttime
        << s.at("Data!D1");
    EXPECT_FALSE(s.contains("Data!D7"));  // scale block: never from an option file
    EXPECT_EQ(s.at("Data!G8"), "s\t'CH31'");
    EXPECT_EQ(s.at("Data!H1"), "s\t'kept'");
    EXPECT_EQ(s.at("Data!H2"), "f\t'=1+1'");
    EXPECT_FALSE(s.contains("Data!J10"));  // qmb3measdate: the workbook has two sheets

    for (std::size_t k = 0; k < csv.size(); ++k) {
        SCOPED_TRACE(k);
        const std::string row = std::to_string(10 + k);
        const auto& c = csv[k];
        ASSERT_GE(c.size(), 5u);
        EXPECT_EQ(s.at("Data!A" + row), "s\t'" + unquote(c[0]) + "'");
        EXPECT_EQ(s.at("Data!C" + row), "s\t'" + unquote(c[1]) + "'");  // meastimeeasy
        EXPECT_TRUE(s.at("Data!B" + row).starts_with("s\t'" + unquote(c[1]) + "."));
        EXPECT_EQ(s.at("Data!I" + row), "s\t'" + unquote(c[0]) + " " + unquote(c[1]) + "'");
        EXPECT_DOUBLE_EQ(value_of(s, "Data!D" + row), std::stod(c[2]));
        EXPECT_DOUBLE_EQ(value_of(s, "Data!E" + row), std::stod(c[3]));
        EXPECT_DOUBLE_EQ(value_of(s, "Data!G" + row), std::stod(c[4]));
    }
    EXPECT_FALSE(s.contains("Data!A22"));

    // The lists: the alarm's time over the starttime scalar in alstarttime, start numbers
    // under the bare name and, by qmb2alstartno winning the search, on the second sheet;
    // a bare list name on the second sheet is not found.
    for (int a = 0; a < 3; ++a) {
        const std::string row = std::to_string(30 + a);
        EXPECT_TRUE(std::isfinite(value_of(s, "Data!A" + row))) << row;
        EXPECT_EQ(s.at("Data!B" + row).find("2024"), std::string::npos) << s.at("Data!B" + row);
        EXPECT_EQ(value_of(s, "Data!C" + row), value_of(s, "Lists!D" + std::to_string(2 + a)));
    }
    EXPECT_FALSE(s.contains("Lists!A2"));  // altype: bare, on the second sheet
    EXPECT_EQ(s.at("Lists!E2"), "s\t'Message 1'");
    EXPECT_TRUE(std::isfinite(value_of(s, "Data!K3")));
}

TEST_F(VtTemplate, DisplayFileMaximumGivesWayToTheNextChannel) {
    auto o = test::vt_sim(Kind::Display, 2, 5);
    const std::string src = make(o, "d.ogd");
    const auto csv = csv_samples(src);
    ASSERT_EQ(csv.size(), 5u);
    template_options();
    const Sheet s = fill(src, "display");
    EXPECT_EQ(result, 0);
    for (std::size_t k = 0; k < csv.size(); ++k) {
        const std::string row = std::to_string(10 + k);
        const auto& c = csv[k];
        ASSERT_GE(c.size(), 6u);
        // Minimum of channel 1 at D; its maximum went to E and was overwritten by channel 2.
        EXPECT_DOUBLE_EQ(value_of(s, "Data!D" + row), std::stod(unquote(c[2])));
        EXPECT_DOUBLE_EQ(value_of(s, "Data!E" + row), std::stod(unquote(c[4])));
        EXPECT_DOUBLE_EQ(value_of(s, "Data!F" + row), std::stod(unquote(c[5])));
    }
}

TEST_F(VtTemplate, WindowsWithoutSamplesAndNoMeasurementsWriteNoData) {
    const std::string src = make(test::vt_sim(Kind::Event, 2, 12), "w.oge");
    template_options({{"measurementsinclusive", "0"}});
    Sheet s = fill(src, "nomeas");
    EXPECT_TRUE(s.contains("Data!D8"));  // names and units are written all the same
    EXPECT_FALSE(s.contains("Data!A10")) << s.at("Data!A10");
    EXPECT_FALSE(s.contains("Data!D10"));

    template_options({},
                     {{"TimeSelect", "1"}, {"TimeStart", "23:00:00"}, {"TimeStop", "23:30:00"}});
    s = fill(src, "nowindow");
    EXPECT_EQ(value_of(s, "Data!B4"), 12);
    EXPECT_FALSE(s.contains("Data!A10"));

    // A window of the samples 10:00:03 to 10:00:05: rows without gaps from the named row.
    template_options({},
                     {{"TimeSelect", "1"}, {"TimeStart", "10:00:03"}, {"TimeStop", "10:00:05"}});
    s = fill(src, "window");
    EXPECT_EQ(s.at("Data!C10"), "s\t'10:00:03 AM'");
    EXPECT_EQ(s.at("Data!C12"), "s\t'10:00:05 AM'");
    EXPECT_FALSE(s.contains("Data!C13"));
}

TEST_F(VtTemplate, DamagedFileStopsUnlessAccepted) {
    const std::string src = make(test::vt_sim(Kind::Event, 2, 4), "bad.oge", true);
    template_options();
    Sheet s = fill(src, "refused");
    EXPECT_EQ(result, 1);
    EXPECT_EQ(s.at("Data!B1"), "s\t'bad.oge'");  // the head comes before the check
    EXPECT_FALSE(s.contains("Data!B2"));
    EXPECT_FALSE(s.contains("Data!A10"));

    s = fill(src, "accepted", kTrue);
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(s.at("Data!B3").ends_with(" <File damaged [CRC Error]>'")) << s.at("Data!B3");
    EXPECT_TRUE(s.contains("Data!A10"));
}

TEST_F(VtTemplate, SeparateAlarmWorkbookHasHeaderAndListsOnly) {
    auto o = test::vt_sim(Kind::Event, 2, 6);
    o.alarms = 2;
    o.messages = 3;
    const std::string src = make(o, "s.oge");
    template_options(
        {{"excelsourcefilealarmseparate", "1"}, {"excelsourcefilealarm", tpl("vt.xlsx")}});
    Sheet main = fill(src, "main");
    EXPECT_FALSE(main.contains("Data!A30"));  // the lists go to the second workbook

    const std::string target = p.dir.file("main_AL_ML") + p->state<ExcelSession>().extension;
    ASSERT_TRUE(fkt_exceltemplate(*p, p->opt.excelsourcefilealarm, target));
    EXPECT_EQ(fkt_VTconvertXLSTPLALML(*p, src, p.dir.file("main_AL_ML"), kFalse), 0);
    const Sheet alml = read(target);
    EXPECT_EQ(value_of(alml, "Data!B5"), 3);  // eventcount by the list function
    EXPECT_EQ(alml.at("Data!B1"), "s\t's.oge'");
    EXPECT_FALSE(alml.contains("Data!A10"));  // no data, no channels
    EXPECT_FALSE(alml.contains("Data!D8"));
    EXPECT_TRUE(std::isfinite(value_of(alml, "Data!C31")));
    EXPECT_EQ(alml.at("Lists!E4"), "s\t'Message 3'");
}

// Without a template the engine makes a small workbook of its own: header, times and
// channel 1 on sheet 1. LibreOffice reads it as openpyxl does.
TEST_F(VtTemplate, NoTemplateFillsTheGeneratedWorkbook) {
    const std::string src = make(test::vt_sim(Kind::Event, 2, 3), "g.oge");
    const auto csv = csv_samples(src);
    template_options({{"excelsourcefile", ""}});
    const Sheet s = fill(src, "generated");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(s.at("Sheet1!B2"), "s\t'g.oge'");
    EXPECT_EQ(value_of(s, "Sheet1!B5"), 3);
    EXPECT_EQ(s.at("Sheet1!A8"), "s\t'" + unquote(csv[0][0]) + "'");
    EXPECT_DOUBLE_EQ(value_of(s, "Sheet1!D8"), std::stod(csv[0][2]));
    EXPECT_DOUBLE_EQ(value_of(s, "Sheet1!D10"), std::stod(csv[2][2]));
    EXPECT_FALSE(s.contains("Sheet1!E8"));  // channel 2 has no name here

    const std::string soffice = "/usr/bin/soffice";
    if (!std::filesystem::exists(soffice)) GTEST_SKIP() << "LibreOffice is not installed";
    const std::string workbook = p.dir.file("generated") + p->state<ExcelSession>().extension;
    const std::string cmd = soffice + " -env:UserInstallation=file://" + p.dir.file("profile") +
                            " --headless --convert-to 'csv:Text - txt - csv (StarCalc):44,34,76' "
                            "--outdir " +
                            p.dir.file("lo") + " '" + workbook + "' >/dev/null 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    const auto lines = test::lines_of(testing::read_file(p.dir.file("lo/generated.csv")));
    ASSERT_GE(lines.size(), 10u);
    EXPECT_TRUE(lines[1].starts_with(",g.oge")) << lines[1];
    const auto row = test::split(lines[7], ',');
    ASSERT_GE(row.size(), 4u);
    EXPECT_EQ(row[0], unquote(csv[0][0]));
    EXPECT_DOUBLE_EQ(std::stod(row[3]), std::stod(csv[0][2]));
}

}  // namespace
}  // namespace qumbrel
