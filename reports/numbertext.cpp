#include "reports/numbertext.h"

#include <charconv>

namespace qumbrel {

void append_number_text(std::string& out, double value, std::string_view decimal) {
    char buf[40];
    const auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, 15);
    const char* const end = res.ptr;
    const char* p = buf;
    if (end - p == 2 && p[0] == '-' && p[1] == '0') ++p;  // -0 reads as 0
    for (; p != end; ++p) {
        if (*p == '.') {
            out.append(decimal);
        } else if (*p == 'e') {
            out.push_back('E');
        } else {
            out.push_back(*p);
        }
    }
}

std::string number_text(double value, std::string_view decimal) {
    std::string s;
    append_number_text(s, value, decimal);
    return s;
}

}  // namespace qumbrel
