#include "frame/clock.h"

#include <chrono>
#include <ctime>

namespace qumbrel {

DateTime SystemClock::now() const {
    using namespace std::chrono;
    const auto t = system_clock::now();
    const std::time_t secs = system_clock::to_time_t(t);
    std::tm tm{};
    localtime_r(&secs, &tm);
    const auto ms = duration_cast<milliseconds>(t.time_since_epoch()).count() % 1000;
    return DateTime{tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday,          tm.tm_hour,
                    tm.tm_min,         tm.tm_sec,     static_cast<int>(ms)};
}

std::int64_t SystemClock::steady_ms() const {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::int64_t SystemClock::steady_ns() const {
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace qumbrel
