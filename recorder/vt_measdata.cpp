// VTGetMeasData: a whole file of samples in one go.
#include <sys/stat.h>

#include <limits>
#include <memory>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/library_loader.h"
#include "recorder/sample_number.h"
#include "recorder/time_text.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

namespace {

// More cells than this in one matrix (2.4 GB at 9 bytes a cell) is no recorder file.
constexpr std::size_t kMaxCells = std::size_t{1} << 28;

// The highest VT measuring channel; numbers above it are math channels.
constexpr std::int16_t kLastMeasuringChannel = 30;

// dataCount is the caller's; before buffers are sized by it, it must be a count the file
// can hold at all: no recorder file keeps a sample row in less than one byte.
void check_count(const std::string& path, std::int32_t count, std::size_t channels) {
    if (count < 0) throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range");
    struct stat st {};
    const std::uint64_t fileBytes =
        ::stat(path.c_str(), &st) == 0 ? static_cast<std::uint64_t>(st.st_size) : 0;
    const std::uint64_t rows = static_cast<std::uint64_t>(count) + 2;
    if (static_cast<std::uint64_t>(count) > fileBytes || rows * (channels + 1) > kMaxCells) {
        throw VbError(errnum::kOutOfMemory, "Out of memory: " + std::to_string(count) +
                                                " samples of " + std::to_string(channels) +
                                                " channels are more than " + path + " (" +
                                                std::to_string(fileBytes) + " bytes) can hold");
    }
}

std::size_t clamp_received(std::int32_t received, std::int32_t count) {
    if (received < 0) return 0;
    return static_cast<std::size_t>(std::min(received, count));
}

}  // namespace

void VTGetMeasData(Program& ctx, const std::string& path, std::span<const std::string> channels,
                   std::int32_t dataCount, std::span<const std::int32_t> decimals, VTMeasData& out,
                   Flag singleValue) {
    int step = 1;
    try {
        const bool single = is_set(singleValue);
        const std::size_t n = channels.size();
        const std::int32_t count = dataCount;
        const auto& lib = recorder::vt_library(ctx);
        check_count(path, count, n);
        const std::size_t rows = static_cast<std::size_t>(count) + 2;
        const auto buffer = static_cast<std::size_t>(count) + 1;
        std::vector<std::int16_t> measBuf(buffer);
        std::vector<std::int32_t> mathBuf(buffer);
        std::vector<std::int32_t> seconds(buffer), ticks(buffer);
        std::int32_t handle = 0;
        lib.DllVTopenReadFile(path.c_str(), &handle);

        out.firstValues.reset(rows, n + 1);
        out.secondValues.reset(single ? 1 : rows, n + 1);
        const auto& r = ctx.regional.profile();
        for (std::size_t i = 1; i <= n; ++i) {
            step = 2;
            const auto number = vb::CDbl(channels[i - 1], r);
            if (!number) throw VbError(errnum::kTypeMismatch, "Type mismatch");
            const std::int16_t chNo = vb::CInt(*number);
            const auto place = static_cast<std::int32_t>(i - 1);
            const std::int32_t position = single ? place : 2 * place;

            step = 3;
            const int passes = single ? 1 : 2;
            for (int pass = 0; pass < passes; ++pass) {
                if (pass == 1) step = 4;
                SampleMatrix& target = pass == 0 ? out.firstValues : out.secondValues;
                std::int32_t u1 = 0, u2 = 0, received = 0;
                if (chNo <= kLastMeasuringChannel) {
                    lib.DllVTgetMeasDataFile(handle, position + pass, 0, count, &u1, &u2,
                                             measBuf.data(), &received);
                    const std::size_t got = clamp_received(received, count);
                    for (std::size_t j = 0; j < got; ++j)
                        target.set(j + 1, i, SampleKind::Int16, measBuf[j]);
                } else {
                    lib.DllVTgetMathDataFile(handle, position + pass, 0, count, &u1, &u2,
                                             mathBuf.data(), &received);
                    const std::size_t got = clamp_received(received, count);
                    for (std::size_t j = 0; j < got; ++j)
                        target.set(j + 1, i, SampleKind::Int32, mathBuf[j]);
                }
            }

            step = 5;
            out.firstValues.set(0, i, SampleKind::Double, *number);
            out.secondValues.set(0, i, SampleKind::Double, *number);
        }
        // The sample buffers are spent; the times need theirs next.
        std::vector<std::int16_t>().swap(measBuf);
        std::vector<std::int32_t>().swap(mathBuf);

        step = 6;
        std::int32_t receivedTimes = 0;
        lib.DllVTgetTimesFile(handle, 0, count, seconds.data(), ticks.data(), &receivedTimes);

        step = 7;
        if (decimals.size() < n)
            throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range: decimals");
        out.dates.clear();
        out.timesWithMs.clear();
        out.times.clear();
        out.msTexts.clear();
        out.dates.reserve(buffer, 10);
        out.timesWithMs.reserve(buffer, 12);
        out.times.reserve(buffer, 8);
        out.msTexts.reserve(buffer, 3);
        const SampleNumberStep toNumber(ctx, kVtZeroRow);
        DateTimeTextCache cache;
        DateTimeTexts t;
        for (std::size_t row = 0; row < buffer; ++row) {
            step = 7;
            std::array<std::int32_t, 6> f{};
            lib.DllVTtoDateTime(seconds[row], &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
            cache.compose(ctx, f, eighths_to_millis(ticks[row]), t);
            out.dates.push_back(t.date);
            out.timesWithMs.push_back(t.timeWithMs);
            out.times.push_back(t.time);
            out.msTexts.push_back(t.ms);

            step = 8;
            for (std::size_t c = 1; c <= n; ++c) {
                const std::int32_t dec = decimals[c - 1];
                if (dec <= 0) continue;
                for (int pass = 0; pass < (single ? 1 : 2); ++pass) {
                    SampleMatrix& m = pass == 0 ? out.firstValues : out.secondValues;
                    // An empty cell reads as the empty text, which the step turns into 0.
                    const SampleCell cell = m.at(row + 1, c);
                    const double v = cell.kind == SampleKind::Empty
                                         ? sample_text_to_number(ctx, "", dec, kVtZeroRow)
                                         : toNumber(static_cast<std::int64_t>(cell.value), dec);
                    m.set(row + 1, c, SampleKind::Double, v);
                }
            }
        }
        // The handle stays open to the end of the process (kept so).
    } catch (...) {
        report_trapped(ctx, "VTGetMeasData()", step);
    }
}

}  // namespace qumbrel
