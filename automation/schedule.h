#pragma once
// The schedule of the automatic mode: the options sheduler, day, hour and minute turned
// into firing times once per start, and the test of one timer tick against them.
#include <array>
#include <cstdint>

#include "frame/context.h"
#include "frame/datetime.h"

namespace qumbrel {

struct Schedule {
    std::int32_t kind = 0;  // the option sheduler as read at load
    std::int16_t nScanMinute = 0;
    std::array<std::int16_t, 7> nScanHour{};  // nScanHour1 .. nScanHour7
    std::int16_t nScanWeekday = 0;            // 1 = Sunday .. 7 = Saturday; 0: not set
    std::uint32_t platformIntervalMs = 60000;
    bool complete = false;  // false when the load stopped at an error
};

// tm_scanminute's interval.
inline constexpr std::uint32_t kScanMinuteMs = 60000;

// The table of sub_formLoad. Throws VbError (13 for a non-numeric hour or minute, 6 on
// overflow); `partial` then holds what was set before the failing value.
Schedule compute_schedule(const Program& ctx, Schedule* partial = nullptr);

// Weekday of a date, 1 = Sunday .. 7 = Saturday.
int weekday_sunday_first(const DateTime& d);

// Whether a tick at `now` fires the cycle. Kind 5 compares the weekday, which its load
// never sets, so it never fires; unknown kinds never fire.
bool schedule_fires(const Schedule& s, const DateTime& now);

}  // namespace qumbrel
