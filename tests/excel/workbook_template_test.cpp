// The report's extension and the working workbook: the format codes by template and
// DefaultFormat, the generated workbook read back by openpyxl, a copied template, the
// leftover copy after a DefaultFormat override (kept so), and what cannot be used.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "excel/automation.h"
#include "excel/workbook_template.h"
#include "frame/registry.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

namespace fs = std::filesystem;

struct WorkbookTemplate : ::testing::Test {
    testing::TestProgram p{"en-US"};
    ExcelSession& session() { return p->state<ExcelSession>(); }
    void default_format(const std::string& value) {
        RegistryStore(p->program_file("registry.ini"))
            .SetRegString(excel_options_key("16.0"), "DefaultFormat", value);
    }
    std::pair<std::string, std::int32_t> format(const std::string& tpl, Flag macro = kFalse) {
        fkt_excelformat(*p, tpl, macro);
        return {session().extension, session().fileFormat};
    }
};

TEST_F(WorkbookTemplate, ExtensionAndFormatCode) {
    using F = std::pair<std::string, std::int32_t>;
    EXPECT_EQ(format(""), F(".xlsx", 51));
    EXPECT_EQ(format("/t/report.xltx"), F(".xltx", 52));
    EXPECT_EQ(format("/t/report.XLSX"), F(".XLSX", 51));
    EXPECT_EQ(format("/t/report.xls"), F(".xls", 56));
    EXPECT_EQ(format("/t/plain"), F(".", 52));  // no dot: the extension text as it was
    EXPECT_EQ(format("/t/report.xlsx", kTrue), F(".xlsx", 51));  // a macro alone changes nothing
    default_format("52");
    EXPECT_EQ(format("/t/report.xltx"), F(".xlsm", 52));
    default_format("56");
    EXPECT_EQ(format("/t/report.xltx", kTrue), F(".xlsm", 52));
    default_format("7");  // another number changes nothing but lets the macro decide
    EXPECT_EQ(format("/t/report.xlsx"), F(".xlsx", 51));
    EXPECT_EQ(format("/t/report.xlsx", kTrue), F(".xlsm", 52));
}

TEST_F(WorkbookTemplate, GeneratedWorkbookCopiesAndFailures) {
    if (std::system("/usr/bin/python3 -c 'import openpyxl' 2>/dev/null") != 0)
        GTEST_SKIP() << "python3-openpyxl is needed";
    const std::string target = p.dir.file("generated.xlsx");
    testing::write_file(target, "an earlier report");
    ASSERT_TRUE(fkt_exceltemplate(*p, "", target));
    EXPECT_FALSE(session().app);
    const std::string dump = p.dir.file("dump.txt");
    const std::string cmd =
        "/usr/bin/python3 -c \"import openpyxl,sys\n"
        "wb=openpyxl.load_workbook(sys.argv[1]); s=wb.worksheets[0]\n"
        "print(sorted((d.name,d.attr_text) for d in wb.defined_names.definedName))\n"
        "print(s['A8'].number_format, s['B9'].number_format, s['A20000'].number_format)\n"
        "print(s['A20001'].number_format)\" " +
        target + " > " + dump + " 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0) << testing::read_file(dump);
    const std::string back = testing::read_file(dump);
    for (const char* name : {"('qmb1ch1data', 'Sheet1!$D$8')", "('qmb1ch1name', 'Sheet1!$D$7')",
                             "('qmb1filename', 'Sheet1!$B$2')", "('qmb1measdate', 'Sheet1!$A$8')",
                             "('qmb1validdatacount', 'Sheet1!$B$5')"})
        EXPECT_NE(back.find(name), std::string::npos) << name << "\n" << back;
    EXPECT_NE(back.find("@ [$-F400]h:mm:ss AM/PM @\nGeneral"), std::string::npos) << back;

    // A template is copied to the target; the template stays as it was.
    const std::string tpl = p.dir.file("tpl/report.xlsx");
    fs::create_directories(p.dir.file("tpl"));
    fs::copy_file(target, tpl);
    const std::string before = testing::read_file(tpl);
    fs::create_directories(p.dir.file("out"));
    fkt_excelformat(*p, tpl, kFalse);
    ASSERT_TRUE(fkt_exceltemplate(*p, tpl, p.dir.file("out/r.xlsx")));
    EXPECT_EQ(testing::read_file(p.dir.file("out/r.xlsx")), before);
    EXPECT_EQ(testing::read_file(tpl), before);
    // With DefaultFormat 51 a .xltx template gives ".xlsx": the rename finds no file and
    // the copy stays beside the target under its own name (kept so).
    fs::copy_file(tpl, p.dir.file("tpl/other.xltx"));
    default_format("51");
    fkt_excelformat(*p, p.dir.file("tpl/other.xltx"), kFalse);
    EXPECT_EQ(session().extension, ".xlsx");
    EXPECT_TRUE(fkt_exceltemplate(*p, p.dir.file("tpl/other.xltx"), p.dir.file("out/o.xlsx")));
    EXPECT_TRUE(fs::exists(p.dir.file("out/other.xltx")));
    EXPECT_FALSE(fs::exists(p.dir.file("out/o.xlsx")));

    // A missing template, and an .xlt template that is none: false and logged.
    EXPECT_FALSE(fkt_exceltemplate(*p, p.dir.file("none.xltx"), p.dir.file("out/n.xlsx")));
    testing::write_file(p.dir.file("old.xlt"), "binary");
    EXPECT_FALSE(fkt_exceltemplate(*p, p.dir.file("old.xlt"), p.dir.file("out/x.xls")));
    const std::string log = testing::read_file(p->program_file("error.log"));
    EXPECT_NE(log.find(": " + p.dir.file("none.xltx")), std::string::npos) << log;
    EXPECT_NE(log.find("fkt_exceltemplate() ; Errorsource"), std::string::npos) << log;
    EXPECT_NE(log.find(p.dir.file("old.xlt")), std::string::npos) << log;
}

}  // namespace
}  // namespace qumbrel
