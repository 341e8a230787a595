// Our sheets read by LibreOffice (libreoffice-calc-nogui), converted to CSV in one call:
// values and types (text quoted, numbers not). Slow: LibreOffice takes seconds to start.
#include <gtest/gtest.h>

#include <filesystem>

#include "sample_sheet.h"
#include "test_util.h"

namespace qumbrel {
namespace {

TEST(LibreOfficeTest, ReadsValuesAndTypes) {
    const std::string soffice = test::find_soffice();
    if (soffice.empty()) GTEST_SKIP() << "LibreOffice (libreoffice-calc-nogui) is not installed";
    testing::TempDir dir;
    ExcelFile x;
    ASSERT_EQ(test::write_sample_sheet(x, dir.file("sample.xls")), 0);
    ASSERT_EQ(test::soffice_to_csv(soffice, dir.file("profile"), dir.file("out"),
                                   {dir.file("sample.xls")}, true),
              0);
    // soffice exits 0 even when a load fails: the output must exist.
    ASSERT_TRUE(std::filesystem::exists(dir.file("out/sample.csv")));
    EXPECT_EQ(testing::read_file(dir.file("out/sample.csv")),
              "\"Recorder\",\"VT210 \xE2\x82\xAC \xC2\xB0"
              "C\",,\n"
              "\"100\",42,,\n"
              "21.5,45000.5,0.333333333333333,-1234567.125\n"
              "\"" +
                  std::string(255, 'z') + "\",,,\n");  // an empty label reads as no cell
}

}  // namespace
}  // namespace qumbrel
