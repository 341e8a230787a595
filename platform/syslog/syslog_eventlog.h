#pragma once
// The event log on Linux: syslog(3) under the program's base name (journald keeps it).
// The event number stands in front of the text.
#include "frame/context.h"

namespace qumbrel {

class SyslogEventLog final : public EventLogBackend {
  public:
    static int priority(int type);
    void report(std::string_view source, int type, std::uint32_t eventId,
                std::string_view text) override;
};

}  // namespace qumbrel
