// Whole-process benchmark of VTGetMeasData.
//
// Makes a VT event file (default 1,000,000 samples of 30 channels, half of them with two
// decimals) with the reference writer, then runs three phases, each in a child process so
// that getrusage gives each its own peak memory:
//   bare     fread of the whole file into one buffer (the floor: the bytes alone)
//   library  the VT library's raw calls: every channel's samples and the times
//   reader   VTGetMeasData: samples placed behind their decimals, four time texts a row
// Prints seconds (best of --repeat runs, one child each), samples per second and peak RSS of each
// phase. The libraries are found beside the program (bin/) or through QUMBREL_RECLIB_PATH.
//
//   bench_vt_measdata [--samples N] [--channels N] [--repeat N]
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "frame/context.h"
#include "frame/headless_host.h"
#include "reclib/model.h"
#include "reclib/writer.h"
#include "recorder/library_loader.h"
#include "recorder/vt_reader.h"

namespace {

using namespace qumbrel;

struct Settings {
    std::int32_t samples = 1000000;
    std::int32_t channels = 30;
    int repeat = 3;
};

class NullEventLog final : public EventLogBackend {
  public:
    void report(std::string_view, int, std::uint32_t, std::string_view) override {}
};

std::int32_t decimals_of(std::int32_t channel) {
    return channel % 2 == 0 ? 2 : 0;
}

void make_file(const Settings& s, const std::string& path) {
    reclib::RecorderFile f;
    f.family = reclib::Family::VT;
    f.kind = reclib::Kind::Event;
    f.header.set("deviceType", "VT210").set("samplingSeconds", 1);
    std::uint32_t state = 12345;
    for (std::int32_t c = 0; c < s.channels; ++c) {
        auto& ch = f.channels.emplace_back();
        ch.info.set("channel", "CH0" + std::to_string(10 + c)).set("decimals", decimals_of(c));
        ch.values.resize(static_cast<std::size_t>(s.samples));
        for (auto& v : ch.values) {
            state = state * 1664525u + 1013904223u;
            v = static_cast<std::int16_t>(state >> 16);
        }
    }
    f.seconds.resize(static_cast<std::size_t>(s.samples));
    f.ticks.resize(static_cast<std::size_t>(s.samples));
    for (std::int32_t i = 0; i < s.samples; ++i) {
        f.seconds[static_cast<std::size_t>(i)] = 1173441903 + i / 8;
        f.ticks[static_cast<std::size_t>(i)] = i % 8;
    }
    std::string error;
    if (!reclib::write_file(f, path, {}, &error)) {
        std::fprintf(stderr, "cannot write %s: %s\n", path.c_str(), error.c_str());
        std::exit(2);
    }
}

struct Phase {
    const char* name;
    std::function<void(Program&)> run;
};

// Runs `phase` once in a child; its seconds and peak RSS in KiB. One run a child, because
// VTGetMeasData leaves its file open to the end of the process (kept so).
bool run_child(const Phase& phase, double& seconds, long& maxrssKib) {
    int fds[2];
    if (::pipe(fds) != 0) return false;
    const pid_t pid = ::fork();
    if (pid < 0) return false;
    if (pid == 0) {
        ::close(fds[0]);
        HeadlessHost host(false);  // status list down: the runs print nothing
        ManualClock clock;
        NullEventLog events;
        Program ctx(ProgramInfo{}, host, clock, events,
                    clsRegionalSettings(*clsRegionalSettings::named("de-DE")));
        ctx.opt.decseparator = ctx.regional.DecimalSymbol();  // as the option file loads it
        const auto t0 = std::chrono::steady_clock::now();
        phase.run(ctx);
        const std::chrono::duration<double> dt = std::chrono::steady_clock::now() - t0;
        const double took = dt.count();
        const bool failed = std::filesystem::exists(ctx.program_file("error.log"));
        const ssize_t n = ::write(fds[1], &took, sizeof took);
        ::_exit(n == sizeof took && !failed ? 0 : 3);
    }
    ::close(fds[1]);
    const ssize_t n = ::read(fds[0], &seconds, sizeof seconds);
    ::close(fds[0]);
    int status = 0;
    struct rusage ru {};
    ::wait4(pid, &status, 0, &ru);
    maxrssKib = ru.ru_maxrss;
    return n == sizeof seconds && WIFEXITED(status) && WEXITSTATUS(status) == 0;
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
                     "usage: bench_vt_measdata [--samples N] [--channels 1..30] [--repeat N]\n");
        return 2;
    }
    char pattern[] = "/tmp/bench-vt-XXXXXX";
    const char* dir = ::mkdtemp(pattern);
    if (!dir) return 2;
    const std::string path = std::string(dir) + "/bench.oge";
    {
        // Written in a child, so the parent forks the phases small.
        const pid_t pid = ::fork();
        if (pid == 0) {
            make_file(s, path);
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(pid, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return 2;
    }
    const auto fileBytes = std::filesystem::file_size(path);

    std::vector<std::string> channels;
    std::vector<std::int32_t> decimals;
    for (std::int32_t c = 0; c < s.channels; ++c) {
        channels.push_back(std::to_string(10 + c));
        decimals.push_back(decimals_of(c));
    }

    const Phase phases[] = {
        {"bare",
         [&](Program&) {
             std::unique_ptr<std::FILE, int (*)(std::FILE*)> f(std::fopen(path.c_str(), "rb"),
                                                               &std::fclose);
             std::vector<char> bytes(fileBytes);
             if (!f || std::fread(bytes.data(), 1, bytes.size(), f.get()) != bytes.size())
                 std::exit(3);
         }},
        {"library",
         [&](Program& ctx) {
             const auto& lib = recorder::vt_library(ctx);
             std::int32_t handle = 0;
             lib.DllVTopenReadFile(path.c_str(), &handle);
             std::vector<std::int16_t> buf(static_cast<std::size_t>(s.samples) + 1);
             std::vector<std::int32_t> sec(buf.size()), tick(buf.size());
             std::int32_t u1 = 0, u2 = 0, got = 0;
             for (std::int32_t c = 0; c < s.channels; ++c)
                 lib.DllVTgetMeasDataFile(handle, c, 0, s.samples, &u1, &u2, buf.data(), &got);
             lib.DllVTgetTimesFile(handle, 0, s.samples, sec.data(), tick.data(), &got);
             lib.DllVTcloseReadFile(handle);
             if (got != s.samples) std::exit(3);
         }},
        {"reader",
         [&](Program& ctx) {
             VTMeasData data;
             VTGetMeasData(ctx, path, channels, s.samples, decimals, data, kTrue);
             if (data.dates.size() != static_cast<std::size_t>(s.samples) + 1) std::exit(3);
         }},
    };

    const double values = static_cast<double>(s.samples) * s.channels;
    std::printf("VT event file: %d samples x %d channels, %.1f MB, best of %d\n", s.samples,
                s.channels, static_cast<double>(fileBytes) / 1e6, s.repeat);
    std::printf("%-8s %10s %16s %14s %12s %10s\n", "phase", "seconds", "samples/s", "values/s",
                "peak RSS MB", "x bare");
    double bare = 0;
    int rc = 0;
    for (const auto& phase : phases) {
        double best = 1e300;
        long kib = 0;
        bool ok = true;
        for (int r = 0; r < s.repeat && ok; ++r) {
            double seconds = 0;
            long runKib = 0;
            ok = run_child(phase, seconds, runKib);
            best = std::min(best, seconds);
            kib = std::max(kib, runKib);
        }
        if (!ok) {
            std::printf("%-8s failed\n", phase.name);
            rc = 1;
            continue;
        }
        if (bare == 0) bare = best;
        std::printf("%-8s %10.3f %16.0f %14.0f %12.1f %10.1f\n", phase.name, best, s.samples / best,
                    values / best, static_cast<double>(kib) / 1024.0, best / bare);
    }
    std::printf("reader cells: %zu bytes a value (9: double + kind)\n",
                sizeof(double) + sizeof(SampleKind));
    std::filesystem::remove_all(dir);
    return rc;
}
