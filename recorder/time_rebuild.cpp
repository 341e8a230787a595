#include "recorder/time_rebuild.h"

#include <limits>

#include "frame/errors.h"
#include "frame/vbformat.h"

namespace qumbrel {

namespace {
constexpr std::int32_t kDayMs = 86400000;
}

TimeRebuild::TimeRebuild(const VUTimeBase& base)
    : msec_(base.startMsec),
      date_(base.startDate),
      startMsText_(std::to_string(base.startMsec)),
      intervalText_(base.intervalText) {
    const double interval = vb::Val(base.intervalText);
    // A day of milliseconds below the end of 32 bits leaves room for the restart.
    if (!(interval >= 0 && interval <= std::numeric_limits<std::int32_t>::max() - kDayMs))
        throw VbError(errnum::kOverflow, "Overflow: sampling interval");
    intervalMs_ = vb::CLng(interval);
}

void TimeRebuild::next(Program& ctx, DateTimeTexts& out) {
    fkt_MsecToTime(ctx, msec_, date_, out.date, out.time, out.ms, out.timeWithMs);
    // Past midnight the date has moved on; the count starts again.
    if (msec_ >= kDayMs) msec_ -= kDayMs;
    msec_ += intervalMs_;
}

void TimeRebuild::trailing_row(bool noSamples, DateTimeTexts& out) const {
    out = DateTimeTexts{};
    if (!noSamples) return;
    out.timeWithMs = startMsText_;
    out.time = date_;
    out.ms = intervalText_;
}

}  // namespace qumbrel
