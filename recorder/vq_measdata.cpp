// VQ measured values: the cursor of the eighth-tick families with the 27-zero row; times
// are split by the VU library's function, as every VQ time is.
#include <array>
#include <memory>
#include <string>

#include "recorder/eighths_cursor.h"
#include "recorder/library_loader.h"
#include "recorder/vq_reader.h"

namespace qumbrel {

namespace {

struct VqAdapter {
    const recorder::VqLibrary* lib = nullptr;
    const recorder::VuLibrary* split = nullptr;
    static constexpr bool kAlarmFlags = false;

    void load(Program& ctx) {
        lib = &recorder::vq_library(ctx);
        split = &recorder::vu_library(ctx);
    }
    bool open(const std::string& path, std::int32_t& handle) {
        std::int32_t openStatus = 0;
        lib->DllVQopenReadFile(path.c_str(), &openStatus, &handle);
        return handle > 0;
    }
    void close(std::int32_t handle) { lib->DllVQcloseReadFile(handle); }
    std::int32_t meas(std::int32_t h, std::int32_t pos, std::int32_t start, std::int32_t count,
                      std::int16_t* out) {
        std::int32_t c1 = 0, c2 = 0, received = 0;
        lib->DllVQgetMeasData(h, pos, start, count, &c1, &c2, out, &received);
        return received;
    }
    std::int32_t math(std::int32_t h, std::int32_t pos, std::int32_t start, std::int32_t count,
                      std::int32_t* out) {
        std::int32_t c1 = 0, c2 = 0, received = 0;
        lib->DllVQgetMathData(h, pos, start, count, &c1, &c2, out, &received);
        return received;
    }
    std::int32_t times(std::int32_t h, std::int32_t start, std::int32_t count,
                       std::int32_t* seconds, std::int32_t* ticks) {
        std::int32_t received = 0;
        lib->DllVQgetTimes(h, start, count, seconds, ticks, &received);
        return received;
    }
    void to_date_time(std::int32_t seconds, std::array<std::int32_t, 6>& f) {
        split->DllVUtoDateTime(seconds, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
    }
};

}  // namespace

std::unique_ptr<SampleCursor> VQOpenMeasData(Program& ctx, std::int32_t handle,
                                             const std::string& path,
                                             std::span<const std::string> channels,
                                             std::int32_t dataCount,
                                             std::span<const std::int32_t> decimals,
                                             Flag singleValue, std::size_t blockSize) {
    return std::make_unique<EighthsCursor<VqAdapter>>(ctx, VqAdapter{}, handle, path, channels,
                                                      dataCount, decimals, is_set(singleValue),
                                                      blockSize, "VQGetMeasData()", kZeroRow27);
}

}  // namespace qumbrel
