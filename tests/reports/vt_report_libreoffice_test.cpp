// Our sheets read by LibreOffice (libreoffice-calc-nogui), converted to CSV with text
// quoted in one call, as it takes seconds to start: a sample sheet's values and types, and
// XLS reports that hold the values of the CSV report of the same file where formats agree.
#include <filesystem>

#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using LibreOffice = test::VtReaders;

TEST_F(LibreOffice, ReadsTheSampleSheetAndTheReports) {
    const std::string soffice = "/usr/bin/soffice";
    if (!std::filesystem::exists(soffice))
        GTEST_SKIP() << "LibreOffice (libreoffice-calc-nogui) is not installed";
    ExcelFile x;
    ASSERT_EQ(test::write_sample_sheet(x, p.dir.file("sample.xls")), 0);
    const test::Cells ev = csv_and_xls(reclib::Kind::Event, "ev");
    const test::Cells di = csv_and_xls(reclib::Kind::Display, "di");
    const test::Cells vu = csv_and_xls(reclib::Kind::Display, "vu", reclib::Family::VU);
    const test::Cells kl = csv_and_xls(reclib::Kind::Event, "kl", reclib::Family::KL);
    const test::Cells vq = csv_and_xls(reclib::Kind::Display, "vq", reclib::Family::VQ);
    test::Cells hn = csv_and_xls(reclib::Kind::Event, "hn", reclib::Family::HN);
    test::drop_csv_only_cells(hn);
    std::string command = soffice + " -env:UserInstallation=file://" + p.dir.file("profile") +
                          " --headless --infilter=\"MS Excel 4.0\" --convert-to "
                          "'csv:Text - txt - csv (StarCalc):44,34,76,1,,0,true,false,true' "
                          "--outdir " +
                          p.dir.file("lo");
    for (const char* sheet : {"sample", "ev", "di", "vu", "kl", "hn", "vq"})
        command += " " + p.dir.file(std::string(sheet) + ".xls");
    command += " >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    // soffice exits 0 even when a load fails: each output must exist.
    const auto read = [&](const std::string& name) {
        const std::string out = p.dir.file("lo/" + name + ".csv");
        EXPECT_TRUE(std::filesystem::exists(out)) << "LibreOffice did not load " << name;
        return testing::read_file(out);
    };
    EXPECT_EQ(read("sample"),
              "\"Recorder\",\"VT210 \xE2\x82\xAC \xC2\xB0\x43\",,\n"  // € °C
              "\"100\",42,,\n"
              "21.5,45000.5,0.333333333333333,-1234567.125\n"
              "\"" +
                  std::string(255, 'z') + "\",,,\n");  // an empty label reads as no cell
    for (const auto& [name, mine] :
         {std::pair{"ev", &ev}, std::pair{"di", &di}, std::pair{"vu", &vu}, std::pair{"kl", &kl},
          std::pair{"vq", &vq}, std::pair{"hn", static_cast<const test::Cells*>(&hn)}}) {
        SCOPED_TRACE(name);
        test::expect_same_cells(*mine, test::csv_cells(read(name)));
    }
}

}  // namespace
}  // namespace qumbrel
