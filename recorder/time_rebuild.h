#pragma once
// Sample times rebuilt from the report's start and the sampling interval, for files whose
// first and last samples lie in the same second (a recording under a second, or a library
// that gives no real times): the VU and HN readers. Each sample is the one before plus
// the interval, written by fkt_MsecToTime, which moves the date on at midnight; the count
// of milliseconds then starts again.
#include <cstdint>
#include <string>

#include "frame/context.h"
#include "recorder/time_text.h"
#include "recorder/vu_reader.h"

namespace qumbrel {

class TimeRebuild {
  public:
    // Throws VbError 6 for an interval that is no count of milliseconds below a day's
    // distance from the end of 32 bits.
    explicit TimeRebuild(const VUTimeBase& base);

    // The texts of the next sample.
    void next(Program& ctx, DateTimeTexts& out);
    // The row behind the last sample: empty, but for a file without samples, whose only
    // row shows the three values the generator put in first.
    void trailing_row(bool noSamples, DateTimeTexts& out) const;

  private:
    std::int32_t msec_ = 0;
    std::int32_t intervalMs_ = 0;
    std::string date_;
    std::string startMsText_, intervalText_;
};

}  // namespace qumbrel
