#pragma once
// Calendar fields of the format's time base: seconds since 1970-01-01 00:00:00, recorder
// time (no zone, no leap seconds). Negative seconds lie before 1970.
#include <cstdint>

namespace qumbrel::reclib {

struct CivilTime {
    std::int32_t year, month, day, hour, minute, second;
};

CivilTime to_civil(std::int64_t seconds);
// The inverse; fields outside their range carry over (month 13 is January next year).
std::int64_t from_civil(const CivilTime& t);

}  // namespace qumbrel::reclib
