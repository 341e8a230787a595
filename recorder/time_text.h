#pragma once
// Recorder times as text: seconds plus ticks split by the family library's to-date-time
// function, then written with the regional "Short Date" and "Long Time" and a millisecond
// field. Also the millisecond-of-day helpers the VU and HN generators use.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "frame/context.h"

namespace qumbrel {

// The out-parameters of the ...GetDateTime functions, in their order.
struct DateTimeTexts {
    std::string dateTime;    // date " " timeWithMs
    std::string date;        // "Short Date"
    std::string timeWithMs;  // time "." ms
    std::string time;        // "Long Time"
    std::string ms;          // Format(millis, "00#")
};

// Format(year "/" month "/" day, "Short Date"); a text that is no date comes back as it is.
std::string date_text(Program& ctx, std::int32_t year, std::int32_t month, std::int32_t day);
// Format(hour ":" minute ":" second, "Long Time"); the same rule.
std::string time_text(Program& ctx, std::int32_t hour, std::int32_t minute, std::int32_t second);
// Format(millis, "00#").
std::string ms_text(Program& ctx, std::int32_t millis);
// Ticks of an eighth of a second in milliseconds; VbError 6 when it leaves 32 bits.
std::int32_t eighths_to_millis(std::int32_t ticks);

// Fills `out` from calendar fields and milliseconds.
void compose_date_time(Program& ctx, const std::array<std::int32_t, 6>& fields, std::int32_t millis,
                       DateTimeTexts& out);

// Family versions. VT, KL and VQ ticks are eighths of a second, VU and HN milliseconds;
// VQ splits its seconds with the VU library's function (kept so). Errors (a missing
// library) pass to the caller's trap.
void VTGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out);
void VUGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out);
void VQGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out);
void KLGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out);
void HNGetDateTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, DateTimeTexts& out);

// Remembers the last date, the last time and a few millisecond texts, so a long run of
// samples formats each distinct second once. Gives exactly what compose_date_time gives.
class DateTimeTextCache {
  public:
    void compose(Program& ctx, const std::array<std::int32_t, 6>& fields, std::int32_t millis,
                 DateTimeTexts& out);

  private:
    bool haveDate_ = false, haveTime_ = false;
    std::array<std::int32_t, 3> dateKey_{}, timeKey_{};
    std::string date_, time_;
    struct MsEntry {
        std::int32_t millis;
        std::string text;
    };
    std::array<MsEntry, 16> ms_{};
    std::size_t msCount_ = 0;
};

// Milliseconds since midnight to text. At 86400000 or more the time is midnight, `date`
// (a date text) moves one day on and is written back, and `msec` stays for the caller to
// restart. Errors go to the error log as "fkt_MsecToTime of Modul DllHNFileAccess".
void fkt_MsecToTime(Program& ctx, std::int32_t& msec, std::string& date, std::string& dateText,
                    std::string& timeText, std::string& msText, std::string& timeWithMs);

// A time text (with an optional fraction after its last ".") to milliseconds since
// midnight. A non-empty `dateText` adds year*3600000 + month*60000 + day*1000, which for
// a real date overflows 32 bits and ends in the error log (kept so) with the result 0.
std::int32_t fkt_DateTimeToMsec(Program& ctx, std::string_view timeText, std::string_view dateText);

}  // namespace qumbrel
