#include "frame/codepage.h"

#include <array>
#include <cstdint>

namespace qumbrel {

namespace {

// 0x80..0x9F of Windows-1252; 0 marks the five undefined bytes (kept as their C1 code).
constexpr std::array<char16_t, 32> kHigh = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void append_utf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

// Decodes one UTF-8 sequence at text[i]; returns its length, 0 when invalid.
std::size_t decode_utf8(std::string_view text, std::size_t i, char32_t& cp) {
    const auto b0 = static_cast<unsigned char>(text[i]);
    if (b0 < 0x80) {
        cp = b0;
        return 1;
    }
    std::size_t len;
    char32_t min;
    if ((b0 & 0xE0) == 0xC0) {
        len = 2, cp = b0 & 0x1F, min = 0x80;
    } else if ((b0 & 0xF0) == 0xE0) {
        len = 3, cp = b0 & 0x0F, min = 0x800;
    } else if ((b0 & 0xF8) == 0xF0) {
        len = 4, cp = b0 & 0x07, min = 0x10000;
    } else {
        return 0;
    }
    if (i + len > text.size()) return 0;
    for (std::size_t k = 1; k < len; ++k) {
        const auto b = static_cast<unsigned char>(text[i + k]);
        if ((b & 0xC0) != 0x80) return 0;
        cp = (cp << 6) | (b & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
    return len;
}

}  // namespace

std::string cp1252_to_utf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x80 && b <= 0x9F && kHigh[b - 0x80] != 0) {
            append_utf8(out, kHigh[b - 0x80]);
        } else {
            append_utf8(out, b);
        }
    }
    return out;
}

std::string utf8_to_cp1252(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        char32_t cp = 0;
        const std::size_t len = decode_utf8(text, i, cp);
        if (len == 0) {
            out.push_back(text[i]);
            ++i;
            continue;
        }
        i += len;
        if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) {
            out.push_back(static_cast<char>(cp));
            continue;
        }
        char mapped = '?';
        for (std::size_t k = 0; k < kHigh.size(); ++k) {
            if (kHigh[k] != 0 && kHigh[k] == cp) {
                mapped = static_cast<char>(0x80 + k);
                break;
            }
        }
        out.push_back(mapped);
    }
    return out;
}

bool is_valid_utf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        char32_t cp = 0;
        const std::size_t len = decode_utf8(text, i, cp);
        if (len == 0) return false;
        i += len;
    }
    return true;
}

std::string utf8_or_cp1252(std::string_view bytes) {
    return is_valid_utf8(bytes) ? std::string(bytes) : cp1252_to_utf8(bytes);
}

std::string_view utf8_prefix(std::string_view text, std::size_t count) {
    std::size_t i = 0;
    for (std::size_t n = 0; n < count && i < text.size(); ++n) {
        char32_t cp = 0;
        const std::size_t len = decode_utf8(text, i, cp);
        i += len == 0 ? 1 : len;
    }
    return text.substr(0, i);
}

std::size_t utf8_length(std::string_view text) {
    std::size_t n = 0;
    for (std::size_t i = 0; i < text.size(); ++n) {
        char32_t cp = 0;
        const std::size_t len = decode_utf8(text, i, cp);
        i += len == 0 ? 1 : len;
    }
    return n;
}

}  // namespace qumbrel
