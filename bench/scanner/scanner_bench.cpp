// The automatic mode's folder scan (filetyp 2: ten patterns sharing one walk, listed
// pattern by pattern, deepest folders first) on a tree of 100,000 files in 1,000
// folders, beside find(1) given the same patterns: once as ten runs (one per pattern,
// which gives the same grouping) and once as one run with the ten patterns joined by -o
// (one walk, order mixed). All three list the same number of files; the scanner also
// sorts every folder's listing, which find does not.
//
//   ninja -C build bench_scanner
//   build/bin/bench_scanner [--folders N] [--files-per-folder N] [--repeat N]
//
// The tree is made in a temporary folder and removed afterwards. Page cache warm: each
// contender runs once before the timed runs; the best of --repeat is printed.
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "automation/scanner.h"
#include "frame/context.h"
#include "frame/headless_host.h"

namespace {

using namespace qumbrel;
namespace fs = std::filesystem;

class NullEventLog final : public EventLogBackend {
  public:
    void report(std::string_view, int, std::uint32_t, std::string_view) override {}
};

struct Settings {
    int folders = 1000;
    int filesPerFolder = 100;
    int repeat = 5;
};

// 10 top folders, the rest spread below them one level down; names of twelve kinds, ten
// of which the patterns take.
std::size_t make_tree(const fs::path& root, const Settings& s) {
    static const char* kExt[] = {"ogd", "OSD", "oad", "obd", "oge", "ose",
                                 "oae", "obe", "hnd", "hns", "txt", "csv"};
    std::vector<fs::path> dirs;
    const int top = std::min(10, s.folders);
    for (int i = 0; i < top; ++i) dirs.push_back(root / ("line" + std::to_string(i)));
    for (int i = top; i < s.folders; ++i)
        dirs.push_back(dirs[static_cast<std::size_t>(i % top)] / ("batch" + std::to_string(i)));
    std::size_t matching = 0;
    for (const auto& d : dirs) {
        fs::create_directories(d);
        for (int f = 0; f < s.filesPerFolder; ++f) {
            const int kind = f % 12;
            const fs::path p = d / ("r" + std::to_string(f) + "." + kExt[kind]);
            if (FILE* fp = std::fopen(p.c_str(), "w")) std::fclose(fp);
            if (kind < 10) ++matching;
        }
    }
    return matching;
}

double best_of(int repeat, const std::function<std::size_t()>& run, std::size_t& count) {
    count = run();  // warm-up
    double best = 1e30;
    for (int i = 0; i < repeat; ++i) {
        const auto t0 = std::chrono::steady_clock::now();
        count = run();
        const double s =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        best = std::min(best, s);
    }
    return best;
}

std::size_t count_lines_of(const std::string& cmd) {
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return 0;
    std::size_t lines = 0;
    char buf[1 << 16];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, p)) > 0)
        for (std::size_t i = 0; i < n; ++i) lines += buf[i] == '\n';
    pclose(p);
    return lines;
}

}  // namespace

int main(int argc, char** argv) {
    Settings s;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string a = argv[i];
        const int v = std::atoi(argv[i + 1]);
        if (a == "--folders")
            s.folders = std::max(1, v);
        else if (a == "--files-per-folder")
            s.filesPerFolder = std::max(0, v);
        else if (a == "--repeat")
            s.repeat = std::max(1, v);
    }
    char tmpl[] = "/tmp/qumbrel-scan-bench-XXXXXX";
    if (!mkdtemp(tmpl)) return 1;
    const fs::path root = tmpl;
    const std::size_t expected = make_tree(root, s);

    HeadlessHost host(false);  // status list down: the runs print nothing
    NullEventLog log;
    SystemClock clock;
    ProgramInfo info;
    Program ctx(info, host, clock, log, clsRegionalSettings(*clsRegionalSettings::named("en-US")));
    ctx.opt.sourcepath = root.string();
    ctx.opt.filetyp = 2;
    const std::vector<std::string> patterns = scan_patterns(ctx.opt);

    std::vector<std::string> list;
    std::size_t ours = 0, findEach = 0, findOnce = 0;
    const double tOurs = best_of(
        s.repeat,
        [&] {
            fkt_scansourcefolder(ctx, list);
            return list.size();
        },
        ours);

    std::string once = "find '" + root.string() + "' -type f \\(";
    for (std::size_t i = 0; i < patterns.size(); ++i)
        once += std::string(i ? " -o" : "") + " -iname '" + patterns[i] + "'";
    once += " \\) -not -name '.*'";
    const double tFindEach = best_of(
        s.repeat,
        [&] {
            std::size_t total = 0;
            for (const auto& p : patterns)
                total += count_lines_of("find '" + root.string() + "' -type f -iname '" + p +
                                        "' -not -name '.*'");
            return total;
        },
        findEach);
    const double tFindOnce = best_of(
        s.repeat, [&] { return count_lines_of(once); }, findOnce);

    std::printf("tree: %d folders, %d files each, %zu matching, patterns %zu\n", s.folders,
                s.filesPerFolder, expected, patterns.size());
    std::printf("%-34s %9.3f s  %zu files\n", "scanner (one walk, sorted)", tOurs, ours);
    std::printf("%-34s %9.3f s  %zu files  ratio %.2f\n", "find, one run per pattern", tFindEach,
                findEach, tOurs / tFindEach);
    std::printf("%-34s %9.3f s  %zu files  ratio %.2f\n", "find, one run, patterns -o", tFindOnce,
                findOnce, tOurs / tFindOnce);
    fs::remove_all(root);
    const bool same = ours == expected && findEach == expected && findOnce == expected;
    if (!same) std::fprintf(stderr, "counts differ\n");
    return same ? 0 : 1;
}
