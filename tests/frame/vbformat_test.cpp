// VB-style Format, CStr, Val, CDbl/IsNumeric, CDate, CInt/CLng: tables of exact strings in
// en-US and de-DE.
#include "frame/vbformat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "frame/errors.h"

namespace qumbrel::vb {
namespace {

const RegionalProfile& us() {
    static const RegionalProfile p = *clsRegionalSettings::named("en-US");
    return p;
}
const RegionalProfile& de() {
    static const RegionalProfile p = *clsRegionalSettings::named("de-DE");
    return p;
}

struct NumCase {
    double value;
    const char* pattern;
    const char* expected;
};

// The digit-pattern table: every row holds in both locales, de-DE with "," for ".".
// Value 0 with '#' in the units place ("0#" -> "0", "0000#" -> "0000") is only seen in an
// emulation; we follow it because it matches Windows' "#" -> "" rule.
TEST(VbFormatNumber, DigitPatternTable) {
    // clang-format off
    const NumCase cases[] = {
        {0, "000", "000"}, {0, "0#", "0"}, {0, "0000#", "0000"}, {0, "##0", "0"},
        {0, "0.00 ms", "0.00 ms"}, {5, "00", "05"}, {5, "0#", "05"}, {5, "0000#", "00005"},
        {5, "##0", "5"}, {12, "0000", "0012"}, {12, "0.00 ms", "12.00 ms"}, {1234, "000", "1234"},
        {1234, "0.00", "1234.00"}, {-5, "0000", "-0005"}, {-5, "0.00 ms", "-5.00 ms"},
        {7.6, "0000#", "00008"}, {7.6, "0.00", "7.60"}, {2.5, "00", "03"}, {-2.5, "##0", "-3"},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(Format(c.value, c.pattern, us()), c.expected) << c.value << " " << c.pattern;
        std::string german = c.expected;
        for (auto& ch : german)
            if (ch == '.') ch = ',';
        EXPECT_EQ(Format(c.value, c.pattern, de()), german) << c.value << " " << c.pattern;
    }
}

// Rounding is half away from zero on the 15-digit text, and integer digits are never cut.
TEST(VbFormatNumber, RoundingAndPlaceholderRules) {
    // clang-format off
    const NumCase cases[] = {
        {1.7, "#0", "2"}, {9.9999999, "#0.000000", "10.000000"},
        {1.73245, "0.0000E+000", "1.7325E+000"}, {0.0995, "#.##", ".1"}, {0.0049, "#.##", "."},
        {1.005, "0.00", "1.01"}, {2.675, "0.00", "2.68"}, {0, "#", ""}, {17, "#000", "017"},
        {100, "0##", "100"}, {1, "#00##00#0", "00000001"},
        {0.5, "00", "01"}, // the half-up rule; Wine's "00" comes from a carry bug
        {-0.004, "0.00", "-0.00"}, // the sign of the value, not of the rounded text (unverified)
        {99.995, "0.00", "100.00"}, {1.5, "0.0#", "1.5"}, {1.25, "0.0#", "1.25"},
        {12.5, ".00", "12.50"}, {5551234, "000-0000", "555-1234"},
    };
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(Format(c.value, c.pattern, us()), c.expected) << c.value << " " << c.pattern;
}

TEST(VbFormatNumber, GroupingScalingPercentExponentSections) {
    EXPECT_EQ(Format(1234567.891, "#,##0.00", us()), "1,234,567.89");
    EXPECT_EQ(Format(1234567.891, "#,##0.00", de()), "1.234.567,89");
    EXPECT_EQ(Format(-1234.5, "#,##0.00", us()), "-1,234.50");
    EXPECT_EQ(Format(123, "#,##0", us()), "123");
    EXPECT_EQ(Format(1, "0,000", us()), "0,001");
    EXPECT_EQ(Format(1234567, "#,", us()), "1235");
    EXPECT_EQ(Format(1234567, "0,,.0", us()), "1.2");
    EXPECT_EQ(Format(0.256, "0.0%", us()), "25.6%");
    EXPECT_EQ(Format(1234.5, "0.00E+00", us()), "1.23E+03");
    EXPECT_EQ(Format(0.00012, "0.0E-00", us()), "1.2E-04");
    EXPECT_EQ(Format(9.99, "0.0E+0", us()), "1.0E+1");
    EXPECT_EQ(Format(0, "0.00E+00", us()), "0.00E+00");
    EXPECT_EQ(Format(5, "E+0", us()), "E+5");  // no digit before it: plain text
    EXPECT_EQ(Format(5, "0;(0);\\z\\e\\r\\o", us()), "5");
    EXPECT_EQ(Format(-5, "0;(0);\\z\\e\\r\\o", us()), "(5)");
    EXPECT_EQ(Format(0, "0;(0);\\z\\e\\r\\o", us()), "zero");
    EXPECT_EQ(Format(-5, "0;;\"nil\"", us()), "-5");
    EXPECT_EQ(Format(0, "0;;\"nil\"", us()), "nil");
}

// Once a digit token has typed the pattern, letters are literal; quotes and escapes too.
TEST(VbFormatNumber, Literals) {
    EXPECT_EQ(Format(1, "##abcdefghijklmnopqrstuvwxyz", us()), "1abcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(Format(7.6, "0.00\\ \\m\\s", de()), "7,60 ms");
    EXPECT_EQ(Format(7.6, "0.0 \"h; m\"", us()), "7.6 h; m");
    EXPECT_EQ(Format(3, "[0]", us()), "[3]");
    EXPECT_EQ(Format(-3, "x0", us()), "x-3");
}

TEST(VbFormatNumber, NamedNumberFormats) {
    EXPECT_EQ(Format(1234.5, "Fixed", us()), "1234.50");
    EXPECT_EQ(Format(1234.5, "Standard", de()), "1.234,50");
    EXPECT_EQ(Format(0.256, "Percent", us()), "25.60%");
    EXPECT_EQ(Format(1234.5, "Scientific", us()), "1.23E+03");
    EXPECT_EQ(Format(1234.5, "Currency", us()), "$1,234.50");
    EXPECT_EQ(Format(-1234.5, "Currency", us()), "($1,234.50)");
    EXPECT_EQ(Format(1234.5, "Currency", de()), "1.234,50 \xE2\x82\xAC");
    EXPECT_EQ(Format(0.1 + 0.2, "General Number", de()), "0,3");
    EXPECT_EQ(Format(2, "Yes/No", us()), "Yes");
    EXPECT_EQ(Format(0, "True/False", us()), "False");
    EXPECT_EQ(Format(0, "On/Off", us()), "Off");
    EXPECT_EQ(Format(1.5, "", de()), "1,5");
}

TEST(VbFormatNumber, NumbersWithDatePatternsAreSerials) {
    const double serial = 39150 + 43503 / 86400.0;  // 2007-03-09 12:05:03
    EXPECT_EQ(Format(serial, "dd.mm.yyyy hh:nn:ss", us()), "09.03.2007 12:05:03");
    EXPECT_EQ(Format(39150, "Short Date", de()), "09.03.2007");
    EXPECT_THROW(Format(1e10, "Short Date", us()), VbError);
    EXPECT_EQ(Format(std::numeric_limits<double>::infinity(), "0.00", us()), "1.#INF");
}

struct TextCase {
    const char* text;
    const char* us00;
    const char* de00;
    const char* usMs;
    const char* deMs;
};

TEST(VbFormatText, NumericTextsAreParsedUnderTheRegionalRules) {
    // clang-format off
    const TextCase cases[] = {
        {"5", "05", "05", "5.00 ms", "5,00 ms"}, {" 5", "05", "05", "5.00 ms", "5,00 ms"},
        {"", "", "", "", ""}, {"abc", "abc", "abc", "abc", "abc"},
        {"12abc", "12abc", "12abc", "12abc", "12abc"}, {"7.6", "08", "76", "7.60 ms", "76,00 ms"},
        {"7,6", "76", "08", "76.00 ms", "7,60 ms"}, {"(5)", "-05", "-05", "-5.00 ms", "-5,00 ms"},
        {"5-", "-05", "-05", "-5.00 ms", "-5,00 ms"},
        {"09.03.2007", "09.03.2007", "9032007", "09.03.2007", "9032007,00 ms"},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(FormatText(c.text, "00", us()), c.us00) << c.text;
        EXPECT_EQ(FormatText(c.text, "00", de()), c.de00) << c.text;
        EXPECT_EQ(FormatText(c.text, "0.00 ms", us()), c.usMs) << c.text;
        EXPECT_EQ(FormatText(c.text, "0.00 ms", de()), c.deMs) << c.text;
    }
    EXPECT_EQ(FormatText("1.5.", "00", us()), "1.5.");
    EXPECT_EQ(FormatText("6,90", "###,##0.00", us()), "690.00");
    EXPECT_EQ(FormatText("6,90", "###,##0.00", de()), "6,90");
    EXPECT_EQ(FormatText("1e400", "0.00", us()), "1e400");
}

TEST(VbFormatText, DateTextsGoThroughCDate) {
    EXPECT_EQ(FormatText("2007/3/9 12:5:3", "dd.MM.yy hh:nn:ss", us()), "09.03.07 12:05:03");
    EXPECT_EQ(FormatText("3/9/2007", "Short Date", de()), "03.09.2007");
    EXPECT_EQ(FormatText("2007/2/30", "Short Date", us()), "2007/2/30");
    EXPECT_EQ(FormatText("", "Short Date", us()), "");  // "" is no date (IsDate("") = False)
}

// ---- dates -----------------------------------------------------------------------------

const DateTime d1{2007, 3, 9, 12, 5, 3, 0};
const DateTime d2{2007, 3, 9, 18, 5, 3, 0};
const DateTime d3{1899, 12, 30, 0, 5, 3, 0};

struct DateCase {
    const char* pattern;
    const DateTime* d;
    const char* us;
    const char* de;
};

TEST(VbFormatDate, NamedFormats) {
    // clang-format off
    const DateCase cases[] = {
        {"Short Date", &d1, "3/9/2007", "09.03.2007"},
        {"Short Date", &d3, "12/30/1899", "30.12.1899"},
        {"Long Time", &d1, "12:05:03 PM", "12:05:03"}, {"Long Time", &d2, "6:05:03 PM", "18:05:03"},
        {"Long Time", &d3, "12:05:03 AM", "00:05:03"}, {"Short Time", &d2, "18:05", "18:05"},
        {"Medium Time", &d2, "06:05 PM", "06:05 "},
        {"General Date", &d1, "3/9/2007 12:05:03 PM", "09.03.2007 12:05:03"},
        {"General Date", &d3, "12:05:03 AM", "00:05:03"},
        {"Long Date", &d1, "Friday, March 9, 2007", "Freitag, 9. M\xC3\xA4rz 2007"},
        {"Medium Date", &d1, "09-Mar-07", "09-Mrz-07"},
        {"short date", &d1, "3/9/2007", "09.03.2007"},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(FormatDate(*c.d, c.pattern, us()), c.us) << c.pattern;
        EXPECT_EQ(FormatDate(*c.d, c.pattern, de()), c.de) << c.pattern;
    }
    // A date without a time: the time of midnight (our pick; an emulation gives ""), and the
    // date alone for General Date.
    const DateTime midnight{2007, 3, 9, 0, 0, 0, 0};
    EXPECT_EQ(FormatDate(midnight, "Long Time", us()), "12:00:00 AM");
    EXPECT_EQ(FormatDate(midnight, "Long Time", de()), "00:00:00");
    EXPECT_EQ(FormatDate(midnight, "General Date", us()), "3/9/2007");
    // Short and Medium Time take the regional time separator.
    RegionalProfile dots = de();
    dots.timeSep = ".";
    EXPECT_EQ(FormatDate(d2, "Short Time", dots), "18.05");
    EXPECT_EQ(FormatDate(d2, "hh:nn:ss", dots), "18.05.03");
}

TEST(VbFormatDate, UserPatterns) {
    // clang-format off
    const DateCase cases[] = {
        {"dd.MM.yy", &d1, "09.03.07", "09.03.07"}, {"yyyy/mm/dd", &d1, "2007/03/09", "2007.03.09"},
        {"hh:nn:ss", &d2, "18:05:03", "18:05:03"},
        {"yyyy-mm-dd hh:mm", &d1, "2007-03-09 12:05", "2007-03-09 12:05"},
        {"d/m/yy", &d1, "9/3/07", "9.3.07"}, {"h:n:s", &d3, "0:5:3", "0:5:3"},
        {"hh:nn AM/PM", &d2, "06:05 PM", "06:05 PM"}, {"h:nn am/pm", &d3, "12:05 am", "12:05 am"},
        {"h A/P", &d1, "12 P", "12 P"}, {"hh AMPM", &d2, "06 PM", "06 "},
        {"ddd dddd", &d1, "Fri Friday", "Fr Freitag"},
        {"mmm mmmm", &d1, "Mar March", "Mrz M\xC3\xA4rz"}, {"ddddd", &d1, "3/9/2007", "09.03.2007"},
        {"w ww q y", &d1, "6 10 1 68", "6 10 1 68"},
        {"c", &d2, "3/9/2007 6:05:03 PM", "09.03.2007 18:05:03"},
        {"ttttt", &d2, "6:05:03 PM", "18:05:03"}, {"\"at\" hh\\h", &d1, "at 12h", "at 12h"},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(FormatDate(*c.d, c.pattern, us()), c.us) << c.pattern;
        EXPECT_EQ(FormatDate(*c.d, c.pattern, de()), c.de) << c.pattern;
    }
}

TEST(VbFormatDate, SecondsAreRoundedBeforeFormatting) {
    EXPECT_EQ(FormatDate({2007, 3, 9, 12, 5, 3, 499}, "ss", us()), "03");
    EXPECT_EQ(FormatDate({2007, 3, 9, 12, 5, 3, 500}, "ss", us()), "04");
    EXPECT_EQ(FormatDate({2007, 12, 31, 23, 59, 59, 600}, "yyyy-mm-dd hh:nn:ss", us()),
              "2008-01-01 00:00:00");
}

TEST(VbFormatDate, BrokenDateFieldsDoNotCrash) {
    const DateTime bad{2007, 13, 40, 30, 70, 70, 0};
    EXPECT_EQ(FormatDate(bad, "dd.mm.yyyy", us()), "40.13.2007");
    EXPECT_EQ(FormatDate(bad, "mmmm dddd", us()), " Sunday");
}

// Serials as VB keeps dates: time as a positive fraction, also before 1899-12-30.
TEST(VbFormatDate, SerialsAndTheirRange) {
    EXPECT_EQ(from_serial(39150 + 43503 / 86400.0), d1);
    EXPECT_EQ(from_serial(-1.25), (DateTime{1899, 12, 29, 6, 0, 0, 0}));
    EXPECT_DOUBLE_EQ(to_serial(DateTime{1899, 12, 29, 6, 0, 0, 0}), -1.25);
    EXPECT_EQ(from_serial(std::nan("")), DateTime{});
    EXPECT_EQ(from_serial(1e300).year, 9999);
    EXPECT_EQ(from_serial(-1e300).year, 100);
    EXPECT_EQ(Format(-1.25, "yyyy-mm-dd hh:nn", us()), "1899-12-29 06:00");
}

// ---- CStr ------------------------------------------------------------------------------

TEST(VbCStr, FifteenDigitsAndExponentForm) {
    struct Case {
        double v;
        const char* us;
        const char* de;
    };
    // clang-format off
    const Case cases[] = {
        {0.1 + 0.2, "0.3", "0,3"}, {1.0 / 3, "0.333333333333333", "0,333333333333333"},
        {123456789012345.0, "123456789012345", "123456789012345"}, // de-DE mantissas take "," as well (unverified on Windows; Wine keeps ".").
        {1234567890123456.0, "1.23456789012346E+15", "1,23456789012346E+15"},
        {1e15, "1E+15", "1E+15"}, {999999999999999.9, "1E+15", "1E+15"},
        {0.0001, "0.0001", "0,0001"}, {0.00001, "1E-05", "1E-05"}, {-0.05, "-0.05", "-0,05"},
        {1234.5, "1234.5", "1234,5"}, {-0.0, "0", "0"},
        {-1.7976931348623157e308, "-1.79769313486232E+308", "-1,79769313486232E+308"},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(CStr(c.v, us()), c.us);
        EXPECT_EQ(CStr(c.v, de()), c.de);
    }
    EXPECT_EQ(Format(1.0 / 3, "", us()), "0.333333333333333");
}

// ---- Val -------------------------------------------------------------------------------

TEST(VbVal, LeadingNumberWithBlanksSkipped) {
    struct Case {
        const char* text;
        double v;
    };
    // clang-format off
    const Case cases[] = {
        {" 1615 198th Street N.E.", 1615198}, {"24 and 57", 24}, {"&HFFFF", -1}, {"&HFF", 255},
        {"&O17", 15}, {"&HFFFFFFFF", -1}, {"&H10000", 65536}, {"1,5", 1}, {"", 0}, {"-", 0},
        {"$5", 0}, {".5", 0.5}, {"1.2.3", 1.2}, {"1e3", 1000}, {"1d3", 1000}, {"- 5", -5},
        {"50%", 50}, {"\t\r\n7", 7}, {"1e", 1},
    };
    // clang-format on
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(Val(c.text), c.v) << c.text;
    EXPECT_FALSE(std::signbit(Val("-")));
}

TEST(VbVal, ErrorsAreVbErrors) {
    try {
        Val("50.5%");
        ADD_FAILURE() << "no error";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), errnum::kTypeMismatch);
    }
    try {
        Val("1" + std::string(400, '0'));
        ADD_FAILURE() << "no error";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), errnum::kOverflow);
    }
    EXPECT_THROW(Val("&H123456789"), VbError);
    // Long texts are read with bounded state: the tail only moves the exponent.
    EXPECT_DOUBLE_EQ(Val("1" + std::string(300, '0')), 1e300);
    EXPECT_DOUBLE_EQ(Val("0." + std::string(1000, '0') + "1"), 0);
    EXPECT_THROW(Val("1e99999999999999999999"), VbError);
    EXPECT_DOUBLE_EQ(Val("1e-99999999999999999999"), 0);
}

// ---- IsNumeric / CDbl ------------------------------------------------------------------

TEST(VbIsNumeric, RegionalTable) {
    struct Case {
        const char* text;
        bool us;
        bool de;
    };
    // clang-format off
    const Case cases[] = {
        {" 5 ", true, true}, {"5-", true, true}, {"+5", true, true}, {"(5)", true, true},
        {"- 5", true, true}, {"&H10", true, true}, {"1E+5", true, true}, {"5.", true, true},
        {"5,", true, true}, {"1,2,3", true, false}, {"$ 5", true, false}, {"5$", true, false},
        {"-.5", true, false}, {"1,,000", true, false}, {"1,234", true, true}, {"1.234", true, true},
        {"09.03.2007", false, true}, {"1..5", false, true}, {"\xE2\x82\xAC" "5", false, true},
        {"5 \xE2\x82\xAC", false, true}, {",1", false, true}, {"", false, false},
        {" ", false, false}, {".", false, false}, {",", false, false}, {"--5", false, false},
        {"1e", false, false}, {"e5", false, false}, {"1 2 3", false, false}, {"0x10", false, false},
        {"5%", false, false}, {"3/9/2007", false, false}, {"12:05", false, false},
        {"True", false, false}, {"(5", false, false}, {"(-5)", false, false},
        {"1e400", false, false},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(IsNumeric(c.text, us()), c.us) << "en-US " << c.text;
        EXPECT_EQ(IsNumeric(c.text, de()), c.de) << "de-DE " << c.text;
    }
}

TEST(VbCDbl, Values) {
    EXPECT_DOUBLE_EQ(*CDbl("1,2,3", us()), 123);
    EXPECT_DOUBLE_EQ(*CDbl("1,234", us()), 1234);
    EXPECT_DOUBLE_EQ(*CDbl("1,234", de()), 1.234);
    EXPECT_DOUBLE_EQ(*CDbl("1.234", de()), 1234);
    EXPECT_DOUBLE_EQ(*CDbl("09.03.2007", de()), 9032007);
    EXPECT_DOUBLE_EQ(*CDbl("1.5.", de()), 15);
    EXPECT_DOUBLE_EQ(*CDbl(",1", de()), 0.1);
    EXPECT_DOUBLE_EQ(*CDbl("(5)", us()), -5);
    EXPECT_DOUBLE_EQ(*CDbl("5-", de()), -5);
    EXPECT_DOUBLE_EQ(*CDbl("&H10", us()), 16);
    EXPECT_DOUBLE_EQ(*CDbl("-1.5E-3", us()), -0.0015);
    EXPECT_DOUBLE_EQ(*CDbl("$1,234.50", us()), 1234.5);
    EXPECT_DOUBLE_EQ(*CDbl("0.1", us()), 0.1);
    EXPECT_DOUBLE_EQ(*CDbl("123456789012345678901234567890123456789012345678901234567890", us()),
                     1.2345678901234568e59);
    EXPECT_FALSE(CDbl("abc", us()).has_value());
    try {
        CDbl("1e400", us());
        ADD_FAILURE() << "no error";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), errnum::kOverflow);
    }
    EXPECT_DOUBLE_EQ(*CDbl("1e-400", us()), 0);
}

// ---- CDate -----------------------------------------------------------------------------

TEST(VbCDate, LocaleOrderFirstThenTheOthers) {
    struct Case {
        const char* text;
        DateTime us;  // year 0: error 13
        DateTime de;
    };
    const DateTime err{0, 0, 0, 0, 0, 0, 0};
    // clang-format off
    const Case cases[] = {
        {"2007/3/9", {2007, 3, 9}, {2007, 3, 9}},
        {"2007/3/9 12:5:3", {2007, 3, 9, 12, 5, 3}, {2007, 3, 9, 12, 5, 3}},
        {"1970-1-13", {1970, 1, 13}, {1970, 1, 13}}, {"3/9/2007", {2007, 3, 9}, {2007, 9, 3}},
        {"07/3/9", {2009, 7, 3}, {2009, 3, 7}}, {"02.01.1970", err, {1970, 1, 2}},
        {"9.3.07", {1899, 12, 30, 9, 3, 7}, {2007, 3, 9}},
        {"12:5:3", {1899, 12, 30, 12, 5, 3}, {1899, 12, 30, 12, 5, 3}},
        {"3:5", {1899, 12, 30, 3, 5, 0}, {1899, 12, 30, 3, 5, 0}}, {"24:00", err, err},
        {"2007/2/30", err, err}, {"13/9/2007", {2007, 9, 13}, {2007, 9, 13}},
        {"6:05:03 PM", {1899, 12, 30, 18, 5, 3}, {1899, 12, 30, 18, 5, 3}},
        {"12:05:03 AM", {1899, 12, 30, 0, 5, 3}, {1899, 12, 30, 0, 5, 3}},
        {"March 9, 2007", {2007, 3, 9}, {2007, 3, 9}}, {"9-Mar-07", {2007, 3, 9}, {2007, 3, 9}},
        {"1.5.2", {1899, 12, 30, 1, 5, 2}, {2002, 5, 1}}, {"", err, err}, {"5", err, err},
        {"1/2/3/4", err, err}, {"12345678901234567890/1/1", err, err}, {"3/9/2007 #", err, err},
    };
    // clang-format on
    for (const auto& c : cases) {
        for (int loc = 0; loc < 2; ++loc) {
            const DateTime& want = loc == 0 ? c.us : c.de;
            const auto got = CDate(c.text, loc == 0 ? us() : de());
            if (want.year == 0) {
                EXPECT_FALSE(got.has_value()) << c.text << " loc " << loc;
            } else {
                ASSERT_TRUE(got.has_value()) << c.text << " loc " << loc;
                EXPECT_EQ(*got, want) << c.text << " loc " << loc;
            }
        }
    }
}

// ---- CInt / CLng -----------------------------------------------------------------------

TEST(VbCInt, BankersRoundingAndOverflow) {
    const double xs[] = {0.5, 1.5, 2.5, 3.5, -0.5, -1.5, -2.5, 7.6, -7.6, 2.5000000000000004};
    const int want[] = {0, 2, 2, 4, 0, -2, -2, 8, -8, 3};
    for (std::size_t i = 0; i < std::size(xs); ++i) {
        EXPECT_EQ(CInt(xs[i]), want[i]) << xs[i];
        EXPECT_EQ(CLng(xs[i]), want[i]) << xs[i];
    }
    EXPECT_EQ(CInt(32767.49), 32767);
    EXPECT_EQ(CInt(-32768.5), -32768);
    EXPECT_EQ(CLng(-2147483648.5), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(CLng(2147483647.4), 2147483647);
    for (double bad : {32767.5, -32768.51, std::nan(""), 1e300}) {
        try {
            CInt(bad);
            ADD_FAILURE() << bad;
        } catch (const VbError& e) {
            EXPECT_EQ(e.number(), errnum::kOverflow);
        }
    }
    EXPECT_THROW(CLng(2147483647.5), VbError);
    EXPECT_THROW(CLng(-2147483648.51), VbError);
    EXPECT_EQ(CLng(*CDbl("-0.5", us())), 0);
}

// ---- properties over random inputs ----------------------------------------------------

std::string random_text(std::mt19937& rng, std::string_view alphabet, int maxLen) {
    std::uniform_int_distribution<int> len(0, maxLen);
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::string s(static_cast<std::size_t>(len(rng)), ' ');
    for (auto& c : s) c = alphabet[pick(rng)];
    return s;
}

// CStr's text reads back (CDbl) to a value with the same text, in both locales.
TEST(VbProperties, CStrReadsBackToTheSameText) {
    std::mt19937_64 rng(7);
    std::uniform_int_distribution<std::uint64_t> bits;
    for (int i = 0; i < 20000; ++i) {
        std::uint64_t b = bits(rng);
        double v;
        static_assert(sizeof v == sizeof b);
        std::memcpy(&v, &b, sizeof v);
        if (!std::isfinite(v)) continue;
        for (const RegionalProfile* r : {&us(), &de()}) {
            const std::string text = CStr(v, *r);
            const auto back = CDbl(text, *r);
            ASSERT_TRUE(back.has_value()) << text;
            EXPECT_EQ(CStr(*back, *r), text);
        }
    }
}

// Hostile patterns and texts: no crash, no stray exception, and IsNumeric agrees with CDbl.
TEST(VbProperties, RandomPatternsAndTextsAreHandled) {
    std::mt19937 rng(11);
    const std::string_view patternChars = "0#.,;%E+-e\\\"dmyhnswqcAP/: x";
    const std::string_view textChars =
        "0123456789.,:/-+ ()$&HOeE\xE2\x82\xAC"
        "aAMP";
    std::uniform_real_distribution<double> val(-1e6, 1e6);
    for (int i = 0; i < 20000; ++i) {
        const std::string pattern = random_text(rng, patternChars, 12);
        const std::string text = random_text(rng, textChars, 14);
        for (const RegionalProfile* r : {&us(), &de()}) {
            EXPECT_NO_THROW(FormatText(text, pattern, *r)) << text << " | " << pattern;
            try {
                Format(val(rng), pattern, *r);
            } catch (const VbError& e) {
                EXPECT_EQ(e.number(), errnum::kOverflow) << pattern;
            }
            bool parsed = false;
            try {
                parsed = CDbl(text, *r).has_value();
            } catch (const VbError& e) {
                EXPECT_EQ(e.number(), errnum::kOverflow) << text;
            }
            EXPECT_EQ(IsNumeric(text, *r), parsed) << text;
            CDate(text, *r);
        }
        try {
            Val(text);
        } catch (const VbError& e) {
            EXPECT_TRUE(e.number() == errnum::kOverflow || e.number() == errnum::kTypeMismatch);
        }
    }
}

}  // namespace
}  // namespace qumbrel::vb
