#pragma once
// Measured values a block at a time. A family's ...GetMeasData used to fill whole-file
// arrays; its cursor hands out the same rows in blocks, so a report's memory is bounded by
// the block size and the channel count, never by the sample count.
//
// The whole-file arrays have dataCount + 1 text rows (the last from a zero time) and value
// rows 1 .. dataCount + 1 (the last is the row of zeros). A cursor delivers exactly these
// dataCount + 1 samples, in order. Inside a block, sample r (0-based) has its texts at
// index r and its values at matrix row r + 1; matrix row 0 holds the channel numbers, as
// in the whole-file arrays, and columns are channel positions from 1.
//
// Usage:
//   SampleBlock block;
//   auto cursor = VTOpenMeasData(ctx, path, channels, count, decimals, singleValue);
//   while (cursor->next(block))
//       for (std::size_t r = 0; r < block.count; ++r) use(block.dates[r], block.firstValues.at(r +
//       1, c));
//
// A failing library call inside next() goes to the family reader's trap under its name
// (e.g. "VTGetMeasData()") with its step, as the whole-file reader did; next() then returns
// false with failed() true, and the caller takes the path of a failed reader.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "recorder/sample_matrix.h"

namespace qumbrel {

// Samples per block unless a caller asks otherwise: 4,096 x 60 channels x 2 matrices
// x 9 bytes is about 4.4 MB.
inline constexpr std::size_t kDefaultSampleBlock = 4096;

// The block size of a run's reports; tests make it small to cross block edges.
struct SampleBlockSetting {
    std::size_t samples = kDefaultSampleBlock;
};

struct SampleBlock {
    std::size_t first = 0;  // index of the block's first sample in the file, from 0
    std::size_t count = 0;  // samples in this block
    TextColumn dates;
    TextColumn timesWithMs;
    TextColumn times;
    TextColumn msTexts;
    SampleMatrix firstValues;   // minimum, or the value of an event file
    SampleMatrix secondValues;  // maximum; row 0 only for an event file
    // Per-sample alarm flags of the families that have them (VU, KL, HN): sample r,
    // channel position c (from 1) at alarmFlags[r * flagChannels + c - 1]. Empty otherwise.
    std::vector<std::uint8_t> alarmFlags;
    std::size_t flagChannels = 0;
    std::size_t flagRows = 0;  // samples that have flags: the row behind the last has none
    // How the family shows a flag; its decimal text when not set.
    std::string (*alarmText)(std::uint8_t) = nullptr;
    // The flag as the readers hand it on ("" when the block has none).
    std::string alarm_text(std::size_t r, std::size_t c) const {
        const std::size_t at = r * flagChannels + c - 1;
        if (flagChannels == 0 || c == 0 || c > flagChannels || r >= flagRows ||
            at >= alarmFlags.size())
            return {};
        return alarmText ? alarmText(alarmFlags[at]) : std::to_string(alarmFlags[at]);
    }
};

class SampleCursor {
  public:
    virtual ~SampleCursor() = default;
    // Fills `block` with the next samples (at most the block size); false when none is
    // left or the reading failed.
    virtual bool next(SampleBlock& block) = 0;
    // dataCount + 1: every row the whole-file arrays hold.
    virtual std::size_t total() const = 0;
    virtual bool failed() const = 0;
};

}  // namespace qumbrel
