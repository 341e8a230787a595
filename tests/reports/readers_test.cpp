// Our sheets read by software nobody here wrote: xlrd (Debian's python3-xlrd) checks
// values, types, format strings, alignment, page breaks and the row rule.
#include <gtest/gtest.h>

#include "sample_sheet.h"
#include "test_util.h"

namespace qumbrel {
namespace {

class XlrdTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (const auto why = test::skip_reason_xlrd(); !why.empty()) GTEST_SKIP() << why;
    }
    std::string dump(const std::string& path) {
        int status = 0;
        const std::string out = test::xlrd_dump(path, status);
        EXPECT_EQ(status, 0) << out;
        return out;
    }
    testing::TempDir dir;
    ExcelFile x;
};

TEST_F(XlrdTest, ValuesTypesFormatsAlignmentAndPageBreaks) {
    ASSERT_EQ(test::write_sample_sheet(x, dir.file("sample.xls")), 0);
    EXPECT_EQ(dump(dir.file("sample.xls")),
              "0\t0\ttext\tRecorder\tGeneral\t1\t0\n"
              "0\t1\ttext\tVT210 \xE2\x82\xAC \xC2\xB0"
              "C\tGeneral\t1\t0\n"
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

TEST_F(XlrdTest, RowsAcrossTheSignedLimitAndTheWrap) {
    x.CreateFile(dir.file("rows.xls"));
    x.WriteValue(0, 0, 3, 0, 32767, 1, std::int32_t{1}, 0);
    x.WriteValue(0, 0, 3, 0, 32768, 1, std::int32_t{2}, 0);
    x.WriteValue(0, 0, 3, 0, 65536, 2, std::int32_t{3}, 0);  // back at the top
    x.WriteValue(0, 0, 3, 0, 1, 3, std::int32_t{-5}, 0);     // readers take it unsigned
    ASSERT_EQ(x.CloseFile(), 0);
    const std::string out = dump(dir.file("rows.xls"));
    for (const char* cell : {"0\t1\tnumber\t3.0\t", "0\t2\tnumber\t65531.0\t",
                             "32766\t0\tnumber\t1.0\t", "32768\t0\tnumber\t2.0\t"})
        EXPECT_NE(out.find(cell), std::string::npos) << cell << "\n" << out;
    EXPECT_EQ(out.find("32767\t"), std::string::npos) << out;  // unreachable row
}

}  // namespace
}  // namespace qumbrel
