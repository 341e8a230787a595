// qumbrel-svc: the companion service (see service.h and docs/service.md).
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "app/program_folder.h"
#include "frame/clock.h"
#include "frame/headless_host.h"
#include "platform/syslog/syslog_eventlog.h"
#include "tools/svc/service.h"

namespace {

constexpr const char* kUsage =
    "usage: qumbrel-svc [--home DIR] [--qumbrel PATH] [--settle-ms N] [--rescan-sec N]\n"
    "Watches the source folder of the option file and converts each new recorder file with\n"
    "qumbrel once it is complete, one file at a time. Ends on SIGTERM after the file in hand.\n"
    "  --home DIR       program folder (default: $QUMBREL_HOME, as qumbrel finds it)\n"
    "  --qumbrel PATH   the program to start (default: qumbrel beside qumbrel-svc)\n"
    "  --settle-ms N    how long a file must stay unchanged (default 2000)\n"
    "  --rescan-sec N   full rescan of the folder every N seconds (default 60)\n";

std::optional<long> number(const char* text, long low, long high) {
    char* end = nullptr;
    const long v = std::strtol(text, &end, 10);
    if (!text[0] || *end || v < low || v > high) return std::nullopt;
    return v;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace qumbrel;
    std::optional<std::string> home;
    ServiceConfig config;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (a == "--help" || a == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (!value) {
            std::fprintf(stderr, "qumbrel-svc: unknown or incomplete argument %s\n%s", a.c_str(),
                         kUsage);
            return 2;
        }
        ++i;
        if (a == "--home") {
            home = value;
        } else if (a == "--qumbrel") {
            config.qumbrel = value;
        } else if (a == "--settle-ms") {
            const auto v = number(value, 0, 3600000);
            if (!v) return std::fprintf(stderr, "qumbrel-svc: bad --settle-ms\n"), 2;
            config.settle = std::chrono::milliseconds(*v);
        } else if (a == "--rescan-sec") {
            const auto v = number(value, 1, 86400);
            if (!v) return std::fprintf(stderr, "qumbrel-svc: bad --rescan-sec\n"), 2;
            config.rescan = std::chrono::seconds(*v);
        } else {
            std::fprintf(stderr, "qumbrel-svc: unknown argument %s\n%s", a.c_str(), kUsage);
            return 2;
        }
    }
    const ProgramLocation loc = locate_program(home, argc > 0 ? argv[0] : nullptr);
    std::error_code ec;
    if (!std::filesystem::is_directory(loc.folder, ec)) {
        std::fprintf(stderr, "qumbrel-svc: the program folder %s is no folder\n",
                     loc.folder.c_str());
        return 2;
    }
    config.home = loc.folder;
    if (config.qumbrel.empty()) config.qumbrel = loc.exeFolder + "/qumbrel";
    if (::access(config.qumbrel.c_str(), X_OK) != 0) {
        std::fprintf(stderr, "qumbrel-svc: cannot run %s\n", config.qumbrel.c_str());
        return 2;
    }

    ProgramInfo info;
    info.folder = loc.folder;
    info.baseName = "qumbrel";  // the option file and the libraries are qumbrel's
    HeadlessHost host(false);
    SystemClock clock;
    SyslogEventLog eventLog;
    Program ctx(info, host, clock, eventLog, clsRegionalSettings::from_environment());
    return run_service(ctx, config);
}
