// PrintFile, PrintFile2 and the report's print status lines against a print service
// double that records what it is asked. The real queues, with the lines and orientation
// each job gets, are printed to in tests/platform/cups_print_test.cpp.
#include <gtest/gtest.h>

#include "frame/errors.h"
#include "reports/printer.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

using Lines = std::vector<std::string>;

// Logs each job as its printer and orientation, its lines, and "end".
class FakePrinters : public PrinterSystem {
  public:
    bool down = false;
    Lines log;

    struct Job : PrintJob {
        explicit Job(Lines& log) : log(log) {}
        void print_line(std::string_view line) override { log.emplace_back(line); }
        void end() override { log.push_back("end"); }
        Lines& log;
    };

    Lines printers() override {
        if (down) throw VbError(kPrinterError, "CUPS: the print service is not running");
        return {"Laser A", "Matrix B"};
    }
    std::unique_ptr<PrintJob> start_job(const std::string& printer, PageOrientation o,
                                        const std::string&) override {
        log.push_back(printer + (o == PageOrientation::Landscape ? " landscape" : " portrait"));
        return std::make_unique<Job>(log);
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
    const Lines job = {"Recorder;VT210;", "Date;Time;", "1;2;3;"};
};

TEST_F(PrintFileTest, NoPrinterOrAnEmptyReportPrintsNothingAndSaysNothing) {
    tp->opt.printer = "";
    PrintFile(*tp, report, 1);
    tp->opt.printer = "laser a";  // names compare exactly
    PrintFile(*tp, report, 1);
    tp->opt.printer2 = "Gone";
    PrintFile2(*tp, report, 1);
    // An empty report starts no job: a print server refuses an empty document.
    tp->opt.printer = "Laser A";
    testing::write_file(tp.dir.file("empty.tmp"), "");
    PrintFile(*tp, tp.dir.file("empty.tmp"), 1);
    tp->state<PrintState>().system.reset();  // no print service at all
    PrintFile(*tp, report, 1);
    EXPECT_EQ(fake->log, Lines{});
    EXPECT_EQ(error_log(), "");
    EXPECT_TRUE(tp.host.alerts.empty());
}

TEST_F(PrintFileTest, AFailingServiceIsLoggedUnderTheFunctionAndNotFatal) {
    tp->opt.printer2 = "Laser A";
    fake->down = true;
    PrintFile2(*tp, report, 1);
    EXPECT_NE(error_log().find("PrintFile2()"), std::string::npos);
    EXPECT_EQ(fake->log, Lines{});
}

TEST_F(PrintFileTest, ReportStatusLinesOrientationAndXlsReports) {
    tp->opt.printfile = tp->opt.printfile2 = kTrue;
    tp->opt.printer = "";  // no match: nothing printed, the lines still appear
    tp->opt.printer2 = "Matrix B";
    tp->opt.printerorientationland = -1;
    print_report(*tp, "VT_0815", report, false);
    tp->opt.printerorientationland = 0;
    print_report(*tp, "VT_0815", report, false);
    const std::string head = "Drucke VT_0815";
    EXPECT_EQ(tp.host.lines,
              (Lines{head + "...", head + " finished", head + "...", head + " finished",
                     head + "...", head + " finished", head + "...", head + " finished"}));
    EXPECT_EQ(fake->log, (Lines{"Matrix B landscape", job[0], job[1], job[2], "end",
                                "Matrix B portrait", job[0], job[1], job[2], "end"}));
    tp.host.lines.clear();
    fake->log.clear();
    print_report(*tp, "r", tp.dir.file("r.xls"), true);
    EXPECT_EQ(fake->log, Lines{});
    const std::string only =
        "Drucke r not posible, only csv-format or Excel with template posible.";
    EXPECT_EQ(tp.host.lines, (Lines{only, only}));
}

}  // namespace
}  // namespace qumbrel
