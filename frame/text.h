#pragma once
// Small text helpers for profile values and tokens.
#include <string>
#include <string_view>
#include <vector>

namespace qumbrel {

std::string_view trim_blanks(std::string_view s);  // blanks and tabs, both ends
std::string_view trim_right_blanks(std::string_view s);
bool iequals(std::string_view a, std::string_view b);  // ASCII case-insensitive
std::string to_upper_ascii(std::string_view s);
// VB Split: "" gives an empty list; otherwise every piece, empty ones included.
std::vector<std::string> split(std::string_view s, std::string_view sep);

}  // namespace qumbrel
