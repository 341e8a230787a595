// VU measured values: a cursor that reads the library a block of samples at a time, with
// the alarm flags of every channel and the sample times, rebuilt from the interval when
// the file's times do not advance.
#include <array>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/measdata_checks.h"
#include "recorder/sample_number.h"
#include "recorder/time_rebuild.h"
#include "recorder/time_text.h"
#include "recorder/vu_file.h"
#include "recorder/vu_reader.h"

namespace qumbrel {

namespace {

constexpr const char* kTrapName = "VUGetMeasData of Modul DllVUFileAccess";

class VuCursor final : public SampleCursor {
  public:
    VuCursor(Program& ctx, std::int32_t handle, const std::string& path,
             std::span<const std::string> channels, std::int32_t dataCount,
             std::span<const std::int32_t> decimals, std::span<const std::int32_t> dataTypes,
             const VUTimeBase& timeBase, bool single, std::size_t blockSize)
        : ctx_(ctx),
          single_(single),
          block_(std::max<std::size_t>(blockSize, 1)),
          toNumber_(ctx, kZeroRow27) {
        try {
            step_ = 1;
            rebuild_.emplace(timeBase);

            step_ = 2;
            n_ = channels.size();
            check_sample_count(path, dataCount, n_);
            if (decimals.size() < n_ || dataTypes.size() < n_)
                throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range: channels");
            file_ = std::make_unique<VuFile>(ctx, handle, path);
            dataCount_ = static_cast<std::size_t>(dataCount);
            const auto& r = ctx.regional.profile();
            numbers_.resize(n_);
            for (std::size_t i = 0; i < n_; ++i) {
                const auto number = vb::CDbl(channels[i], r);
                if (!number) throw VbError(errnum::kTypeMismatch, "Type mismatch");
                numbers_[i] = *number;
            }
            decimals_.assign(decimals.begin(), decimals.begin() + static_cast<std::ptrdiff_t>(n_));
            long_.resize(n_);
            for (std::size_t i = 0; i < n_; ++i) long_[i] = dataTypes[i] != 0;

            step_ = 5;
            if (dataCount_ > 0) {
                const std::int32_t first = time_of(0).first;
                const std::int32_t last = time_of(static_cast<std::int32_t>(dataCount_ - 1)).first;
                rebuilding_ = first == last;
            }
            total_ = dataCount_ + 1;
        } catch (...) {
            fail();
        }
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

    // Seconds and ticks of one sample, as the first channel's data call gives them.
    std::pair<std::int32_t, std::int32_t> time_of(std::int32_t sample) {
        std::int16_t one = 0;
        std::int32_t seconds = 0, ticks = 0;
        file_->lib().DllVUGetShortData(file_->get(), 0, sample, 0, 1, &one, &seconds, &ticks);
        return {seconds, ticks};
    }

    void read_values(SampleBlock& b, std::size_t real) {
        const auto start = static_cast<std::int32_t>(b.first);
        const auto want = static_cast<std::int32_t>(real);
        const auto& lib = file_->lib();
        const std::int32_t h = file_->get();
        for (std::size_t i = 1; i <= n_; ++i) {
            const auto place = static_cast<std::int32_t>(i - 1);
            const std::int32_t position = single_ ? place : 2 * place;
            for (int pass = 0; pass < (single_ ? 1 : 2) && real > 0; ++pass) {
                step_ = 3;
                SampleMatrix& target = pass == 0 ? b.firstValues : b.secondValues;
                std::int32_t seconds = 0, ticks = 0;
                if (!long_[i - 1]) {
                    const std::int32_t got = lib.DllVUGetShortData(
                        h, position + pass, start, pass, want, short_.data(), &seconds, &ticks);
                    for (std::size_t j = 0; j < clamp_received(got, real); ++j)
                        target.set(j + 1, i, SampleKind::Int16, short_[j]);
                } else {
                    const std::int32_t got = lib.DllVUGetLongData(
                        h, position + pass, start, pass, want, long32_.data(), &seconds, &ticks);
                    for (std::size_t j = 0; j < clamp_received(got, real); ++j)
                        target.set(j + 1, i, SampleKind::Int32, long32_[j]);
                }
            }
            if (real > 0) {
                step_ = 3;
                const std::int32_t got =
                    lib.DllVUGetAlarmData(h, position, start, want, flags_.data());
                for (std::size_t j = 0; j < clamp_received(got, real); ++j)
                    b.alarmFlags[j * n_ + i - 1] = flags_[j];
            }
            step_ = 4;
            b.firstValues.set(0, i, SampleKind::Double, numbers_[i - 1]);
            b.secondValues.set(0, i, SampleKind::Double, numbers_[i - 1]);
        }
    }

    void push_times(SampleBlock& b, const DateTimeTexts& t) {
        b.dates.push_back(t.date);
        b.timesWithMs.push_back(t.timeWithMs);
        b.times.push_back(t.time);
        b.msTexts.push_back(t.ms);
    }

    void sample_times(SampleBlock& b, std::size_t sample) {
        DateTimeTexts t;
        if (sample >= dataCount_) {
            rebuild_->trailing_row(dataCount_ == 0, t);
        } else if (rebuilding_) {
            rebuild_->next(ctx_, t);
        } else {
            const auto [seconds, ticks] = time_of(static_cast<std::int32_t>(sample));
            std::array<std::int32_t, 6> f{};
            file_->lib().DllVUtoDateTime(seconds, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
            cache_.compose(ctx_, f, ticks, t);
        }
        push_times(b, t);
    }

    void read_block(SampleBlock& b) {
        const std::size_t first = next_;
        const std::size_t k = std::min(block_, total_ - first);
        const std::size_t real = first < dataCount_ ? std::min(k, dataCount_ - first) : 0;
        b.first = first;
        b.count = 0;
        b.firstValues.reset(k + 1, n_ + 1);
        b.secondValues.reset(single_ ? 1 : k + 1, n_ + 1);
        b.dates.clear();
        b.timesWithMs.clear();
        b.times.clear();
        b.msTexts.clear();
        b.flagChannels = n_;
        b.alarmFlags.assign(k * n_, 0);
        b.flagRows = real;
        short_.resize(real);
        long32_.resize(real);
        flags_.resize(real);
        read_values(b, real);

        for (std::size_t row = 0; row < k; ++row) {
            step_ = 5;
            sample_times(b, first + row);
            step_ = 7;
            for (std::size_t c = 1; c <= n_; ++c) {
                const std::int32_t dec = decimals_[c - 1];
                if (dec <= 0) continue;
                for (int pass = 0; pass < (single_ ? 1 : 2); ++pass) {
                    SampleMatrix& m = pass == 0 ? b.firstValues : b.secondValues;
                    const SampleCell cell = m.at(row + 1, c);
                    const double v = cell.kind == SampleKind::Empty
                                         ? sample_text_to_number(ctx_, "", dec, kZeroRow27)
                                         : toNumber_(static_cast<std::int64_t>(cell.value), dec);
                    m.set(row + 1, c, SampleKind::Double, v);
                }
            }
            b.count = row + 1;
        }
        next_ = first + k;
    }

    Program& ctx_;
    std::unique_ptr<VuFile> file_;
    bool single_;
    std::size_t block_;
    std::size_t n_ = 0;
    std::size_t dataCount_ = 0;
    std::size_t total_ = 0;
    std::size_t next_ = 0;
    bool failed_ = false;
    int step_ = 1;
    bool rebuilding_ = false;
    std::optional<TimeRebuild> rebuild_;
    std::vector<double> numbers_;
    std::vector<std::int32_t> decimals_;
    std::vector<bool> long_;
    std::vector<std::int16_t> short_;
    std::vector<std::int32_t> long32_;
    std::vector<std::uint8_t> flags_;
    SampleNumberStep toNumber_;
    DateTimeTextCache cache_;
};

}  // namespace

std::unique_ptr<SampleCursor> VUOpenMeasData(
    Program& ctx, std::int32_t handle, const std::string& path,
    std::span<const std::string> channels, std::int32_t dataCount,
    std::span<const std::int32_t> decimals, std::span<const std::int32_t> dataTypes,
    const VUTimeBase& timeBase, Flag singleValue, std::size_t blockSize) {
    return std::make_unique<VuCursor>(ctx, handle, path, channels, dataCount, decimals, dataTypes,
                                      timeBase, is_set(singleValue), blockSize);
}

}  // namespace qumbrel
