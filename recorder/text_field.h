#pragma once
// A caller-provided fixed-width buffer for one library text field.
#include <array>
#include <cstddef>

namespace qumbrel {

template <std::size_t N>
struct TextField {
    // Zero bytes, so a field the library leaves alone filters to "".
    std::array<char, N> bytes{};
    char* data() { return bytes.data(); }
    const char* data() const { return bytes.data(); }
    static constexpr std::size_t size() { return N; }
};

}  // namespace qumbrel
