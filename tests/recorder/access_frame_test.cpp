// The recorder access frame: filters, leading-zero trim, family and device tables, file
// elements, time texts, the number step and the log scale. No library needed.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "frame/errors.h"
#include "recorder/families.h"
#include "recorder/file_elements.h"
#include "recorder/filters.h"
#include "recorder/sample_number.h"
#include "recorder/time_text.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

using testing::TestProgram;

std::string error_log(TestProgram& p) {
    return testing::read_file(p->program_file("error.log"));
}

template <class F>
void expect_vb_error(F&& f, int number) {
    try {
        f();
        ADD_FAILURE() << "expected error " << number;
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), number);
    }
}

struct FrameTest : ::testing::Test {
    TestProgram p{"de-DE"};
    Program& ctx = *p;
    FrameTest() { ctx.opt.decseparator = ","; }
};

// The reader tests show both filters on real texts; here the modes and the field steps.
TEST_F(FrameTest, StrFilterModesAndFieldsFilteredInPlaceThenDecoded) {
    const std::tuple<std::string, std::string_view, Flag, int, std::string> rows[] = {
        {"K\xE4se;#1", kDisplayFilter, kTrue, kTextCompare, "Kse1"},
        {"a-b,c", kFileNameFilter, kFalse, kTextCompare, ""},
        {"AbC", "abc", kTrue, kBinaryCompare, "b"},
        {"AbC", "abc", kFalse, kBinaryCompare, "AC"},
    };
    for (const auto& [text, filter, keep, compare, expected] : rows)
        EXPECT_EQ(fkt_StrFilter(ctx, text, filter, keep, compare), expected) << text;
    char field[8] = {'\xB0', 'C', ' ', '\0', '\0', 'x', '\0', '\0'};
    EXPECT_EQ(filter_field(ctx, field, 8, kDisplayFilter, false), "\u00B0C x");
    EXPECT_EQ(std::string(field, 8), "\260C x    ");
    char blanks[6] = {' ', 'a', ' ', '\0', ' ', '\0'};
    EXPECT_EQ(filter_field(ctx, blanks, 6, kDisplayFilter, true), "a");
    EXPECT_EQ(raw_field("ab\0\xE9", 4), "ab");
    EXPECT_EQ(raw_field("a\xE9 ", 3), "a\u00E9 ");
}

TEST_F(FrameTest, TrimNullKeepsOneDigitBeforeTheSeparator) {
    const std::pair<std::string, std::string> rows[] = {
        {"0000,50", "0,50"},
        {"000", "000"},  // no separator: the loop does not run
        {"0000000000000000000123,45", "123,45"},
        {",5", ",5"},
        {"-0005,1", "-5,1"},
        {"-5", "--5"},  // the sign is remembered and the text kept whole (kept so)
        {"", ""},
    };
    for (const auto& [in, out] : rows) EXPECT_EQ(fkt_TrimNull(ctx, in), out) << in;
    ctx.opt.decseparator = ".";
    EXPECT_EQ(fkt_TrimNull(ctx, "000.25"), "0.25");
    EXPECT_EQ(fkt_TrimNull(ctx, "0000,50"), "0000,50");
}

TEST(Families, ExtensionDecidesFamilyAndKindAndDeviceCodesTheirNames) {
    EXPECT_EQ(family_of_extension(".OGD")->generator, "fkt_VTconvertCSVXLS");
    EXPECT_EQ(family_of_path("/data/a.b/run7.OBE")->family, RecorderFamily::VQ);
    EXPECT_FALSE(family_of_path("/data/a.oge/run7"));

    // The model comes from the first hex digit of the code, the file kind from the last.
    const std::tuple<RecorderFamily, std::int32_t, std::string, std::string> rows[] = {
        {RecorderFamily::KL, -1, "", ""},  // "FFFFFFFF"
        {RecorderFamily::KL, 0x53, "KL1100", "TLOG File"},
        {RecorderFamily::VT, 0x53, "KL1100", ""},               // TLOG files only in KL
        {RecorderFamily::VU, 0xB2, "VT2100 ", "Display File"},  // trailing blank kept
        {RecorderFamily::VU, 0x21, "", "Event File"},           // VU models from A up
    };
    for (const auto& [family, code, model, fileKind] : rows) {
        SCOPED_TRACE(code);
        const auto names = device_names(family, code);
        EXPECT_EQ(names.model, model);
        EXPECT_EQ(names.fileKind, fileKind);
    }
}

TEST_F(FrameTest, YearElementsTurnAtSeventyAndBatchElementsClear) {
    auto& e = ctx.state<FileElements>();
    set_date_elements(ctx, e, 70, 1, 2, 3, 4, 5);
    EXPECT_EQ(e.ti_YYYY, "1970");
    set_date_elements(ctx, e, 69, 1, 2, 3, 4, 5);
    EXPECT_EQ(e.ti_YYYY, "2069");
    set_batch_number_elements(ctx, e, 7);
    EXPECT_EQ(e.ti_L + "|" + e.ti_LL + "|" + e.ti_LLL + "|" + e.ti_LLLL, "7|07|007|0007");
    set_no_batch_elements(e);
    EXPECT_EQ(e.ti_LLLL, "0000");
    e.group(36) = "last";
    fkt_ClearFileElements(ctx);
    EXPECT_EQ(ctx.state<FileElements>().ti_n[35], "");
    EXPECT_EQ(ctx.state<FileElements>().ti_LLLL, "");
}

TEST_F(FrameTest, MsecToTimeAtTheEndOfTheDayAndBack) {
    std::int32_t msec = 86399999;
    std::string date = "09.03.2007", dateText, timeText, msText, timeWithMs;
    fkt_MsecToTime(ctx, msec, date, dateText, timeText, msText, timeWithMs);
    EXPECT_EQ(timeWithMs, "23:59:59.999");
    EXPECT_EQ(timeText + " " + msText, "23:59:59 999");
    EXPECT_EQ(date, "09.03.2007");
    msec = 86400000;
    fkt_MsecToTime(ctx, msec, date, dateText, timeText, msText, timeWithMs);
    EXPECT_EQ(timeText, "00:00:00");
    EXPECT_EQ(date, "10.03.2007");
    EXPECT_EQ(dateText, "10.03.2007");
    EXPECT_EQ(msec, 86400000);  // the caller restarts its count
    date = "31.12.2007";
    fkt_MsecToTime(ctx, msec, date, dateText, timeText, msText, timeWithMs);
    EXPECT_EQ(date, "01.01.2008");
    TestProgram en{"en-US"};
    date = "3/9/2007";
    fkt_MsecToTime(*en, msec, date, dateText, timeText, msText, timeWithMs);
    EXPECT_EQ(timeText, "12:00:00 AM");
    EXPECT_EQ(date, "3/10/2007");
    date = "no date";
    fkt_MsecToTime(*en, msec, date, dateText, timeText, msText, timeWithMs);
    EXPECT_EQ(date, "no date");
    EXPECT_NE(error_log(en).find("fkt_MsecToTime of Modul DllHNFileAccess"), std::string::npos);
    // Back again: a time alone gives its milliseconds.
    EXPECT_EQ(fkt_DateTimeToMsec(ctx, "12:05:03.125", ""), 43503125);
    EXPECT_EQ(error_log(p), "");
    // A real date overflows 32 bits and ends in the error handler (kept so).
    EXPECT_EQ(fkt_DateTimeToMsec(ctx, "12:05:03.125", "09.03.2007"), 0);
    const std::string log = error_log(p);
    EXPECT_NE(log.find("fkt_DateTimeToMsec of Modul DllHNFileAccess"), std::string::npos);
    EXPECT_NE(log.find("Errornumber: 6;"), std::string::npos);
    // Eighths of a second in milliseconds overflow the same way.
    EXPECT_EQ(eighths_to_millis(7), 875);
    expect_vb_error([] { eighths_to_millis(20000000); }, 6);
}

TEST_F(FrameTest, LogValueAtBothEnds) {
    EXPECT_DOUBLE_EQ(fkt_logvalue(ctx, 0.0, 3, -2, 0.0, 100.0), 0.01);
    EXPECT_DOUBLE_EQ(fkt_logvalue(ctx, 100.0, 3, -2, 0.0, 100.0), 1000.0);
    EXPECT_DOUBLE_EQ(fkt_logvalue(ctx, 40.0, 3, -2, 0.0, 100.0), 1.0);
    EXPECT_EQ(error_log(p), "");
    EXPECT_EQ(fkt_logvalue(ctx, 1.0, 3, 0, 2.0, 2.0), 0.0);
    EXPECT_NE(error_log(p).find("fkt_logvalue of Modul DllVUFileAccess"), std::string::npos);
}

TEST_F(FrameTest, NumberStepPlacesTheSeparatorByTextAndItsShortcutAgrees) {
    EXPECT_DOUBLE_EQ(sample_text_to_number(ctx, "12345", 3, kZeroRow27), 12.345);
    EXPECT_DOUBLE_EQ(sample_text_to_number(ctx, "", 2, kVtZeroRow), 0.0);
    EXPECT_DOUBLE_EQ(sample_text_to_number(ctx, "7", 21, kVtZeroRow), 7e-21);
    expect_vb_error([&] { sample_text_to_number(ctx, "7", 22, kVtZeroRow); }, 5);
    // The shortcut gives the text result bit for bit.
    const SampleNumberStep step(ctx, kVtZeroRow);
    ASSERT_TRUE(step.fast());
    const std::int64_t raws[] = {
        0, 1, -1, 5, -5, 99, 12345, -32768, 32767, -999999, 2147483647, -2147483648LL, 100};
    for (std::int64_t raw : raws) {
        for (std::int32_t dec = 1; dec <= 20; ++dec) {
            const double viaText = sample_text_to_number(ctx, std::to_string(raw), dec, kVtZeroRow);
            const double viaStep = step(raw, dec);
            EXPECT_EQ(std::signbit(viaText), std::signbit(viaStep)) << raw << " " << dec;
            EXPECT_EQ(viaText, viaStep) << raw << " / 10^" << dec;
        }
    }
    // A separator other than the regional one makes the text read otherwise: "0.05" is
    // five under German rules, and the shortcut steps aside.
    ctx.opt.decseparator = ".";
    EXPECT_DOUBLE_EQ(sample_text_to_number(ctx, "-5", 2, kVtZeroRow), -5.0);
    const SampleNumberStep odd(ctx, kVtZeroRow);
    EXPECT_FALSE(odd.fast());
    EXPECT_DOUBLE_EQ(odd(-5, 2), -5.0);
}

// The cache (the reader tests show it within a day) gives what a fresh composition gives
// when the day changes; fields that make no date come back as the joined text.
TEST_F(FrameTest, DateTimeTextsAndTheirCache) {
    EXPECT_EQ(ms_text(ctx, 5), "005");
    DateTimeTextCache cache;
    const std::array<std::int32_t, 6> rows[] = {
        {2007, 3, 9, 18, 5, 3}, {2007, 3, 10, 18, 5, 3}, {2007, 2, 30, 25, 0, 0}};
    DateTimeTexts cached, fresh;
    for (const auto& fields : rows) {
        cache.compose(ctx, fields, 875, cached);
        compose_date_time(ctx, fields, 875, fresh);
        EXPECT_EQ(cached.dateTime, fresh.dateTime);
        EXPECT_EQ(cached.date + cached.time + cached.ms + cached.timeWithMs,
                  fresh.date + fresh.time + fresh.ms + fresh.timeWithMs);
    }
    EXPECT_EQ(fresh.dateTime, "2007/2/30 25:0:0.875");
}

}  // namespace
}  // namespace qumbrel
