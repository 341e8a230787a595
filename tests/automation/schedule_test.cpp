// The schedule table of the load and the firing test of each kind, walked minute by
// minute over a whole week.
#include "automation/schedule.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <optional>

#include "frame/errors.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::TestProgram;

namespace {

Schedule load(int kind, std::string hour = "1", std::string minute = "0", int day = 0) {
    TestProgram p;
    p->opt.sheduler = kind;
    p->opt.hour = std::move(hour);
    p->opt.minute = std::move(minute);
    p->opt.day = day;
    return compute_schedule(*p);
}

using Hours = std::array<std::int16_t, 7>;

// Firings of one week, Sunday 2024-01-07 00:00 to Saturday 23:59, by weekday (1 = Sunday).
std::array<int, 8> firings_per_weekday(const Schedule& s) {
    std::array<int, 8> count{};
    for (int day = 7; day <= 13; ++day)
        for (int hour = 0; hour < 24; ++hour)
            for (int minute = 0; minute < 60; ++minute) {
                const DateTime t{2024, 1, day, hour, minute, 30};
                if (schedule_fires(s, t)) ++count[static_cast<std::size_t>(day - 6)];
            }
    return count;
}

int vb_error_of(const std::function<void()>& f) {
    try {
        f();
    } catch (const VbError& e) {
        return e.number();
    }
    return 0;
}

}  // namespace

// Every kind: its load table and how often it fires in a week.
TEST(Schedule, EveryKindLoadsItsTableAndFiresOverAWeek) {
    struct Case {
        int kind;
        const char *hour, *minute;
        int day;
        std::optional<Hours> hours;
        int scanMinute;  // -1: not checked
        int weekday;
        std::uint32_t intervalMs;
        int perWeek, onWeekday = 0;  // onWeekday: the weekday holding them all
    };
    const std::vector<Case> cases{
        {0, "7", "15", 0, Hours{7}, 15, 1, 60000, 1, 1},   // day 0 is Sunday
        {0, "7", "15", 6, Hours{7}, 15, 7, 60000, 1, 7},   // day 6 Saturday
        {1, " 7 ", "015", 0, Hours{7}, 15, 0, 60000, 7},   // read as numbers
        {1, "25", "0", 0, Hours{1}, 0, 0, 60000, 7},       // above 23: reduced by 24 ...
        {1, "50", "0", 0, Hours{26}, 0, 0, 60000, 0},      // ... once, never to fire
        {2, "9", "40", 0, Hours{}, 40, 0, 60000, 7 * 24},  // minute only
        // Every 3 hours without the nine-hour step: seven firings a day.
        {3, "22", "5", 0, Hours{22, 1, 4, 10, 13, 16, 19}, 5, 0, 60000, 7 * 7},
        {4, "20", "30", 0, Hours{20, 2, 8, 14}, 30, 0, 60000, 7 * 4},
        // Every 12 hours compares a weekday its load never sets: it never fires.
        {5, "13", "0", 0, Hours{13, 1}, 0, 0, 60000, 0},
        // Kinds 6 and 7 fire at every tick; 7 at its minute's interval, where minute 0
        // asks for 0, which the platform timer answers with its minimum.
        {6, "9", "40", 0, {}, 0, 0, 5000, 7 * 24 * 60},
        {7, "1", "3", 0, {}, -1, 0, 180000, 7 * 24 * 60},
        {7, "1", "0", 0, {}, -1, 0, 10, 7 * 24 * 60},
        {8, "1", "0", 0, {}, 0, 0, 60000, 0},  // unknown kinds never fire
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "kind " << c.kind << " hour " << c.hour << " minute "
                                          << c.minute << " day " << c.day);
        const Schedule s = load(c.kind, c.hour, c.minute, c.day);
        if (c.hours) {
            EXPECT_EQ(s.nScanHour, *c.hours);
        }
        EXPECT_TRUE(c.scanMinute < 0 || s.nScanMinute == c.scanMinute) << s.nScanMinute;
        EXPECT_EQ(s.nScanWeekday, c.weekday);
        EXPECT_EQ(s.platformIntervalMs, c.intervalMs);
        const auto week = firings_per_weekday(s);
        EXPECT_EQ(std::accumulate(week.begin(), week.end(), 0), c.perWeek);
        if (c.onWeekday) {
            EXPECT_EQ(week[static_cast<std::size_t>(c.onWeekday)], c.perWeek);
        }
    }
    // Kind 3 fires at the minute of its hours and nowhere else; 22 + 9 is missing.
    const Schedule three = load(3, "22", "0");
    EXPECT_TRUE(schedule_fires(three, {2024, 1, 8, 4, 0}));
    EXPECT_FALSE(schedule_fires(three, {2024, 1, 8, 7, 0}));
    EXPECT_FALSE(schedule_fires(three, {2024, 1, 8, 10, 1}));
}

TEST(Schedule, HourThatIsNoNumberOrTooBigStopsTheLoad) {
    // Not a number, or too big for the form's integers: the load fails with VB's numbers,
    // keeping what it set before.
    TestProgram p;
    p->opt.sheduler = 1;
    p->opt.minute = "12";
    p->opt.hour = "eight";
    Schedule partial;
    EXPECT_EQ(vb_error_of([&] { compute_schedule(*p, &partial); }), errnum::kTypeMismatch);
    EXPECT_EQ(partial.nScanMinute, 12);
    EXPECT_FALSE(partial.complete);
    p->opt.hour = "40000";
    EXPECT_EQ(vb_error_of([&] { compute_schedule(*p); }), errnum::kOverflow);
}
