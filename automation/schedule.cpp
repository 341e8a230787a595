#include "automation/schedule.h"

#include <cmath>
#include <limits>
#include <string>

#include "frame/errors.h"
#include "frame/vbformat.h"

namespace qumbrel {

namespace {

// An option text assigned to a 16-bit integer: converted under the regional rules,
// error 13 when it is no number, 6 when it does not fit.
std::int16_t as_integer(const Program& ctx, const std::string& text) {
    const auto value = vb::CDbl(text, ctx.regional.profile());
    if (!value) throw VbError(errnum::kTypeMismatch, "Type mismatch");
    return vb::CInt(*value);
}

std::int16_t checked16(std::int32_t v) {
    if (v < std::numeric_limits<std::int16_t>::min() ||
        v > std::numeric_limits<std::int16_t>::max())
        throw VbError(errnum::kOverflow, "Overflow");
    return static_cast<std::int16_t>(v);
}

std::int16_t reduced(std::int32_t hour) {
    return checked16(hour > 23 ? hour - 24 : hour);
}

// The platform timer takes an unsigned interval and answers anything below its minimum
// with the minimum.
std::uint32_t platform_interval(std::int64_t ms) {
    constexpr std::uint32_t kMinimumMs = 10;
    const auto v = static_cast<std::uint32_t>(ms);
    return v < kMinimumMs ? kMinimumMs : v;
}

}  // namespace

Schedule compute_schedule(const Program& ctx, Schedule* partial) {
    Schedule s;
    s.kind = ctx.opt.sheduler;
    auto& h = s.nScanHour;
    auto hours_from_first = [&](std::initializer_list<int> offsets) {
        std::size_t i = 1;
        for (int offset : offsets) h[i++] = reduced(h[0] + offset);
    };
    try {
        switch (s.kind) {
            case 0:
                s.nScanMinute = as_integer(ctx, ctx.opt.minute);
                h[0] = reduced(as_integer(ctx, ctx.opt.hour));
                s.nScanWeekday = checked16(ctx.opt.day + 1);
                break;
            case 1:
                s.nScanMinute = as_integer(ctx, ctx.opt.minute);
                h[0] = reduced(as_integer(ctx, ctx.opt.hour));
                break;
            case 2:
                s.nScanMinute = as_integer(ctx, ctx.opt.minute);
                break;
            case 3:
                // No step of nine hours: the gap after the third firing is six hours.
                s.nScanMinute = as_integer(ctx, ctx.opt.minute);
                h[0] = reduced(as_integer(ctx, ctx.opt.hour));
                hours_from_first({3, 6, 12, 15, 18, 21});
                break;
            case 4:
                s.nScanMinute = as_integer(ctx, ctx.opt.minute);
                h[0] = reduced(as_integer(ctx, ctx.opt.hour));
                hours_from_first({6, 12, 18});
                break;
            case 5:
                s.nScanMinute = as_integer(ctx, ctx.opt.minute);
                h[0] = reduced(as_integer(ctx, ctx.opt.hour));
                hours_from_first({12});
                break;
            case 6:
                s.platformIntervalMs = platform_interval(5000);
                break;
            case 7:
                s.nScanMinute = as_integer(ctx, ctx.opt.minute);
                s.platformIntervalMs = platform_interval(std::int64_t{s.nScanMinute} * 60000);
                break;
            default:
                break;
        }
    } catch (...) {
        if (partial) *partial = s;
        throw;
    }
    s.complete = true;
    return s;
}

int weekday_sunday_first(const DateTime& d) {
    // Day 0 of the serial dates, 1899-12-30, was a Saturday.
    const auto day = static_cast<long long>(std::floor(to_serial({d.year, d.month, d.day})));
    return static_cast<int>(((day + 6) % 7 + 7) % 7) + 1;
}

bool schedule_fires(const Schedule& s, const DateTime& now) {
    const auto& h = s.nScanHour;
    const bool minute = now.minute == s.nScanMinute;
    auto hour_in = [&](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            if (now.hour == h[i]) return true;
        return false;
    };
    switch (s.kind) {
        case 0:
            return now.hour == h[0] && weekday_sunday_first(now) == s.nScanWeekday && minute;
        case 1:
            return now.hour == h[0] && minute;
        case 2:
            return minute;
        case 3:
            return hour_in(7) && minute;
        case 4:
            return hour_in(4) && minute;
        case 5:
            return hour_in(2) && weekday_sunday_first(now) == s.nScanWeekday && minute;
        case 6:
        case 7:
            return true;
        default:
            return false;
    }
}

}  // namespace qumbrel
