#include "frame/datetime.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace qumbrel {

namespace {
constexpr std::chrono::sys_days kEpoch =
    std::chrono::sys_days{std::chrono::year{1899} / std::chrono::December / 30};
}

bool is_valid_date(int year, int month, int day) {
    if (year < 100 || year > 9999) return false;
    const std::chrono::year_month_day ymd{std::chrono::year{year},
                                          std::chrono::month{static_cast<unsigned>(month)},
                                          std::chrono::day{static_cast<unsigned>(day)}};
    return month >= 1 && month <= 12 && day >= 1 && ymd.ok();
}

double to_serial(const DateTime& d) {
    using namespace std::chrono;
    const year_month_day ymd{year{d.year}, month{static_cast<unsigned>(d.month)},
                             day{static_cast<unsigned>(d.day)}};
    const double days = static_cast<double>((sys_days{ymd} - kEpoch).count());
    const double frac =
        (d.hour * 3600.0 + d.minute * 60.0 + d.second + d.millisecond / 1000.0) / 86400.0;
    // OLE dates before the epoch carry the time as a positive fraction of a negative day.
    return days >= 0 ? days + frac : days - frac;
}

DateTime from_serial(double serial) {
    using namespace std::chrono;
    // A serial from outside (a recorder file, a cell) may be anything: keep it inside the
    // Date range (years 100 to 9999) so that the integer conversions below stay defined.
    if (!std::isfinite(serial)) return DateTime{};
    serial = std::clamp(serial, -657434.0, 2958465.999988426);
    double whole = std::trunc(serial);
    double frac = std::fabs(serial - whole);
    long long ms = std::llround(frac * 86400000.0);
    if (ms >= 86400000LL) {
        ms -= 86400000LL;
        whole += serial >= 0 ? 1 : -1;
    }
    const year_month_day ymd{kEpoch + days{static_cast<long long>(whole)}};
    DateTime d;
    d.year = static_cast<int>(ymd.year());
    d.month = static_cast<int>(static_cast<unsigned>(ymd.month()));
    d.day = static_cast<int>(static_cast<unsigned>(ymd.day()));
    d.hour = static_cast<int>(ms / 3600000);
    d.minute = static_cast<int>(ms / 60000 % 60);
    d.second = static_cast<int>(ms / 1000 % 60);
    d.millisecond = static_cast<int>(ms % 1000);
    return d;
}

}  // namespace qumbrel
