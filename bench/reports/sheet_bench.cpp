// Throughput of the two report writers, each beside a bare buffered write of the same
// bytes in the same run: 10,000,000 NUMBER cells through ExcelFile, and 1,000,000 rows of
// 30 values through the CSV sink. Prints cells per second and the ratio to the bare write.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <bit>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <vector>

#include "frame/clock.h"
#include "frame/context.h"
#include "frame/headless_host.h"
#include "reports/excelfile.h"
#include "reports/valuesink.h"

namespace {

using namespace qumbrel;

constexpr std::int64_t kCells = 10'000'000;
constexpr std::int64_t kRows = 1'000'000;
constexpr int kCols = 30;

std::string scratch(const char* name) {
    return (std::filesystem::temp_directory_path() / name).string();
}

// Values of a recorder-like signal, computed once so both sides format the same doubles.
const std::vector<double>& values() {
    static const std::vector<double> v = [] {
        std::vector<double> out(4096);
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = static_cast<double>(i) * 0.37 - 400.125;
        return out;
    }();
    return v;
}

// The bare side: a 256 KiB buffer and write(2), nothing else.
class BareFile {
  public:
    explicit BareFile(const std::string& path)
        : fd_(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)),
          buf_(new char[kSize]) {}
    ~BareFile() {
        flush();
        ::close(fd_);
    }
    char* room(std::size_t n) {
        if (used_ + n > kSize) flush();
        return buf_.get() + used_;
    }
    void commit(std::size_t n) { used_ += n; }
    void flush() {
        for (std::size_t at = 0; at < used_;) {
            const ssize_t n = ::write(fd_, buf_.get() + at, used_ - at);
            if (n <= 0) break;
            at += static_cast<std::size_t>(n);
        }
        used_ = 0;
    }

  private:
    static constexpr std::size_t kSize = 256 * 1024;
    int fd_;
    std::unique_ptr<char[]> buf_;
    std::size_t used_ = 0;
};

void BM_ExcelFileNumbers(benchmark::State& state) {
    const auto& v = values();
    for (auto _ : state) {
        ExcelFile xls;
        xls.CreateFile(scratch("qumbrel-bench-excel.xls"));
        for (std::int64_t i = 0; i < kCells; ++i) {
            xls.WriteValue(1, 0, 3, 0, static_cast<std::int32_t>(i / 10 % 30000 + 1),
                           static_cast<std::int32_t>(i % 10 + 1), v[i & 4095], 4);
        }
        if (xls.CloseFile() != 0) state.SkipWithError("CloseFile failed");
    }
    state.counters["cells/s"] = benchmark::Counter(static_cast<double>(kCells) * state.iterations(),
                                                   benchmark::Counter::kIsRate);
}

void BM_BareNumbers(benchmark::State& state) {
    const auto& v = values();
    for (auto _ : state) {
        BareFile f(scratch("qumbrel-bench-bare.xls"));
        // The same leading records as ExcelFile writes: BOF and the format table.
        static const char head[] = "\x09\x00\x04\x00\x02\x00\x0A\x00";
        std::memcpy(f.room(8), head, 8);
        f.commit(8);
        for (std::int64_t i = 0; i < kCells; ++i) {
            char* p = f.room(19);
            const auto row = static_cast<std::uint16_t>(i / 10 % 30000);
            const auto col = static_cast<std::uint16_t>(i % 10);
            const auto bits = std::bit_cast<std::uint64_t>(v[i & 4095]);
            const unsigned char rec[11] = {3,
                                           0,
                                           15,
                                           0,
                                           static_cast<unsigned char>(row),
                                           static_cast<unsigned char>(row >> 8),
                                           static_cast<unsigned char>(col),
                                           static_cast<unsigned char>(col >> 8),
                                           0,
                                           4,
                                           3};
            std::memcpy(p, rec, 11);
            std::memcpy(p + 11, &bits, 8);
            f.commit(19);
        }
    }
    state.counters["cells/s"] = benchmark::Counter(static_cast<double>(kCells) * state.iterations(),
                                                   benchmark::Counter::kIsRate);
}

class NoEventLog : public EventLogBackend {
  public:
    void report(std::string_view, int, std::uint32_t, std::string_view) override {}
};

void BM_CsvSink(benchmark::State& state) {
    const auto& v = values();
    HeadlessHost host(false);
    SystemClock clock;
    NoEventLog events;
    Program ctx(ProgramInfo{}, host, clock, events,
                clsRegionalSettings(*clsRegionalSettings::named("de-DE")));
    ctx.opt.listseparator.assign(1, ';');  // assign(1, c): GCC 12 -Wrestrict false positive
    ctx.opt.decseparator.assign(1, ',');
    for (auto _ : state) {
        open_csv_report(ctx, scratch("qumbrel-bench-sink.csv"));
        reset_field_array(ctx);
        std::size_t k = 0;
        for (std::int64_t r = 1; r <= kRows; ++r) {
            for (int c = 1; c <= kCols; ++c) {
                fkt_convertsetvalue(ctx, 0, c, 1, v[k++ & 4095], c == kCols, 4);
            }
        }
        if (close_csv_report(ctx) != 0) state.SkipWithError("close failed");
    }
    state.counters["cells/s"] = benchmark::Counter(
        static_cast<double>(kRows * kCols) * state.iterations(), benchmark::Counter::kIsRate);
}

void BM_BareCsv(benchmark::State& state) {
    const auto& v = values();
    for (auto _ : state) {
        BareFile f(scratch("qumbrel-bench-bare.csv"));
        std::size_t k = 0;
        for (std::int64_t r = 1; r <= kRows; ++r) {
            for (int c = 1; c <= kCols; ++c) {
                char* p = f.room(40);
                char* e =
                    std::to_chars(p, p + 32, v[k++ & 4095], std::chars_format::general, 15).ptr;
                for (char* q = p; q != e; ++q) *q = *q == '.' ? ',' : *q;
                *e++ = ';';
                f.commit(static_cast<std::size_t>(e - p));
            }
            char* p = f.room(2);
            p[0] = '\r';
            p[1] = '\n';
            f.commit(2);
        }
    }
    state.counters["cells/s"] = benchmark::Counter(
        static_cast<double>(kRows * kCols) * state.iterations(), benchmark::Counter::kIsRate);
}

BENCHMARK(BM_BareNumbers)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
BENCHMARK(BM_ExcelFileNumbers)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
BENCHMARK(BM_BareCsv)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
BENCHMARK(BM_CsvSink)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

// Keeps the best time of each benchmark so the ratios can be printed at the end.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& r : runs) {
            if (r.run_type != Run::RT_Iteration) continue;
            const double t = r.GetAdjustedRealTime();
            auto [it, fresh] =
                best_.emplace(r.benchmark_name().substr(0, r.benchmark_name().find('/')), t);
            if (!fresh && t < it->second) it->second = t;
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void ratio(const char* name, const char* bare, double cells) const {
        const auto a = best_.find(name), b = best_.find(bare);
        if (a == best_.end() || b == best_.end()) return;
        std::printf(
            "%-22s %8.0f ms  %6.1f M cells/s   bare %8.0f ms  %6.1f M cells/s   ratio %.2f\n", name,
            a->second, cells / a->second / 1e3, b->second, cells / b->second / 1e3,
            a->second / b->second);
    }

  private:
    std::map<std::string, double> best_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nbest of 3, same run:\n");
    reporter.ratio("BM_ExcelFileNumbers", "BM_BareNumbers", static_cast<double>(kCells));
    reporter.ratio("BM_CsvSink", "BM_BareCsv", static_cast<double>(kRows * kCols));
    for (const char* f : {"qumbrel-bench-excel.xls", "qumbrel-bench-bare.xls",
                          "qumbrel-bench-sink.csv", "qumbrel-bench-bare.csv"}) {
        std::filesystem::remove(scratch(f));
    }
    benchmark::Shutdown();
    return 0;
}
