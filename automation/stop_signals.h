#pragma once
// SIGTERM and SIGINT as readable events instead of handlers: the constructor blocks them
// for the calling thread and opens a signalfd, so no handler writes any global state and
// a signal that comes during a conversion waits until the loop asks for it.
// Children started afterwards inherit the blocked mask.
#include <signal.h>

namespace qumbrel {

class StopSignals {
  public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    bool valid() const { return fd_ >= 0; }
    // True once SIGTERM or SIGINT has arrived; does not wait.
    bool pending();
    // Waits up to `timeoutMs` (negative: without limit) for a stop signal.
    bool wait(int timeoutMs);
    int signal_number() const { return signo_; }

  private:
    bool read_one(int timeoutMs);
    int fd_ = -1;
    int signo_ = 0;
    bool restoreMask_ = false;
    sigset_t oldMask_{};
};

}  // namespace qumbrel
