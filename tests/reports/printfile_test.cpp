// PrintFile, PrintFile2 and the report's print status lines against a print service
// double that records what it is asked. The real queues are printed to in
// tests/platform/cups_print_test.cpp.
#include <gtest/gtest.h>

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

    std::vector<std::string> printers() override {
        if (down) throw VbError(kPrinterError, "CUPS: the print service is not running");
        return {"Laser A", "Matrix B"};
    }
    std::unique_ptr<PrintJob> start_job(const std::string& printer, PageOrientation o,
                                        const std::string&) override {
        jobs.reserve(8);
        jobs.push_back({printer, o, {}, false});
        return std::make_unique<Job>(jobs.back());
    }
    DefaultPrinter default_printer() override { return {"Laser A", false}; }
    void set_default(const std::string&) override { ADD_FAILURE() << "default changed"; }
    void clear_chosen_default() override {}
};

class PrintFileTest : public ::testing::Test {
  protected:
    PrintFileTest() {
        testing::write_file(tp.dir.file("lang.lng"), "[MSG]\nprintfile=\"Drucke \"\n");
        tp->opt.language = tp.dir.file("lang.lng");
        tp->state<PrintState>().system = fake;
        tp->state<PrintState>().current = "Laser A";
        testing::write_file(report, "Recorder;VT210;\r\nDate;Time;\r\n1;2;3;\r\n");
    }
    std::string error_log() { return testing::read_file(tp->program_file("error.log")); }

    testing::TestProgram tp;
    std::shared_ptr<FakePrinters> fake = std::make_shared<FakePrinters>();
    std::string report = tp.dir.file("report.tmp");
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
    EXPECT_EQ(error_log(), "");
}

TEST_F(PrintFileTest, MissingOrEmptyPrinterPrintsNothingAndSaysNothing) {
    tp->opt.printer = "";
    PrintFile(*tp, report, 1);
    tp->opt.printer = "laser a";  // names compare exactly
    PrintFile(*tp, report, 1);
    tp->opt.printer2 = "Gone";
    PrintFile2(*tp, report, 1);
    tp->state<PrintState>().system.reset();  // no print service at all
    tp->opt.printer = "Laser A";
    PrintFile(*tp, report, 1);
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

TEST_F(PrintFileTest, ReportStatusLinesOrientationAndXlsReports) {
    tp->opt.printfile = kTrue;
    tp->opt.printfile2 = kTrue;
    tp->opt.printer = "";  // no match: nothing printed, the lines still appear
    tp->opt.printer2 = "Matrix B";
    tp->opt.printerorientationland = -1;
    print_report(*tp, "VT_0815", report, false);
    EXPECT_EQ(tp.host.lines,
              (std::vector<std::string>{"Drucke VT_0815...", "Drucke VT_0815 finished",
                                        "Drucke VT_0815...", "Drucke VT_0815 finished"}));
    tp->opt.printerorientationland = 0;
    print_report(*tp, "VT_0815", report, false);
    ASSERT_EQ(fake->jobs.size(), 2u);
    EXPECT_EQ(fake->jobs[0].printer, "Matrix B");
    EXPECT_EQ(fake->jobs[0].orientation, PageOrientation::Landscape);
    EXPECT_EQ(fake->jobs[1].orientation, PageOrientation::Portrait);

    tp.host.lines.clear();
    print_report(*tp, "r", tp.dir.file("r.xls"), true);
    EXPECT_EQ(fake->jobs.size(), 2u);
    const std::string only =
        "Drucke r not posible, only csv-format or Excel with template posible.";
    EXPECT_EQ(tp.host.lines, (std::vector<std::string>{only, only}));
}

}  // namespace
}  // namespace qumbrel
