// The session steps around a template report's filling over the native binding: opening,
// closing with and without saving (FDA mode), the failure path, and printing, which the
// native engine cannot do and says so.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "excel/automation.h"
#include "excel/cell_operations.h"
#include "excel/ooxml/zip_package.h"
#include "excel/session.h"
#include "excel/workbook_template.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

struct Session : ::testing::Test {
    testing::TestProgram p{"en-US"};
    std::string workbook;
    void SetUp() override {
        // A generated workbook: no template, no openpyxl needed.
        workbook = p.dir.file("report.xlsx");
        ASSERT_TRUE(fkt_exceltemplate(*p, "", workbook));
    }
    std::string lines() const {
        std::string out;
        for (const auto& l : p.host.lines) out += l + "\n";
        return out;
    }
    std::string error_log() { return testing::read_file(p->program_file("error.log")); }
};

TEST_F(Session, OpenFillCloseSavesAndFdaDoesNot) {
    std::string state = "fkt_test(a b)";
    ASSERT_TRUE(excel_session_open(*p, workbook, "fkt_test(a b)", state));
    EXPECT_EQ(state, "fkt_test(a b) - Datei öffnen abgeschlossen/Starte Konvertierung...");
    fkt_excelinsertname(*p, "filename", std::string("a.oge"), 0, 0);
    const auto before = std::filesystem::last_write_time(workbook);
    p->run.bFda = kTrue;
    excel_session_close(*p);  // FDA: printed only, never written
    EXPECT_EQ(std::filesystem::last_write_time(workbook), before);
    EXPECT_FALSE(p->state<ExcelSession>().alive);

    p->run.bFda = kFalse;
    ASSERT_TRUE(excel_session_open(*p, workbook, "fkt_test(a b)", state));
    fkt_excelinsertname(*p, "filename", std::string("b.oge"), 0, 0);
    excel_session_close(*p);
    const std::string sheet = ooxml::ZipPackage::open(workbook).read("xl/worksheets/sheet1.xml");
    EXPECT_NE(sheet.find("<c r=\"B2\" t=\"inlineStr\"><is><t>b.oge</t></is></c>"),
              std::string::npos)
        << sheet;
    EXPECT_EQ(sheet.find("a.oge"), std::string::npos) << "the FDA run wrote nothing";
    EXPECT_EQ(error_log(), "");
}

TEST_F(Session, FailurePathAndAWorkbookThatCannotBeOpened) {
    std::string state = "fkt_test(x y) - Daten werden jetzt convertiert...(Batchdaten)";
    EXPECT_FALSE(excel_session_open(*p, p.dir.file("missing.xlsx"), "fkt_test(x y)", state));
    EXPECT_FALSE(p->state<ExcelSession>().alive);
    EXPECT_NE(error_log().find("fkt_test(x y) - Daten werden jetzt convertiert...(Batchdaten)"),
              std::string::npos)
        << error_log();
}

// A printer the print service does not know prints nothing (never the default instead);
// the report is marked unprinted and the session goes on.
TEST_F(Session, AnUnknownPrinterPrintsNothing) {
    std::string state;
    ASSERT_TRUE(excel_session_open(*p, workbook, "fkt_test(a b)", state));
    p->opt.printfile = kTrue;
    p->opt.printer = "office";
    p->opt.printpage = "|1|Nosuch";
    excel_session_print(*p, workbook);
    const std::string l = lines();
    EXPECT_NE(l.find(workbook + " [office]..."), std::string::npos) << l;
    EXPECT_NE(l.find("there is no printer \"office\"; nothing printed"), std::string::npos) << l;
    EXPECT_EQ(l.find(workbook + " [office] finished"), std::string::npos) << l;
    EXPECT_NE(error_log().find("PrintOut: there is no printer"), std::string::npos) << error_log();
    EXPECT_TRUE(p->state<ExcelSession>().printFailed);
    EXPECT_TRUE(p->state<ExcelSession>().alive);
    excel_session_close(*p);
}

}  // namespace
}  // namespace qumbrel
