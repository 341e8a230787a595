// An XLS report read by xlrd (Debian's python3-xlrd) holds the values of the CSV report
// of the same file, where the two formats agree: everything but the repeated label of the
// "Channel No" row, which only CSV shows twice.
#include <gtest/gtest.h>

#include <filesystem>

#include "vt_report_readers.h"

namespace qumbrel {
namespace {

const char* const kPython = "/usr/bin/python3";

struct VtXlrd : ::testing::Test, test::VtReportFixture {
    VtXlrd() : VtReportFixture("en-US") {}
    void SetUp() override {
        int status = 0;
        if (!std::filesystem::exists(kPython)) GTEST_SKIP() << "no /usr/bin/python3";
        test::run_command(std::string(kPython) + " -c 'import xlrd' 2>/dev/null", status);
        if (status != 0) GTEST_SKIP() << "python3-xlrd is not installed";
    }
    std::string raw;
    test::Cells dump(const std::string& path) {
        int status = 0;
        const std::string out =
            test::run_command(std::string(kPython) + " " + QUMBREL_SOURCE_DIR +
                                  "/tests/reports/xlrd_dump.py '" + path + "' 2>&1",
                              status);
        EXPECT_EQ(status, 0) << out;
        raw = out;
        return test::xlrd_cells(out);
    }
    void compare(reclib::Kind kind, const std::string& name) {
        auto o = test::vt_sim(kind, 3, 25);
        o.messages = 2;
        o.batch = true;
        const std::string src = make(o, name);
        options({{"messageinclusive", "1"}});
        const test::Cells csv = test::csv_cells(convert(src, "r"));
        options({{"messageinclusive", "1"}, {"targetformat", "1"}});
        convert(src, "r");
        const test::Cells xls = dump(p.dir.file("r.xls"));
        int channelRow = -1;
        for (const auto& [at, v] : csv) {
            if (v == "Channel No") channelRow = at.first;
        }
        ASSERT_NE(channelRow, -1);
        test::expect_same_cells(csv, xls, [&](const std::pair<int, int>& at) {
            return at.first == channelRow && at.second == 1;
        });
        // The measured values are numbers in an event sheet, texts in a display sheet.
        const std::string last = std::to_string(channelRow + 3 + 25) + "\t2\t";
        const bool event = kind == reclib::Kind::Event;
        EXPECT_NE(raw.find(last + (event ? "number\t" : "text\t")), std::string::npos) << raw;
    }
};

TEST_F(VtXlrd, EventSheetHoldsTheCsvValues) {
    compare(reclib::Kind::Event, "ev.oge");
}

TEST_F(VtXlrd, DisplaySheetHoldsTheCsvValues) {
    compare(reclib::Kind::Display, "di.ogd");
}

TEST_F(VtXlrd, FreeTextsHaveRowsOfTheirOwnInTheSheet) {
    options({{"userdef2", "Second text"}, {"userdef3", "Third"}, {"targetformat", "1"}});
    convert(make(test::vt_sim(reclib::Kind::Event, 1, 2), "ev.oge"), "u");
    const test::Cells xls = dump(p.dir.file("u.xls"));
    EXPECT_EQ(xls.at({0, 0}), "Filename");
    EXPECT_EQ(xls.count({1, 0}), 0u);  // userdef1 is empty: its row stays empty
    EXPECT_EQ(xls.at({2, 0}), "Second text");
    EXPECT_EQ(xls.at({3, 0}), "Third");
    EXPECT_EQ(xls.at({4, 0}), "Software");
    EXPECT_EQ(xls.at({4, 1}), "qumbrel 1.0.0");
}

}  // namespace
}  // namespace qumbrel
