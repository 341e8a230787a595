// The service under systemd through a fake systemctl that keeps a unit's state: every
// button's operation in every state (missing, stopped, running), the unit file written and
// removed, and the XDG autostart entry of the Run key.
#include "automation/service_control.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "automation/autostart.h"
#include "tests/support/fake_systemctl.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

namespace fs = std::filesystem;

TEST(ServiceControl, EveryOperationInEveryState) {
    testing::TempDir dir;
    ServiceControl s;
    s.unitFolder = dir.file("units");
    s.binary = "/opt/q b/qumbrel-svc";
    s.home = "/srv/qumbrel";
    auto fake = std::make_shared<testing::FakeSystemctl>(s.unitFolder + "/" + kServiceUnit);
    s.runner = fake;

    // Missing: state 0; start, stop and uninstall are errors that change nothing.
    EXPECT_EQ(fkt_svcstate(s), kServiceMissing);
    std::string why;
    EXPECT_NE(fkt_svcstart(s, &why), 0);
    EXPECT_EQ(why, "the service is not installed");
    EXPECT_NE(fkt_svcstop(s), 0);
    EXPECT_NE(fkt_svcuninstall(s), 0);
    EXPECT_EQ(fkt_svcstarttype(s).binary, "");
    EXPECT_FALSE(fs::exists(s.unitFolder + "/" + kServiceUnit));

    // Installed: a unit that runs the service for the program folder, enabled, stopped.
    ASSERT_EQ(fkt_svcinstall(s, &why), 0) << why;
    const std::string unit = testing::read_file(s.unitFolder + "/" + kServiceUnit);
    EXPECT_NE(unit.find("ExecStart=\"/opt/q b/qumbrel-svc\" --home \"/srv/qumbrel\""),
              std::string::npos)
        << unit;
    EXPECT_NE(unit.find("Description=Service program for Tarnwick Qumbrel."), std::string::npos);
    EXPECT_EQ(fkt_svcstate(s), kServiceStopped);
    EXPECT_EQ(fkt_svcstarttype(s).startType, kStartAutomatic);
    EXPECT_EQ(fkt_svcstarttype(s).binary, s.binary);

    EXPECT_EQ(fkt_svcstart(s), 0);
    EXPECT_EQ(fkt_svcstate(s), kServiceRunning);
    EXPECT_EQ(fkt_svcstop(s), 0);
    EXPECT_EQ(fkt_svcstate(s), kServiceStopped);

    // Uninstalling a running service stops it first.
    EXPECT_EQ(fkt_svcstart(s), 0);
    EXPECT_EQ(fkt_svcuninstall(s, &why), 0) << why;
    EXPECT_FALSE(fake->running);
    EXPECT_FALSE(fs::exists(s.unitFolder + "/" + kServiceUnit));
    EXPECT_EQ(fkt_svcstate(s), kServiceMissing);
}

TEST(Autostart, TheEntryIsWrittenAndRemoved) {
    testing::TempDir dir;
    const char* old = std::getenv("XDG_CONFIG_HOME");
    const std::string saved = old ? old : "";
    ::setenv("XDG_CONFIG_HOME", dir.file("config").c_str(), 1);
    testing::TestProgram p("en-US");
    const std::string entry = autostart_entry_path(*p);
    EXPECT_EQ(entry, dir.file("config/autostart/qumbrel.desktop"));
    fkt_reg_autostart(*p, true, "/opt/qumbrel/qumbrel");
    EXPECT_NE(testing::read_file(entry).find("Exec=\"/opt/qumbrel/qumbrel\"\n"), std::string::npos);
    fkt_reg_autostart(*p, false);
    EXPECT_FALSE(fs::exists(entry));
    // A folder where the entry should be: reported under the function's name.
    fs::create_directories(entry + "/x");
    fkt_reg_autostart(*p, false);
    EXPECT_NE(testing::read_file(p->program_file("error.log")).find("fkt_reg_autostart()"),
              std::string::npos);
    if (old)
        ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
    else
        ::unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace qumbrel
