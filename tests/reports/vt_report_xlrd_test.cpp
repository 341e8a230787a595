// An XLS report read by xlrd (Debian's python3-xlrd) holds the values of the CSV report
// of the same file, where the two formats agree.
#include "vt_report_readers.h"

namespace qumbrel {
namespace {

struct VtXlrd : test::VtReaders {
    void SetUp() override {
        if (const auto why = test::skip_reason_xlrd(); !why.empty()) GTEST_SKIP() << why;
    }
    std::string raw;
    test::Cells dump(const std::string& path) {
        int status = 0;
        raw = test::xlrd_dump(path, status);
        EXPECT_EQ(status, 0) << raw;
        return test::xlrd_cells(raw);
    }
};

TEST_F(VtXlrd, EventAndDisplaySheetsHoldTheCsvValues) {
    for (const auto kind : {reclib::Kind::Event, reclib::Kind::Display}) {
        const bool event = kind == reclib::Kind::Event;
        SCOPED_TRACE(event ? "event" : "display");
        const test::Cells csv = csv_and_xls(kind, "r");
        test::expect_same_cells(csv, dump(p.dir.file("r.xls")));
        // The measured values are numbers in an event sheet, texts in a display sheet.
        const auto last = std::prev(csv.end())->first;
        const std::string cell = std::to_string(last.first) + "\t2\t";
        EXPECT_NE(raw.find(cell + (event ? "number\t" : "text\t")), std::string::npos) << raw;
    }
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
}

}  // namespace
}  // namespace qumbrel
