#include "frame/log.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;

namespace {

void fail_with(Program& ctx, std::string_view where, int step, int number) {
    try {
        throw VbError(number, "File not found");
    } catch (...) {
        report_trapped(ctx, where, step, "extra text");
    }
}

TEST(ErrorLog, LineHasItsFieldsInOrder) {
    TestProgram p("de-DE");
    fail_with(*p, "fkt_convertmain()", 2, 53);
    EXPECT_EQ(read_file(p->program_file("error.log")),
              "02.01.2024 03:04:05 fkt_convertmain() ; Errorsource: qumbrel; Errornumber: 53; "
              "Errorline: 2; Errordescription: File not found\r\n");
    EXPECT_EQ(p->err.number, 0);  // the trap clears the error after reporting

    TestProgram us("en-US");
    report_plain(*us, "Pfad existiert nicht /x");
    EXPECT_EQ(read_file(us->program_file("error.log")),
              "1/2/2024 3:04:05 AM Pfad existiert nicht /x ; Errorsource: ; Errornumber: 0; "
              "Errorline: 0; Errordescription: \r\n");
}

TEST(ErrorLog, ReportGoesToAnAlertOrTheEventLogAndSurvivesAnUnwritableLog) {
    TestProgram p("de-DE");
    fail_with(*p, "fkt_x", 4, 53);
    ASSERT_EQ(p.host.alerts.size(), 1u);
    EXPECT_EQ(p.host.alerts[0].text,
              "Function: fkt_x\r\nVersion: 1.0.0\r\nError Number: 53\r\nError Line: 4\r\n"
              "Error Description: File not found\r\nextra text\r\n\r\n\r\n03:04");
    EXPECT_TRUE(p.events.entries.empty());

    // A service run writes the event log and opens no window.
    TestProgram svc;
    svc->run.bStartsFromService = kTrue;
    fail_with(*svc, "fkt_x", 1, 53);
    EXPECT_TRUE(svc.host.alerts.empty());
    ASSERT_EQ(svc.events.entries.size(), 1u);
    EXPECT_EQ(svc.events.entries[0].id, 0xC0000003u);
    EXPECT_EQ(svc.events.entries[0].text,
              "qumbrel Version: 1.0.0\nFile not found  extra text\nfkt_x\nErrorline 1");
    EXPECT_FALSE(read_file(svc->program_file("error.log")).empty());

    // An unwritable log loses the line only: the user is still told.
    TestProgram lost;
    lost->info.folder = lost->program_file("missing/folder");
    fail_with(*lost, "fkt_x", 1, 53);
    EXPECT_EQ(lost.host.alerts.size(), 1u);
}

TEST(StatusList, ListsOnlyWhenUpLogsOnlyInDebugModeAndClearsPast32760Lines) {
    TestProgram p("de-DE");
    p.host.up = false;
    p->run.bDebug = kTrue;
    EXPECT_FALSE(fkt_lststatus(*p, "hidden"));
    EXPECT_FALSE(std::filesystem::exists(p->program_file("status.log")));

    p.host.up = true;
    p->run.bDebug = kFalse;
    EXPECT_TRUE(fkt_lststatus(*p, "shown"));  // not logged: status.log holds "logged" alone
    EXPECT_EQ(p.host.pumps, 1);

    p->run.bDebug = kTrue;
    EXPECT_TRUE(fkt_lststatus(*p, "logged"));
    EXPECT_EQ(read_file(p->program_file("status.log")), "02.01.2024 03:04:05 logged\r\n");
    EXPECT_EQ(p.host.lines, (std::vector<std::string>{"shown", "logged"}));

    // The list is cleared once it holds more than 32760 lines.
    p.host.lines.assign(32760, "x");
    fkt_lststatus(*p, "line 32761");
    EXPECT_EQ(p.host.lines.size(), 32761u);
    fkt_lststatus(*p, "next");
    ASSERT_EQ(p.host.lines.size(), 1u);
    EXPECT_EQ(p.host.lines[0], "next");
}

TEST(EventLog, OnlyServiceRunsWriteWithTheIdOfTheirType) {
    TestProgram p;
    fkt_logevent(*p, "not a service run", kTrue, 2);
    EXPECT_TRUE(p.events.entries.empty());
    p->run.bStartsFromService = kTrue;
    fkt_logevent(*p, "Qumbrel start mainprocedure...", kFalse, 2);
    ASSERT_EQ(p.events.entries.size(), 1u);
    EXPECT_EQ(p.events.entries[0].id, 0x40000001u);
    EXPECT_EQ(p.events.entries[0].text, "Qumbrel start mainprocedure...");
}

}  // namespace
