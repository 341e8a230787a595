#include "frame/text.h"

namespace qumbrel {

namespace {
bool blank(char c) {
    return c == ' ' || c == '\t';
}
char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
}  // namespace

std::string_view trim_blanks(std::string_view s) {
    while (!s.empty() && blank(s.front())) s.remove_prefix(1);
    return trim_right_blanks(s);
}

std::string_view trim_right_blanks(std::string_view s) {
    while (!s.empty() && blank(s.back())) s.remove_suffix(1);
    return s;
}

bool iequals(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

std::string to_upper_ascii(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
}

std::vector<std::string> split(std::string_view s, std::string_view sep) {
    std::vector<std::string> out;
    if (s.empty()) return out;
    if (sep.empty()) {
        out.emplace_back(s);
        return out;
    }
    std::size_t start = 0;
    while (true) {
        const auto at = s.find(sep, start);
        if (at == std::string_view::npos) {
            out.emplace_back(s.substr(start));
            return out;
        }
        out.emplace_back(s.substr(start, at - start));
        start = at + sep.size();
    }
}

}  // namespace qumbrel
