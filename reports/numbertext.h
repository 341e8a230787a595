#pragma once
// The text of a double as the system's regional conversion gives it: 15 significant
// digits, no trailing zeros, no thousands separator, the regional decimal symbol, and the
// exponent form "1E-05" / "1.5E+15" below 1E-4 and from 1E+15 on. Digits by to_chars.
#include <string>
#include <string_view>

namespace qumbrel {

// Appends the text of `value` to `out`.
void append_number_text(std::string& out, double value, std::string_view decimal);
std::string number_text(double value, std::string_view decimal);

}  // namespace qumbrel
