#include "frame/log.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "frame/eventlogger.h"
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

TEST(ErrorLog, AlertTextOutsideAServiceRun) {
    TestProgram p("de-DE");
    fail_with(*p, "fkt_x", 4, 53);
    ASSERT_EQ(p.host.alerts.size(), 1u);
    const AlertRequest& a = p.host.alerts[0];
    EXPECT_EQ(a.text,
              "Function: fkt_x\r\nVersion: 1.0.0\r\nError Number: 53\r\nError Line: 4\r\n"
              "Error Description: File not found\r\nextra text\r\n\r\n\r\n03:04");
    EXPECT_EQ(a.seconds, 0);
    EXPECT_EQ(a.red, 255);
    EXPECT_EQ(a.green, 200);
    EXPECT_EQ(a.blue, 200);
    EXPECT_TRUE(p.events.entries.empty());
}

TEST(ErrorLog, ServiceRunWritesTheEventLogAndOpensNoWindow) {
    TestProgram p;
    p->run.bStartsFromService = kTrue;
    fail_with(*p, "fkt_x", 1, 53);
    EXPECT_TRUE(p.host.alerts.empty());
    ASSERT_EQ(p.events.entries.size(), 1u);
    const auto& e = p.events.entries[0];
    EXPECT_EQ(e.type, 4);
    EXPECT_EQ(e.id, 0xC0000003u);
    EXPECT_EQ(e.source, "qumbrel");
    EXPECT_EQ(e.text, "qumbrel Version: 1.0.0\nFile not found  extra text\nfkt_x\nErrorline 1");
    EXPECT_FALSE(read_file(p->program_file("error.log")).empty());
}

TEST(ErrorLog, UnwritableLogLosesTheLineOnly) {
    TestProgram p;
    p->info.folder = p->program_file("missing/folder");
    fail_with(*p, "fkt_x", 1, 53);
    EXPECT_EQ(p.host.alerts.size(), 1u);  // the user is still told
}

TEST(StatusList, ListsOnlyWhenUpAndLogsOnlyInDebugMode) {
    TestProgram p("de-DE");
    p.host.up = false;
    p->run.bDebug = kTrue;
    EXPECT_FALSE(fkt_lststatus(*p, "hidden"));
    EXPECT_FALSE(std::filesystem::exists(p->program_file("status.log")));

    p.host.up = true;
    p->run.bDebug = kFalse;
    EXPECT_TRUE(fkt_lststatus(*p, "shown"));
    EXPECT_FALSE(std::filesystem::exists(p->program_file("status.log")));
    EXPECT_EQ(p.host.pumps, 1);

    p->run.bDebug = kTrue;
    EXPECT_TRUE(fkt_lststatus(*p, "logged"));
    EXPECT_EQ(read_file(p->program_file("status.log")), "02.01.2024 03:04:05 logged\r\n");
    EXPECT_EQ(p.host.lines, (std::vector<std::string>{"shown", "logged"}));
}

TEST(StatusList, ClearsWhenItHoldsMoreThan32760Lines) {
    TestProgram p;
    p.host.lines.assign(32760, "x");
    fkt_lststatus(*p, "line 32761");
    EXPECT_EQ(p.host.lines.size(), 32761u);
    fkt_lststatus(*p, "next");
    ASSERT_EQ(p.host.lines.size(), 1u);
    EXPECT_EQ(p.host.lines[0], "next");
}

TEST(EventLog, OnlyServiceRunsAndKnownTypesWrite) {
    TestProgram p;
    fkt_logevent(*p, "not a service run", kTrue, 2);
    EXPECT_TRUE(p.events.entries.empty());
    p->run.bStartsFromService = kTrue;
    fkt_logevent(*p, "Qumbrel start mainprocedure...", kFalse, 2);
    ASSERT_EQ(p.events.entries.size(), 1u);
    EXPECT_EQ(p.events.entries[0].id, 0x40000001u);
    EXPECT_EQ(p.events.entries[0].text, "Qumbrel start mainprocedure...");

    cls_EventLogger logger(*p);
    EXPECT_FALSE(logger.WriteLog("ignored", 5));
    EXPECT_FALSE(logger.WriteLog("ignored", 0));
    EXPECT_TRUE(logger.WriteLog("ok", 1));
    EXPECT_TRUE(logger.WriteLog("warn", 3));
    ASSERT_EQ(p.events.entries.size(), 3u);
    EXPECT_EQ(p.events.entries[1].id, 0u);
    EXPECT_EQ(p.events.entries[2].id, 0x80000002u);
    EXPECT_TRUE(logger.WriteLogEx({"a", "b", "c"}, 2, 2));
    EXPECT_EQ(p.events.entries.back().text, "a\nb");
}

}  // namespace
