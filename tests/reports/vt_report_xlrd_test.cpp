// Our sheets read by xlrd (Debian's python3-xlrd), which nobody here wrote: a sample
// sheet's values, types, format strings, alignment, page breaks and row rule, and XLS
// reports that hold the values of the CSV report of the same file where the formats agree.
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

struct Xlrd : test::VtReaders {
    void SetUp() override {
        if (std::system("/usr/bin/python3 -c 'import xlrd' 2>/dev/null") != 0)
            GTEST_SKIP() << "python3-xlrd is not installed";
    }
    ExcelFile x;
};

TEST_F(Xlrd, ValuesTypesFormatsAlignmentAndPageBreaks) {
    ASSERT_EQ(test::write_sample_sheet(x, p.dir.file("sample.xls")), 0);
    EXPECT_EQ(test::xlrd_dump(p.dir.file("sample.xls")),
              "0\t0\ttext\tRecorder\tGeneral\t1\t0\n"
              "0\t1\ttext\tVT210 \xE2\x82\xAC \xC2\xB0\x43\tGeneral\t1\t0\n"  // € °C
              "1\t0\ttext\t100\tGeneral\t1\t0\n"
              "1\t1\tnumber\t42.0\tGeneral\t3\t0\n"
              "2\t0\tnumber\t21.5\t#,##0.00\t3\t0\n"
              "2\t1\tdate\t45000.5\tdd/mm/yy\t3\t0\n"
              "2\t2\tnumber\t0.3333333333333333\t#,##0.00\t3\t0\n"
              "2\t3\tnumber\t-1234567.125\tGeneral\t3\t0\n"
              "3\t0\ttext\t" +
                  std::string(255, 'z') +
                  "\tGeneral\t1\t0\n"
                  "3\t2\ttext\t\tGeneral\t1\t0\n"
                  "breaks\t9 29 49\n");
}

TEST_F(Xlrd, RowsAcrossTheSignedLimitAndTheWrap) {
    x.CreateFile(p.dir.file("rows.xls"));
    x.WriteValue(0, 0, 3, 0, 32767, 1, std::int32_t{1}, 0);
    x.WriteValue(0, 0, 3, 0, 32768, 1, std::int32_t{2}, 0);
    x.WriteValue(0, 0, 3, 0, 65536, 2, std::int32_t{3}, 0);  // back at the top
    x.WriteValue(0, 0, 3, 0, 1, 3, std::int32_t{-5}, 0);     // readers take it unsigned
    ASSERT_EQ(x.CloseFile(), 0);
    const std::string out = test::xlrd_dump(p.dir.file("rows.xls"));
    for (const char* cell : {"0\t1\tnumber\t3.0\t", "0\t2\tnumber\t65531.0\t",
                             "32766\t0\tnumber\t1.0\t", "32768\t0\tnumber\t2.0\t"})
        EXPECT_NE(out.find(cell), std::string::npos) << cell << "\n" << out;
    EXPECT_EQ(out.find("32767\t"), std::string::npos) << out;  // unreachable row
}

TEST_F(Xlrd, EventAndDisplayReportsHoldTheCsvValues) {
    for (const auto kind : {reclib::Kind::Event, reclib::Kind::Display}) {
        const bool event = kind == reclib::Kind::Event;
        SCOPED_TRACE(event ? "event" : "display");
        const test::Cells csv = csv_and_xls(kind, "r");
        const std::string raw = test::xlrd_dump(p.dir.file("r.xls"));
        test::expect_same_cells(csv, test::xlrd_cells(raw));
        // The measured values are numbers in an event sheet, texts in a display sheet.
        const std::string cell = std::to_string(std::prev(csv.end())->first.first) + "\t2\t";
        EXPECT_NE(raw.find(cell + (event ? "number\t" : "text\t")), std::string::npos) << raw;
    }
}

TEST_F(Xlrd, ReportsOfTheOtherFamiliesHoldTheCsvValues) {
    for (const auto family :
         {reclib::Family::VU, reclib::Family::KL, reclib::Family::HN, reclib::Family::VQ})
        for (const auto kind : {reclib::Kind::Event, reclib::Kind::Display}) {
            SCOPED_TRACE(kind == reclib::Kind::Event ? "event" : "display");
            SCOPED_TRACE(reclib::family_name(family));
            test::Cells csv = csv_and_xls(kind, "vu", family);
            if (family == reclib::Family::HN) test::drop_csv_only_cells(csv);
            const std::string raw = test::xlrd_dump(p.dir.file("vu.xls"));
            test::expect_same_cells(csv, test::xlrd_cells(raw));
            const std::string cell = std::to_string(std::prev(csv.end())->first.first) + "\t2\t";
            // Text cells but in HN, whose values are numbers.
            const bool hn = family == reclib::Family::HN;
            EXPECT_NE(raw.find(cell + (hn ? "number\t" : "text\t")), std::string::npos) << raw;
        }
}

}  // namespace
}  // namespace qumbrel
