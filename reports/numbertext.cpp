#include "reports/numbertext.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace qumbrel {

namespace {

constexpr double kPow10[10] = {1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};

// Most report values are a recorder's integer behind a few decimals: such a value is the
// double nearest to x / 10^d for an integer x, and its 15-digit text is exactly the digits
// of x with the separator before the last d. Found without the general conversion; false
// for anything else (and for what takes the exponent form), which goes the general way.
bool append_scaled(std::string& out, double value, std::string_view decimal) {
    const double mag = value < 0 ? -value : value;
    if (!(mag >= 1e-4 && mag < 1e15)) return false;
    for (int d = 0; d < 10; ++d) {
        const double scaled = value * kPow10[d];
        if (!(scaled > -9e15 && scaled < 9e15)) return false;
        const auto x = static_cast<std::int64_t>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
        if (static_cast<double>(x) / kPow10[d] != value) continue;
        // More than 15 digits: the general conversion rounds them.
        if (x >= 1'000'000'000'000'000 || x <= -1'000'000'000'000'000) return false;
        char digits[24];
        const std::uint64_t ux =
            x < 0 ? static_cast<std::uint64_t>(-x) : static_cast<std::uint64_t>(x);
        const auto res = std::to_chars(digits, digits + sizeof digits, ux);
        const auto len = static_cast<int>(res.ptr - digits);
        if (x < 0) out.push_back('-');
        if (len <= d) {
            out.push_back('0');
            out.append(decimal);
            out.append(static_cast<std::size_t>(d - len), '0');
            out.append(digits, res.ptr);
        } else {
            out.append(digits, static_cast<std::size_t>(len - d));
            if (d > 0) {
                out.append(decimal);
                out.append(digits + (len - d), res.ptr);
            }
        }
        return true;
    }
    return false;
}

}  // namespace

void append_number_text(std::string& out, double value, std::string_view decimal) {
    if (append_scaled(out, value, decimal)) return;
    char buf[40];
    const auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, 15);
    const char* const end = res.ptr;
    const char* p = buf;
    if (end - p == 2 && p[0] == '-' && p[1] == '0') ++p;  // -0 reads as 0
    for (; p != end; ++p) {
        if (*p == '.') {
            out.append(decimal);
        } else if (*p == 'e') {
            out.push_back('E');
        } else {
            out.push_back(*p);
        }
    }
}

std::string number_text(double value, std::string_view decimal) {
    std::string s;
    append_number_text(s, value, decimal);
    return s;
}

}  // namespace qumbrel
