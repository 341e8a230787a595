// Texts to numbers: Val (locale-free), CDbl/IsNumeric (regional rules), CInt/CLng.
#include <cmath>
#include <cstdint>
#include <limits>

#include "frame/detail/vbdecimal.h"
#include "frame/errors.h"
#include "frame/vbformat.h"

namespace qumbrel::vb {

namespace {

using detail::DigitAccumulator;
using detail::Parsed;

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// &H/&O literals: up to 16 bits they are an Integer (&HFFFF = -1), up to 32 bits a Long.
Parsed radix_value(std::uint64_t v, bool any, double& out) {
    out = 0;
    if (!any) return Parsed::mismatch;
    if (v <= 0xFFFFu)
        out = static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
    else if (v <= 0xFFFFFFFFu)
        out = static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
    else
        return Parsed::overflow;
    return Parsed::ok;
}

// Reads hex or octal digits from s[i]; `skip` says which characters may sit between them.
template <class Skip>
Parsed read_radix(std::string_view s, std::size_t& i, int base, Skip skip, double& out) {
    std::uint64_t v = 0;
    bool any = false;
    bool big = false;
    for (; i < s.size(); ++i) {
        if (skip(s[i])) continue;
        const int d = hex_value(s[i]);
        if (d < 0 || d >= base) break;
        any = true;
        v = v * static_cast<unsigned>(base) + static_cast<unsigned>(d);
        if (v > 0xFFFFFFFFu) big = true;
        if (big) v = 0x100000000u;  // stays above the Long range without wrapping
    }
    return radix_value(v, any, out);
}

bool is_val_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool starts_at(std::string_view s, std::size_t i, std::string_view what) {
    return !what.empty() && s.substr(i).starts_with(what);
}

// VarR8FromStr's rules: blanks around, a sign or parentheses before or after, the
// currency symbol once, thousands separators after the first digit, one decimal symbol,
// an exponent, &H/&O. The whole text must be used.
Parsed parse_regional(std::string_view s, const RegionalProfile& r, double& out) {
    out = 0;
    std::size_t i = 0;
    bool signSeen = false, negative = false, paren = false, parenClosed = false, currency = false;
    auto blank = [](char c) { return c == ' ' || c == '\t'; };

    for (;;) {
        if (i >= s.size()) return Parsed::mismatch;
        const char c = s[i];
        if (blank(c)) {
            ++i;
        } else if ((c == '+' || c == '-') && !signSeen) {
            signSeen = true;
            negative = c == '-';
            ++i;
        } else if (c == '(' && !paren) {
            paren = true;
            ++i;
        } else if (!currency && starts_at(s, i, r.currencySymbol)) {
            currency = true;
            i += r.currencySymbol.size();
        } else {
            break;
        }
    }

    double value = 0;
    if (s[i] == '&' && i + 1 < s.size() &&
        (s[i + 1] == 'H' || s[i + 1] == 'h' || s[i + 1] == 'O' || s[i + 1] == 'o')) {
        const int base = (s[i + 1] == 'H' || s[i + 1] == 'h') ? 16 : 8;
        i += 2;
        const Parsed p = read_radix(
            s, i, base, [](char) { return false; }, value);
        if (p != Parsed::ok) return p;
    } else {
        DigitAccumulator acc;
        bool decimalSeen = false;
        while (i < s.size()) {
            const char c = s[i];
            if (is_digit(c)) {
                decimalSeen ? acc.add_fraction_digit(c) : acc.add_integer_digit(c);
                ++i;
            } else if (!decimalSeen && starts_at(s, i, r.decimal)) {
                decimalSeen = true;
                i += r.decimal.size();
            } else if (!decimalSeen && acc.any && starts_at(s, i, r.thousand)) {
                i += r.thousand.size();
            } else {
                break;
            }
        }
        if (!acc.any) return Parsed::mismatch;
        std::int64_t exp10 = 0;
        if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
            std::size_t j = i + 1;
            bool expNeg = false;
            if (j < s.size() && (s[j] == '+' || s[j] == '-')) expNeg = s[j++] == '-';
            if (j >= s.size() || !is_digit(s[j])) return Parsed::mismatch;
            while (j < s.size() && is_digit(s[j])) {
                if (exp10 < 100000) exp10 = exp10 * 10 + (s[j] - '0');
                ++j;
            }
            if (expNeg) exp10 = -exp10;
            i = j;
        }
        const Parsed p = detail::accumulate_to_double(acc, exp10, value);
        if (p != Parsed::ok) return p;
    }

    while (i < s.size()) {
        const char c = s[i];
        if (blank(c)) {
            ++i;
        } else if ((c == '+' || c == '-') && !signSeen) {
            signSeen = true;
            negative = c == '-';
            ++i;
        } else if (c == ')' && paren && !parenClosed) {
            parenClosed = true;
            ++i;
        } else if (!currency && starts_at(s, i, r.currencySymbol)) {
            currency = true;
            i += r.currencySymbol.size();
        } else {
            return Parsed::mismatch;
        }
    }
    if (paren != parenClosed) return Parsed::mismatch;
    if (paren && signSeen) return Parsed::mismatch;  // "(-5)": one way of saying minus
    out = (negative || paren) ? -value : value;
    return Parsed::ok;
}

template <class Int>
Int round_banker(double value) {
    constexpr double lo = static_cast<double>(std::numeric_limits<Int>::min());
    constexpr double hi = static_cast<double>(std::numeric_limits<Int>::max());
    if (std::isnan(value)) throw VbError(errnum::kOverflow, "Overflow");
    double r = std::floor(value);
    const double diff = value - r;
    if (diff > 0.5 || (diff == 0.5 && std::fmod(r, 2.0) != 0)) r += 1;
    if (r < lo || r > hi) throw VbError(errnum::kOverflow, "Overflow");
    return static_cast<Int>(r);
}

}  // namespace

double Val(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && is_val_blank(text[i])) ++i;
    if (i + 1 < text.size() && text[i] == '&') {
        const char k = text[i + 1];
        if (k == 'H' || k == 'h' || k == 'O' || k == 'o') {
            i += 2;
            double v = 0;
            const Parsed p = read_radix(text, i, (k == 'H' || k == 'h') ? 16 : 8, is_val_blank, v);
            if (p == Parsed::overflow) throw VbError(errnum::kOverflow, "Overflow");
            return v;
        }
    }
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';

    DigitAccumulator acc;
    bool point = false;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (is_val_blank(c)) continue;
        if (is_digit(c)) {
            point ? acc.add_fraction_digit(c) : acc.add_integer_digit(c);
        } else if (c == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    std::int64_t exp10 = 0;
    if (i < text.size() && acc.any &&
        (text[i] == 'e' || text[i] == 'E' || text[i] == 'd' || text[i] == 'D')) {
        std::size_t j = i + 1;
        while (j < text.size() && is_val_blank(text[j])) ++j;
        bool expNeg = false;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) expNeg = text[j++] == '-';
        for (; j < text.size(); ++j) {
            if (is_val_blank(text[j])) continue;
            if (!is_digit(text[j])) break;
            if (exp10 < 100000) exp10 = exp10 * 10 + (text[j] - '0');
        }
        if (expNeg) exp10 = -exp10;
        i = j;
    }
    double v = 0;
    if (detail::accumulate_to_double(acc, exp10, v) == Parsed::overflow)
        throw VbError(errnum::kOverflow, "Overflow");
    // A type suffix: "50%" is an Integer 50, but an Integer or Long cannot hold 50.5.
    if (i < text.size() && (text[i] == '%' || text[i] == '&') && std::trunc(v) != v)
        throw VbError(errnum::kTypeMismatch, "Type mismatch");
    if (v == 0) return 0;
    return negative ? -v : v;
}

std::optional<double> CDbl(std::string_view text, const RegionalProfile& r) {
    double v = 0;
    switch (parse_regional(text, r, v)) {
        case Parsed::ok:
            return v;
        case Parsed::overflow:
            throw VbError(errnum::kOverflow, "Overflow");
        case Parsed::mismatch:
            break;
    }
    return std::nullopt;
}

bool IsNumeric(std::string_view text, const RegionalProfile& r) {
    double v = 0;
    return parse_regional(text, r, v) == Parsed::ok;
}

std::int16_t CInt(double value) {
    return round_banker<std::int16_t>(value);
}
std::int32_t CLng(double value) {
    return round_banker<std::int32_t>(value);
}

}  // namespace qumbrel::vb
