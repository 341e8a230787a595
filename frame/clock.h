#pragma once
// Time comes from here so that schedules, logs and timers are testable.
#include <cstdint>

#include "frame/datetime.h"

namespace qumbrel {

class Clock {
  public:
    virtual ~Clock() = default;
    // Present local date and time.
    virtual DateTime now() const = 0;
    // Monotonic milliseconds, for stopwatches and timers.
    virtual std::int64_t steady_ms() const = 0;
    // Monotonic nanoseconds, for the per-file conversion time.
    virtual std::int64_t steady_ns() const { return steady_ms() * 1000000; }
};

class SystemClock final : public Clock {
  public:
    DateTime now() const override;
    std::int64_t steady_ms() const override;
    std::int64_t steady_ns() const override;
};

// A clock that stands still until told to move; for tests.
class ManualClock final : public Clock {
  public:
    explicit ManualClock(DateTime t = {2024, 1, 2, 3, 4, 5, 0}) : now_(t) {}
    DateTime now() const override { return now_; }
    std::int64_t steady_ms() const override { return steady_; }
    void set(DateTime t) { now_ = t; }
    void advance_ms(std::int64_t ms) { steady_ += ms; }

  private:
    DateTime now_;
    std::int64_t steady_ = 0;
};

}  // namespace qumbrel
