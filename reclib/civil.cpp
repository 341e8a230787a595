#include "reclib/civil.h"

namespace qumbrel::reclib {

namespace {

// Days since 1970-01-01 of a proleptic Gregorian date, and back (H. Hinnant's algorithms).
std::int64_t days_from_civil(std::int64_t y, std::int64_t m, std::int64_t d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const std::int64_t yoe = y - era * 400;
    const std::int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

}  // namespace

CivilTime to_civil(std::int64_t seconds) {
    std::int64_t days = seconds / 86400;
    std::int64_t rest = seconds % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    const std::int64_t z = days + 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const std::int64_t doe = z - era * 146097;
    const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const std::int64_t mp = (5 * doy + 2) / 153;
    const std::int64_t d = doy - (153 * mp + 2) / 5 + 1;
    const std::int64_t m = mp < 10 ? mp + 3 : mp - 9;
    const std::int64_t y = yoe + era * 400 + (m <= 2);
    return {static_cast<std::int32_t>(y),
            static_cast<std::int32_t>(m),
            static_cast<std::int32_t>(d),
            static_cast<std::int32_t>(rest / 3600),
            static_cast<std::int32_t>(rest / 60 % 60),
            static_cast<std::int32_t>(rest % 60)};
}

std::int64_t from_civil(const CivilTime& t) {
    std::int64_t y = t.year, m = t.month - 1;
    y += m >= 0 ? m / 12 : (m - 11) / 12;
    m = ((m % 12) + 12) % 12 + 1;
    return days_from_civil(y, m, 1) * 86400 + std::int64_t{t.day - 1} * 86400 +
           std::int64_t{t.hour} * 3600 + std::int64_t{t.minute} * 60 + t.second;
}

}  // namespace qumbrel::reclib
