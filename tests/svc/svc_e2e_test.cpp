// qumbrel-svc on a temporary source folder, with the built qumbrel and recsim: files
// dropped whole, a file written slowly in pieces (converted once, when complete), a damaged
// file, a burst of 200 files, SIGTERM during a conversion. No file is lost or converted
// twice.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include "tests/support/test_support.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using qumbrel::testing::read_file;
using qumbrel::testing::write_file;

bool until(const std::function<bool()>& done, std::chrono::seconds limit) {
    for (const auto end = std::chrono::steady_clock::now() + limit;
         std::chrono::steady_clock::now() < end; std::this_thread::sleep_for(50ms))
        if (done()) return true;
    return done();
}

std::size_t count(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

std::size_t files_in(const std::string& folder) {
    std::size_t n = 0;
    for (const auto& e : fs::directory_iterator(folder))
        if (e.is_regular_file() && e.path().filename().string()[0] != '.') ++n;
    return n;
}

class Svc : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* d : {"home", "in", "out", "done", "made"}) fs::create_directories(file(d));
        write_file(file("home/qumbrel.ini"),
                   "[start]\nfiletyp=2\n[file]\nsourcepath=" + file("in") +
                       "\ntargetpath=" + file("out") + "\ntargetpathsourcefile=" + file("done") +
                       "\nbinfilemodus=0\nlanguage=" QUMBREL_BIN_DIR
                       "/english.lng\n[userdefined]\nChannels=ALL\n[service]\n"
                       "timeoutcountsec=60\n");
    }
    void TearDown() override {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    std::string file(const std::string& rel) const { return dir_.file(rel); }

    // A VT event file made by recsim in made/, of `samples` samples.
    std::string make(const std::string& name, int samples, bool damaged = false) {
        const std::string out = file("made/" + name);
        const std::string cmd = QUMBREL_BIN_DIR
                                "/recsim --family VT --kind event --channels 3 "
                                "--samples " +
                                std::to_string(samples) + (damaged ? " --damaged" : "") +
                                " --out '" + out + "' >/dev/null";
        EXPECT_EQ(std::system(cmd.c_str()), 0);
        return out;
    }
    // Into the source folder whole: written beside it and renamed in.
    void drop(const std::string& made, const std::string& name) {
        fs::copy_file(made, file("in/." + name + ".part"));
        fs::rename(file("in/." + name + ".part"), file("in/" + name));
    }

    void start() {
        pid_ = ::fork();
        if (pid_ == 0) {
            ::setenv("QUMBREL_RECLIB_PATH", QUMBREL_BIN_DIR, 1);
            ::setenv("QUMBREL_REGION", "en-US", 1);
            const std::string log = file("svc.log");
            std::FILE* f = std::fopen(log.c_str(), "w");
            if (f) ::dup2(::fileno(f), 2);
            ::execl(QUMBREL_BIN_DIR "/qumbrel-svc", "qumbrel-svc", "--home", file("home").c_str(),
                    "--settle-ms", "300", "--rescan-sec", "2", static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ASSERT_TRUE(until([&] { return log().find("watching") != std::string::npos; }, 20s))
            << log();
    }
    // SIGTERM; the exit status, or -1 when it did not end in time.
    int stop() {
        ::kill(pid_, SIGTERM);
        int status = 0;
        const bool ended = until([&] { return ::waitpid(pid_, &status, WNOHANG) == pid_; }, 60s);
        pid_ = -1;
        return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string log() const { return read_file(file("svc.log")); }

    qumbrel::testing::TempDir dir_;
    pid_t pid_ = -1;
};

TEST_F(Svc, WholeSlowAndDamagedFiles) {
    start();
    const std::string small = make("small.oge", 20);
    drop(small, "a.oge");
    drop(small, "b.oge");
    const std::string bad = make("bad.oge", 20, true);
    drop(bad, "bad.oge");

    // Written in four pieces with pauses longer than the settle time: never converted
    // before it is whole.
    const std::string slow = make("slow.oge", 2000);
    const std::string bytes = read_file(slow);
    {
        std::ofstream out(file("in/slow.oge"), std::ios::binary);
        for (int k = 0; k < 4; ++k) {
            const std::size_t from = bytes.size() * k / 4, to = bytes.size() * (k + 1) / 4;
            out.write(bytes.data() + from, static_cast<std::streamsize>(to - from));
            out.flush();
            if (k < 3) std::this_thread::sleep_for(450ms);
        }
    }
    ASSERT_TRUE(until([&] { return files_in(file("done")) == 4; }, 60s)) << log();
    EXPECT_EQ(stop(), 0);
    for (const char* f : {"done/a.oge", "done/b.oge", "done/slow.oge", "done/bad.oge.Error.oge",
                          "out/a.csv", "out/b.csv", "out/slow.csv", "out/bad.csv.Error.csv"})
        EXPECT_TRUE(fs::exists(file(f))) << f << "\n" << log();
    EXPECT_EQ(read_file(file("done/slow.oge")), bytes);
    EXPECT_EQ(count(log(), "converting " + file("in/slow.oge")), 1u) << log();
    EXPECT_EQ(count(log(), "converting "), 4u) << log();
    EXPECT_EQ(files_in(file("in")), 0u);
}

TEST_F(Svc, ABurstOf200FilesEachConvertedOnce) {
    start();
    const std::string made = make("one.oge", 5);
    for (int k = 0; k < 200; ++k) drop(made, "f" + std::to_string(k) + ".oge");
    ASSERT_TRUE(until([&] { return files_in(file("done")) == 200; }, 300s))
        << files_in(file("done")) << "\n"
        << log();
    EXPECT_EQ(stop(), 0);
    EXPECT_EQ(files_in(file("out")), 200u);
    EXPECT_EQ(count(log(), "converting "), 200u);
    EXPECT_EQ(files_in(file("in")), 0u);
}

// SIGTERM while a conversion runs: the conversion ends, the service after it.
TEST_F(Svc, SigtermDuringAConversionLetsItFinish) {
    start();
    drop(make("big.oge", 300000), "big.oge");
    ASSERT_TRUE(until([&] { return log().find("converting ") != std::string::npos; }, 60s))
        << log();
    EXPECT_EQ(stop(), 0);
    EXPECT_TRUE(fs::exists(file("done/big.oge"))) << log();
    EXPECT_TRUE(fs::exists(file("out/big.csv"))) << log();
    EXPECT_LT(log().find("converted " + file("in/big.oge")), log().find("stopped")) << log();
}

}  // namespace
