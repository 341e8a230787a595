// The schedule table of the load and the firing test of each kind, walked minute by
// minute over whole weeks.
#include "automation/schedule.h"

#include <gtest/gtest.h>

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

// Firings of one week, Sunday 2024-01-07 00:00 to Saturday 23:59, by weekday.
std::array<int, 8> firings_per_weekday(const Schedule& s) {
    std::array<int, 8> count{};
    for (int day = 7; day <= 13; ++day)
        for (int hour = 0; hour < 24; ++hour)
            for (int minute = 0; minute < 60; ++minute) {
                const DateTime t{2024, 1, day, hour, minute, 30};
                if (schedule_fires(s, t))
                    ++count[static_cast<std::size_t>(weekday_sunday_first(t))];
            }
    return count;
}

int total(const std::array<int, 8>& c) {
    int n = 0;
    for (int v : c) n += v;
    return n;
}

}  // namespace

TEST(Schedule, WeekdaysCountFromSunday) {
    EXPECT_EQ(weekday_sunday_first({2024, 1, 7}), 1);   // Sunday
    EXPECT_EQ(weekday_sunday_first({2024, 1, 13}), 7);  // Saturday
    EXPECT_EQ(weekday_sunday_first({2000, 2, 29}), 3);  // Tuesday
    EXPECT_EQ(weekday_sunday_first({1899, 12, 30}), 7);
    EXPECT_EQ(weekday_sunday_first({1899, 12, 24}), 1);  // before day 0 of the serial dates
}

TEST(Schedule, LoadTableByKind) {
    const Schedule weekly = load(0, "7", "15", 0);
    EXPECT_EQ(weekly.nScanMinute, 15);
    EXPECT_EQ(weekly.nScanHour[0], 7);
    EXPECT_EQ(weekly.nScanWeekday, 1);  // day 0 is Sunday
    EXPECT_EQ(weekly.platformIntervalMs, 60000u);

    EXPECT_EQ(load(3, "22", "5").nScanHour, (Hours{22, 1, 4, 10, 13, 16, 19}));
    EXPECT_EQ(load(4, "20").nScanHour, (Hours{20, 2, 8, 14, 0, 0, 0}));
    const Schedule twelve = load(5, "13");
    EXPECT_EQ(twelve.nScanHour, (Hours{13, 1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(twelve.nScanWeekday, 0);

    // Hours above 23 are reduced by 24, once.
    EXPECT_EQ(load(1, "25").nScanHour[0], 1);
    EXPECT_EQ(load(1, "50").nScanHour[0], 26);

    // Kind 2 sets the minute only, kind 6 nothing but its interval.
    const Schedule hourly = load(2, "9", "40");
    EXPECT_EQ(hourly.nScanMinute, 40);
    EXPECT_EQ(hourly.nScanHour[0], 0);
    const Schedule fast = load(6, "9", "40");
    EXPECT_EQ(fast.nScanMinute, 0);
    EXPECT_EQ(fast.platformIntervalMs, 5000u);

    EXPECT_EQ(load(7, "1", "3").platformIntervalMs, 180000u);
    // minute 0 asks for an interval of 0, which the platform timer answers with its minimum.
    EXPECT_EQ(load(7, "1", "0").platformIntervalMs, 10u);
}

TEST(Schedule, HourAndMinuteAreReadAsNumbers) {
    EXPECT_EQ(load(1, " 8 ", "07").nScanHour[0], 8);
    EXPECT_EQ(load(1, "8", "07").nScanMinute, 7);
    // Not a number, or too big for the form's integers: the load fails with VB's numbers,
    // keeping what it set before.
    TestProgram p;
    p->opt.sheduler = 1;
    p->opt.minute = "12";
    p->opt.hour = "eight";
    Schedule partial;
    try {
        compute_schedule(*p, &partial);
        ADD_FAILURE() << "no error";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), errnum::kTypeMismatch);
    }
    EXPECT_EQ(partial.nScanMinute, 12);
    EXPECT_FALSE(partial.complete);
    p->opt.hour = "40000";
    try {
        compute_schedule(*p);
        ADD_FAILURE() << "no error";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), errnum::kOverflow);
    }
}

TEST(Schedule, FiringsOverAWeek) {
    // Weekly, day 0: Sunday 07:15 only.
    const auto weekly = firings_per_weekday(load(0, "7", "15", 0));
    EXPECT_EQ(total(weekly), 1);
    EXPECT_EQ(weekly[1], 1);
    EXPECT_TRUE(schedule_fires(load(0, "7", "15", 0), {2024, 1, 7, 7, 15}));
    EXPECT_FALSE(schedule_fires(load(0, "7", "15", 0), {2024, 1, 8, 7, 15}));
    EXPECT_EQ(firings_per_weekday(load(0, "7", "15", 6))[7], 1);  // day 6: Saturday

    EXPECT_EQ(total(firings_per_weekday(load(1, "7", "15"))), 7);
    EXPECT_EQ(total(firings_per_weekday(load(2, "7", "15"))), 7 * 24);
    // Every 3 hours without the nine-hour step: seven firings a day.
    EXPECT_EQ(total(firings_per_weekday(load(3, "22", "0"))), 7 * 7);
    const Schedule three = load(3, "22", "0");
    EXPECT_TRUE(schedule_fires(three, {2024, 1, 8, 4, 0}));
    EXPECT_FALSE(schedule_fires(three, {2024, 1, 8, 7, 0}));  // 22 + 9 is missing
    EXPECT_TRUE(schedule_fires(three, {2024, 1, 8, 10, 0}));
    EXPECT_FALSE(schedule_fires(three, {2024, 1, 8, 10, 1}));
    EXPECT_EQ(total(firings_per_weekday(load(4, "20", "30"))), 7 * 4);
    // Every 12 hours compares a weekday its load never sets: it never fires.
    EXPECT_EQ(total(firings_per_weekday(load(5, "13", "0"))), 0);
    // Kinds 6 and 7 fire at every tick; unknown kinds never.
    EXPECT_EQ(total(firings_per_weekday(load(6))), 7 * 24 * 60);
    EXPECT_EQ(total(firings_per_weekday(load(7, "1", "0"))), 7 * 24 * 60);
    EXPECT_EQ(total(firings_per_weekday(load(8))), 0);
    EXPECT_EQ(total(firings_per_weekday(load(-1))), 0);
}
