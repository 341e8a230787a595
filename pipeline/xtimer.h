#pragma once
// xTimer: a stopwatch over the monotonic clock. Calibrieren measures what one start and
// halt cost; RunTime gives the milliseconds between Start and Halt less that cost.
#include <algorithm>
#include <cstdint>

#include "frame/clock.h"

namespace qumbrel {

class xTimer {
  public:
    explicit xTimer(const Clock& clock) : clock_(clock) {}

    void Calibrieren() {
        Start();
        Halt();
        overhead_ = stop_ - start_;
    }
    void Start() { start_ = stop_ = clock_.steady_ns(); }
    void Halt() { stop_ = clock_.steady_ns(); }
    double RunTime() const {
        return static_cast<double>(std::max<std::int64_t>(0, stop_ - start_ - overhead_)) / 1e6;
    }

  private:
    const Clock& clock_;
    std::int64_t start_ = 0;
    std::int64_t stop_ = 0;
    std::int64_t overhead_ = 0;
};

}  // namespace qumbrel
