// Real printing through the private CUPS server that scripts/test.d/cups.sh starts: a
// three-line report on queue A in landscape and on queue B in portrait, found in the
// queues' output folder; and the default printer the same afterwards as before.
#include <cups/cups.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "platform/cups/cups_printers.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

namespace fs = std::filesystem;

// The user's lpoptions live under $HOME: give this process a HOME of its own before
// libcups first reads it.
const testing::TempDir kHome;
[[maybe_unused]] const int kHomeSet = ::setenv("HOME", kHome.path().c_str(), 1);

const char* env(const char* name) {
    const char* v = std::getenv(name);
    return v && *v ? v : nullptr;
}

// The newest job id among the backend's outputs for `queue` (<queue>-<job>.pdf); 0 if none.
long last_job(const fs::path& out, const std::string& queue) {
    long last = 0;
    for (const auto& e : fs::directory_iterator(out)) {
        const auto name = e.path().filename().string();
        if (name.starts_with(queue + "-") && name.ends_with(".pdf"))
            last = std::max(last, std::strtol(name.c_str() + queue.size() + 1, nullptr, 10));
    }
    return last;
}

// Waits for an output of `queue` newer than the job id `after`; empty after 30 s.
fs::path wait_for_output(const fs::path& out, const std::string& queue, long after) {
    for (int i = 0; i < 300; ++i) {
        if (const long id = last_job(out, queue); id > after)
            return out / (queue + "-" + std::to_string(id) + ".pdf");
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return {};
}

class CupsPrintTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!env("CUPS_SERVER") || !env("QUMBREL_CUPS_OUT")) {
            GTEST_SKIP() << "no private CUPS server (scripts/test.d/cups.sh starts one)";
        }
        out = env("QUMBREL_CUPS_OUT");
        use_cups_printers(*tp);
    }
    std::string error_log() { return testing::read_file(tp->program_file("error.log")); }

    testing::TestProgram tp;
    fs::path out;
    const std::string queueA = "qumbrel_test_a", queueB = "qumbrel_test_b";
};

TEST_F(CupsPrintTest, ThreeLineReportOnBothQueues) {
    const std::string report = tp.dir.file("VT_0815.tmp");
    testing::write_file(report, "Recorder;VT210;\r\nChannel;1;2;\r\n12.5;13;\r\n");
    const auto& sys = tp->state<PrintState>().system;
    const DefaultPrinter before = sys->default_printer();
    const long beforeA = last_job(out, queueA), beforeB = last_job(out, queueB);

    tp->opt.printer = queueA;
    tp->opt.printer2 = queueB;
    PrintFile(*tp, report, 2);
    PrintFile2(*tp, report, 1);
    EXPECT_EQ(error_log(), "");

    const fs::path a = wait_for_output(out, queueA, beforeA);
    const fs::path b = wait_for_output(out, queueB, beforeB);
    ASSERT_FALSE(a.empty()) << "queue A produced nothing";
    ASSERT_FALSE(b.empty()) << "queue B produced nothing";
    EXPECT_EQ(testing::read_file(a.string()).substr(0, 5), "%PDF-");
    const auto options = [](fs::path p) {
        return testing::read_file(p.replace_extension(".options"));
    };
    EXPECT_NE(options(a).find("orientation-requested=4"), std::string::npos) << options(a);
    EXPECT_NE(options(b).find("orientation-requested=3"), std::string::npos) << options(b);
    // The spooled document is the report's lines as printed (the text filter embeds a
    // font without a Unicode map, so the PDF's text cannot be read back).
    const fs::path spool = out.parent_path() / "spool";  // the layout of cups.sh
    std::size_t copies = 0;
    std::error_code ec;
    for (const auto& e : fs::directory_iterator(spool, ec))
        copies +=
            e.path().filename().string().starts_with("d") &&
            testing::read_file(e.path().string()) == "Recorder;VT210;\nChannel;1;2;\n12.5;13;\n";
    EXPECT_GE(copies, 2u);
    EXPECT_EQ(sys->default_printer().name, before.name);
    EXPECT_EQ(sys->default_printer().userChosen, before.userChosen);
}

// An unknown printer, and an empty report (the server answers an empty document with a bad
// request): nothing printed, nothing said, the current printer left as it was.
TEST_F(CupsPrintTest, UnknownPrinterOrEmptyReportPrintsNothingAndSaysNothing) {
    testing::write_file(tp.dir.file("x.tmp"), "line\r\n");
    testing::write_file(tp.dir.file("empty.tmp"), "");
    const std::pair<std::string, const char*> cases[] = {{"qumbrel_no_such_queue", "x.tmp"},
                                                         {queueA, "empty.tmp"}};
    for (const auto& [printer, file] : cases) {
        SCOPED_TRACE(file);
        tp->opt.printer = printer;
        tp->state<PrintState>().current = queueB;
        PrintFile(*tp, tp.dir.file(file), 1);
        EXPECT_EQ(error_log(), "");
        EXPECT_TRUE(tp.host.alerts.empty());
        EXPECT_EQ(tp->state<PrintState>().current, queueB);
    }
}

TEST_F(CupsPrintTest, SetDefaultChangesAndRestoresIt) {
    const auto& sys = tp->state<PrintState>().system;
    const DefaultPrinter before = sys->default_printer();
    {
        cSetDfltPrinter d(*tp);
        d.SetPrinterAsDefault(queueB);
        EXPECT_EQ(d.GetDefaultPrinter(), queueB);
    }
    EXPECT_EQ(sys->default_printer().name, before.name);
    EXPECT_EQ(sys->default_printer().userChosen, before.userChosen);
    // A default that came from the server is not pinned in the user's options.
    const std::string lpoptions = testing::read_file(kHome.file(".cups/lpoptions"));
    if (!before.userChosen) {
        EXPECT_EQ(lpoptions.find("Default"), std::string::npos) << lpoptions;
    }

    // The user's own choice comes back as it was.
    sys->set_default(queueA);
    {
        cSetDfltPrinter d(*tp);
        d.SetPrinterAsDefault(queueB);
        EXPECT_EQ(sys->default_printer().name, queueB);
    }
    EXPECT_EQ(sys->default_printer().name, queueA);
    EXPECT_TRUE(sys->default_printer().userChosen);
    sys->clear_chosen_default();
    EXPECT_EQ(sys->default_printer().name, before.name);
    EXPECT_EQ(error_log(), "");
}

TEST_F(CupsPrintTest, ServiceDownIsLoggedNotFatal) {
    cupsSetServer("127.0.0.1:1");  // nothing listens there
    tp->opt.printer = queueA;
    PrintFile(*tp, tp.dir.file("x.tmp"), 1);
    cupsSetServer(nullptr);
    const std::string log = error_log();
    EXPECT_NE(log.find("PrintFile()"), std::string::npos) << log;
    EXPECT_NE(log.find("not running"), std::string::npos) << log;
}

}  // namespace
}  // namespace qumbrel
