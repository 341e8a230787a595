// Our sheets read by software nobody here wrote: xlrd (Debian's python3-xlrd) checks
// values, types, format strings, alignment and page breaks.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "sample_sheet.h"
#include "test_util.h"

namespace qumbrel {
namespace {

const char* const kPython = "/usr/bin/python3";  // Debian's modules; not a pyenv python

std::string run(const std::string& command, int& status) {
    std::string out;
    FILE* p = ::popen(command.c_str(), "r");
    if (!p) {
        status = -1;
        return out;
    }
    char buf[4096];
    while (std::size_t n = std::fread(buf, 1, sizeof buf, p)) out.append(buf, n);
    status = ::pclose(p);
    return out;
}

class XlrdTest : public ::testing::Test {
  protected:
    void SetUp() override {
        int status = 0;
        if (!std::filesystem::exists(kPython)) GTEST_SKIP() << "no /usr/bin/python3";
        run(std::string(kPython) + " -c 'import xlrd' 2>/dev/null", status);
        if (status != 0) GTEST_SKIP() << "python3-xlrd is not installed";
    }
    std::string dump(const std::string& path) {
        int status = 0;
        const std::string out = run(std::string(kPython) + " " + QUMBREL_SOURCE_DIR +
                                        "/tests/reports/xlrd_dump.py '" + path + "' 2>&1",
                                    status);
        EXPECT_EQ(status, 0) << out;
        return out;
    }
    test::TempDir dir;
};

TEST_F(XlrdTest, ValuesTypesFormatsAlignmentAndPageBreaks) {
    ExcelFile x;
    const std::string path = dir.file("sample.xls");
    ASSERT_EQ(test::write_sample_sheet(x, path), 0);
    EXPECT_EQ(dump(path),
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
    ExcelFile x;
    const std::string path = dir.file("rows.xls");
    x.CreateFile(path);
    x.WriteValue(0, 0, 3, 0, 32767, 1, std::int32_t{1}, 0);
    x.WriteValue(0, 0, 3, 0, 32768, 1, std::int32_t{2}, 0);
    x.WriteValue(0, 0, 3, 0, 65536, 2, std::int32_t{3}, 0);  // back at the top
    x.WriteValue(0, 0, 3, 0, 1, 3, std::int32_t{-5}, 0);     // readers take it unsigned
    ASSERT_EQ(x.CloseFile(), 0);
    const std::string out = dump(path);
    EXPECT_NE(out.find("0\t1\tnumber\t3.0\t"), std::string::npos) << out;
    EXPECT_NE(out.find("0\t2\tnumber\t65531.0\t"), std::string::npos) << out;
    EXPECT_NE(out.find("32766\t0\tnumber\t1.0\t"), std::string::npos) << out;
    EXPECT_NE(out.find("32768\t0\tnumber\t2.0\t"), std::string::npos) << out;
    EXPECT_EQ(out.find("32767\t"), std::string::npos) << out;  // unreachable row
}

}  // namespace
}  // namespace qumbrel
