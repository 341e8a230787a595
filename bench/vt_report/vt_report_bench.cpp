// Whole-process benchmark of the VT report: `qumbrel --headless` converting a
// 1,000,000-sample, 30-channel VT event file (made by recsim) to CSV and to XLS, beside a
// bare baseline that reads the same file through the same reader and writes the same
// values in one buffered write: CSV lines by std::to_chars, or the sheet's BIFF2 LABEL and
// NUMBER records. Every run is a child process; wait4 gives its peak memory.
//
//   ninja -C build bench_vt_report qumbrel recsim reclib_libraries qumbrel_languages
//   build/bin/bench_vt_report [--samples N] [--channels 1..30] [--repeat N]
//
// Prints seconds (best of --repeat), values per second, peak RSS and the ratio to the bare
// writer of the same format. Needs qumbrel, recsim and the recorder libraries beside it in
// bin/. Not part of ctest: it takes about a minute and 1 GB of disk in /tmp.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "frame/context.h"
#include "frame/headless_host.h"
#include "recorder/vt_reader.h"

namespace {

using namespace qumbrel;
namespace fs = std::filesystem;

struct Settings {
    std::int32_t samples = 1000000;
    std::int32_t channels = 30;
    int repeat = 1;
};

class NullEventLog final : public EventLogBackend {
  public:
    void report(std::string_view, int, std::uint32_t, std::string_view) override {}
};

struct Outcome {
    bool ok = false;
    double seconds = 0;
    long maxrssKib = 0;
};

// Runs `child` in a forked process (exit status 0 is success), timing it from outside.
Outcome run_child(const std::function<int()>& child) {
    Outcome o;
    const auto t0 = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid < 0) return o;
    if (pid == 0) ::_exit(child());
    int status = 0;
    struct rusage ru {};
    ::wait4(pid, &status, 0, &ru);
    const std::chrono::duration<double> dt = std::chrono::steady_clock::now() - t0;
    o.seconds = dt.count();
    o.maxrssKib = ru.ru_maxrss;
    o.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return o;
}

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

// The bare writer: the reader's arrays, then every value of the report's sample rows in
// one buffer and one write.
int bare_writer(const Settings& s, const std::string& src, const std::string& out, bool xls) {
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
    VTMeasData data;
    VTGetMeasData(ctx, src, channels, s.samples, decimals, data, kTrue);
    if (data.dates.size() < static_cast<std::size_t>(s.samples)) return 3;

    std::string buf;
    buf.reserve(static_cast<std::size_t>(s.samples) *
                (xls ? 19 * (s.channels + 2) : 8 * (s.channels + 4)));
    char num[32];
    for (std::int32_t r = 1; r <= s.samples; ++r) {
        const auto i = static_cast<std::size_t>(r - 1);
        if (xls) {
            for (unsigned c = 0; c < 2; ++c) {
                const std::string_view t = c == 0 ? data.dates[i] : data.times[i];
                cell_head(buf, 0x04, static_cast<unsigned>(8 + t.size()), r, c);
                buf.push_back(static_cast<char>(t.size()));
                buf.append(t);
            }
            for (std::int32_t c = 1; c <= s.channels; ++c) {
                const double v = data.firstValues.value(static_cast<std::size_t>(r),
                                                        static_cast<std::size_t>(c));
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
                const double v = data.firstValues.value(static_cast<std::size_t>(r),
                                                        static_cast<std::size_t>(c));
                buf.push_back(',');
                const auto res = std::to_chars(num, num + sizeof num, v);
                buf.append(num, res.ptr);
            }
            buf.append("\r\n");
        }
    }
    std::ofstream f(out, std::ios::binary);
    f.write(buf.data(), static_cast<std::streamsize>(buf.size()));
    return f.good() ? 0 : 3;
}

void write_options(const std::string& home, const std::string& target, int format,
                   const std::string& bin) {
    fs::create_directories(home);
    fs::create_directories(target);
    std::ofstream ini(home + "/qumbrel.ini");
    ini << "[file]\ntargetpath=" << target << "\nbinfilemodus=2\ntargetformat=" << format
        << "\nlanguage=" << bin << "/english.lng\n[userdefined]\nChannels=ALL\n";
}

}  // namespace

int main(int argc, char** argv) {
    Settings s;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string key = argv[i];
        const int value = std::atoi(argv[i + 1]);
        if (key == "--samples")
            s.samples = value;
        else if (key == "--channels")
            s.channels = value;
        else if (key == "--repeat")
            s.repeat = value;
    }
    if (s.samples <= 0 || s.channels <= 0 || s.channels > 30 || s.repeat <= 0) {
        std::fprintf(stderr,
                     "usage: bench_vt_report [--samples N] [--channels 1..30] [--repeat N]\n");
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
    const std::string src = dir + "/bench.oge";
    const std::string cmd = recsim + " --family VT --kind event --channels " +
                            std::to_string(s.channels) + " --samples " + std::to_string(s.samples) +
                            " --seed 1 --out " + src;
    if (std::system(cmd.c_str()) != 0) return 2;
    write_options(dir + "/home-csv", dir + "/csv", 0, bin);
    write_options(dir + "/home-xls", dir + "/xls", 1, bin);

    struct Case {
        const char* name;
        std::function<int()> run;
        std::string output;
    };
    const std::vector<Case> cases{
        {"qumbrel CSV", [&] { return exec_qumbrel(qumbrel, dir + "/home-csv", src); },
         dir + "/csv/bench.csv"},
        {"bare CSV", [&] { return bare_writer(s, src, dir + "/bare.csv", false); },
         dir + "/bare.csv"},
        {"qumbrel XLS", [&] { return exec_qumbrel(qumbrel, dir + "/home-xls", src); },
         dir + "/xls/bench.xls"},
        {"bare XLS", [&] { return bare_writer(s, src, dir + "/bare.xls", true); },
         dir + "/bare.xls"},
    };

    const double values = static_cast<double>(s.samples) * s.channels;
    std::printf("VT event file: %d samples x %d channels (%.1f MB), best of %d\n", s.samples,
                s.channels, static_cast<double>(fs::file_size(src)) / 1e6, s.repeat);
    std::printf("%-12s %9s %13s %12s %11s %9s\n", "case", "seconds", "values/s", "peak RSS MB",
                "output MB", "x bare");
    int rc = 0;
    double ours = 0;
    for (const auto& c : cases) {
        Outcome best;
        for (int r = 0; r < s.repeat; ++r) {
            const Outcome o = run_child(c.run);
            if (!o.ok) {
                best.ok = false;
                break;
            }
            if (!best.ok || o.seconds < best.seconds) best = o;
            best.maxrssKib = std::max(best.maxrssKib, o.maxrssKib);
        }
        if (!best.ok || !fs::exists(c.output)) {
            std::printf("%-12s failed\n", c.name);
            rc = 1;
            continue;
        }
        const bool bare = std::strncmp(c.name, "bare", 4) == 0;
        std::printf("%-12s %9.2f %13.0f %12.1f %11.1f", c.name, best.seconds, values / best.seconds,
                    static_cast<double>(best.maxrssKib) / 1024.0,
                    static_cast<double>(fs::file_size(c.output)) / 1e6);
        if (bare && ours > 0) {
            std::printf(" %9.2f\n", ours / best.seconds);
        } else {
            std::printf("\n");
            ours = best.seconds;
        }
        fs::remove(c.output);
    }
    std::printf("x bare: seconds of qumbrel / seconds of the bare writer of the same format\n");
    fs::remove_all(dir);
    return rc;
}
