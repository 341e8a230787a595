#include "platform/syslog/syslog_eventlog.h"

#include <syslog.h>

#include <cstdio>
#include <string>

namespace qumbrel {

int SyslogEventLog::priority(int type) {
    switch (type) {
        case 1:
            return LOG_NOTICE;
        case 2:
            return LOG_INFO;
        case 3:
            return LOG_WARNING;
        case 4:
            return LOG_ERR;
        default:
            return LOG_DEBUG;
    }
}

void SyslogEventLog::report(std::string_view source, int type, std::uint32_t eventId,
                            std::string_view text) {
    // Register, report, deregister, as each entry of the Windows event log does.
    const std::string ident(source);
    char number[16];
    std::snprintf(number, sizeof number, "0x%08X", eventId);
    const std::string message = std::string(number) + " " + std::string(text);
    ::openlog(ident.c_str(), LOG_PID, LOG_USER);
    ::syslog(priority(type), "%s", message.c_str());
    ::closelog();
}

}  // namespace qumbrel
