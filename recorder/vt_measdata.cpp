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
#include "recorder/library_loader.h"
#include "recorder/measdata_checks.h"
#include "recorder/sample_number.h"
#include "recorder/time_text.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

namespace {

constexpr const char* kTrapName = "VTGetMeasData()";

// The highest VT measuring channel; numbers above it are math channels.
constexpr std::int16_t kLastMeasuringChannel = 30;

class VtCursor final : public SampleCursor {
  public:
    VtCursor(Program& ctx, const std::string& path, std::span<const std::string> channels,
             std::int32_t dataCount, std::span<const std::int32_t> decimals, bool single,
             std::size_t blockSize)
        : ctx_(ctx),
          single_(single),
          block_(std::max<std::size_t>(blockSize, 1)),
          toNumber_(ctx, kVtZeroRow) {
        try {
            step_ = 1;
            n_ = channels.size();
            check_sample_count(path, dataCount, n_);
            lib_ = &recorder::vt_library(ctx);
            dataCount_ = static_cast<std::size_t>(dataCount);
            lib_->DllVTopenReadFile(path.c_str(), &handle_);
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

    ~VtCursor() override {
        // The whole-file reader kept its handle to the end of the process; a cursor gives
        // it back, so a deleted source frees its space in a long automatic run.
        if (lib_ && handle_ > 0) lib_->DllVTcloseReadFile(handle_);
    }

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
        report_trapped(ctx_, kTrapName, step_);
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
        const auto start = static_cast<std::int32_t>(first);
        const auto want = static_cast<std::int32_t>(real);
        if (real > 0) {
            meas_.resize(real);
            math_.resize(real);
        }
        for (std::size_t i = 1; i <= n_; ++i) {
            const std::int16_t chNo = chNo_[i - 1];
            const auto place = static_cast<std::int32_t>(i - 1);
            const std::int32_t position = single_ ? place : 2 * place;
            const int passes = single_ ? 1 : 2;
            for (int pass = 0; pass < passes && real > 0; ++pass) {
                step_ = pass == 0 ? 3 : 4;
                SampleMatrix& target = pass == 0 ? b.firstValues : b.secondValues;
                std::int32_t u1 = 0, u2 = 0, received = 0;
                if (chNo <= kLastMeasuringChannel) {
                    lib_->DllVTgetMeasDataFile(handle_, position + pass, start, want, &u1, &u2,
                                               meas_.data(), &received);
                    const std::size_t got = clamp_received(received, real);
                    for (std::size_t j = 0; j < got; ++j)
                        target.set(j + 1, i, SampleKind::Int16, meas_[j]);
                } else {
                    lib_->DllVTgetMathDataFile(handle_, position + pass, start, want, &u1, &u2,
                                               math_.data(), &received);
                    const std::size_t got = clamp_received(received, real);
                    for (std::size_t j = 0; j < got; ++j)
                        target.set(j + 1, i, SampleKind::Int32, math_[j]);
                }
            }
            step_ = 5;
            b.firstValues.set(0, i, SampleKind::Double, numbers_[i - 1]);
            b.secondValues.set(0, i, SampleKind::Double, numbers_[i - 1]);
        }

        step_ = 6;
        seconds_.assign(k, 0);
        ticks_.assign(k, 0);
        if (real > 0) {
            std::int32_t receivedTimes = 0;
            lib_->DllVTgetTimesFile(handle_, start, want, seconds_.data(), ticks_.data(),
                                    &receivedTimes);
            // Rows the library did not fill keep the zero time.
            const std::size_t got = clamp_received(receivedTimes, real);
            std::fill(seconds_.begin() + static_cast<std::ptrdiff_t>(got), seconds_.end(), 0);
            std::fill(ticks_.begin() + static_cast<std::ptrdiff_t>(got), ticks_.end(), 0);
        }

        DateTimeTexts t;
        for (std::size_t row = 0; row < k; ++row) {
            step_ = 7;
            std::array<std::int32_t, 6> f{};
            lib_->DllVTtoDateTime(seconds_[row], &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
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
                                         ? sample_text_to_number(ctx_, "", dec, kVtZeroRow)
                                         : toNumber_(static_cast<std::int64_t>(cell.value), dec);
                    m.set(row + 1, c, SampleKind::Double, v);
                }
            }
            b.count = row + 1;
        }
        next_ = first + k;
    }

    Program& ctx_;
    const recorder::VtLibrary* lib_ = nullptr;
    bool single_;
    std::size_t block_;
    std::size_t n_ = 0;
    std::size_t dataCount_ = 0;
    std::size_t total_ = 0;
    std::size_t next_ = 0;
    bool failed_ = false;
    int step_ = 1;
    std::int32_t handle_ = 0;
    std::vector<double> numbers_;
    std::vector<std::int16_t> chNo_;
    std::vector<std::int32_t> decimals_;
    std::vector<std::int16_t> meas_;
    std::vector<std::int32_t> math_;
    std::vector<std::int32_t> seconds_, ticks_;
    SampleNumberStep toNumber_;
    DateTimeTextCache cache_;
};

}  // namespace

std::unique_ptr<SampleCursor> VTOpenMeasData(Program& ctx, const std::string& path,
                                             std::span<const std::string> channels,
                                             std::int32_t dataCount,
                                             std::span<const std::int32_t> decimals,
                                             Flag singleValue, std::size_t blockSize) {
    return std::make_unique<VtCursor>(ctx, path, channels, dataCount, decimals, is_set(singleValue),
                                      blockSize);
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
