// The four cell operations over the native binding, on a template made by openpyxl
// (tests/excel/make_templates.py), read back by openpyxl; and the session's end when the
// program has gone.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "excel/automation.h"
#include "excel/cell_operations.h"
#include "frame/errors.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

std::string shell_quote(const std::string& s) {
    return "'" + s + "'";
}

class CellOperations : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        if (std::system("/usr/bin/python3 -c 'import openpyxl' 2>/dev/null") != 0) return;
        made_ =
            std::system(("/usr/bin/python3 " QUMBREL_SOURCE_DIR "/tests/excel/make_templates.py " +
                         shell_quote(folder().file("")))
                            .c_str()) == 0;
    }
    void SetUp() override {
        if (!made_) GTEST_SKIP() << "python3-openpyxl is needed to make the templates";
        ExcelSession& s = p->state<ExcelSession>();
        s.app = make_native_automation();
        s.alive = true;
        s.app->open(folder().file("keywords.xlsx"));
    }
    static const testing::TempDir& folder() {
        static testing::TempDir dir;
        return dir;
    }
    std::string saved_and_read() {
        const std::string out = folder().file("filled.xlsx");
        p->state<ExcelSession>().app->save_as(out);
        const std::string text = folder().file("read.txt");
        const std::string cmd = "/usr/bin/python3 " QUMBREL_SOURCE_DIR
                                "/tests/excel/read_back.py " +
                                shell_quote(out) + " > " + shell_quote(text) + " 2>&1";
        EXPECT_EQ(std::system(cmd.c_str()), 0);
        return testing::read_file(text);
    }

    testing::TestProgram p{"en-US"};
    static inline bool made_ = false;
};

TEST_F(CellOperations, ScalarsByTheRightEndOfEveryName) {
    EXPECT_TRUE(is_set(fkt_excelinsertname(*p, "filename", std::string("a.oge"), 0, 0)));
    EXPECT_TRUE(is_set(fkt_excelinsertname(*p, "STARTTIME", 42.5, 0, 0)));
    EXPECT_TRUE(is_set(fkt_excelinsertname(*p, "nothing", 1.0, 0, 0)));  // no error
    // By the exact name, moved by the offsets.
    EXPECT_TRUE(is_set(fkt_excelinsertname(*p, "title", std::string("moved"), 2, 1)));
    const std::string back = saved_and_read();
    EXPECT_NE(back.find("Sheet1\tB1\ts\t'a.oge'"), std::string::npos) << back;
    EXPECT_NE(back.find("Sheet2\tC3\ts\t'a.oge'"), std::string::npos) << back;
    EXPECT_NE(back.find("Sheet1\tB2\tn\t42.5"), std::string::npos) << back;
    EXPECT_NE(back.find("Sheet1\tB3\tn\t42.5"), std::string::npos) << back;  // alstarttime too
    EXPECT_NE(back.find("Sheet1\tE2\ts\t'moved'"), std::string::npos) << back;
    EXPECT_EQ(back.find("comment"), std::string::npos) << "the filled cell's comment goes";
}

TEST_F(CellOperations, ListPositionsAndTheirWrites) {
    std::int32_t row = 0, col = 0, sheet = 0;
    fkt_excelfindname(*p, "measdate", row, col, sheet);
    EXPECT_EQ(std::vector({row, col, sheet}), std::vector({7, 1, 1}));  // qmb1 wins
    row = col = 99;
    fkt_excelfindname(*p, "nothing", row, col, sheet);
    EXPECT_EQ(std::vector({row, col, sheet}), std::vector({99, 99, -1}));
    EXPECT_EQ(p->state<ExcelSession>().app->active_sheet(), 2);  // the last one tried
    // A bare name on another sheet than the first is not found.
    fkt_excelfindname(*p, "elsewhere", row, col, sheet);
    EXPECT_EQ(sheet, -1);

    fkt_excelfindname(*p, "measdate", row, col, sheet);
    for (int n = 1; n <= 3; ++n)
        EXPECT_TRUE(is_set(fkt_excelinsertfest(*p, row, col, n * 1.0, n, 0, sheet)));
    EXPECT_FALSE(is_set(fkt_excelinsertfest(*p, 0, col, 1.0, 1, 0, sheet)));  // not found
    // A list at the sheet's last row keeps one value; the next is lost without a word.
    fkt_excelfindname(*p, "lastrow", row, col, sheet);
    EXPECT_TRUE(is_set(fkt_excelinsertfest(*p, row, col, 1.0, 1, 0, sheet)));
    EXPECT_FALSE(is_set(fkt_excelinsertfest(*p, row, col, 2.0, 2, 0, sheet)));
    EXPECT_TRUE(p->state<ExcelSession>().alive);
    EXPECT_TRUE(is_set(fkt_excelinsertsheets(*p, "title", std::string("T"), 0, 0)));

    const std::string back = saved_and_read();
    for (const char* cell : {"Sheet1\tA7\tn\t1", "Sheet1\tA8\tn\t2", "Sheet1\tA9\tn\t3",
                             "Sheet1\tE1048576\tn\t1", "Sheet1\tD1\ts\t'T'", "Sheet2\tD1\ts\t'T'"})
        EXPECT_NE(back.find(cell), std::string::npos) << cell << "\n" << back;
    EXPECT_EQ(back.find("Sheet1\tA5"), std::string::npos) << back;
}

// A program that has gone: every call fails with 462.
class Gone final : public ExcelAutomation {
  public:
    [[noreturn]] static void fail() { throw VbError(errnum::kRemoteServerGone, "server gone"); }
    std::string version() override { fail(); }
    void open(const std::string&) override { fail(); }
    void add(const std::optional<std::string>&) override { fail(); }
    std::string workbook_name() override { fail(); }
    std::int32_t sheet_count() override { fail(); }
    std::string sheet_name(std::int32_t) override { fail(); }
    void activate_sheet(std::int32_t) override { fail(); }
    void activate_sheet(const std::string&) override { fail(); }
    std::int32_t active_sheet() override { fail(); }
    std::vector<std::string> names() override { fail(); }
    ExcelRange range(const std::string&) override { fail(); }
    ExcelRange sheet_range(std::int32_t, const std::string&) override { fail(); }
    void set_cell(const ExcelRange&, const ExcelValue&) override { fail(); }
    void set_range(const std::string&, const ExcelValue&) override { fail(); }
    void delete_comment(const ExcelRange&) override { fail(); }
    void add_name(const std::string&, const std::string&) override { fail(); }
    void number_format(const ExcelRange&, const ExcelRange&, const std::string&) override {
        fail();
    }
    void run_macro(const std::string&) override { fail(); }
    void print_workbook(const std::string&) override { fail(); }
    void print_active_sheet(const std::string&) override { fail(); }
    void save() override { fail(); }
    void save_as(const std::string&) override { fail(); }
    void close() override { fail(); }
    void quit() override { fail(); }
};

TEST(CellOperationsGone, TheSessionEndsAndNothingMoreIsAsked) {
    testing::TestProgram p{"en-US"};
    p.host.up = true;
    ExcelSession& s = p->state<ExcelSession>();
    s.app = std::make_unique<Gone>();
    s.alive = true;
    EXPECT_FALSE(is_set(fkt_excelinsertname(*p, "filename", 1.0, 0, 0)));
    EXPECT_FALSE(s.alive);
    std::string lines;
    for (const auto& l : p.host.lines) lines += l + "\n";
    EXPECT_NE(lines.find("filename 462 server gone"), std::string::npos) << lines;
    std::int32_t row = 5, col = 6, sheet = 0;
    fkt_excelfindname(*p, "measdate", row, col, sheet);  // no call: the session is over
    EXPECT_EQ(std::vector({row, col, sheet}), std::vector({5, 6, -1}));
    EXPECT_FALSE(is_set(fkt_excelinsertfest(*p, 1, 1, 1.0, 1, 0, 1)));
}

}  // namespace
}  // namespace qumbrel
