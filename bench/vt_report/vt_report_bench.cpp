// Whole-process benchmark of the VT report: `qumbrel --headless` converting a
// 1,000,000-sample, 30-channel VT event file (made by recsim) to CSV and to XLS, beside a
// bare baseline that reads the same file through the same reader and writes the same
// values in one buffered write: CSV lines by std::to_chars, or the sheet's BIFF2 LABEL and
// NUMBER records. Every run is a child process; wait4 gives its peak memory.
//
//   ninja -C build bench_vt_report qumbrel recsim reclib_libraries qumbrel_languages
//   build/bin/bench_vt_report [--samples N] [--channels 1..30] [--repeat N] [--family VU|VQ|KL|HN]
//
// Prints seconds (best of --repeat), values per second, peak RSS and the ratio to the bare
// writer of the same format. Needs qumbrel, recsim and the recorder libraries beside it in
// bin/. Not part of ctest: it takes about a minute and 1 GB of disk in /tmp.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/child_process.h"
#include "frame/context.h"
#include "frame/headless_host.h"
#include "recorder/hn_reader.h"
#include "recorder/kl_reader.h"
#include "recorder/vq_reader.h"
#include "recorder/vt_reader.h"
#include "recorder/vu_reader.h"

namespace {

using qumbrel::bench::Outcome;
using qumbrel::bench::run_child;

using namespace qumbrel;
namespace fs = std::filesystem;

struct Settings {
    std::int32_t samples = 1000000;
    std::int32_t channels = 30;
    int repeat = 1;
    std::string family = "VT";  // --family VT|VU|KL: event files of that family
};

// The pandas peer: DataFrame.to_csv of the same shape (a date and a time column, then the
// value columns with one decimal), timed inside Python around to_csv only. Debian's
// python3, not a pyenv one; nothing when pandas is missing.
double pandas_seconds(std::int32_t samples, std::int32_t channels, const std::string& out) {
    const std::string script =
        "import sys,time,numpy as np,pandas as pd\n"
        "n,c=int(sys.argv[1]),int(sys.argv[2])\n"
        "t=pd.date_range('2023-11-14 22:13:20',periods=n,freq='s')\n"
        "d={'date':t.strftime('%m/%d/%Y'),'time':t.strftime('%I:%M:%S %p')}\n"
        "rng=np.random.default_rng(1)\n"
        "for k in range(c): d['ch%d'%(k+1)]=np.round(rng.integers(-2000,2000,n)/10.0,1)\n"
        "df=pd.DataFrame(d)\n"
        "t0=time.perf_counter(); df.to_csv(sys.argv[3],index=False,lineterminator='\\r\\n')\n"
        "print(time.perf_counter()-t0)\n";
    const std::string py = out + ".py";
    std::ofstream(py) << script;
    const std::string cmd = "/usr/bin/python3 " + py + " " + std::to_string(samples) + " " +
                            std::to_string(channels) + " " + out + " 2>/dev/null";
    FILE* p = ::popen(cmd.c_str(), "r");
    if (!p) return -1;
    char line[64] = {0};
    const bool got = std::fgets(line, sizeof line, p) != nullptr;
    const int rc = ::pclose(p);
    fs::remove(py);
    fs::remove(out);
    return got && rc == 0 ? std::atof(line) : -1;
}

class NullEventLog final : public EventLogBackend {
  public:
    void report(std::string_view, int, std::uint32_t, std::string_view) override {}
};

int exec_qumbrel(const std::string& qumbrel, const std::string& home, const std::string& src) {
    ::setenv("QUMBREL_REGION", "en-US", 1);
    const int devnull = ::open("/dev/null", O_WRONLY);
    if (devnull >= 0) ::dup2(devnull, 1);
    ::execl(qumbrel.c_str(), qumbrel.c_str(), "--headless", "--quiet", "--home", home.c_str(),
            src.c_str(), static_cast<char*>(nullptr));
    return 127;
}

void put_u16(std::string& out, unsigned v) {
    out.push_back(static_cast<char>(v & 0xFF));
    out.push_back(static_cast<char>((v >> 8) & 0xFF));
}

// BIFF2 cell head: record id, length, row, column, three attribute bytes.
void cell_head(std::string& out, unsigned id, unsigned len, std::int64_t row, unsigned col) {
    put_u16(out, id);
    put_u16(out, len);
    put_u16(out, static_cast<unsigned>(row & 0xFFFF));
    put_u16(out, col);
    out.append(3, '\0');
}

// The bare writer: the same reader's blocks, every value of the report's sample rows by
// std::to_chars into a 1 MB buffer written as it fills. With `durable` the file is written
// under a temporary name, handed to writeback as it grows, synced and renamed, as the
// reports are.
int bare_writer(const Settings& s, const std::string& src, const std::string& out, bool xls,
                bool durable = false) {
    HeadlessHost host(false);  // status list down: the runs print nothing
    ManualClock clock;
    NullEventLog events;
    Program ctx(ProgramInfo{}, host, clock, events,
                clsRegionalSettings(*clsRegionalSettings::named("en-US")));
    ctx.opt.decseparator = ".";
    std::vector<std::string> channels;
    std::vector<std::int32_t> decimals;
    for (std::int32_t c = 1; c <= s.channels; ++c) {
        channels.push_back(std::to_string(c));
        decimals.push_back(1);
    }
    const std::string path = durable ? out + ".part" : out;
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return 3;
    std::string buf;
    buf.reserve(1 << 21);
    bool ok = true;
    std::uint64_t written = 0, handed = 0;
    auto drain = [&](bool all) {
        if (!all && buf.size() < (1u << 20)) return;
        ok = ok && ::write(fd, buf.data(), buf.size()) == static_cast<ssize_t>(buf.size());
        written += buf.size();
        buf.clear();
        // As the reports do: writeback started every 8 MB, so the closing fsync is short.
        if (durable && written - handed >= (8u << 20)) {
            ::sync_file_range(fd, static_cast<off64_t>(handed),
                              static_cast<off64_t>(written - handed), SYNC_FILE_RANGE_WRITE);
            handed = written;
        }
    };
    const std::vector<std::int32_t> types(channels.size(), 0);
    std::vector<HNChannelPlan> plans;
    for (std::int32_t c = 0; s.family == "HN" && c < s.channels; ++c) {
        HNChannelInfo ci;
        HNGetChDataInfo(ctx, 0, src, c, ci);
        plans.push_back({c, ci.fifoId, ci.fifoType, ci.dataType, ci.flags, ci.decimals,
                         std::to_string(ci.channelNo)});
    }
    auto cursor =
        s.family == "VU"   ? VUOpenMeasData(ctx, 0, src, channels, s.samples, decimals, types,
                                            VUTimeBase{0, "", "1000"}, kTrue)
        : s.family == "KL" ? KLOpenMeasData(ctx, 0, src, channels, s.samples, decimals, kTrue)
        : s.family == "VQ" ? VQOpenMeasData(ctx, 0, src, channels, s.samples, decimals, kTrue)
        : s.family == "HN"
            ? HNOpenMeasData(ctx, 0, src, plans, s.samples, false, VUTimeBase{0, "", "1000"})
            : VTOpenMeasData(ctx, src, channels, s.samples, decimals, kTrue);
    SampleBlock data;
    char num[32];
    std::int64_t r = 0;
    while (r < s.samples && cursor->next(data)) {
        for (std::size_t i = 0; i < data.count && r < s.samples; ++i) {
            ++r;
            if (xls) {
                for (unsigned c = 0; c < 2; ++c) {
                    const std::string_view t = c == 0 ? data.dates[i] : data.times[i];
                    cell_head(buf, 0x04, static_cast<unsigned>(8 + t.size()), r, c);
                    buf.push_back(static_cast<char>(t.size()));
                    buf.append(t);
                }
                for (std::int32_t c = 1; c <= s.channels; ++c) {
                    const double v = data.firstValues.value(i + 1, static_cast<std::size_t>(c));
                    cell_head(buf, 0x03, 15, r, static_cast<unsigned>(c + 1));
                    char bytes[8];
                    std::memcpy(bytes, &v, 8);
                    buf.append(bytes, 8);
                }
            } else {
                buf.append(data.dates[i]);
                buf.push_back(',');
                buf.append(data.times[i]);
                for (std::int32_t c = 1; c <= s.channels; ++c) {
                    const double v = data.firstValues.value(i + 1, static_cast<std::size_t>(c));
                    buf.push_back(',');
                    const auto res = std::to_chars(num, num + sizeof num, v);
                    buf.append(num, res.ptr);
                }
                buf.append("\r\n");
            }
            drain(false);
        }
    }
    drain(true);
    if (durable) ok = ok && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    if (durable && ok) {
        ok = ::rename(path.c_str(), out.c_str()) == 0;
        const int dir = ::open(fs::path(out).parent_path().c_str(), O_RDONLY | O_DIRECTORY);
        if (dir >= 0) {
            ::fsync(dir);
            ::close(dir);
        }
    }
    return ok && r == s.samples ? 0 : 3;
}

void write_options(const std::string& home, const std::string& target, int format,
                   const std::string& bin) {
    fs::create_directories(home);
    fs::create_directories(target);
    std::ofstream ini(home + "/qumbrel.ini");
    ini << "[file]\ntargetpath=" << target << "\nbinfilemodus=2\ntargetformat=" << format
        << "\nlanguage=" << bin << "/english.lng\n[userdefined]\nChannels=ALL\n";
}

std::vector<std::int32_t> parse_list(const char* text) {
    std::vector<std::int32_t> out;
    for (const char* p = text; *p;) {
        out.push_back(std::atoi(p));
        while (*p && *p != ',') ++p;
        if (*p == ',') ++p;
    }
    return out;
}

std::string make_file(const Settings& s, const std::string& recsim, const std::string& dir,
                      std::int32_t samples, std::int32_t channels, int records,
                      const std::string& stem) {
    const std::string ext = s.family == "VU"   ? ".ose"
                            : s.family == "KL" ? ".kle"
                            : s.family == "HN" ? ".hnd"
                            : s.family == "VQ" ? ".obe"
                                               : ".oge";
    const std::string src = dir + "/" + stem + ext;
    const std::string cmd = recsim + " --family " + s.family + " --kind event --channels " +
                            std::to_string(channels) + " --samples " + std::to_string(samples) +
                            " --alarms " + std::to_string(records) + " --messages " +
                            std::to_string(records) + " --seed 1 --out " + src + " >/dev/null";
    return std::system(cmd.c_str()) == 0 ? src : std::string();
}

struct Case {
    std::string name;
    std::function<int()> run;
    std::string output;
};

// Best of `repeat` child runs; the largest peak RSS of them.
Outcome best_of(const Case& c, int repeat) {
    Outcome best;
    for (int r = 0; r < repeat; ++r) {
        const Outcome o = run_child(c.run);
        if (!o.ok) return Outcome{};
        if (!best.ok || o.seconds < best.seconds) {
            const long rss = std::max(best.maxrssKib, o.maxrssKib);
            best = o;
            best.maxrssKib = rss;
        }
        best.maxrssKib = std::max(best.maxrssKib, o.maxrssKib);
    }
    if (!fs::exists(c.output)) best.ok = false;
    return best;
}

}  // namespace

int main(int argc, char** argv) {
    Settings s;
    std::vector<std::int32_t> sizes{1000000};
    bool records = false, oneshot = false;
    for (int i = 1; i < argc; ++i) {
        const std::string key = argv[i];
        const char* value = i + 1 < argc ? argv[i + 1] : "";
        if (key == "--samples") {
            sizes = parse_list(value);
            ++i;
        } else if (key == "--channels") {
            s.channels = std::atoi(value);
            ++i;
        } else if (key == "--repeat") {
            s.repeat = std::atoi(value);
            ++i;
        } else if (key == "--records") {
            records = true;
        } else if (key == "--oneshot") {
            oneshot = true;
        } else if (key == "--family" &&
                   std::string_view("VT VU VQ KL HN").find(value) != std::string_view::npos &&
                   std::strlen(value) == 2) {
            s.family = value;
            ++i;
        } else {
            sizes.clear();
        }
    }
    const bool sizesOk = !sizes.empty() && std::all_of(sizes.begin(), sizes.end(),
                                                       [](std::int32_t n) { return n > 0; });
    if (!sizesOk || s.channels <= 0 || s.channels > 30 || s.repeat <= 0) {
        std::fprintf(stderr,
                     "usage: bench_vt_report [--samples N[,N...]] [--channels 1..30] "
                     "[--repeat N] [--records] [--oneshot] [--family VT|VU|VQ|KL|HN]\n");
        return 2;
    }
    const std::string bin = fs::canonical("/proc/self/exe").parent_path().string();
    const std::string qumbrel = bin + "/qumbrel", recsim = bin + "/recsim";
    for (const auto& tool : {qumbrel, recsim}) {
        if (!fs::exists(tool)) {
            std::fprintf(stderr, "bench_vt_report: %s is missing\n", tool.c_str());
            return 2;
        }
    }
    ::setenv("QUMBREL_RECLIB_PATH", bin.c_str(), 1);
    char pattern[] = "/tmp/bench-vtreport-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    if (!made) return 2;
    const std::string dir = made;
    write_options(dir + "/home-csv", dir + "/csv", 0, bin);
    write_options(dir + "/home-xls", dir + "/xls", 1, bin);
    int rc = 0;

    if (oneshot) {
        // The one-shot of a small file, flushes included, beside the process start alone.
        const std::string src = make_file(s, recsim, dir, 100, 4, 2, "small");
        std::vector<double> conv, start;
        for (int k = 0; k < 50; ++k) {
            fs::remove(dir + "/csv/small.csv");
            const Outcome o =
                run_child([&] { return exec_qumbrel(qumbrel, dir + "/home-csv", src); });
            const Outcome v = run_child([&] {
                const int devnull = ::open("/dev/null", O_WRONLY);
                if (devnull >= 0) ::dup2(devnull, 1);
                ::execl(qumbrel.c_str(), qumbrel.c_str(), "--version", static_cast<char*>(nullptr));
                return 127;
            });
            if (!o.ok || !v.ok) rc = 1;
            conv.push_back(o.seconds * 1000);
            start.push_back(v.seconds * 1000);
        }
        std::sort(conv.begin(), conv.end());
        std::sort(start.begin(), start.end());
        std::printf(
            "one-shot of a 100 x 4 VT file to CSV, median of 50: %.1f ms "
            "(process start alone, qumbrel --version: %.1f ms)\n",
            conv[25], start[25]);
    }

    if (records) {
        // Time linear in alarms and messages: one parse per file, not one per record.
        std::printf("%-28s %9s\n", "alarms + messages", "seconds");
        double first = 0;
        for (int n : {1000, 8000}) {
            const std::string src = make_file(s, recsim, dir, 100000, 30, n, "rec");
            const Case c{"records", [&] { return exec_qumbrel(qumbrel, dir + "/home-csv", src); },
                         dir + "/csv/rec.csv"};
            const Outcome o = best_of(c, s.repeat);
            if (!o.ok) rc = 1;
            std::printf("%6d + %-6d %24.2f", n, n, o.seconds);
            if (first > 0) std::printf("   x%.1f for 8x the records", o.seconds / first);
            std::printf("\n");
            first = o.seconds;
            fs::remove(c.output);
            fs::remove(src);
        }
    }

    if (!oneshot && !records) {
        std::printf("%-10s %-16s %9s %13s %12s %10s %9s\n", "samples", "case", "seconds",
                    "values/s", "peak RSS MB", "output MB", "x bare");
        for (const std::int32_t n : sizes) {
            s.samples = n;
            const std::string src = make_file(s, recsim, dir, n, s.channels, 0, "bench");
            if (src.empty()) return 2;
            const std::vector<Case> cases{
                {"qumbrel CSV", [&] { return exec_qumbrel(qumbrel, dir + "/home-csv", src); },
                 dir + "/csv/bench.csv"},
                {"bare CSV", [&] { return bare_writer(s, src, dir + "/bare.csv", false); },
                 dir + "/bare.csv"},
                {"bare CSV synced",
                 [&] { return bare_writer(s, src, dir + "/bare.csv", false, true); },
                 dir + "/bare.csv"},
                {"qumbrel XLS", [&] { return exec_qumbrel(qumbrel, dir + "/home-xls", src); },
                 dir + "/xls/bench.xls"},
                {"bare XLS", [&] { return bare_writer(s, src, dir + "/bare.xls", true); },
                 dir + "/bare.xls"},
            };
            const double values = static_cast<double>(n) * s.channels;
            double ours = 0, bareCsv = 0, oursCsv = 0;
            for (const auto& c : cases) {
                const Outcome best = best_of(c, s.repeat);
                if (!best.ok) {
                    std::printf("%-10d %-16s failed\n", n, c.name.c_str());
                    rc = 1;
                    continue;
                }
                const bool bare = c.name.rfind("bare", 0) == 0;
                std::printf("%-10d %-16s %9.2f %13.0f %12.1f %10.1f", n, c.name.c_str(),
                            best.seconds, values / best.seconds,
                            static_cast<double>(best.maxrssKib) / 1024.0,
                            static_cast<double>(fs::file_size(c.output)) / 1e6);
                if (bare && ours > 0) {
                    std::printf(" %9.2f", ours / best.seconds);
                    if (c.name == "bare CSV") bareCsv = best.seconds;
                    if (c.name == "bare CSV synced" && bareCsv > 0)
                        std::printf("   sync+rename: +%.1f%% of the CSV report",
                                    100.0 * (best.seconds - bareCsv) / ours);
                    std::printf("\n");
                } else {
                    std::printf("\n");
                    ours = best.seconds;
                    if (c.name == "qumbrel CSV") oursCsv = best.seconds;
                }
                fs::remove(c.output);
            }
            const double pandas = pandas_seconds(n, s.channels, dir + "/pandas.csv");
            if (pandas > 0)
                std::printf(
                    "%-10d %-16s %9.2f %13.0f   (to_csv alone; pandas / qumbrel CSV: "
                    "x%.1f)\n",
                    n, "pandas to_csv", pandas, values / pandas,
                    pandas / (oursCsv > 0 ? oursCsv : 1));
            fs::remove(src);
        }
        std::printf(
            "x bare: seconds of qumbrel / seconds of the bare writer of the same "
            "format\n");
    }
    fs::remove_all(dir);
    return rc;
}
