// Format of numbers (digit patterns, sections, grouping, scaling, exponents), the named
// number formats, Format of a text, and CStr of a double.
#include <charconv>
#include <cmath>
#include <string>

#include "frame/detail/vbdecimal.h"
#include "frame/detail/vbpattern.h"
#include "frame/errors.h"
#include "frame/vbformat.h"

namespace qumbrel::vb {

namespace {

using detail::Decimal;

// ---- pattern reading -------------------------------------------------------------------

// Up to four sections (positive;negative;zero;null), split at ';' outside quotes/escapes.
struct Sections {
    std::string_view s[4];
    int count = 0;
};

Sections split_sections(std::string_view p) {
    Sections out;
    std::size_t start = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const char c = p[i];
        if (c == '"') {
            const auto close = p.find('"', i + 1);
            i = close == std::string_view::npos ? p.size() : close;
        } else if (c == '\\') {
            ++i;
        } else if (c == ';' && out.count < 3) {
            out.s[out.count++] = p.substr(start, i - start);
            start = i + 1;
        }
    }
    out.s[out.count++] = p.substr(start);
    return out;
}

enum class Kind { number, date };

// The first token that means something decides: digit tokens make a number pattern, date
// letters a date pattern. After that, letters in a number pattern are literals.
Kind classify(std::string_view p) {
    for (std::size_t i = 0; i < p.size(); ++i) {
        const char c = p[i];
        if (c == '"') {
            const auto close = p.find('"', i + 1);
            if (close == std::string_view::npos) break;
            i = close;
            continue;
        }
        if (c == '\\') {
            ++i;
            continue;
        }
        if (c == ';') break;
        switch (detail::lower_ascii(c)) {
            case '0':
            case '#':
            case '.':
            case ',':
            case '%':
                return Kind::number;
            case 'd':
            case 'w':
            case 'm':
            case 'q':
            case 'y':
            case 'h':
            case 'n':
            case 's':
            case 'c':
                return Kind::date;
            case 't':
                if (detail::istarts_with(p, i, "ttttt")) return Kind::date;
                break;
            case 'a':
                if (detail::ampm_token_length(p, i) != 0) return Kind::date;
                break;
            default:
                break;
        }
    }
    return Kind::number;
}

struct Tok {
    enum Type { literal, digit, point, comma, percent, exponent } type = literal;
    std::string_view text;
};

// Tokens of one number section. Quoted text and escapes come out as literals.
class NumTokenizer {
  public:
    explicit NumTokenizer(std::string_view s) : s_(s) {}

    bool next(Tok& t) {
        if (i_ >= s_.size()) return false;
        const char c = s_[i_];
        switch (c) {
            case '0':
            case '#':
                t = {Tok::digit, s_.substr(i_++, 1)};
                return true;
            case '.':
                t = {Tok::point, s_.substr(i_++, 1)};
                return true;
            case ',':
                t = {Tok::comma, s_.substr(i_++, 1)};
                return true;
            case '%':
                t = {Tok::percent, s_.substr(i_++, 1)};
                return true;
            case '"': {
                const auto close = s_.find('"', i_ + 1);
                const std::size_t end = close == std::string_view::npos ? s_.size() : close;
                t = {Tok::literal, s_.substr(i_ + 1, end - i_ - 1)};
                i_ = end + 1;
                return true;
            }
            case '\\': {
                if (i_ + 1 >= s_.size()) {
                    ++i_;
                    t = {Tok::literal, {}};
                    return true;
                }
                const std::size_t len = detail::utf8_length(s_[i_ + 1]);
                t = {Tok::literal, s_.substr(i_ + 1, len)};
                i_ += 1 + len;
                return true;
            }
            case 'E':
            case 'e':
                if (i_ + 1 < s_.size() && (s_[i_ + 1] == '+' || s_[i_ + 1] == '-')) {
                    t = {Tok::exponent, s_.substr(i_, 2)};
                    i_ += 2;
                    return true;
                }
                break;
            default:
                break;
        }
        const std::size_t len = detail::utf8_length(c);
        t = {Tok::literal, s_.substr(i_, len)};
        i_ += len;
        return true;
    }

  private:
    std::string_view s_;
    std::size_t i_ = 0;
};

struct NumLayout {
    int intPlaces = 0;
    int firstZero = -1;  // index among the integer placeholders, from the left
    int lastZero = -1;
    bool grouping = false;
    int scale = 0;  // commas at the end of the integer part: divide by 1000 each
    int percent = 0;
    bool point = false;
    int fracPlaces = 0;
    int fracLastZero = -1;
    bool exponent = false;
    bool expPlus = false;
    int expZeros = 0;
};

NumLayout analyse(std::string_view section) {
    NumLayout L;
    NumTokenizer t(section);
    Tok tok;
    bool inExp = false;
    while (t.next(tok)) {
        switch (tok.type) {
            case Tok::digit: {
                const bool zero = tok.text[0] == '0';
                if (inExp) {
                    if (zero) ++L.expZeros;
                } else if (L.point) {
                    if (zero) L.fracLastZero = L.fracPlaces;
                    ++L.fracPlaces;
                } else {
                    if (zero) {
                        if (L.firstZero < 0) L.firstZero = L.intPlaces;
                        L.lastZero = L.intPlaces;
                    }
                    ++L.intPlaces;
                }
                break;
            }
            case Tok::point:
                if (!inExp) L.point = true;
                break;
            case Tok::comma: {
                if (L.point || inExp || L.intPlaces == 0) break;
                int run = 1;
                NumTokenizer ahead = t;
                Tok after;
                bool more = false;
                while ((more = ahead.next(after)) && after.type == Tok::comma) {
                    ++run;
                    t = ahead;
                }
                if (more && after.type == Tok::digit)
                    L.grouping = true;
                else
                    L.scale += run;
                break;
            }
            case Tok::percent:
                ++L.percent;
                break;
            case Tok::exponent:
                if (!inExp && L.intPlaces + L.fracPlaces > 0) {
                    inExp = true;
                    L.exponent = true;
                    L.expPlus = tok.text[1] == '+';
                }
                break;
            case Tok::literal:
                break;
        }
    }
    return L;
}

void append_int(std::string& out, long long v) {
    char buf[24];
    out.append(buf, std::to_chars(buf, buf + sizeof buf, v).ptr);
}

// ---- the number formatter --------------------------------------------------------------

// The digits a layout shows for a value: rounded, scaled, with the integer width.
struct Prepared {
    Decimal x;
    int ownDigits = 0;  // digits of the rounded integer part, 0 for a zero integer part
    int width = 0;      // integer digits shown, zero padding included
    int fracKeep = 0;   // fraction digits shown
    int expValue = 0;

    char int_digit(int pos) const { return pos < ownDigits ? x.digit_at(pos) : '0'; }
    char frac_digit(int index) const { return x.digit_at(-1 - index); }
};

Prepared prepare(double value, const NumLayout& L) {
    Prepared d;
    Decimal& x = d.x;
    x = detail::to_decimal15(value);
    if (x.n > 0) x.exp += 2 * L.percent - 3 * L.scale;

    if (L.exponent) {
        const int intDigits = L.intPlaces > 0 ? L.intPlaces : 1;
        if (x.n > 0) {
            d.expValue = x.exp - (intDigits - 1);
            x.exp -= d.expValue;
            detail::round_at(x, -L.fracPlaces);
            if (x.exp > intDigits - 1) {  // 9.99 -> 10.0: shift once more
                x.exp -= 1;
                ++d.expValue;
            }
        }
    } else {
        detail::round_at(x, -L.fracPlaces);
    }

    // Integer digits: the value's own, padded with zeros from the first '0' placeholder; for
    // a zero integer part, '#' placeholders after the last '0' stay empty ("0#" -> "0").
    d.ownDigits = (x.n > 0 && x.exp >= 0) ? x.exp + 1 : 0;
    d.width = d.ownDigits;
    if (L.firstZero >= 0) {
        const int padded =
            d.ownDigits > 0 ? L.intPlaces - L.firstZero : L.lastZero - L.firstZero + 1;
        if (padded > d.width) d.width = padded;
    }
    d.fracKeep = L.fracPlaces;
    while (d.fracKeep > 0 && d.fracKeep - 1 > L.fracLastZero && x.digit_at(-d.fracKeep) == '0')
        --d.fracKeep;
    return d;
}

// The common report patterns ("00", "0.00", "0000#", "0.00 ms"): placeholders, an optional
// point and a tail of plain literals. Read in one scan; no tokens needed.
bool simple_layout(std::string_view p, NumLayout& L, std::string_view& tail) {
    std::size_t i = 0;
    for (; i < p.size() && (p[i] == '0' || p[i] == '#'); ++i) {
        if (p[i] == '0') {
            if (L.firstZero < 0) L.firstZero = L.intPlaces;
            L.lastZero = L.intPlaces;
        }
        ++L.intPlaces;
    }
    if (i < p.size() && p[i] == '.') {
        L.point = true;
        for (++i; i < p.size() && (p[i] == '0' || p[i] == '#'); ++i) {
            if (p[i] == '0') L.fracLastZero = L.fracPlaces;
            ++L.fracPlaces;
        }
    }
    if (L.intPlaces + L.fracPlaces == 0) return false;
    tail = p.substr(i);
    for (std::size_t j = 0; j < tail.size(); ++j) {
        switch (tail[j]) {
            case '0':
            case '#':
            case '.':
            case ',':
            case '%':
            case '"':
            case '\\':
            case ';':
                return false;
            case 'E':
            case 'e':
                if (j + 1 < tail.size() && (tail[j + 1] == '+' || tail[j + 1] == '-')) return false;
                break;
            default:
                break;
        }
    }
    return true;
}

std::optional<std::string> format_simple(double value, std::string_view pattern,
                                         const RegionalProfile& r) {
    NumLayout L;
    std::string_view tail;
    if (!simple_layout(pattern, L, tail)) return std::nullopt;
    const Prepared d = prepare(value, L);
    char buf[64];
    if (d.width + d.fracKeep + static_cast<int>(r.decimal.size()) + 1 >
        static_cast<int>(sizeof buf))
        return std::nullopt;
    char* p = buf;
    if (value < 0) *p++ = '-';
    for (int pos = d.width - 1; pos >= 0; --pos) *p++ = d.int_digit(pos);
    if (L.point) {
        for (char c : r.decimal) *p++ = c;
        for (int j = 0; j < d.fracKeep; ++j) *p++ = d.frac_digit(j);
    }
    std::string out(buf, p);
    out.append(tail);
    return out;
}

std::string format_section(double value, bool showMinus, std::string_view section,
                           const RegionalProfile& r) {
    const NumLayout L = analyse(section);
    const Prepared d = prepare(value, L);
    const int width = d.width;
    const int fracKeep = d.fracKeep;
    const int expValue = d.expValue;

    std::string out;
    bool minusDone = !showMinus;
    auto put_minus = [&] {
        if (!minusDone) out.push_back('-');
        minusDone = true;
    };
    auto put_int_digit = [&](int pos) {
        out.push_back(d.int_digit(pos));
        if (L.grouping && pos > 0 && pos % 3 == 0) out.append(r.thousand);
    };
    auto put_all_int = [&] {
        for (int pos = width - 1; pos >= 0; --pos) put_int_digit(pos);
    };

    NumTokenizer t(section);
    Tok tok;
    int intIndex = 0;
    int fracIndex = 0;
    bool point = false;
    bool inExp = false;
    while (t.next(tok)) {
        switch (tok.type) {
            case Tok::digit:
                if (inExp) break;
                if (point) {
                    if (fracIndex < fracKeep) out.push_back(d.frac_digit(fracIndex));
                    ++fracIndex;
                } else {
                    put_minus();
                    const int pos = L.intPlaces - 1 - intIndex;
                    if (intIndex == 0)  // digits beyond the placeholders are never cut off
                        for (int p = width - 1; p > pos; --p) put_int_digit(p);
                    if (pos < width) put_int_digit(pos);
                    ++intIndex;
                }
                break;
            case Tok::point:
                if (point || inExp) {
                    out.append(tok.text);
                    break;
                }
                put_minus();
                if (L.intPlaces == 0) put_all_int();
                point = true;
                out.append(r.decimal);
                break;
            case Tok::comma:
                break;
            case Tok::percent:
                out.push_back('%');
                break;
            case Tok::exponent: {
                // An "E+" before any digit placeholder is plain text, as analyse() saw it.
                if (inExp || !L.exponent || intIndex + fracIndex == 0) {
                    out.append(tok.text);
                    break;
                }
                inExp = true;
                out.push_back(tok.text[0]);
                if (expValue < 0)
                    out.push_back('-');
                else if (L.expPlus)
                    out.push_back('+');
                char buf[16];
                const auto end = std::to_chars(buf, buf + sizeof buf, std::abs(expValue)).ptr;
                const int len = static_cast<int>(end - buf);
                for (int i = len; i < L.expZeros; ++i) out.push_back('0');
                out.append(buf, end);
                break;
            }
            case Tok::literal:
                out.append(tok.text);
                break;
        }
    }
    return out;
}

std::string format_number(double value, std::string_view pattern, const RegionalProfile& r) {
    if (auto simple = format_simple(value, pattern, r)) return std::move(*simple);
    const Sections sec = split_sections(pattern);
    if (value < 0 && sec.count >= 2 && !sec.s[1].empty())
        return format_section(value, false, sec.s[1], r);
    if (value == 0 && sec.count >= 3 && !sec.s[2].empty())
        return format_section(value, false, sec.s[2], r);
    return format_section(value, value < 0, sec.s[0], r);
}

// ---- named formats ---------------------------------------------------------------------

std::string quoted(std::string_view s) {
    std::string q = "\"";
    q.append(s);
    q.push_back('"');
    return q;
}

std::string currency_pattern(const RegionalProfile& r) {
    const std::string sym = quoted(r.currencySymbol);
    const std::string_view lang = std::string_view(r.name).substr(0, 2);
    if (lang == "de" || lang == "fr") return "#,##0.00 " + sym + ";-#,##0.00 " + sym;
    if (r.name == "en-US") return sym + "#,##0.00;(" + sym + "#,##0.00)";
    return sym + "#,##0.00;-" + sym + "#,##0.00";
}

// Named number formats; nullopt when the pattern is none of them.
std::optional<std::string> named_number(double v, std::string_view p, const RegionalProfile& r) {
    using detail::iequals_ascii;
    if (iequals_ascii(p, "General Number")) return CStr(v, r);
    if (iequals_ascii(p, "Fixed")) return format_number(v, "0.00", r);
    if (iequals_ascii(p, "Standard")) return format_number(v, "#,##0.00", r);
    if (iequals_ascii(p, "Percent")) return format_number(v, "0.00%", r);
    if (iequals_ascii(p, "Scientific")) return format_number(v, "0.00E+00", r);
    if (iequals_ascii(p, "Currency")) return format_number(v, currency_pattern(r), r);
    if (iequals_ascii(p, "Yes/No")) return std::string(v != 0 ? "Yes" : "No");
    if (iequals_ascii(p, "True/False")) return std::string(v != 0 ? "True" : "False");
    if (iequals_ascii(p, "On/Off")) return std::string(v != 0 ? "On" : "Off");
    return std::nullopt;
}

bool is_named_number(std::string_view p) {
    for (const char* n : {"General Number", "Fixed", "Standard", "Percent", "Scientific",
                          "Currency", "Yes/No", "True/False", "On/Off"})
        if (detail::iequals_ascii(p, n)) return true;
    return false;
}

// OLE dates run from year 100 to year 9999.
constexpr double kMinSerial = -657434.0;
constexpr double kMaxSerial = 2958466.0;

std::string non_finite(double v) {
    if (std::isnan(v)) return std::signbit(v) ? "-1.#IND" : "1.#QNAN";
    return v < 0 ? "-1.#INF" : "1.#INF";
}

}  // namespace

std::string Format(double value, std::string_view pattern, const RegionalProfile& r) {
    if (pattern.empty() || !std::isfinite(value)) return CStr(value, r);
    // Named formats are whole words; a digit pattern never starts with a letter of them.
    const char first = detail::lower_ascii(pattern[0]);
    const bool word = first >= 'a' && first <= 'z';
    if (word) {
        if (auto named = named_number(value, pattern, r)) return *named;
    }
    if ((word && detail::is_named_date_format(pattern)) || classify(pattern) == Kind::date) {
        // A number shown as a date is an OLE serial; outside the Date range VB overflows.
        if (!(value >= kMinSerial && value < kMaxSerial))
            throw VbError(errnum::kOverflow, "Overflow");
        return FormatDate(from_serial(value), pattern, r);
    }
    return format_number(value, pattern, r);
}

std::string FormatText(std::string_view text, std::string_view pattern, const RegionalProfile& r) {
    if (pattern.empty()) return std::string(text);
    const bool asDate = !is_named_number(pattern) &&
                        (detail::is_named_date_format(pattern) || classify(pattern) == Kind::date);
    if (asDate) {
        if (auto d = CDate(text, r)) return FormatDate(*d, pattern, r);
        return std::string(text);
    }
    try {
        if (auto v = CDbl(text, r)) return Format(*v, pattern, r);
    } catch (const VbError&) {
        // Out of the double range: not a number to format, so the text stays as it is.
    }
    return std::string(text);
}

std::string CStr(double value, const RegionalProfile& r) {
    if (!std::isfinite(value)) return non_finite(value);
    const Decimal x = detail::to_decimal15(value);
    if (x.n == 0) return "0";  // -0 as well
    std::string out;
    if (value < 0) out.push_back('-');
    if (x.exp < -4 || x.exp >= 15) {
        out.push_back(x.d[0]);
        if (x.n > 1) {
            out.append(r.decimal);
            out.append(x.d + 1, static_cast<std::size_t>(x.n - 1));
        }
        out.append(x.exp < 0 ? "E-" : "E+");
        const int e = std::abs(x.exp);
        if (e < 10) out.push_back('0');
        append_int(out, e);
        return out;
    }
    if (x.exp >= 0) {
        for (int p = x.exp; p >= 0; --p) out.push_back(x.digit_at(p));
        if (x.n > x.exp + 1) {
            out.append(r.decimal);
            for (int p = -1; p > x.exp - x.n; --p) out.push_back(x.digit_at(p));
        }
        return out;
    }
    out.push_back('0');
    out.append(r.decimal);
    for (int p = -1; p > x.exp - x.n; --p) out.push_back(x.digit_at(p));
    return out;
}

}  // namespace qumbrel::vb
