// VT measured values: a cursor that reads the library a block of samples at a time, and
// VTGetMeasData, the whole file in one go, built on it so there is one reading path.
#include <array>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/eighths_cursor.h"
#include "recorder/library_loader.h"
#include "recorder/measdata_checks.h"
#include "recorder/sample_number.h"
#include "recorder/time_text.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

namespace {

constexpr const char* kTrapName = "VTGetMeasData()";

struct VtAdapter {
    const recorder::VtLibrary* lib = nullptr;
    static constexpr bool kAlarmFlags = false;

    void load(Program& ctx) { lib = &recorder::vt_library(ctx); }
    bool open(const std::string& path, std::int32_t& handle) {
        lib->DllVTopenReadFile(path.c_str(), &handle);
        return handle > 0;
    }
    // The whole-file reader kept its handle to the end of the process; a cursor gives it
    // back, so a deleted source frees its space in a long automatic run.
    void close(std::int32_t handle) { lib->DllVTcloseReadFile(handle); }
    std::int32_t meas(std::int32_t h, std::int32_t pos, std::int32_t start, std::int32_t count,
                      std::int16_t* out) {
        std::int32_t u1 = 0, u2 = 0, received = 0;
        lib->DllVTgetMeasDataFile(h, pos, start, count, &u1, &u2, out, &received);
        return received;
    }
    std::int32_t math(std::int32_t h, std::int32_t pos, std::int32_t start, std::int32_t count,
                      std::int32_t* out) {
        std::int32_t u1 = 0, u2 = 0, received = 0;
        lib->DllVTgetMathDataFile(h, pos, start, count, &u1, &u2, out, &received);
        return received;
    }
    std::int32_t times(std::int32_t h, std::int32_t start, std::int32_t count,
                       std::int32_t* seconds, std::int32_t* ticks) {
        std::int32_t received = 0;
        lib->DllVTgetTimesFile(h, start, count, seconds, ticks, &received);
        return received;
    }
    void to_date_time(std::int32_t seconds, std::array<std::int32_t, 6>& f) {
        lib->DllVTtoDateTime(seconds, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
    }
};

}  // namespace

std::unique_ptr<SampleCursor> VTOpenMeasData(Program& ctx, const std::string& path,
                                             std::span<const std::string> channels,
                                             std::int32_t dataCount,
                                             std::span<const std::int32_t> decimals,
                                             Flag singleValue, std::size_t blockSize) {
    return std::make_unique<EighthsCursor<VtAdapter>>(ctx, VtAdapter{}, 0, path, channels,
                                                      dataCount, decimals, is_set(singleValue),
                                                      blockSize, kTrapName, kVtZeroRow);
}

void VTGetMeasData(Program& ctx, const std::string& path, std::span<const std::string> channels,
                   std::int32_t dataCount, std::span<const std::int32_t> decimals, VTMeasData& out,
                   Flag singleValue) {
    auto cursor = VTOpenMeasData(ctx, path, channels, dataCount, decimals, singleValue);
    if (cursor->failed()) return;
    const bool single = is_set(singleValue);
    const std::size_t n = channels.size();
    const std::size_t rows = cursor->total() + 1;
    out.firstValues.reset(rows, n + 1);
    out.secondValues.reset(single ? 1 : rows, n + 1);
    out.dates.clear();
    out.timesWithMs.clear();
    out.times.clear();
    out.msTexts.clear();
    out.dates.reserve(cursor->total(), 10);
    out.timesWithMs.reserve(cursor->total(), 12);
    out.times.reserve(cursor->total(), 8);
    out.msTexts.reserve(cursor->total(), 3);
    SampleBlock b;
    while (cursor->next(b)) {
        for (std::size_t c = 1; c <= n; ++c) {
            out.firstValues.set(0, c, b.firstValues.kind(0, c), b.firstValues.value(0, c));
            out.secondValues.set(0, c, b.secondValues.kind(0, c), b.secondValues.value(0, c));
        }
        for (std::size_t r = 0; r < b.count; ++r) {
            out.dates.push_back(b.dates[r]);
            out.timesWithMs.push_back(b.timesWithMs[r]);
            out.times.push_back(b.times[r]);
            out.msTexts.push_back(b.msTexts[r]);
            const std::size_t row = b.first + r + 1;
            for (std::size_t c = 1; c <= n; ++c) {
                const SampleCell v = b.firstValues.at(r + 1, c);
                out.firstValues.set(row, c, v.kind, v.value);
                if (!single) {
                    const SampleCell w = b.secondValues.at(r + 1, c);
                    out.secondValues.set(row, c, w.kind, w.value);
                }
            }
        }
    }
}

}  // namespace qumbrel
