#pragma once
// The measured-value cursor of the families whose libraries hand out samples by channel
// position and the times of a range in one call, with ticks of an eighth of a second
// (VT, VQ, KL). A family supplies an adapter:
//
//   struct Adapter {
//       void load(Program& ctx);  // binds the library; throws what the loader throws
//       bool open(const std::string& path, std::int32_t& handle);  // false: no file
//       void close(std::int32_t handle);
//       std::int32_t meas(h, position, start, count, std::int16_t*);   // received
//       std::int32_t math(h, position, start, count, std::int32_t*);   // received
//       std::int32_t times(h, start, count, std::int32_t* s, std::int32_t* t);  // received
//       void to_date_time(std::int32_t seconds, std::array<std::int32_t, 6>& fields);
//       static constexpr bool kAlarmFlags;  // alarm(h, position, start, count, uint8_t*)
//   };
//
// Positions as in the whole-file readers: i - 1 for channel position i of an event file,
// 2 (i - 1) and 2 (i - 1) + 1 for minimum and maximum of a display file. Channel numbers
// above 30 are math channels. A handle of 0 makes the cursor open the file and close it
// when destroyed; another handle is the caller's.
#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/measdata_checks.h"
#include "recorder/sample_cursor.h"
#include "recorder/sample_number.h"
#include "recorder/time_text.h"

namespace qumbrel {

// The highest measuring channel; numbers above it are math channels.
inline constexpr std::int16_t kLastMeasuringChannel = 30;

template <class Adapter>
class EighthsCursor final : public SampleCursor {
  public:
    EighthsCursor(Program& ctx, Adapter adapter, std::int32_t handle, const std::string& path,
                  std::span<const std::string> channels, std::int32_t dataCount,
                  std::span<const std::int32_t> decimals, bool single, std::size_t blockSize,
                  const char* trapName, std::string_view zeroRow)
        : ctx_(ctx),
          lib_(std::move(adapter)),
          single_(single),
          block_(std::max<std::size_t>(blockSize, 1)),
          trapName_(trapName),
          zeroRow_(zeroRow),
          toNumber_(ctx, zeroRow) {
        try {
            step_ = 1;
            n_ = channels.size();
            check_sample_count(path, dataCount, n_);
            dataCount_ = static_cast<std::size_t>(dataCount);
            lib_.load(ctx);
            handle_ = handle;
            if (handle_ == 0) owned_ = lib_.open(path, handle_);
            const auto& r = ctx.regional.profile();
            numbers_.resize(n_);
            chNo_.resize(n_);
            for (std::size_t i = 0; i < n_; ++i) {
                step_ = 2;
                const auto number = vb::CDbl(channels[i], r);
                if (!number) throw VbError(errnum::kTypeMismatch, "Type mismatch");
                numbers_[i] = *number;
                chNo_[i] = vb::CInt(*number);
            }
            step_ = 7;
            if (decimals.size() < n_)
                throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range: decimals");
            decimals_.assign(decimals.begin(), decimals.begin() + static_cast<std::ptrdiff_t>(n_));
            total_ = dataCount_ + 1;
        } catch (...) {
            fail();
        }
    }

    ~EighthsCursor() override {
        if (owned_ && handle_ > 0) lib_.close(handle_);
    }
    EighthsCursor(const EighthsCursor&) = delete;
    EighthsCursor& operator=(const EighthsCursor&) = delete;

    std::size_t total() const override { return total_; }
    bool failed() const override { return failed_; }

    bool next(SampleBlock& b) override {
        if (failed_ || next_ >= total_) return false;
        try {
            read_block(b);
            return true;
        } catch (...) {
            fail();
            return false;
        }
    }

  private:
    void fail() {
        failed_ = true;
        report_trapped(ctx_, trapName_, step_);
    }

    void read_values(SampleBlock& b, std::size_t real) {
        const auto start = static_cast<std::int32_t>(b.first);
        const auto want = static_cast<std::int32_t>(real);
        for (std::size_t i = 1; i <= n_; ++i) {
            const auto place = static_cast<std::int32_t>(i - 1);
            const std::int32_t position = single_ ? place : 2 * place;
            const int passes = single_ ? 1 : 2;
            for (int pass = 0; pass < passes && real > 0; ++pass) {
                step_ = pass == 0 ? 3 : 4;
                SampleMatrix& target = pass == 0 ? b.firstValues : b.secondValues;
                if (chNo_[i - 1] <= kLastMeasuringChannel) {
                    const auto got = clamp_received(
                        lib_.meas(handle_, position + pass, start, want, meas_.data()), real);
                    for (std::size_t j = 0; j < got; ++j)
                        target.set(j + 1, i, SampleKind::Int16, meas_[j]);
                } else {
                    const auto got = clamp_received(
                        lib_.math(handle_, position + pass, start, want, math_.data()), real);
                    for (std::size_t j = 0; j < got; ++j)
                        target.set(j + 1, i, SampleKind::Int32, math_[j]);
                }
            }
            if constexpr (Adapter::kAlarmFlags) {
                if (real > 0) {
                    step_ = 4;
                    const auto got = clamp_received(
                        lib_.alarm(handle_, position, start, want, flags_.data()), real);
                    for (std::size_t j = 0; j < got; ++j) b.alarmFlags[j * n_ + i - 1] = flags_[j];
                }
            }
            step_ = 5;
            b.firstValues.set(0, i, SampleKind::Double, numbers_[i - 1]);
            b.secondValues.set(0, i, SampleKind::Double, numbers_[i - 1]);
        }
    }

    void read_block(SampleBlock& b) {
        const std::size_t first = next_;
        const std::size_t k = std::min(block_, total_ - first);
        // Rows the library has: the last row of the file (index dataCount) is none of them.
        const std::size_t real = first < dataCount_ ? std::min(k, dataCount_ - first) : 0;
        b.first = first;
        b.count = 0;
        b.firstValues.reset(k + 1, n_ + 1);
        b.secondValues.reset(single_ ? 1 : k + 1, n_ + 1);
        b.dates.clear();
        b.timesWithMs.clear();
        b.times.clear();
        b.msTexts.clear();
        b.flagChannels = Adapter::kAlarmFlags ? n_ : 0;
        b.alarmFlags.assign(Adapter::kAlarmFlags ? k * n_ : 0, 0);
        b.flagRows = real;
        meas_.resize(real);
        math_.resize(real);
        flags_.resize(real);
        read_values(b, real);

        step_ = 6;
        seconds_.assign(k, 0);
        ticks_.assign(k, 0);
        if (real > 0) {
            // Rows the library did not fill keep the zero time.
            const auto got = clamp_received(
                lib_.times(handle_, static_cast<std::int32_t>(first),
                           static_cast<std::int32_t>(real), seconds_.data(), ticks_.data()),
                real);
            std::fill(seconds_.begin() + static_cast<std::ptrdiff_t>(got), seconds_.end(), 0);
            std::fill(ticks_.begin() + static_cast<std::ptrdiff_t>(got), ticks_.end(), 0);
        }

        DateTimeTexts t;
        for (std::size_t row = 0; row < k; ++row) {
            step_ = 7;
            std::array<std::int32_t, 6> f{};
            lib_.to_date_time(seconds_[row], f);
            cache_.compose(ctx_, f, eighths_to_millis(ticks_[row]), t);
            b.dates.push_back(t.date);
            b.timesWithMs.push_back(t.timeWithMs);
            b.times.push_back(t.time);
            b.msTexts.push_back(t.ms);

            step_ = 8;
            for (std::size_t c = 1; c <= n_; ++c) {
                const std::int32_t dec = decimals_[c - 1];
                if (dec <= 0) continue;
                for (int pass = 0; pass < (single_ ? 1 : 2); ++pass) {
                    SampleMatrix& m = pass == 0 ? b.firstValues : b.secondValues;
                    // An empty cell reads as the empty text, which the step turns into 0.
                    const SampleCell cell = m.at(row + 1, c);
                    const double v = cell.kind == SampleKind::Empty
                                         ? sample_text_to_number(ctx_, "", dec, zeroRow_)
                                         : toNumber_(static_cast<std::int64_t>(cell.value), dec);
                    m.set(row + 1, c, SampleKind::Double, v);
                }
            }
            b.count = row + 1;
        }
        next_ = first + k;
    }

    Program& ctx_;
    Adapter lib_;
    bool single_;
    std::size_t block_;
    const char* trapName_;
    std::string_view zeroRow_;
    std::size_t n_ = 0;
    std::size_t dataCount_ = 0;
    std::size_t total_ = 0;
    std::size_t next_ = 0;
    bool failed_ = false;
    bool owned_ = false;
    int step_ = 1;
    std::int32_t handle_ = 0;
    std::vector<double> numbers_;
    std::vector<std::int16_t> chNo_;
    std::vector<std::int32_t> decimals_;
    std::vector<std::int16_t> meas_;
    std::vector<std::int32_t> math_;
    std::vector<std::uint8_t> flags_;
    std::vector<std::int32_t> seconds_, ticks_;
    SampleNumberStep toNumber_;
    DateTimeTextCache cache_;
};

}  // namespace qumbrel
