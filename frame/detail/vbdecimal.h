#pragma once
// Decimal digit strings shared by Format, CStr and the number parsers. A value is held as
// significant digits d[0..n) with d[0] standing at 10^exp; n == 0 means zero. Everything
// lives in fixed buffers: these run once per sample.
#include <charconv>
#include <cmath>
#include <cstdint>

namespace qumbrel::vb::detail {

struct Decimal {
    char d[24] = {};
    int n = 0;
    int exp = 0;

    char digit_at(int power) const {
        if (n == 0 || power > exp || power <= exp - n) return '0';
        return d[exp - power];
    }
    void strip_trailing_zeros() {
        while (n > 0 && d[n - 1] == '0') --n;
    }
};

// The 15-significant-digit text of |v| (what "%.15G" prints), as digits. v must be finite.
inline Decimal to_decimal15(double v) {
    Decimal r;
    v = std::fabs(v);
    if (v == 0) return r;
    char buf[40];
    // The shortest text that reads back as v: when it has at most 15 digits it is also the
    // 15-digit rounding (v lies within half an ulp of it, far less than half a step of the
    // 15th digit). Longer ones are rounded to 15 digits, which is slower.
    auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific);
    int digits = 0;
    for (const char* q = buf; q < res.ptr && *q != 'e'; ++q) digits += *q != '.';
    if (digits > 15)
        res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific, 14);
    // "d.dddddddddddddde+XX"
    const char* p = buf;
    r.d[r.n++] = *p++;
    if (p < res.ptr && *p == '.') ++p;
    while (p < res.ptr && *p != 'e') r.d[r.n++] = *p++;
    if (p < res.ptr) ++p;  // 'e'
    bool negExp = false;
    if (p < res.ptr && (*p == '+' || *p == '-')) negExp = *p++ == '-';
    int e = 0;
    while (p < res.ptr) e = e * 10 + (*p++ - '0');
    r.exp = negExp ? -e : e;
    r.strip_trailing_zeros();
    return r;
}

// Rounds half away from zero so that no digit below 10^power remains.
inline void round_at(Decimal& x, int power) {
    if (x.n == 0) return;
    const int keep = x.exp - power + 1;
    if (keep >= x.n) return;
    if (keep < 0) {
        x.n = 0;
        return;
    }
    const bool up = x.d[keep] >= '5';
    x.n = keep;
    if (up) {
        int i = keep - 1;
        while (i >= 0 && x.d[i] == '9') x.d[i--] = '0';
        if (i >= 0) {
            ++x.d[i];
        } else {
            // All nines (or nothing kept): the result is one unit at the next power up.
            x.d[0] = '1';
            x.n = 1;
            x.exp = keep == 0 ? power : x.exp + 1;
            return;
        }
    }
    x.strip_trailing_zeros();
}

// Significant digits collected from a text, with the power of ten of the last kept one:
// value = digits * 10^scale. Digits past the buffer only move the scale, so a hostile text
// of any length neither overflows nor allocates.
struct DigitAccumulator {
    static constexpr int kMax = 40;
    char d[kMax] = {};
    int n = 0;
    std::int64_t scale = 0;
    bool any = false;

    void add_integer_digit(char c) {
        any = true;
        if (n == 0 && c == '0') return;
        if (n < kMax)
            d[n++] = c;
        else
            ++scale;
    }
    void add_fraction_digit(char c) {
        any = true;
        if (n == 0 && c == '0') {
            --scale;
            return;
        }
        if (n < kMax) {
            d[n++] = c;
            --scale;
        }
    }
};

enum class Parsed { ok, mismatch, overflow };

// digits * 10^(scale + exp10) as a double; overflow beyond the double range.
inline Parsed accumulate_to_double(const DigitAccumulator& a, std::int64_t exp10, double& out) {
    out = 0;
    if (a.n == 0) return Parsed::ok;
    const std::int64_t e = a.scale + exp10;
    const std::int64_t magnitude = e + a.n;  // value < 10^magnitude
    if (magnitude > 310) return Parsed::overflow;
    if (magnitude < -330) return Parsed::ok;
    char buf[DigitAccumulator::kMax + 16];
    char* p = buf;
    for (int i = 0; i < a.n; ++i) *p++ = a.d[i];
    *p++ = 'e';
    p = std::to_chars(p, buf + sizeof buf, e).ptr;
    double v = 0;
    const auto res = std::from_chars(buf, p, v, std::chars_format::scientific);
    if (res.ec == std::errc::result_out_of_range) {
        if (magnitude > 300) return Parsed::overflow;
        return Parsed::ok;  // below the smallest double: zero
    }
    if (res.ec != std::errc{} || std::isinf(v)) return Parsed::overflow;
    out = v;
    return Parsed::ok;
}

}  // namespace qumbrel::vb::detail
