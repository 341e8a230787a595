#pragma once
// Pattern helpers shared by the number and date halves of Format.
#include <cstddef>
#include <string_view>

namespace qumbrel::vb::detail {

inline char lower_ascii(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool iequals_ascii(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower_ascii(a[i]) != lower_ascii(b[i])) return false;
    return true;
}

inline bool istarts_with(std::string_view s, std::size_t at, std::string_view prefix) {
    return s.size() - at >= prefix.size() && iequals_ascii(s.substr(at, prefix.size()), prefix);
}

// Length of the UTF-8 sequence that starts with byte c (1 for a stray continuation byte).
inline std::size_t utf8_length(char c) {
    const auto u = static_cast<unsigned char>(c);
    if (u >= 0xF0 && u < 0xF8) return 4;
    if (u >= 0xE0) return u < 0xF0 ? 3 : 1;
    if (u >= 0xC0) return 2;
    return 1;
}

// The AM/PM tokens of a date pattern: "AM/PM", "am/pm", "A/P", "a/p", "AMPM".
inline std::size_t ampm_token_length(std::string_view s, std::size_t at) {
    if (istarts_with(s, at, "am/pm")) return 5;
    if (istarts_with(s, at, "ampm")) return 4;
    if (istarts_with(s, at, "a/p")) return 3;
    return 0;
}

bool is_named_date_format(std::string_view pattern);

}  // namespace qumbrel::vb::detail
