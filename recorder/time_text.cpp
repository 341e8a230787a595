#include "recorder/time_text.h"

#include <limits>

#include "frame/datetime.h"
#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/library_loader.h"

namespace qumbrel {

namespace {

using Fields = std::array<std::int32_t, 6>;
using ToDateTimeFn = std::int32_t (*)(std::int32_t, std::int32_t*, std::int32_t*, std::int32_t*,
                                      std::int32_t*, std::int32_t*, std::int32_t*);

Fields split_seconds(ToDateTimeFn fn, std::int32_t seconds) {
    Fields f{};
    fn(seconds, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
    return f;
}

// Format(text, named date format): a text that CDate does not take comes back unchanged.
std::string format_date_text(Program& ctx, const std::string& text, std::string_view pattern) {
    const auto& r = ctx.regional.profile();
    if (const auto d = vb::CDate(text, r)) return vb::FormatDate(*d, pattern, r);
    return text;
}

// 32-bit arithmetic as the Long type does it: overflow is run-time error 6.
std::int32_t checked(std::int64_t v) {
    if (v < std::numeric_limits<std::int32_t>::min() ||
        v > std::numeric_limits<std::int32_t>::max())
        throw VbError(errnum::kOverflow, "Overflow");
    return static_cast<std::int32_t>(v);
}

}  // namespace

std::string date_text(Program& ctx, std::int32_t year, std::int32_t month, std::int32_t day) {
    // A plain four-digit year needs no parsing: CDate reads "yyyy/m/d" as year, month, day.
    if (year >= 1000 && year <= 9999 && is_valid_date(year, month, day)) {
        return vb::FormatDate(DateTime{year, month, day, 0, 0, 0, 0}, "Short Date",
                              ctx.regional.profile());
    }
    return format_date_text(
        ctx, std::to_string(year) + "/" + std::to_string(month) + "/" + std::to_string(day),
        "Short Date");
}

std::string time_text(Program& ctx, std::int32_t hour, std::int32_t minute, std::int32_t second) {
    if (hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60) {
        return vb::FormatDate(DateTime{1899, 12, 30, hour, minute, second, 0}, "Long Time",
                              ctx.regional.profile());
    }
    return format_date_text(
        ctx, std::to_string(hour) + ":" + std::to_string(minute) + ":" + std::to_string(second),
        "Long Time");
}

std::string ms_text(Program& ctx, std::int32_t millis) {
    return vb::Format(static_cast<double>(millis), "00#", ctx.regional.profile());
}

std::int32_t eighths_to_millis(std::int32_t ticks) {
    return checked(static_cast<std::int64_t>(ticks) * 125);
}

void compose_date_time(Program& ctx, const Fields& f, std::int32_t millis, DateTimeTexts& out) {
    out.date = date_text(ctx, f[0], f[1], f[2]);
    out.time = time_text(ctx, f[3], f[4], f[5]);
    out.ms = ms_text(ctx, millis);
    out.timeWithMs = out.time + "." + out.ms;
    out.dateTime = out.date + " " + out.timeWithMs;
}

void DateTimeTextCache::compose(Program& ctx, const Fields& f, std::int32_t millis,
                                DateTimeTexts& out) {
    const std::array<std::int32_t, 3> dk{f[0], f[1], f[2]};
    if (!haveDate_ || dk != dateKey_) {
        date_ = date_text(ctx, f[0], f[1], f[2]);
        dateKey_ = dk;
        haveDate_ = true;
    }
    const std::array<std::int32_t, 3> tk{f[3], f[4], f[5]};
    if (!haveTime_ || tk != timeKey_) {
        time_ = time_text(ctx, f[3], f[4], f[5]);
        timeKey_ = tk;
        haveTime_ = true;
    }
    const std::string* ms = nullptr;
    for (std::size_t i = 0; i < msCount_; ++i)
        if (ms_[i].millis == millis) ms = &ms_[i].text;
    std::string fresh;
    if (!ms) {
        fresh = ms_text(ctx, millis);
        if (msCount_ < ms_.size()) {
            ms_[msCount_] = {millis, fresh};
            ms = &ms_[msCount_++].text;
        } else {
            ms = &fresh;
        }
    }
    out.date = date_;
    out.time = time_;
    out.ms = *ms;
    out.timeWithMs.assign(time_).append(".").append(*ms);
    out.dateTime.assign(date_).append(" ").append(out.timeWithMs);
}

void VTGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out) {
    const auto& lib = recorder::vt_library(ctx);
    compose_date_time(ctx, split_seconds(lib.DllVTtoDateTime, seconds), eighths_to_millis(ticks),
                      out);
}

void VUGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out) {
    const auto& lib = recorder::vu_library(ctx);
    compose_date_time(ctx, split_seconds(lib.DllVUtoDateTime, seconds), ticks, out);
}

void VQGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out) {
    // The VU library splits the seconds, the tick is VQ's eighth (kept so).
    const auto& lib = recorder::vu_library(ctx);
    compose_date_time(ctx, split_seconds(lib.DllVUtoDateTime, seconds), eighths_to_millis(ticks),
                      out);
}

void KLGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out) {
    const auto& lib = recorder::kl_library(ctx);
    compose_date_time(ctx, split_seconds(lib.DllKLtoDateTime, seconds), eighths_to_millis(ticks),
                      out);
}

void HNGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out) {
    const auto& lib = recorder::hn_library(ctx);
    compose_date_time(ctx, split_seconds(lib.DllHNtoDateTime, seconds), ticks, out);
}

void fkt_MsecToTime(Program& ctx, std::int32_t& msec, std::string& date, std::string& dateText,
                    std::string& timeText, std::string& msText, std::string& timeWithMs) {
    try {
        const auto& r = ctx.regional.profile();
        std::string h, m, s;
        if (msec >= 86400000) {
            h = m = s = "00";
            const auto d = vb::CDate(date, r);
            if (!d) throw VbError(errnum::kTypeMismatch, "Type mismatch");
            date = vb::FormatDate(from_serial(to_serial(*d) + 1.0), "Short Date", r);
            dateText = date;
        } else {
            const std::int32_t hours = msec / 3600000;
            const std::int32_t minutes = (msec % 3600000) / 60000;
            const std::int32_t seconds = (msec % 60000) / 1000;
            h = vb::Format(hours, "0#", r);
            m = vb::Format(minutes, "0#", r);
            s = vb::Format(seconds, "0#", r);
            dateText = date;
        }
        msText = ms_text(ctx, msec % 1000);
        timeText = format_date_text(ctx, h + ":" + m + ":" + s, "Long Time");
        timeWithMs = timeText + "." + msText;
    } catch (...) {
        report_trapped(ctx, "fkt_MsecToTime of Modul DllHNFileAccess", 0);
    }
}

std::int32_t fkt_DateTimeToMsec(Program& ctx, std::string_view timeText,
                                std::string_view dateText) {
    try {
        const auto& r = ctx.regional.profile();
        std::int64_t datePart = 0;
        if (!dateText.empty()) {
            const auto d = vb::CDate(dateText, r);
            if (!d) throw VbError(errnum::kTypeMismatch, "Type mismatch");
            datePart = checked(checked(static_cast<std::int64_t>(d->year) * 3600000) +
                               static_cast<std::int64_t>(d->month) * 60000 +
                               static_cast<std::int64_t>(d->day) * 1000);
        }
        std::string_view clock = timeText;
        double fraction = 0;
        if (const auto dot = timeText.find_last_of('.'); dot != std::string_view::npos) {
            fraction = vb::Val(timeText.substr(dot + 1));
            clock = timeText.substr(0, dot);
        }
        const auto t = vb::CDate(clock, r);
        if (!t) throw VbError(errnum::kTypeMismatch, "Type mismatch");
        const std::int64_t whole = static_cast<std::int64_t>(t->hour) * 3600000 +
                                   static_cast<std::int64_t>(t->minute) * 60000 +
                                   static_cast<std::int64_t>(t->second) * 1000;
        return checked(whole + vb::CLng(fraction) + datePart);
    } catch (...) {
        report_trapped(ctx, "fkt_DateTimeToMsec of Modul DllHNFileAccess", 0);
    }
    return 0;
}

}  // namespace qumbrel
