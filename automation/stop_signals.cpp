#include "automation/stop_signals.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace qumbrel {

StopSignals::StopSignals() {
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGTERM);
    sigaddset(&stop, SIGINT);
    if (sigprocmask(SIG_BLOCK, &stop, &oldMask_) != 0) return;
    restoreMask_ = true;
    fd_ = signalfd(-1, &stop, SFD_CLOEXEC | SFD_NONBLOCK);
    if (fd_ < 0) {
        // Without the fd nobody would read them: the signals keep their default action.
        sigprocmask(SIG_SETMASK, &oldMask_, nullptr);
        restoreMask_ = false;
    }
}

StopSignals::~StopSignals() {
    if (fd_ >= 0) {
        // Stop signals still queued are taken here, so unblocking does not deliver them.
        signalfd_siginfo info{};
        while (read(fd_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        }
        close(fd_);
    }
    if (restoreMask_) sigprocmask(SIG_SETMASK, &oldMask_, nullptr);
}

bool StopSignals::read_one(int timeoutMs) {
    if (signo_ != 0) return true;
    if (fd_ < 0) {
        // No signalfd: still wait, so that a caller's loop does not spin.
        if (timeoutMs != 0) poll(nullptr, 0, timeoutMs);
        return false;
    }
    pollfd p{fd_, POLLIN, 0};
    const int r = poll(&p, 1, timeoutMs);
    if (r <= 0 || !(p.revents & POLLIN)) return false;
    signalfd_siginfo info{};
    if (read(fd_, &info, sizeof info) != static_cast<ssize_t>(sizeof info)) return false;
    signo_ = static_cast<int>(info.ssi_signo);
    return true;
}

bool StopSignals::pending() {
    return read_one(0);
}

bool StopSignals::wait(int timeoutMs) {
    return read_one(timeoutMs < 0 ? -1 : timeoutMs);
}

}  // namespace qumbrel
