// The built qumbrel program in its automatic mode, headless, on VT files made by recsim:
// a running schedule stopped by SIGTERM, and a stop in the middle of a batch.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "tests/support/test_support.h"

using qumbrel::testing::read_file;
using qumbrel::testing::TempDir;
using qumbrel::testing::write_file;
namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

std::string sh_quote(const std::string& s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

struct Automatic : ::testing::Test {
    TempDir dir;
    std::string home = dir.file("home");
    std::string in = dir.file("in");
    std::string out = dir.file("out");
    std::string done = dir.file("done");
    std::string log = dir.file("run.out");
    std::string autostart = "1";
    pid_t pid = -1;

    void SetUp() override {
        for (const auto& d : {home, in, out, done}) fs::create_directories(d);
    }
    void TearDown() override {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }
    void write_options() {
        write_file(home + "/qumbrel.ini",
                   "[start]\nsheduler=6\nfiletyp=2\nautostart=" + autostart +
                       "\n[file]\ntargetformat=0\nbinfilemodus=0\nnoconversion=0\ntargetname=0\n"
                       "targetnameformat=>$O\nfileextension=csv\nsourcenamesametarget=0\n"
                       "alarminclusive=1\nmessageinclusive=1\nsourcepath=" +
                       in + "\ntargetpath=" + out + "\ntargetpathsourcefile=" + done +
                       "\nlanguage=" QUMBREL_BIN_DIR
                       "/english.lng\n"
                       "[userdefined]\nChannels=ALL\nTimeSelect=0\n");
    }

    std::string simulate(const std::string& rel, const std::string& kind = "event",
                         int samples = 25) {
        const std::string path = in + "/" + rel;
        fs::create_directories(fs::path(path).parent_path());
        const std::string cmd = sh_quote(std::string(QUMBREL_BIN_DIR) + "/recsim") +
                                " --family VT --kind " + kind + " --channels 3 --samples " +
                                std::to_string(samples) +
                                " --alarms 2 --messages 1 --start '2007-03-05 10:00:00' --out " +
                                sh_quote(path) + " >/dev/null";
        EXPECT_EQ(std::system(cmd.c_str()), 0) << cmd;
        return path;
    }

    // Starts qumbrel with its output in run.out.
    void launch(std::vector<std::string> args) {
        write_options();
        pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            const std::string program = std::string(QUMBREL_BIN_DIR) + "/qumbrel";
            std::vector<char*> argv{const_cast<char*>(program.c_str())};
            for (auto& a : args) argv.push_back(a.data());
            argv.push_back(nullptr);
            setenv("QUMBREL_HOME", home.c_str(), 1);
            setenv("QUMBREL_REGION", "en-US", 1);
            if (!freopen(log.c_str(), "w", stdout) || !freopen(log.c_str(), "a", stderr)) _exit(99);
            execv(program.c_str(), argv.data());
            _exit(98);
        }
    }
    static bool until(const std::function<bool()>& done, std::chrono::seconds limit) {
        for (const auto end = std::chrono::steady_clock::now() + limit;
             std::chrono::steady_clock::now() < end; std::this_thread::sleep_for(20ms))
            if (done()) return true;
        return false;
    }
    // Exit code, or -1 when it did not end in time, -2 when a signal ended it.
    int wait_exit() {
        int status = 0;
        if (!until([&] { return waitpid(pid, &status, WNOHANG) == pid; }, 30s)) return -1;
        pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -2;
    }
    bool wait_for(const std::vector<std::string>& paths) {
        return until(
            [&] {
                return std::all_of(paths.begin(), paths.end(),
                                   [](const auto& p) { return fs::exists(p); });
            },
            60s);
    }
    std::string output() const { return fs::exists(log) ? read_file(log) : ""; }
    std::vector<std::string> files_below(const std::string& root) const {
        std::vector<std::string> found;
        for (const auto& e : fs::recursive_directory_iterator(root))
            if (e.is_regular_file()) found.push_back(e.path().string().substr(root.size() + 1));
        std::sort(found.begin(), found.end());
        return found;
    }
};

}  // namespace

TEST_F(Automatic, ScheduleConvertsIntoTheSameSubfoldersUntilSigterm) {
    simulate("a.oge");
    simulate("line1/b.ogd", "display");
    simulate("line1/deep/c.oge");
    simulate("line2/d.oge");
    launch({"--headless"});  // autostart=1 in the option file
    ASSERT_TRUE(wait_for({out + "/a.csv", out + "/line1/b.csv", out + "/line1/deep/c.csv",
                          out + "/line2/d.csv", done + "/line2/d.oge", done + "/a.oge"}))
        << output();
    // A file that arrives later is taken by a later cycle.
    const std::string late = simulate("line2/e.oge");
    ASSERT_TRUE(wait_for({out + "/line2/e.csv", done + "/line2/e.oge"})) << output();
    ASSERT_EQ(kill(pid, SIGTERM), 0);
    EXPECT_EQ(wait_exit(), 0) << output();

    EXPECT_EQ(files_below(out),
              (std::vector<std::string>{"a.csv", "line1/b.csv", "line1/deep/c.csv", "line2/d.csv",
                                        "line2/e.csv"}));
    EXPECT_EQ(files_below(done),
              (std::vector<std::string>{"a.oge", "line1/b.ogd", "line1/deep/c.oge", "line2/d.oge",
                                        "line2/e.oge"}));
    EXPECT_TRUE(files_below(in).empty());
    const std::string report = read_file(out + "/line1/deep/c.csv");
    EXPECT_NE(report.find("c.oge"), std::string::npos);
    EXPECT_EQ(report.find(".Error"), std::string::npos);
}

TEST_F(Automatic, StopInTheMiddleOfABatchLeavesEveryFileWholeOnOneSide) {
    constexpr int kFiles = 12;
    // Files of some size, so that the batch takes seconds and the stop falls inside it.
    const std::string first = simulate("batch/f10.oge", "event", 50000);
    for (int i = 1; i < kFiles; ++i)
        fs::copy_file(first, in + "/batch/f" + std::to_string(10 + i) + ".oge");
    autostart = "0";
    launch({"--headless", "--auto"});
    ASSERT_TRUE(wait_for({out + "/batch/f10.csv"})) << output();
    ASSERT_EQ(kill(pid, SIGTERM), 0);
    EXPECT_EQ(wait_exit(), 0) << output();
    int convertedCount = 0;
    for (int i = 0; i < kFiles; ++i) {
        const std::string name = "f" + std::to_string(10 + i);
        const bool report = fs::exists(out + "/batch/" + name + ".csv");
        const bool moved = fs::exists(done + "/batch/" + name + ".oge");
        const bool waiting = fs::exists(in + "/batch/" + name + ".oge");
        EXPECT_EQ(report, moved) << name;
        EXPECT_NE(moved, waiting) << name;
        convertedCount += moved ? 1 : 0;
    }
    EXPECT_GE(convertedCount, 1);
    EXPECT_LT(convertedCount, kFiles);
    for (const auto& f : files_below(out)) EXPECT_EQ(fs::path(f).extension(), ".csv") << f;
}
