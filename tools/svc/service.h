#pragma once
// qumbrel-svc, the companion service: watches the source folder of the program folder's
// option file (inotify, and a periodic rescan as a safety net), waits until a new file has
// stopped changing and reads as a whole recorder file, and starts
// `qumbrel --from-service --source=FILE` for one file at a time, stopped after the option
// timeoutcountsec. It reloads its options when savetogglesvc is set, logs to syslog (and
// stderr), and ends after the file in hand on SIGTERM or SIGINT.
#include <chrono>
#include <string>

#include "frame/context.h"

namespace qumbrel {

struct ServiceConfig {
    std::string home;     // the program folder, as qumbrel finds it
    std::string qumbrel;  // the program it starts
    std::chrono::milliseconds settle{2000};
    std::chrono::seconds rescan{60};
};

// Runs until a stop signal; 0 then, 2 when it cannot watch at all.
int run_service(Program& ctx, const ServiceConfig& config);

}  // namespace qumbrel
