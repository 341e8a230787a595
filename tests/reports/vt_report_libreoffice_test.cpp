// An XLS report read by LibreOffice (libreoffice-calc-nogui, converted to CSV in one call)
// holds the values of the CSV report of the same file, where the formats agree. Slow:
// LibreOffice takes seconds to start.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "vt_report_readers.h"

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

struct VtLibreOffice : ::testing::Test, test::VtReportFixture {
    VtLibreOffice() : VtReportFixture("en-US") {}
};

TEST_F(VtLibreOffice, EventAndDisplaySheetsHoldTheCsvValues) {
    const std::string soffice = find_soffice();
    if (soffice.empty()) GTEST_SKIP() << "LibreOffice (libreoffice-calc-nogui) is not installed";
    std::map<std::string, test::Cells> csv;
    for (const auto& [kind, name] :
         {std::pair{reclib::Kind::Event, "ev"}, std::pair{reclib::Kind::Display, "di"}}) {
        auto o = test::vt_sim(kind, 3, 25);
        o.messages = 2;
        o.batch = true;
        const std::string src = make(o, std::string(name) + ".vt");
        options({{"messageinclusive", "1"}});
        csv[name] = test::csv_cells(convert(src, name));
        options({{"messageinclusive", "1"}, {"targetformat", "1"}});
        convert(src, name);
    }
    const std::string command =
        soffice + " -env:UserInstallation=file://" + p.dir.file("profile") +
        " --headless --infilter=\"MS Excel 4.0\" --convert-to "
        "'csv:Text - txt - csv (StarCalc):44,34,76,1,,0,true,false,false' --outdir " +
        p.dir.file("lo") + " " + p.dir.file("ev.xls") + " " + p.dir.file("di.xls") +
        " >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    for (const char* name : {"ev", "di"}) {
        const std::string out = p.dir.file("lo/" + std::string(name) + ".csv");
        ASSERT_TRUE(fs::exists(out)) << "LibreOffice did not load " << name << ".xls";
        const test::Cells& mine = csv[name];
        int channelRow = -1;
        for (const auto& [at, v] : mine) {
            if (v == "Channel No") channelRow = at.first;
        }
        ASSERT_NE(channelRow, -1);
        SCOPED_TRACE(name);
        test::expect_same_cells(mine, test::csv_cells(testing::read_file(out)),
                                [&](const std::pair<int, int>& at) {
                                    return at.first == channelRow && at.second == 1;
                                });
    }
}

}  // namespace
}  // namespace qumbrel
