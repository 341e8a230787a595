// Our sheets read by LibreOffice (libreoffice-calc-nogui), converted to CSV in one call:
// values and types (text quoted, numbers not). Slow: LibreOffice takes seconds to start.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "sample_sheet.h"
#include "test_util.h"

namespace qumbrel {
namespace {

namespace fs = std::filesystem;

std::string find_soffice() {
    for (const char* p :
         {"/usr/bin/soffice", "/usr/bin/libreoffice", "/usr/lib/libreoffice/program/soffice"}) {
        if (fs::exists(p)) return p;
    }
    return {};
}

TEST(LibreOfficeTest, ReadsValuesAndTypes) {
    const std::string soffice = find_soffice();
    if (soffice.empty()) GTEST_SKIP() << "LibreOffice (libreoffice-calc-nogui) is not installed";
    test::TempDir dir;
    ExcelFile x;
    ASSERT_EQ(test::write_sample_sheet(x, dir.file("sample.xls")), 0);

    // A longer sheet of numbers, labels and integers, as a report has them.
    x.CreateFile(dir.file("long.xls"));
    x.SetFont("Arial", 10, 0);
    const auto value = [](int r) { return r * 0.37 - 100.125; };
    for (int r = 1; r <= 2000; ++r) {
        x.WriteValue(2, 0, 1, 0, r, 1, "Zeile " + std::to_string(r), 0);
        x.WriteValue(1, 0, 3, 0, r, 2, value(r), 4);
        x.WriteValue(0, 0, 3, 0, r, 3, std::int32_t{r}, 0);
    }
    ASSERT_EQ(x.CloseFile(), 0);

    const std::string command =
        soffice + " -env:UserInstallation=file://" + dir.file("profile") +
        " --headless --infilter=\"MS Excel 4.0\" --convert-to "
        "'csv:Text - txt - csv (StarCalc):44,34,76,1,,0,true,false,true' --outdir " +
        dir.file("out") + " " + dir.file("sample.xls") + " " + dir.file("long.xls") +
        " >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    // soffice exits 0 even when a load fails: the output must exist.
    ASSERT_TRUE(fs::exists(dir.file("out/sample.csv")));
    ASSERT_TRUE(fs::exists(dir.file("out/long.csv")));

    EXPECT_EQ(test::read_all(dir.file("out/sample.csv")),
              "\"Recorder\",\"VT210 \xE2\x82\xAC \xC2\xB0"
              "C\",,\n"
              "\"100\",42,,\n"
              "21.5,45000.5,0.333333333333333,-1234567.125\n"
              "\"" +
                  std::string(255, 'z') + "\",,,\n");  // an empty label reads as no cell
    // Row by row: text and integer exactly; LibreOffice exports doubles to 15 significant
    // digits with its own rounding, so those compare within that precision.
    std::istringstream got(test::read_all(dir.file("out/long.csv")));
    std::string g;
    int mismatches = 0;
    for (int r = 1; r <= 2000; ++r) {
        ASSERT_TRUE(std::getline(got, g)) << "LibreOffice's CSV ends at row " << r;
        const std::string head = "\"Zeile " + std::to_string(r) + "\",";
        const std::string tail = "," + std::to_string(r);
        const bool ok = g.starts_with(head) && g.ends_with(tail) &&
                        std::abs(std::strtod(g.c_str() + head.size(), nullptr) - value(r)) <
                            1e-12 * std::max(1.0, std::abs(value(r)));
        if (!ok && ++mismatches <= 5) ADD_FAILURE() << "row " << r << ": " << g;
    }
    EXPECT_EQ(mismatches, 0);
    EXPECT_FALSE(std::getline(got, g)) << "extra line: " << g;
}

}  // namespace
}  // namespace qumbrel
