// KL measured values: the cursor of the eighth-tick families with the per-sample alarm
// flags of every channel and the 27-zero row.
#include <array>
#include <memory>
#include <string>

#include "recorder/eighths_cursor.h"
#include "recorder/kl_reader.h"
#include "recorder/library_loader.h"

namespace qumbrel {

namespace {

struct KlAdapter {
    const recorder::KlLibrary* lib = nullptr;
    static constexpr bool kAlarmFlags = true;

    void load(Program& ctx) { lib = &recorder::kl_library(ctx); }
    bool open(const std::string& path, std::int32_t& handle) {
        lib->DllKLopenReadFile(path.c_str(), &handle);
        return handle > 0;
    }
    void close(std::int32_t handle) { lib->DllKLcloseReadFile(handle); }
    std::int32_t meas(std::int32_t h, std::int32_t pos, std::int32_t start, std::int32_t count,
                      std::int16_t* out) {
        std::int32_t u1 = 0, u2 = 0, received = 0;
        lib->DllKLgetMeasData(h, pos, start, count, &u1, &u2, out, &received);
        return received;
    }
    std::int32_t math(std::int32_t h, std::int32_t pos, std::int32_t start, std::int32_t count,
                      std::int32_t* out) {
        std::int32_t u1 = 0, u2 = 0, received = 0;
        lib->DllKLgetMathData(h, pos, start, count, &u1, &u2, out, &received);
        return received;
    }
    std::int32_t alarm(std::int32_t h, std::int32_t pos, std::int32_t start, std::int32_t count,
                       std::uint8_t* flags) {
        std::int32_t received = 0;
        lib->DllKLgetAlarm(h, pos, start, count, flags, &received);
        return received;
    }
    std::int32_t times(std::int32_t h, std::int32_t start, std::int32_t count,
                       std::int32_t* seconds, std::int32_t* ticks) {
        std::int32_t received = 0;
        lib->DllKLgetTimes(h, start, count, seconds, ticks, &received);
        return received;
    }
    void to_date_time(std::int32_t seconds, std::array<std::int32_t, 6>& f) {
        lib->DllKLtoDateTime(seconds, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
    }
};

}  // namespace

std::unique_ptr<SampleCursor> KLOpenMeasData(Program& ctx, std::int32_t handle,
                                             const std::string& path,
                                             std::span<const std::string> channels,
                                             std::int32_t dataCount,
                                             std::span<const std::int32_t> decimals,
                                             Flag singleValue, std::size_t blockSize) {
    return std::make_unique<EighthsCursor<KlAdapter>>(
        ctx, KlAdapter{}, handle, path, channels, dataCount, decimals, is_set(singleValue),
        blockSize, "KLGetMeasData of Modul DllKLFileAccess", kZeroRow27);
}

}  // namespace qumbrel
