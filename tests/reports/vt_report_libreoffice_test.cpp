// An XLS report read by LibreOffice (libreoffice-calc-nogui, converted to CSV in one call)
// holds the values of the CSV report of the same file, where the formats agree. Slow:
// LibreOffice takes seconds to start.
#include <filesystem>

#include "vt_report_readers.h"

namespace qumbrel {
namespace {

using VtLibreOffice = test::VtReaders;

TEST_F(VtLibreOffice, EventAndDisplaySheetsHoldTheCsvValues) {
    const std::string soffice = test::find_soffice();
    if (soffice.empty()) GTEST_SKIP() << "LibreOffice (libreoffice-calc-nogui) is not installed";
    const test::Cells ev = csv_and_xls(reclib::Kind::Event, "ev");
    const test::Cells di = csv_and_xls(reclib::Kind::Display, "di");
    ASSERT_EQ(test::soffice_to_csv(soffice, p.dir.file("profile"), p.dir.file("lo"),
                                   {p.dir.file("ev.xls"), p.dir.file("di.xls")}, false),
              0);
    for (const auto& [name, mine] : {std::pair{"ev", &ev}, std::pair{"di", &di}}) {
        SCOPED_TRACE(name);
        const std::string out = p.dir.file("lo/" + std::string(name) + ".csv");
        ASSERT_TRUE(std::filesystem::exists(out)) << "LibreOffice did not load " << name;
        test::expect_same_cells(*mine, test::csv_cells(testing::read_file(out)));
    }
}

}  // namespace
}  // namespace qumbrel
