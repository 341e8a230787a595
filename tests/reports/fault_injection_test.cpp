// Every file operation of a conversion fails in turn (SQLite's way): the N-th call of the
// file seam fails with a chosen errno, for N = 1, 2, ... until a run goes through. After
// each failed run the source stands byte for byte where it was or, marked, in the move
// folder; no final report name holds anything but the complete report; the run failed.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "frame/fileio.h"
#include "frame/options_io.h"
#include "pipeline/convertmain.h"
#include "vt_report_fixture.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
namespace fs = std::filesystem;

namespace {

struct Layout {
    std::string in, out, done;
};

// Files below `dir`, relative, without the hidden temporaries a failed write may leave.
std::vector<std::string> visible_files(const std::string& dir) {
    std::vector<std::string> found;
    for (const auto& e : fs::recursive_directory_iterator(dir))
        if (e.is_regular_file() && e.path().filename().string()[0] != '.')
            found.push_back(e.path().string().substr(dir.size() + 1));
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace

TEST(FaultInjection, NoFailingFileCallLosesTheSourceOrLeavesAPartialReport) {
    for (int format : {0, 1}) {
        for (int mode : {0, 1, 2}) {
            for (int error : {EIO, ENOSPC, EACCES, EXDEV}) {
                SCOPED_TRACE(::testing::Message()
                             << "format " << format << " mode " << mode << " errno " << error);
                std::string goodReport;
                bool succeeded = false;
                for (int n = 1; n < 200 && !succeeded; ++n) {
                    SCOPED_TRACE(::testing::Message() << "failing call " << n);
                    test::VtReportFixture f("en-US");
                    const Layout l{f.p.dir.file("in"), f.p.dir.file("out"), f.p.dir.file("done")};
                    for (const auto& d : {l.in, l.out, l.done}) fs::create_directories(d);
                    f.options({{"targetpath", l.out},
                               {"targetpathsourcefile", l.done},
                               {"targetformat", std::to_string(format)},
                               {"binfilemodus", std::to_string(mode)}});
                    const std::string src =
                        f.make(test::vt_sim(reclib::Kind::Event, 3, 40), "in/a.oge");
                    const std::string bytes = read_file(src);
                    auto io = std::make_shared<FaultyFileIo>(n, error);
                    f.p->files = io;
                    const ConvertOutcome r = fkt_convertmain(*f.p, src, "", "", kFalse);
                    const std::string report = l.out + (format == 0 ? "/a.csv" : "/a.xls");
                    if (!io->fired()) {
                        // The first run that meets no failure: the reference outcome.
                        EXPECT_FALSE(r.failed());
                        goodReport = read_file(report);
                        EXPECT_FALSE(goodReport.empty());
                        succeeded = true;
                        continue;
                    }
                    // A report under its final name is whole: same size as a clean run's
                    // (the dates inside are the same, the file being the same).
                    if (fs::exists(report) && !goodReport.empty()) {
                        EXPECT_EQ(fs::file_size(report), goodReport.size());
                    }
                    // A call whose failure changes nothing that matters (a folder flush
                    // after the rename) may leave a run that succeeded, report complete.
                    if (!r.failed()) {
                        EXPECT_TRUE(fs::exists(report));
                        continue;
                    }
                    // Where the source's bytes stand now: in exactly one place.
                    int places = 0;
                    for (const std::string& c :
                         {src, src + ".Error.oge", l.done + "/a.oge", l.done + "/a.oge.Error.oge"})
                        if (fs::exists(c) && read_file(c) == bytes) ++places;
                    EXPECT_EQ(places, 1) << ::testing::PrintToString(visible_files(f.p.dir.path()));
                }
                EXPECT_TRUE(succeeded);
            }
        }
    }
}

// A long run in delete mode: every deleted source is let go by the libraries, so its disk
// space comes back (no descriptor or mapping of a deleted file stays).
TEST(LongRun, NoDeletedSourceStaysOpen) {
    test::VtReportFixture f("en-US");
    const std::string in = f.p.dir.file("in"), out = f.p.dir.file("out");
    for (const auto& d : {in, out}) fs::create_directories(d);
    f.options({{"targetpath", out}, {"binfilemodus", "1"}});
    const std::string first = f.make(test::vt_sim(reclib::Kind::Event, 2, 5), "in/s0.oge");
    constexpr int kFiles = 1100;
    for (int i = 1; i < kFiles; ++i) fs::copy_file(first, in + "/s" + std::to_string(i) + ".oge");
    for (int i = 0; i < kFiles; ++i) {
        const ConvertOutcome r =
            fkt_convertmain(*f.p, in + "/s" + std::to_string(i) + ".oge", "", "", kFalse);
        ASSERT_FALSE(r.failed()) << i;
    }
    EXPECT_TRUE(fs::is_empty(in));
    int held = 0;
    for (const auto& e : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ec;
        const std::string target = fs::read_symlink(e.path(), ec).string();
        if (!ec && target.find(in) != std::string::npos) ++held;
    }
    EXPECT_EQ(held, 0);
    EXPECT_EQ(read_file("/proc/self/maps").find(in), std::string::npos);
}
