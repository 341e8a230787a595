#pragma once
// The tagged cell value that the generators hand to the value sink and the sheet writer:
// empty, a text, an integer, a double or a date.
#include <cstdint>
#include <string>
#include <variant>

#include "frame/datetime.h"

namespace qumbrel {

struct EmptyValue {
    bool operator==(const EmptyValue&) const = default;
};

using CellValue = std::variant<EmptyValue, std::string, std::int32_t, double, DateTime>;

}  // namespace qumbrel
