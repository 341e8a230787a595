// VB-style Format, CStr, Val, CDbl/IsNumeric, CDate, CInt/CLng: tables of exact strings in
// en-US and de-DE.
#include "frame/vbformat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <utility>

#include "frame/errors.h"

namespace qumbrel::vb {
namespace {

const RegionalProfile kUs = *clsRegionalSettings::named("en-US");
const RegionalProfile kDe = *clsRegionalSettings::named("de-DE");

// The number of the VbError that f raises, 0 when it raises none.
template <class F>
int vb_error(F&& f) {
    try {
        f();
    } catch (const VbError& e) {
        return e.number();
    }
    return 0;
}

// A table row: what is tried, and the outcome in en-US and in de-DE.
template <class In, class Out>
struct Row {
    In in;
    Out us;
    Out de;
};

// The digit-pattern table: every row holds in both locales, de-DE with "," for ".".
// Value 0 with '#' in the units place ("0#" -> "0", "0000#" -> "0000") is only seen in an
// emulation; we follow it because it matches Windows' "#" -> "" rule. Rounding is half away
// from zero on the 15-digit text; integer digits are never cut.
TEST(VbFormatNumber, DigitPatternTable) {
    // clang-format off
    const std::tuple<double, const char*, const char*> cases[] = {
        {0, "000", "000"}, {0, "0#", "0"}, {0, "0000#", "0000"}, {0, "##0", "0"},
        {0, "0.00 ms", "0.00 ms"}, {5, "00", "05"}, {5, "0#", "05"}, {5, "0000#", "00005"},
        {5, "##0", "5"}, {12, "0000", "0012"}, {12, "0.00 ms", "12.00 ms"}, {1234, "000", "1234"},
        {1234, "0.00", "1234.00"}, {-5, "0000", "-0005"}, {-5, "0.00 ms", "-5.00 ms"},
        {7.6, "0000#", "00008"}, {7.6, "0.00", "7.60"}, {2.5, "00", "03"}, {-2.5, "##0", "-3"},
        {1.7, "#0", "2"}, {1.005, "0.00", "1.01"}, {2.675, "0.00", "2.68"}, {0, "#", ""},
        {0.0995, "#.##", ".1"}, {99.995, "0.00", "100.00"}, {1.5, "0.0#", "1.5"},
        {0.5, "00", "01"}, // the half-up rule; Wine's "00" comes from a carry bug
        {-0.004, "0.00", "-0.00"}, // the sign of the value, not of the rounded text (unverified)
    };
    // clang-format on
    for (const auto& [value, pattern, expected] : cases) {
        EXPECT_EQ(Format(value, pattern, kUs), expected) << value << " " << pattern;
        std::string german = expected;
        for (auto& ch : german)
            if (ch == '.') ch = ',';
        EXPECT_EQ(Format(value, pattern, kDe), german) << value << " " << pattern;
    }
}

// ---- dates -----------------------------------------------------------------------------

const DateTime d1{2007, 3, 9, 12, 5, 3, 0};
const DateTime d2{2007, 3, 9, 18, 5, 3, 0};
const DateTime d3{1899, 12, 30, 0, 5, 3, 0};

TEST(VbFormatDate, NamedFormats) {
    // clang-format off
    const Row<std::pair<const char*, const DateTime*>, const char*> cases[] = {
        {{"Short Date", &d1}, "3/9/2007", "09.03.2007"},
        {{"Short Date", &d3}, "12/30/1899", "30.12.1899"},
        {{"Long Time", &d1}, "12:05:03 PM", "12:05:03"},
        {{"Long Time", &d2}, "6:05:03 PM", "18:05:03"},
        {{"Long Time", &d3}, "12:05:03 AM", "00:05:03"}, {{"Short Time", &d2}, "18:05", "18:05"},
        {{"General Date", &d1}, "3/9/2007 12:05:03 PM", "09.03.2007 12:05:03"},
        {{"General Date", &d3}, "12:05:03 AM", "00:05:03"},
        {{"short date", &d1}, "3/9/2007", "09.03.2007"},
    };
    // clang-format on
    for (const auto& [in, us, de] : cases) {
        EXPECT_EQ(FormatDate(*in.second, in.first, kUs), us) << in.first;
        EXPECT_EQ(FormatDate(*in.second, in.first, kDe), de) << in.first;
    }
    // A date without a time: the time of midnight (our pick; an emulation gives ""), and the
    // date alone for General Date.
    const DateTime midnight{2007, 3, 9, 0, 0, 0, 0};
    EXPECT_EQ(FormatDate(midnight, "Long Time", kUs), "12:00:00 AM");
    EXPECT_EQ(FormatDate(midnight, "Long Time", kDe), "00:00:00");
    EXPECT_EQ(FormatDate(midnight, "General Date", kUs), "3/9/2007");
    // Seconds round before formatting; broken fields do not crash.
    EXPECT_EQ(FormatDate({2007, 3, 9, 12, 5, 3, 500}, "ss", kUs), "04");
    EXPECT_EQ(FormatDate({2007, 12, 31, 23, 59, 59, 600}, "yyyy-mm-dd hh:nn:ss", kUs),
              "2008-01-01 00:00:00");
    const DateTime bad{2007, 13, 40, 30, 70, 70, 0};
    EXPECT_EQ(FormatDate(bad, "dd.mm.yyyy", kUs), "40.13.2007");
    EXPECT_EQ(FormatDate(bad, "mmmm dddd", kUs), " Sunday");
}

TEST(VbCStr, FifteenDigitsAndExponentForm) {
    // de-DE mantissas take "," as well (unverified on Windows; Wine keeps ".").
    // clang-format off
    const Row<double, const char*> cases[] = {
        {0.1 + 0.2, "0.3", "0,3"}, {1.0 / 3, "0.333333333333333", "0,333333333333333"},
        {123456789012345.0, "123456789012345", "123456789012345"},
        {1234567890123456.0, "1.23456789012346E+15", "1,23456789012346E+15"},
        {999999999999999.9, "1E+15", "1E+15"}, {0.0001, "0.0001", "0,0001"},
        {0.00001, "1E-05", "1E-05"}, {-0.05, "-0.05", "-0,05"}, {-0.0, "0", "0"},
    };
    // clang-format on
    for (const auto& [v, us, de] : cases) {
        EXPECT_EQ(CStr(v, kUs), us);
        EXPECT_EQ(CStr(v, kDe), de);
    }
}

TEST(VbVal, LeadingNumberWithBlanksSkippedAndVbErrors) {
    // clang-format off
    const std::pair<const char*, double> cases[] = {
        {" 1615 198th Street N.E.", 1615198}, {"24 and 57", 24}, {"&HFFFF", -1}, {"&HFF", 255},
        {"&O17", 15}, {"&HFFFFFFFF", -1}, {"&H10000", 65536}, {"1,5", 1}, {"", 0}, {"-", 0},
        {"$5", 0}, {".5", 0.5}, {"1.2.3", 1.2}, {"1d3", 1000}, {"- 5", -5}, {"50%", 50},
        {"\t\r\n7", 7}, {"1e", 1},
    };
    // clang-format on
    for (const auto& [text, v] : cases) EXPECT_DOUBLE_EQ(Val(text), v) << text;
    EXPECT_FALSE(std::signbit(Val("-")));
    EXPECT_EQ(vb_error([] { Val("50.5%"); }), errnum::kTypeMismatch);
    EXPECT_EQ(vb_error([] { Val("1" + std::string(400, '0')); }), errnum::kOverflow);
    EXPECT_THROW(Val("&H123456789"), VbError);
    // Long texts are read with bounded state: the tail only moves the exponent.
    EXPECT_DOUBLE_EQ(Val("1" + std::string(300, '0')), 1e300);
    EXPECT_DOUBLE_EQ(Val("0." + std::string(1000, '0') + "1"), 0);
    EXPECT_THROW(Val("1e99999999999999999999"), VbError);
    EXPECT_DOUBLE_EQ(Val("1e-99999999999999999999"), 0);
}

TEST(VbIsNumeric, RegionalTable) {
    // clang-format off
    const Row<const char*, bool> cases[] = {
        {" 5 ", true, true}, {"5-", true, true}, {"(5)", true, true}, {"&H10", true, true},
        {"1,2,3", true, false}, {"$ 5", true, false}, {"-.5", true, false}, {"1,234", true, true},
        {"09.03.2007", false, true}, {"1..5", false, true}, {"\u20AC5", false, true},
        {",1", false, true}, {"", false, false}, {".", false, false}, {"--5", false, false},
        {"1e", false, false}, {"5%", false, false}, {"(-5)", false, false}, {"1e400", false, false},
    };
    // clang-format on
    for (const auto& [text, us, de] : cases) {
        EXPECT_EQ(IsNumeric(text, kUs), us) << "en-US " << text;
        EXPECT_EQ(IsNumeric(text, kDe), de) << "de-DE " << text;
    }
}

TEST(VbCDbl, Values) {
    // clang-format off
    const std::tuple<const char*, bool, double> cases[] = {
        {"1,2,3", false, 123}, {"1,234", false, 1234}, {"1,234", true, 1.234},
        {"1.234", true, 1234}, {"09.03.2007", true, 9032007}, {",1", true, 0.1}, {"(5)", false, -5},
        {"5-", true, -5}, {"-1.5E-3", false, -0.0015}, {"$1,234.50", false, 1234.5},
        {"1e-400", false, 0},
        {"123456789012345678901234567890123456789012345678901234567890", false,
         1.2345678901234568e59},
    };
    // clang-format on
    for (const auto& [text, german, want] : cases) {
        const auto v = CDbl(text, german ? kDe : kUs);
        ASSERT_TRUE(v.has_value()) << text;
        EXPECT_DOUBLE_EQ(*v, want) << text;
    }
    EXPECT_FALSE(CDbl("abc", kUs).has_value());
    EXPECT_EQ(vb_error([] { (void)CDbl("1e400", kUs); }), errnum::kOverflow);
}

TEST(VbCDate, LocaleOrderFirstThenTheOthers) {
    const DateTime err{0, 0, 0, 0, 0, 0, 0};  // error 13
    // clang-format off
    const Row<const char*, DateTime> cases[] = {
        {"2007/3/9 12:5:3", {2007, 3, 9, 12, 5, 3}, {2007, 3, 9, 12, 5, 3}},
        {"3/9/2007", {2007, 3, 9}, {2007, 9, 3}}, {"07/3/9", {2009, 7, 3}, {2009, 3, 7}},
        {"02.01.1970", err, {1970, 1, 2}}, {"9.3.07", {1899, 12, 30, 9, 3, 7}, {2007, 3, 9}},
        {"24:00", err, err}, {"2007/2/30", err, err}, {"13/9/2007", {2007, 9, 13}, {2007, 9, 13}},
        {"6:05:03 PM", {1899, 12, 30, 18, 5, 3}, {1899, 12, 30, 18, 5, 3}},
        {"12:05:03 AM", {1899, 12, 30, 0, 5, 3}, {1899, 12, 30, 0, 5, 3}},
        {"March 9, 2007", {2007, 3, 9}, {2007, 3, 9}}, {"", err, err},
        {"12345678901234567890/1/1", err, err}, {"3/9/2007 #", err, err},
    };
    // clang-format on
    const auto want = [](const DateTime& d) -> std::optional<DateTime> {
        if (d.year == 0) return std::nullopt;
        return d;
    };
    for (const auto& [text, us, de] : cases) {
        EXPECT_EQ(CDate(text, kUs), want(us)) << "en-US " << text;
        EXPECT_EQ(CDate(text, kDe), want(de)) << "de-DE " << text;
    }
}

TEST(VbCInt, BankersRoundingAndOverflow) {
    const double xs[] = {0.5, 1.5, 2.5, 3.5, -0.5, -1.5, -2.5, 7.6, -7.6, 2.5000000000000004};
    const int want[] = {0, 2, 2, 4, 0, -2, -2, 8, -8, 3};
    for (std::size_t i = 0; i < std::size(xs); ++i) {
        EXPECT_EQ(CInt(xs[i]), want[i]) << xs[i];
        EXPECT_EQ(CLng(xs[i]), want[i]) << xs[i];
    }
    EXPECT_EQ(CInt(-32768.5), -32768);
    EXPECT_EQ(CLng(-2147483648.5), std::numeric_limits<std::int32_t>::min());
    for (double bad : {32767.5, -32768.51, std::nan(""), 1e300})
        EXPECT_EQ(vb_error([&] { CInt(bad); }), errnum::kOverflow) << bad;
    EXPECT_THROW(CLng(2147483647.5), VbError);
}

// Hostile texts (they come from option and recorder files): no crash, no stray exception,
// and IsNumeric agrees with CDbl.
TEST(VbProperties, RandomTextsAreHandled) {
    std::mt19937 rng(11);
    const std::string_view alphabet = "0123456789.,:/-+ ()$&HOeE\u20ACaAMP";
    std::uniform_int_distribution<int> len(0, 14);
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    for (int i = 0; i < 20000; ++i) {
        std::string text(static_cast<std::size_t>(len(rng)), ' ');
        for (auto& c : text) c = alphabet[pick(rng)];
        for (const RegionalProfile* r : {&kUs, &kDe}) {
            bool parsed = false;
            const int cdblError = vb_error([&] { parsed = CDbl(text, *r).has_value(); });
            EXPECT_TRUE(cdblError == 0 || cdblError == errnum::kOverflow) << text;
            EXPECT_EQ(IsNumeric(text, *r), parsed) << text;
            (void)CDate(text, *r);
        }
        const int valError = vb_error([&] { Val(text); });
        EXPECT_TRUE(valError == 0 || valError == errnum::kOverflow ||
                    valError == errnum::kTypeMismatch);
    }
}

}  // namespace
}  // namespace qumbrel::vb
