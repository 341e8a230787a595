// The number text of the reports: the fast path for scaled integers gives exactly what the
// general 15-digit conversion gives.
#include "reports/numbertext.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <random>

using namespace qumbrel;

namespace {

std::string general(double v, std::string_view decimal) {
    char buf[40];
    const auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 15);
    std::string out;
    const char* p = buf;
    if (res.ptr - p == 2 && p[0] == '-' && p[1] == '0') ++p;
    for (; p != res.ptr; ++p)
        out += *p == '.' ? std::string(decimal) : std::string(1, *p == 'e' ? 'E' : *p);
    return out;
}

}  // namespace

TEST(NumberText, ScaledIntegersAndOddValuesMatchTheGeneralConversion) {
    std::mt19937 gen(11);
    std::uniform_int_distribution<std::int32_t> raw(INT32_MIN, INT32_MAX);
    std::uniform_int_distribution<int> small(-40000, 40000), dec(0, 9);
    for (int k = 0; k < 200000; ++k) {
        const std::int64_t r = k % 2 ? raw(gen) : small(gen);
        const double v = static_cast<double>(r) / std::pow(10.0, dec(gen));
        ASSERT_EQ(number_text(v, ","), general(v, ",")) << r;
    }
    for (double v : {0.0, -0.0, 1e-4, 9.99e-5, 1e-5, -1.2e-5, 1e15, 999999999999999.0,
                     123456789012345.6, 1234567.123456789, 0.1 + 0.2, 1.0 / 3, -2.5, 1e300, 5e-324,
                     2147483647.0, -2147483648.0, 0.5, 100000.0})
        EXPECT_EQ(number_text(v, "."), general(v, ".")) << v;
}
