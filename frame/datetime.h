#pragma once
// A civil date and time as the program passes it around (VB's Date without the serial).
#include <compare>
#include <cstdint>

namespace qumbrel {

struct DateTime {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;

    auto operator<=>(const DateTime&) const = default;
};

// Days since 1899-12-30 plus the fraction of the day, as an OLE date; and back.
double to_serial(const DateTime& d);
DateTime from_serial(double serial);
bool is_valid_date(int year, int month, int day);

}  // namespace qumbrel
