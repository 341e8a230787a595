// The LibreOffice binding (skipped with the reason when LibreOffice or python3-uno is
// missing): .xls and .xlt templates made by LibreOffice from openpyxl workbooks, filled
// from a VT file and read back; the .xls row limit reported; the macro Qumbrel of VBA
// workbooks (tests/excel/make_vba_workbook.py) that writes a cell, fails, or never ends and
// is stopped at the time limit with the report on its failure path and the source
// untouched; a missing macro; a workbook printed sheet by sheet on the private CUPS queue
// of the printing tests.
#include <signal.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <thread>

#include "excel/automation.h"
#include "excel/office/office_helper.h"
#include "excel/session.h"
#include "excel/template_reports.h"
#include "excel/workbook_template.h"
#include "platform/cups/cups_printers.h"
#include "tests/reports/vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Kind;
using test::Keys;

struct OfficeBinding : ::testing::Test, test::VtReportFixture {
    OfficeBinding() : VtReportFixture("en-US") {}

    static void SetUpTestSuite() {
        if (!OfficeHelper().available()) return;
        if (std::system("/usr/bin/python3 -c 'import openpyxl' 2>/dev/null") != 0) return;
        made_ =
            std::system(("/usr/bin/python3 " QUMBREL_SOURCE_DIR "/tests/excel/make_templates.py '" +
                         templates().file("") + "'")
                            .c_str()) == 0;
        // The legacy templates, made by LibreOffice from the openpyxl one, and workbooks
        // with a VBA macro Qumbrel (an .xls one made from the first).
        const auto convert = [](const char* from, const char* to) {
            return OfficeHelper()
                       .run({"convert", templates().file(from), templates().file(to)})
                       .exitCode == 0;
        };
        made_ = made_ && convert("vt.xlsx", "vt.xls") && convert("vt.xlsx", "vt.xlt");
        for (const char* kind : {"writes", "fails", "loops"})
            made_ =
                made_ && std::system(("/usr/bin/python3 " QUMBREL_SOURCE_DIR
                                      "/tests/excel/make_vba_workbook.py '" +
                                      templates().file("vt.xlsx") + "' '" +
                                      templates().file(std::string(kind) + ".xlsm") + "' " + kind)
                                         .c_str()) == 0;
        made_ = made_ && convert("writes.xlsm", "writes.xls");
    }
    void SetUp() override {
        if (const std::string why = OfficeHelper().missing(); !why.empty()) GTEST_SKIP() << why;
        if (!made_) GTEST_SKIP() << "the templates could not be made (python3-openpyxl?)";
    }
    static const testing::TempDir& templates() {
        static testing::TempDir dir;
        return dir;
    }

    // The template report of `src` from `tpl`: the report's path.
    std::string fill(const std::string& src, const std::string& tpl, const std::string& base,
                     Keys more = {}) {
        more.try_emplace("targetformat", "2");
        more.try_emplace("excelsourcefile", tpl);
        options(more);
        fkt_excelformat(*p, tpl, to_flag(p->opt.runexcelmakro != 0));
        const std::string target = p.dir.file(base) + p->state<ExcelSession>().extension;
        EXPECT_TRUE(fkt_exceltemplate(*p, tpl, target)) << error_log();
        result = fkt_VTconvertXLSTPL(*p, src, p.dir.file(base), kFalse);
        return target;
    }

    // What openpyxl reads of a workbook of any kind (converted by LibreOffice first).
    std::string read_back(const std::string& workbook) {
        const std::string xlsx = workbook + ".back.xlsx";
        const OfficeResult r = OfficeHelper().run({"convert", workbook, xlsx});
        EXPECT_EQ(r.exitCode, 0) << r.err;
        const std::string out = p.dir.file("back.txt");
        EXPECT_EQ(
            std::system(("/usr/bin/python3 " QUMBREL_SOURCE_DIR "/tests/excel/read_back.py '" +
                         xlsx + "' > '" + out + "' 2>&1")
                            .c_str()),
            0);
        return testing::read_file(out);
    }

    static inline bool made_ = false;
    int result = -1;
};

TEST_F(OfficeBinding, XlsAndXltTemplatesAreFilledAndStayLegacyWorkbooks) {
    const std::string src = make(test::vt_sim(Kind::Event, 2, 5), "a.oge");
    for (const char* tpl : {"vt.xls", "vt.xlt"}) {
        SCOPED_TRACE(tpl);
        const std::string report = fill(src, templates().file(tpl), std::string("r_") + tpl);
        EXPECT_EQ(result, 0);
        EXPECT_FALSE(p->state<ExcelSession>().failed) << error_log();
        ASSERT_TRUE(std::filesystem::exists(report));
        // Still a binary workbook (a compound file), not an OOXML one.
        EXPECT_EQ(testing::read_file(report).substr(0, 4), std::string("\xD0\xCF\x11\xE0", 4));
        const std::string back = read_back(report);
        EXPECT_NE(back.find("Data\tB1\ts\t'a.oge'"), std::string::npos) << back;
        EXPECT_NE(back.find("Data\tB4\tn\t5"), std::string::npos) << back;
        EXPECT_NE(back.find("Data\tA14\ts\t'3/5/2024'"), std::string::npos) << back;
        EXPECT_NE(back.find("Data\tH1\ts\t'kept'"), std::string::npos) << back;
        // No working copy is left beside the report.
        for (const auto& e : std::filesystem::directory_iterator(p.dir.path()))
            EXPECT_EQ(e.path().filename().string().find(".qumbrel."), std::string::npos)
                << e.path();
    }
}

// The processes of the office suite on a profile.
std::set<std::string> offices_on(const std::string& profile) {
    std::set<std::string> pids;
    FILE* p = ::popen(("pgrep -f -- '[U]serInstallation=file://" + profile + "'").c_str(), "r");
    char line[64];
    while (p && std::fgets(line, sizeof line, p)) pids.insert(line);
    if (p) ::pclose(p);
    return pids;
}

// One soffice serves every operation of a helper's life; one that died is started anew
// for the next operation; an unknown request is refused and the helper goes on; nothing
// is left when the helper goes.
TEST_F(OfficeBinding, OneOfficeServesTheHelpersOperations) {
    std::string profile;
    {
        OfficeHelper office;
        OfficeResult r = office.run({"convert", templates().file("vt.xlsx"), p.dir.file("a.xls")});
        ASSERT_EQ(r.exitCode, 0) << r.err;
        profile = office.profile();
        const auto first = offices_on(profile);
        ASSERT_FALSE(first.empty());
        r = office.run({"convert", p.dir.file("a.xls"), p.dir.file("b.xlsx")});
        ASSERT_EQ(r.exitCode, 0) << r.err;
        EXPECT_EQ(offices_on(profile), first);  // the same office

        for (const std::string& pid : first) ::kill(std::stoi(pid), SIGKILL);
        for (int i = 0; i < 200 && !offices_on(profile).empty(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        r = office.run({"convert", p.dir.file("b.xlsx"), p.dir.file("c.xls")});
        EXPECT_EQ(r.exitCode, 0) << r.err;
        EXPECT_TRUE(std::filesystem::exists(p.dir.file("c.xls")));

        r = office.run({"nonsense", "a"});
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_NE(r.err.find("no such request"), std::string::npos) << r.err;
        r = office.run({"convert", p.dir.file("c.xls"), p.dir.file("d\tname.xlsx")});
        EXPECT_EQ(r.exitCode, 0) << r.err;
        EXPECT_TRUE(std::filesystem::exists(p.dir.file("d\tname.xlsx")));
        EXPECT_TRUE(office.running());
    }
    EXPECT_TRUE(offices_on(profile).empty());
    EXPECT_FALSE(std::filesystem::exists(profile));
}

TEST_F(OfficeBinding, AnXlsWorkbookCutToItsRowsSaysSo) {
    std::filesystem::copy_file(templates().file("vt.xls"), p.dir.file("cut.xls"));
    auto app = make_native_automation();
    app->open(p.dir.file("cut.xls"));
    app->set_cell({1, 70000, 1}, 1.0);
    app->save();
    const auto warnings = app->take_warnings();
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_NE(warnings[0].find("65536"), std::string::npos) << warnings[0];
    app->close();
}

TEST_F(OfficeBinding, AMissingMacroIs1004AndTheReportGoesOn) {
    const std::string src = make(test::vt_sim(Kind::Event, 2, 3), "m.oge");
    auto app = make_native_automation();
    std::filesystem::copy_file(templates().file("vt.xlsx"), p.dir.file("m.xlsx"));
    app->open(p.dir.file("m.xlsx"));
    try {
        app->run_macro("Qumbrel");
        ADD_FAILURE() << "no error for a missing macro";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), 1004);
        EXPECT_NE(e.description().find("no macro Qumbrel"), std::string::npos) << e.description();
    }
    app->close();

    fill(src, templates().file("vt.xlsx"), "withmacro", {{"runexcelmakro", "1"}});
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(p->state<ExcelSession>().failed);
    EXPECT_NE(read_back(p.dir.file("withmacro.xlsx")).find("Data\tB1\ts\t'm.oge'"),
              std::string::npos);
}

// The macro of an .xlsm template, and of an .xls template made from it, runs on the
// filled workbook: its cell is seen beside the report's values.
TEST_F(OfficeBinding, TheMacroRunsOnTheFilledWorkbook) {
    const std::string src = make(test::vt_sim(Kind::Event, 2, 3), "w.oge");
    for (const char* tpl : {"writes.xlsm", "writes.xls"}) {
        SCOPED_TRACE(tpl);
        const std::string report =
            fill(src, templates().file(tpl), std::string("m_") + tpl, {{"runexcelmakro", "1"}});
        EXPECT_EQ(result, 0);
        EXPECT_FALSE(p->state<ExcelSession>().failed) << error_log();
        const std::string back = read_back(report);
        EXPECT_NE(back.find("Data\tA1\ts\t'macro ran'"), std::string::npos) << back;
        EXPECT_NE(back.find("Data\tB1\ts\t'w.oge'"), std::string::npos) << back;
    }
}

// A macro that raises an error: logged with its text, and the report is finished.
TEST_F(OfficeBinding, AFailingMacroIsLoggedAndTheReportFinishes) {
    const std::string src = make(test::vt_sim(Kind::Event, 2, 3), "f.oge");
    const std::string report =
        fill(src, templates().file("fails.xlsm"), "failing", {{"runexcelmakro", "1"}});
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(p->state<ExcelSession>().failed);
    EXPECT_NE(error_log().find("the macro says no"), std::string::npos) << error_log();
    EXPECT_NE(read_back(report).find("Data\tB1\ts\t'f.oge'"), std::string::npos);
}

// A macro that never ends: LibreOffice is stopped at the time limit with its whole process
// group, the report takes its failure path (the driver keeps the source), and the
// recorder file is not touched.
TEST_F(OfficeBinding, AnEndlessMacroIsStoppedAndTheReportFails) {
    const std::string src = make(test::vt_sim(Kind::Event, 2, 3), "h.oge");
    const std::string before = testing::read_file(src);
    ::setenv("QUMBREL_OFFICE_TIMEOUT", "8", 1);
    // The profile in a folder of this test, so that its soffice can be told apart.
    const std::string tmp = p.dir.file("officetmp");
    std::filesystem::create_directories(tmp);
    const char* oldTmp = std::getenv("TMPDIR");
    const std::string savedTmp = oldTmp ? oldTmp : "";
    ::setenv("TMPDIR", tmp.c_str(), 1);
    const auto t0 = std::chrono::steady_clock::now();
    fill(src, templates().file("loops.xlsm"), "hung", {{"runexcelmakro", "1"}});
    const auto took = std::chrono::steady_clock::now() - t0;
    ::unsetenv("QUMBREL_OFFICE_TIMEOUT");
    if (oldTmp)
        ::setenv("TMPDIR", savedTmp.c_str(), 1);
    else
        ::unsetenv("TMPDIR");
    EXPECT_TRUE(p->state<ExcelSession>().failed);
    EXPECT_LT(took, std::chrono::seconds(60));
    EXPECT_NE(error_log().find("did not finish within 8 s"), std::string::npos) << error_log();
    EXPECT_EQ(testing::read_file(src), before);
    for (const auto& e : std::filesystem::directory_iterator(p.dir.path()))
        EXPECT_FALSE(e.path().filename().string().starts_with(".~lock.")) << e.path();
    // No soffice of this test's private profile is left running ("[/]" keeps pgrep's own
    // shell from matching).
    const std::string pattern = "UserInstallation=file://" + tmp + "[/]qumbrel-office-";
    EXPECT_NE(std::system(("pgrep -f '" + pattern + "' >/dev/null").c_str()), 0);
}

TEST_F(OfficeBinding, PrintsTheListedSheetsOnTheCupsQueue) {
    const char* out = std::getenv("QUMBREL_CUPS_OUT");
    if (!std::getenv("CUPS_SERVER") || !out)
        GTEST_SKIP() << "no private CUPS server (scripts/test.d/cups.sh starts one)";
    const std::string queue = "qumbrel_test_a";
    use_cups_printers(*p);
    const std::string src = make(test::vt_sim(Kind::Event, 2, 3), "p.oge");
    const auto jobs_before = std::distance(std::filesystem::directory_iterator(out),
                                           std::filesystem::directory_iterator());
    fill(src, templates().file("vt.xlsx"), "printed",
         {{"printfile", "1"}, {"printer", queue}, {"printpage", "|1|Lists"}});
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(p->state<ExcelSession>().printFailed) << error_log();
    // Two jobs, one a sheet, each a PDF of at least one page, land in the queue's folder.
    std::vector<std::string> pdfs;
    for (int wait = 0; wait < 100 && pdfs.size() < 2; ++wait) {
        pdfs.clear();
        for (const auto& e : std::filesystem::directory_iterator(out))
            if (e.path().extension() == ".pdf" && e.path().filename().string().starts_with(queue))
                pdfs.push_back(e.path().string());
        if (static_cast<long>(pdfs.size()) < jobs_before + 2)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    ASSERT_GE(pdfs.size(), 2u);
    std::string texts;
    for (const std::string& pdf : pdfs) {
        const std::string info = p.dir.file("info.txt"), text = p.dir.file("text.txt");
        ASSERT_EQ(std::system(("pdfinfo '" + pdf + "' > '" + info + "' 2>&1").c_str()), 0);
        const std::string i = testing::read_file(info);
        const auto at = i.find("Pages:");
        ASSERT_NE(at, std::string::npos) << i;
        EXPECT_GE(std::atoi(i.c_str() + at + 6), 1) << i;
        ASSERT_EQ(std::system(("pdftotext '" + pdf + "' '" + text + "'").c_str()), 0);
        texts += testing::read_file(text);
    }
    // The first sheet's values are on paper.
    EXPECT_NE(texts.find("p.oge"), std::string::npos) << texts;
    EXPECT_NE(texts.find("3/5/2024"), std::string::npos) << texts;
}

}  // namespace
}  // namespace qumbrel
