#pragma once
// Code tables that several family readers share: alarm types and message sources.
#include <cstdint>
#include <string>

namespace qumbrel {

// "OFF", "Absolute value High", ... for types 0 to 8; empty for any other.
std::string alarm_type_text(std::int32_t type);
// "OFF", "H", "L", "dH", ... for the same types; empty for any other.
std::string alarm_type_short(std::int32_t type);
// 0 and 1 "Key entry", 2 "Remote entry", 3 "Communication entry", other "unknown";
// families with event entries also know 4 "Event entry".
std::string message_source_text(std::int32_t source, bool eventEntry);

}  // namespace qumbrel
