#pragma once
// Time comparison of the report generators' time selections. Times are texts as the
// recorder hands them out ("12:05:03", "12:05:03 PM").
#include <string_view>

#include "frame/flag.h"

namespace qumbrel {

// 0 when equal, 1 when timeA is later, 2 when it is earlier. When timeA has a second word
// only "PM" against "AM" (1) and "AM" against "PM" (2) decide; other differing second
// words give 0. Otherwise the first words are compared as numbers after ":" and "." are
// removed, so "12:30 PM" counts as later than "1:00 PM" (kept so).
// Throws VbError 6 (overflow) for a number beyond the double range, as VB's Val does.
int fkt_timecompare(std::string_view timeA, std::string_view timeB);

// selected = True when `time` equals `stop`, or is not before `start` and before `stop`.
// A stop that lies before the start therefore selects only the stop itself.
void fkt_timeinwindow(std::string_view time, std::string_view start, std::string_view stop,
                      Flag& selected);

}  // namespace qumbrel
