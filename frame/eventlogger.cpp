#include "frame/eventlogger.h"

#include <algorithm>

namespace qumbrel {

bool cls_EventLogger::WriteLog(std::string_view text, int type) {
    if (type < 1 || type > 4) return false;
    try {
        ctx_.eventLog.report(ctx_.info.baseName, type, event_id(type), text);
        return true;
    } catch (...) {
        return false;  // an event log that fails loses the entry, nothing more
    }
}

bool cls_EventLogger::WriteLogEx(const std::vector<std::string>& strings, std::size_t count,
                                 int type) {
    std::string joined;
    const std::size_t n = std::min(count, strings.size());
    for (std::size_t i = 0; i < n; ++i) {
        if (i > 0) joined += '\n';
        joined += strings[i];
    }
    return WriteLog(joined, type);
}

}  // namespace qumbrel
