#include "recorder/filters.h"

#include <array>
#include <cstring>

#include "frame/codepage.h"
#include "frame/log.h"

namespace qumbrel {

namespace {

// Case folding of Windows-1252 for text comparison: ASCII, the Latin-1 letters and the
// few letter pairs in 0x80..0x9F.
constexpr std::array<unsigned char, 256> make_fold() {
    std::array<unsigned char, 256> t{};
    for (int i = 0; i < 256; ++i) t[i] = static_cast<unsigned char>(i);
    for (int c = 'A'; c <= 'Z'; ++c) t[c] = static_cast<unsigned char>(c + 32);
    for (int c = 0xC0; c <= 0xDE; ++c)
        if (c != 0xD7) t[c] = static_cast<unsigned char>(c + 32);
    t[0x8A] = 0x9A;
    t[0x8C] = 0x9C;
    t[0x8E] = 0x9E;
    t[0x9F] = 0xFF;
    return t;
}
constexpr auto kFold = make_fold();

unsigned char fold(char c) {
    return kFold[static_cast<unsigned char>(c)];
}

// Does `set` hold `c` (InStr of one character)?
bool contains(std::string_view set, char c, int compare) {
    if (compare == kBinaryCompare) return set.find(c) != std::string_view::npos;
    const unsigned char f = fold(c);
    for (char s : set)
        if (fold(s) == f) return true;
    return false;
}

// InStr(1, text, what, vbTextCompare) - 1; npos when absent. An empty `what` is found at
// the start, as InStr does.
std::size_t find_text(std::string_view text, std::string_view what) {
    if (what.empty()) return 0;
    if (what.size() > text.size()) return std::string_view::npos;
    for (std::size_t i = 0; i + what.size() <= text.size(); ++i) {
        std::size_t k = 0;
        while (k < what.size() && fold(text[i + k]) == fold(what[k])) ++k;
        if (k == what.size()) return i;
    }
    return std::string_view::npos;
}

std::string_view trim_spaces(std::string_view s) {
    const auto b = s.find_first_not_of(' ');
    if (b == std::string_view::npos) return {};
    return s.substr(b, s.find_last_not_of(' ') - b + 1);
}

}  // namespace

std::string fkt_StrFilter(Program& ctx, std::string_view text, std::string_view filterChars,
                          Flag keep, int compare) {
    std::string out;
    try {
        out.reserve(text.size());
        const bool keeping = is_set(keep);
        for (char c : text)
            if (contains(filterChars, c, compare) == keeping) out.push_back(c);
    } catch (...) {
        report_trapped(ctx, "fkt_StrFilter()", 0);
    }
    return out;
}

std::string fkt_TrimNull(Program& ctx, std::string_view text) {
    std::string out;
    try {
        const std::string_view sign = (!text.empty() && text.front() == '-') ? "-" : "";
        const std::size_t found = find_text(text, ctx.opt.decseparator);
        // p counts from 1 as InStr does; 0 when there is no separator.
        const std::size_t p = found == std::string_view::npos ? 0 : found + 1;
        std::size_t i = 1;
        if (p >= 3) {
            for (i = 1; i <= p - 2; ++i) {
                const char c = text[i - 1];
                if (c != '0' && c != '-') break;
            }
        }
        out = std::string(sign) + std::string(text.substr(i - 1));
    } catch (...) {
        report_trapped(ctx, "fkt_TrimNull", 0);
    }
    return out;
}

std::string filter_field(Program& ctx, char* field, std::size_t width, std::string_view filter,
                         bool trim) {
    const std::string kept =
        fkt_StrFilter(ctx, std::string_view(field, width), filter, kTrue, kTextCompare);
    // Written back into the fixed-width field, padded with blanks; the value handed on is
    // the filter's result itself.
    std::memset(field, ' ', width);
    std::memcpy(field, kept.data(), kept.size());
    return cp1252_to_utf8(trim ? trim_spaces(kept) : std::string_view(kept));
}

std::string raw_field(const char* field, std::size_t width) {
    // A text padded with zeros ends at its first zero byte.
    std::string_view text(field, width);
    if (const auto nul = text.find('\0'); nul != std::string_view::npos) text = text.substr(0, nul);
    return cp1252_to_utf8(text);
}

}  // namespace qumbrel
