#pragma once
// File name patterns of the scanner: "*" any run of characters, "?" one character, every
// other character itself, letters without regard to case (ASCII). No bracket classes.
#include <string_view>

namespace qumbrel {

int fold_ascii(char c);
bool wildcard_match(std::string_view pattern, std::string_view name);

}  // namespace qumbrel
