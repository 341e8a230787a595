#pragma once
// The benchmarks' measure of a whole run: `child` in a forked process, timed from outside,
// with the peak resident memory the kernel counted for it (exit status 0 is success).
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>

namespace qumbrel::bench {

struct Outcome {
    bool ok = false;
    double seconds = 0;
    long maxrssKib = 0;
};

inline Outcome run_child(const std::function<int()>& child) {
    Outcome o;
    const auto t0 = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid < 0) return o;
    if (pid == 0) ::_exit(child());
    int status = 0;
    struct rusage ru {};
    ::wait4(pid, &status, 0, &ru);
    o.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    o.maxrssKib = ru.ru_maxrss;
    o.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return o;
}

}  // namespace qumbrel::bench
