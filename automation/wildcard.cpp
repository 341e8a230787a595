#include "automation/wildcard.h"

namespace qumbrel {

int fold_ascii(char c) {
    const auto u = static_cast<unsigned char>(c);
    return u >= 'a' && u <= 'z' ? u - 'a' + 'A' : u;
}

bool wildcard_match(std::string_view pattern, std::string_view name) {
    // Greedy match that backtracks only to the last "*": linear in practice, never
    // worse than pattern length times name length.
    std::size_t p = 0, n = 0;
    std::size_t starP = std::string_view::npos, starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starP = p++;
            starN = n;
        } else if (p < pattern.size() &&
                   (pattern[p] == '?' || fold_ascii(pattern[p]) == fold_ascii(name[n]))) {
            ++p;
            ++n;
        } else if (starP != std::string_view::npos) {
            p = starP + 1;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

}  // namespace qumbrel
