// PrintFile, PrintFile2, the report's print status lines and cSetDfltPrinter against a
// print service double that records what it is asked.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "frame/errors.h"
#include "reports/printer.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

struct Printed {
    std::string printer;
    PageOrientation orientation;
    std::vector<std::string> lines;
    bool ended = false;
};

class FakePrinters : public PrinterSystem {
  public:
    std::vector<std::string> names{"Laser A", "Matrix B"};
    std::string serverDefault = "Laser A";
    std::string userDefault;  // empty: none chosen
    bool down = false;
    std::vector<Printed> jobs;

    class Job : public PrintJob {
      public:
        explicit Job(Printed& p) : p_(p) {}
        void print_line(std::string_view line) override { p_.lines.emplace_back(line); }
        void end() override { p_.ended = true; }

      private:
        Printed& p_;
    };

    void check() const {
        if (down) throw VbError(kPrinterError, "CUPS: the print service is not running");
    }
    std::vector<std::string> printers() override {
        check();
        return names;
    }
    std::unique_ptr<PrintJob> start_job(const std::string& printer, PageOrientation o,
                                        const std::string&) override {
        check();
        jobs.reserve(8);
        jobs.push_back({printer, o, {}, false});
        return std::make_unique<Job>(jobs.back());
    }
    DefaultPrinter default_printer() override {
        check();
        if (!userDefault.empty()) return {userDefault, userDefault != serverDefault};
        return {serverDefault, false};
    }
    void set_default(const std::string& p) override {
        check();
        userDefault = p;
    }
    void clear_chosen_default() override { userDefault.clear(); }
};

class PrintFileTest : public ::testing::Test {
  protected:
    PrintFileTest() {
        testing::write_file(tp.dir.file("lang.lng"), "[MSG]\nprintfile=\"Drucke \"\n");
        tp->opt.language = tp.dir.file("lang.lng");
        tp->state<PrintState>().system = fake;
        tp->state<PrintState>().current = "Laser A";
        report = tp.dir.file("report.tmp");
        testing::write_file(report, "Recorder;VT210;\r\nDate;Time;\r\n1;2;3;\r\n");
    }
    std::string error_log() { return testing::read_file(tp->program_file("error.log")); }

    testing::TestProgram tp;
    std::shared_ptr<FakePrinters> fake = std::make_shared<FakePrinters>();
    std::string report;
};

TEST_F(PrintFileTest, PrintsEachLineOnTheNamedPrinterAndRestoresTheCurrentOne) {
    tp->opt.printer = "Matrix B";
    PrintFile(*tp, report, 2);
    ASSERT_EQ(fake->jobs.size(), 1u);
    EXPECT_EQ(fake->jobs[0].printer, "Matrix B");
    EXPECT_EQ(fake->jobs[0].orientation, PageOrientation::Landscape);
    EXPECT_EQ(fake->jobs[0].lines,
              (std::vector<std::string>{"Recorder;VT210;", "Date;Time;", "1;2;3;"}));
    EXPECT_TRUE(fake->jobs[0].ended);
    EXPECT_EQ(tp.host.pumps, 3);  // pending events run between lines
    EXPECT_EQ(tp->state<PrintState>().current, "Laser A");
    EXPECT_EQ(fake->userDefault, "");  // the system's default is not touched
    EXPECT_EQ(error_log(), "");
}

TEST_F(PrintFileTest, MissingOrEmptyPrinterPrintsNothingAndSaysNothing) {
    tp->opt.printer = "";
    PrintFile(*tp, report, 1);
    tp->opt.printer = "laser a";  // names compare exactly
    PrintFile(*tp, report, 1);
    tp->opt.printer2 = "Gone";
    PrintFile2(*tp, report, 1);
    EXPECT_TRUE(fake->jobs.empty());
    EXPECT_EQ(error_log(), "");
    EXPECT_TRUE(tp.host.alerts.empty());
}

TEST_F(PrintFileTest, FailuresAreLoggedUnderTheirFunctionAndNotFatal) {
    tp->opt.printer = "Laser A";
    tp->opt.printer2 = "Laser A";
    fake->down = true;
    PrintFile(*tp, report, 1);
    EXPECT_NE(error_log().find("PrintFile()"), std::string::npos);
    EXPECT_EQ(error_log().find("PrintFile2()"), std::string::npos);
    fake->down = false;
    PrintFile2(*tp, tp.dir.file("no-such-report.tmp"), 1);
    EXPECT_NE(error_log().find("PrintFile2()"), std::string::npos);
    EXPECT_TRUE(fake->jobs.empty());
    EXPECT_EQ(tp->state<PrintState>().current, "Laser A");
}

TEST_F(PrintFileTest, WithoutAPrintServiceNothingIsPrinted) {
    tp->state<PrintState>().system.reset();
    tp->opt.printer = "Laser A";
    PrintFile(*tp, report, 1);
    EXPECT_EQ(error_log(), "");
}

TEST_F(PrintFileTest, ReportStatusLinesAndOrder) {
    tp->opt.printfile = kTrue;
    tp->opt.printfile2 = kTrue;
    tp->opt.printer = "";  // no match: nothing printed, the lines still appear
    tp->opt.printer2 = "Matrix B";
    tp->opt.printerorientationland = -1;
    print_report(*tp, "VT_0815", report, false);
    EXPECT_EQ(tp.host.lines,
              (std::vector<std::string>{"Drucke VT_0815...", "Drucke VT_0815 finished",
                                        "Drucke VT_0815...", "Drucke VT_0815 finished"}));
    ASSERT_EQ(fake->jobs.size(), 1u);
    EXPECT_EQ(fake->jobs[0].printer, "Matrix B");
    EXPECT_EQ(fake->jobs[0].orientation, PageOrientation::Landscape);
}

TEST_F(PrintFileTest, SecondPrinterAloneAndXlsReports) {
    tp->opt.printfile2 = kTrue;
    tp->opt.printer = "Laser A";
    tp->opt.printer2 = "Laser A";
    print_report(*tp, "r", report, false);
    ASSERT_EQ(fake->jobs.size(), 1u);
    EXPECT_EQ(fake->jobs[0].orientation, PageOrientation::Portrait);

    tp.host.lines.clear();
    tp->opt.printfile = kTrue;
    print_report(*tp, "r", tp.dir.file("r.xls"), true);
    EXPECT_EQ(fake->jobs.size(), 1u);
    const std::string only =
        "Drucke r not posible, only csv-format or Excel with template posible.";
    EXPECT_EQ(tp.host.lines, (std::vector<std::string>{only, only}));
}

TEST_F(PrintFileTest, DefaultPrinterIsRestoredWithoutPinningTheServersChoice) {
    {
        cSetDfltPrinter d(*tp);
        EXPECT_EQ(d.GetDefaultPrinter(), "Laser A");
        d.SetPrinterAsDefault("Matrix B");
        EXPECT_EQ(d.GetDefaultPrinter(), "Matrix B");
    }
    EXPECT_EQ(fake->userDefault, "");  // the server's default again, not a pinned copy

    fake->userDefault = "Matrix B";  // the user's own choice is written back
    {
        cSetDfltPrinter d(*tp);
        d.SetPrinterAsDefault("Laser A");
        EXPECT_EQ(fake->userDefault, "Laser A");
    }
    EXPECT_EQ(fake->userDefault, "Matrix B");

    {
        cSetDfltPrinter d(*tp);
        d.SetPrinterAsDefault("Matrix B");  // already default: nothing changes
        fake->userDefault = "x";
    }
    EXPECT_EQ(fake->userDefault, "x");
    EXPECT_EQ(error_log(), "");
}

}  // namespace
}  // namespace qumbrel
