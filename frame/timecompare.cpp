#include "frame/timecompare.h"

#include <string>

#include "frame/vbformat.h"

namespace qumbrel {

namespace {

// VB's Split(text, " "): the word at `index`, "" when there is none. A missing second word
// of timeB reads as "" (VB would stop with "Subscript out of range"); it then differs from
// timeA's and the result stays 0.
std::string_view word(std::string_view text, int index) {
    for (int i = 0; i < index; ++i) {
        const auto blank = text.find(' ');
        if (blank == std::string_view::npos) return {};
        text.remove_prefix(blank + 1);
    }
    return text.substr(0, text.find(' '));
}

bool has_second_word(std::string_view text) {
    return text.find(' ') != std::string_view::npos;
}

// The first word without ":" and ".", read as a number. Val reads the leading number, so
// a damaged text counts as 0 instead of stopping the report; a run of digits beyond the
// double range overflows (VbError 6) as it does in VB, and the caller's trap reports it.
double time_number(std::string_view text) {
    const std::string_view first = word(text, 0);
    char small[32];
    std::string large;  // only for a text longer than any time
    char* out = small;
    if (first.size() > sizeof small) {
        large.resize(first.size());
        out = large.data();
    }
    std::size_t n = 0;
    for (char c : first)
        if (c != ':' && c != '.') out[n++] = c;
    return vb::Val(std::string_view(out, n));
}

}  // namespace

int fkt_timecompare(std::string_view timeA, std::string_view timeB) {
    if (has_second_word(timeA)) {
        const std::string_view a = word(timeA, 1);
        const std::string_view b = word(timeB, 1);
        if (a != b) {
            if (a == "PM" && b == "AM") return 1;
            if (a == "AM" && b == "PM") return 2;
            return 0;
        }
    }
    const double a = time_number(timeA);
    const double b = time_number(timeB);
    if (a > b) return 1;
    if (a < b) return 2;
    return 0;
}

void fkt_timeinwindow(std::string_view time, std::string_view start, std::string_view stop,
                      Flag& selected) {
    const int a = fkt_timecompare(time, start);
    const int b = fkt_timecompare(time, stop);
    selected = to_flag(b == 0 || (a != 2 && b == 2));
}

}  // namespace qumbrel
