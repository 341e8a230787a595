// fkt_timecompare / fkt_timeinwindow: the steps as written, quirks included.
#include "frame/timecompare.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "frame/errors.h"

namespace qumbrel {
namespace {

// The digits of the first words compare as numbers; a differing AM/PM word decides first.
TEST(TimeCompare, NumbersThenTwelveHourWords) {
    // clang-format off
    const std::tuple<const char*, const char*, int> cases[] = {
        {"12:05:03", "12:05:03", 0}, {"12:05:04", "12:05:03", 1}, {"abc", "12:00:00", 2},
        {"9:00:00", "10:00:00", 2},   // 90000 < 100000
        {"12.05.03", "12:05:03", 0},  // "." is removed like ":"
        {"1:2:3", "10:20:3", 2},      // 123 < 10203, not a clock comparison
        {"", "00:00:00", 0},          // Val("") = 0
        {"12:00:00", "12:00:00 PM", 0},  // only A's second word counts
        {"01:00:00 PM", "11:00:00 AM", 1}, {"11:00:00 AM", "01:00:00 PM", 2},
        {"02:00:00 PM", "01:00:00 PM", 1},  // same word: the numbers decide
        {"12:30:00 PM", "01:00:00 PM", 1},  // 123000 > 10000 (kept so)
        {"01:00:00 pm", "11:00:00 AM", 0},  // differs in another way: stays 0
        {"01:00:00 PM", "01:00:00", 0}, {"05:00:00 PM", "09:00:00 XM", 0},  // B: no AM/PM
    };
    // clang-format on
    for (const auto& [a, b, want] : cases)
        EXPECT_EQ(fkt_timecompare(a, b), want) << a << " / " << b;
}

// A hostile text cannot overflow silently: beyond the double range it is VB's overflow.
TEST(TimeCompare, LongDigitRunsAreBounded) {
    try {
        fkt_timecompare(std::string(1000, '9'), "12:00:00");
        ADD_FAILURE() << "no error";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), errnum::kOverflow);
    }
    const std::string big = "1" + std::string(300, '0');
    EXPECT_EQ(fkt_timecompare("12:00:00", big), 2);
    EXPECT_EQ(fkt_timecompare(std::string(200, ':'), "0"), 0);
}

Flag window(const char* time, const char* start, const char* stop) {
    Flag f = 7;
    fkt_timeinwindow(time, start, stop, f);
    return f;
}

// Start and stop are inside; a stop before the start selects only the stop time itself.
TEST(TimeInWindow, Table) {
    // clang-format off
    const std::tuple<const char*, const char*, const char*, Flag> cases[] = {
        {"09:59:59", "10:00:00", "12:00:00", kFalse}, {"10:00:00", "10:00:00", "12:00:00", kTrue},
        {"12:00:00", "10:00:00", "12:00:00", kTrue}, {"10:00:00", "12:00:00", "10:00:00", kTrue},
        {"11:00:00", "12:00:00", "10:00:00", kFalse}, {"12:00:00", "12:00:00", "10:00:00", kFalse},
        {"01:00:00 PM", "11:00:00 AM", "02:00:00 PM", kTrue},
        {"03:00:00 PM", "11:00:00 AM", "02:00:00 PM", kFalse},
        {"10:00:00 AM", "11:00:00 AM", "02:00:00 PM", kFalse},
    };
    // clang-format on
    for (const auto& [time, start, stop, want] : cases)
        EXPECT_EQ(window(time, start, stop), want) << time << " " << start << "-" << stop;
}

}  // namespace
}  // namespace qumbrel
