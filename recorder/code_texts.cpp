#include "recorder/code_texts.h"

#include <array>
#include <string_view>

namespace qumbrel {
namespace {

struct AlarmType {
    std::string_view text, shortText;
};
constexpr std::array<AlarmType, 9> kAlarmTypes = {{{"OFF", "OFF"},
                                                   {"Absolute value High", "H"},
                                                   {"Absolute value Low", "L"},
                                                   {"Difference High", "dH"},
                                                   {"Difference Low", "dL"},
                                                   {"Rate of change High", "rH"},
                                                   {"Rate of change Low", "rL"},
                                                   {"Delay High", "tH"},
                                                   {"Delay Low", "tL"}}};

}  // namespace

std::string alarm_type_text(std::int32_t type) {
    if (type < 0 || type >= static_cast<std::int32_t>(kAlarmTypes.size())) return {};
    return std::string(kAlarmTypes[static_cast<std::size_t>(type)].text);
}

std::string alarm_type_short(std::int32_t type) {
    if (type < 0 || type >= static_cast<std::int32_t>(kAlarmTypes.size())) return {};
    return std::string(kAlarmTypes[static_cast<std::size_t>(type)].shortText);
}

std::string message_source_text(std::int32_t source, bool eventEntry) {
    switch (source) {
        case 0:
        case 1:
            return "Key entry";
        case 2:
            return "Remote entry";
        case 3:
            return "Communication entry";
        case 4:
            if (eventEntry) return "Event entry";
            break;
        default:
            break;
    }
    return "unknown";
}

}  // namespace qumbrel
