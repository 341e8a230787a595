#pragma once
// Small steps the family readers share.
#include <cstdint>
#include <limits>

#include "frame/errors.h"

namespace qumbrel {

// Counts from 1 of a library's count from 0; a count at the end of 32 bits overflows, as a
// Long does, into the reader's trap.
inline std::int32_t plus_one(std::int32_t v) {
    if (v == std::numeric_limits<std::int32_t>::max()) throw VbError(errnum::kOverflow, "Overflow");
    return v + 1;
}

}  // namespace qumbrel
