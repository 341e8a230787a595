// HN measured values: a cursor over the FIFO data functions, one call a channel a block,
// by the channel's data type (2 short, 4 long, 4 with flag 256 float, others nothing).
// The first channel that is read gives the sample times.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/code_texts.h"
#include "recorder/hn_file.h"
#include "recorder/hn_reader.h"
#include "recorder/measdata_checks.h"
#include "recorder/sample_number.h"
#include "recorder/time_rebuild.h"
#include "recorder/time_text.h"

namespace qumbrel {

namespace {

constexpr const char* kTrapName = "HNGetMeasData()";

bool is_read(const HNChannelPlan& c) {
    return c.dataType == abi::kHnDataTypeShort || c.dataType == abi::kHnDataTypeLong;
}

// A float value as the double its shortest text names (12.3f reads 12.3, not
// 12.300000190734863).
double float_value(float f) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, f).ptr;
    *end = '\0';
    return std::strtod(text, nullptr);
}

std::string alarm_short_text(std::uint8_t code) {
    return alarm_type_short(code);
}

class HnCursor final : public SampleCursor {
  public:
    HnCursor(Program& ctx, std::int32_t handle, const std::string& path,
             std::span<const HNChannelPlan> channels, std::int32_t dataCount, bool alarmTexts,
             const VUTimeBase& timeBase, std::size_t blockSize)
        : ctx_(ctx),
          channels_(channels.begin(), channels.end()),
          alarmTexts_(alarmTexts),
          block_(std::max<std::size_t>(blockSize, 1)),
          toNumber_(ctx, kZeroRow27) {
        try {
            step_ = 1;
            rebuild_.emplace(timeBase);
            n_ = channels_.size();
            check_sample_count(path, dataCount, n_);
            file_ = std::make_unique<HnFile>(ctx, handle, path);
            dataCount_ = static_cast<std::size_t>(dataCount);
            const auto& r = ctx.regional.profile();
            numbers_.resize(n_);
            for (std::size_t i = 0; i < n_; ++i) {
                const auto number = vb::CDbl(channels_[i].number, r);
                if (!number) throw VbError(errnum::kTypeMismatch, "Type mismatch");
                numbers_[i] = *number;
                if (!timeChannel_ && is_read(channels_[i])) timeChannel_ = i;
            }
            step_ = 5;
            if (dataCount_ > 0 && timeChannel_) {
                const std::int32_t last = static_cast<std::int32_t>(dataCount_ - 1);
                rebuilding_ = time_of(0).first == time_of(last).first;
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

    // One channel's samples from `start`: what the library wrote, and the per-sample
    // times and alarm codes beside them.
    std::int32_t read_channel(const HNChannelPlan& c, std::int32_t start, std::int32_t count,
                              SampleMatrix& m, std::size_t column) {
        const auto& lib = file_->lib();
        const std::int32_t h = file_->get();
        const auto n = static_cast<std::size_t>(count);
        seconds_.assign(n, 0);
        ticks_.assign(n, 0);
        flags_.assign(n, 0);
        alarms_.assign(n, 0);
        std::int32_t got = 0;
        if (c.dataType == abi::kHnDataTypeShort) {
            short_.resize(n);
            got = lib.DllHNGetFileFifoShortData(h, c.fifoId, c.fifoType, c.channelIndex, count,
                                                start, short_.data(), seconds_.data(),
                                                ticks_.data(), flags_.data(), alarms_.data());
            for (std::size_t j = 0; j < clamp_received(got, n); ++j)
                m.set(j + 1, column, SampleKind::Int16, short_[j]);
        } else if ((c.flags & kHnFloatFlag) != 0) {
            float_.resize(n);
            got = lib.DllHNGetFileFifoFloatData(h, c.fifoId, c.fifoType, c.channelIndex, count,
                                                start, float_.data(), seconds_.data(),
                                                ticks_.data(), flags_.data(), alarms_.data());
            // Float values are the channel's values already; the decimals do not move them.
            for (std::size_t j = 0; j < clamp_received(got, n); ++j)
                m.set(j + 1, column, SampleKind::Double, float_value(float_[j]));
        } else {
            long_.resize(n);
            got = lib.DllHNGetFileFifoLongData(h, c.fifoId, c.fifoType, c.channelIndex, count,
                                               start, long_.data(), seconds_.data(), ticks_.data(),
                                               flags_.data(), alarms_.data());
            for (std::size_t j = 0; j < clamp_received(got, n); ++j)
                m.set(j + 1, column, SampleKind::Int32, long_[j]);
        }
        return got;
    }

    std::pair<std::int32_t, std::int32_t> time_of(std::int32_t sample) {
        SampleMatrix scratch;
        scratch.reset(2, 2);
        const std::int32_t got = read_channel(channels_[*timeChannel_], sample, 1, scratch, 1);
        return got > 0 ? std::pair{seconds_[0], ticks_[0]} : std::pair{0, 0};
    }

    void read_block(SampleBlock& b) {
        const std::size_t first = next_;
        const std::size_t k = std::min(block_, total_ - first);
        const std::size_t real = first < dataCount_ ? std::min(k, dataCount_ - first) : 0;
        b.first = first;
        b.count = 0;
        b.firstValues.reset(k + 1, n_ + 1);
        b.secondValues.reset(1, n_ + 1);
        b.dates.clear();
        b.timesWithMs.clear();
        b.times.clear();
        b.msTexts.clear();
        b.flagChannels = alarmTexts_ ? n_ : 0;
        b.alarmFlags.assign(alarmTexts_ ? k * n_ : 0, 0);
        b.flagRows = real;
        b.alarmText = alarm_short_text;

        std::vector<std::int32_t> blockSeconds(k, 0), blockTicks(k, 0);
        for (std::size_t i = 1; i <= n_; ++i) {
            const HNChannelPlan& c = channels_[i - 1];
            if (real > 0 && is_read(c)) {
                step_ = 3;
                const auto got =
                    clamp_received(read_channel(c, static_cast<std::int32_t>(first),
                                                static_cast<std::int32_t>(real), b.firstValues, i),
                                   real);
                if (timeChannel_ && *timeChannel_ == i - 1) {
                    std::copy_n(seconds_.begin(), got, blockSeconds.begin());
                    std::copy_n(ticks_.begin(), got, blockTicks.begin());
                }
                if (alarmTexts_) {
                    for (std::size_t j = 0; j < got; ++j)
                        b.alarmFlags[j * n_ + i - 1] = static_cast<std::uint8_t>(alarms_[j]);
                }
            }
            step_ = 4;
            b.firstValues.set(0, i, SampleKind::Double, numbers_[i - 1]);
            b.secondValues.set(0, i, SampleKind::Double, numbers_[i - 1]);
        }

        for (std::size_t row = 0; row < k; ++row) {
            step_ = 5;
            DateTimeTexts t;
            if (first + row >= dataCount_) {
                rebuild_->trailing_row(dataCount_ == 0, t);
            } else if (rebuilding_) {
                rebuild_->next(ctx_, t);
            } else {
                std::array<std::int32_t, 6> f{};
                file_->lib().DllHNtoDateTime(blockSeconds[row], &f[0], &f[1], &f[2], &f[3], &f[4],
                                             &f[5]);
                cache_.compose(ctx_, f, blockTicks[row], t);
            }
            b.dates.push_back(t.date);
            b.timesWithMs.push_back(t.timeWithMs);
            b.times.push_back(t.time);
            b.msTexts.push_back(t.ms);

            step_ = 7;
            for (std::size_t c = 1; c <= n_; ++c) {
                const std::int32_t dec = channels_[c - 1].decimals;
                if (dec <= 0) continue;
                const SampleCell cell = b.firstValues.at(row + 1, c);
                if (cell.kind == SampleKind::Double) continue;  // a float value
                const double v = cell.kind == SampleKind::Empty
                                     ? sample_text_to_number(ctx_, "", dec, kZeroRow27)
                                     : toNumber_(static_cast<std::int64_t>(cell.value), dec);
                b.firstValues.set(row + 1, c, SampleKind::Double, v);
            }
            b.count = row + 1;
        }
        next_ = first + k;
    }

    Program& ctx_;
    std::vector<HNChannelPlan> channels_;
    bool alarmTexts_;
    std::size_t block_;
    std::unique_ptr<HnFile> file_;
    std::size_t n_ = 0;
    std::size_t dataCount_ = 0;
    std::size_t total_ = 0;
    std::size_t next_ = 0;
    bool failed_ = false;
    int step_ = 1;
    std::optional<std::size_t> timeChannel_;
    bool rebuilding_ = false;
    std::optional<TimeRebuild> rebuild_;
    std::vector<double> numbers_;
    std::vector<std::int16_t> short_;
    std::vector<std::int32_t> long_;
    std::vector<float> float_;
    std::vector<std::int32_t> seconds_, ticks_, flags_, alarms_;
    SampleNumberStep toNumber_;
    DateTimeTextCache cache_;
};

}  // namespace

std::unique_ptr<SampleCursor> HNOpenMeasData(Program& ctx, std::int32_t handle,
                                             const std::string& path,
                                             std::span<const HNChannelPlan> channels,
                                             std::int32_t dataCount, bool alarmTexts,
                                             const VUTimeBase& timeBase, std::size_t blockSize) {
    return std::make_unique<HnCursor>(ctx, handle, path, channels, dataCount, alarmTexts, timeBase,
                                      blockSize);
}

}  // namespace qumbrel
