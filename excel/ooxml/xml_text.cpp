#include "excel/ooxml/xml_text.h"

#include <cstdio>

namespace qumbrel::ooxml {

namespace {

bool is_hex(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// "_xHHHH_" at `at`.
bool escape_like(std::string_view s, std::size_t at) {
    if (at + 7 > s.size() || s[at] != '_' || s[at + 1] != 'x' || s[at + 6] != '_') return false;
    for (std::size_t k = 2; k < 6; ++k)
        if (!is_hex(s[at + k])) return false;
    return true;
}

void hex_escape(std::string& out, unsigned code) {
    char buf[8];
    std::snprintf(buf, sizeof buf, "_x%04X_", code);
    out += buf;
}

std::string escape(std::string_view s, bool attribute) {
    std::string out;
    out.reserve(s.size() + s.size() / 8);
    for (std::size_t i = 0; i < s.size(); ++i) {
        const auto c = static_cast<unsigned char>(s[i]);
        if (c == '_' && escape_like(s, i)) {
            out += "_x005F_";
            continue;
        }
        switch (c) {
            case '&':
                out += "&amp;";
                continue;
            case '<':
                out += "&lt;";
                continue;
            case '>':
                out += "&gt;";
                continue;
            case '"':
                if (attribute) {
                    out += "&quot;";
                    continue;
                }
                break;
            case '\r':
                hex_escape(out, c);
                continue;
            case '\t':
            case '\n':
                if (attribute) {
                    hex_escape(out, c);
                    continue;
                }
                break;
            default:
                if (c < 0x20) {
                    hex_escape(out, c);
                    continue;
                }
                // U+FFFE and U+FFFF (EF BF BE/BF) are no XML characters either.
                if (c == 0xEF && i + 2 < s.size() && static_cast<unsigned char>(s[i + 1]) == 0xBF &&
                    (static_cast<unsigned char>(s[i + 2]) & 0xFE) == 0xBE) {
                    hex_escape(out, 0xFFFE + (static_cast<unsigned char>(s[i + 2]) & 1));
                    i += 2;
                    continue;
                }
                break;
        }
        out.push_back(static_cast<char>(c));
    }
    return out;
}

}  // namespace

std::string xml_text(std::string_view utf8) {
    return escape(utf8, false);
}

std::string xml_attribute(std::string_view utf8) {
    return escape(utf8, true);
}

bool needs_preserve(std::string_view s) {
    if (s.empty()) return false;
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    return blank(s.front()) || blank(s.back()) || s.find('\n') != std::string_view::npos ||
           s.find('\r') != std::string_view::npos;
}

}  // namespace qumbrel::ooxml
