#pragma once
// 16-bit booleans with the VB values: True = -1, False = 0. Options and run flags hold
// these after loading, so a comparison with 1 is false for a flag read from a file.
#include <cstdint>

namespace qumbrel {

using Flag = std::int16_t;
inline constexpr Flag kTrue = -1;
inline constexpr Flag kFalse = 0;

constexpr Flag to_flag(bool b) {
    return b ? kTrue : kFalse;
}
constexpr bool is_set(Flag f) {
    return f != 0;
}

}  // namespace qumbrel
