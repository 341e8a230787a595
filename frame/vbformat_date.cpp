// Format of dates: the named formats from the regional profile and VB's user patterns;
// CDate of a text.
#include <charconv>
#include <chrono>
#include <string>

#include "frame/detail/vbnames.h"
#include "frame/detail/vbpattern.h"
#include "frame/vbformat.h"

namespace qumbrel::vb {

namespace {

using detail::DateNames;

void append_num(std::string& out, int v) {
    char buf[16];
    out.append(buf, std::to_chars(buf, buf + sizeof buf, v).ptr);
}

void append2(std::string& out, int v) {
    if (v >= 0 && v < 10) out.push_back('0');
    append_num(out, v);
}

bool is_zero_date(const DateTime& t) {
    return t.year == 1899 && t.month == 12 && t.day == 30;
}

// The shown seconds are rounded, as VB rounds a Date to the second before it formats it.
DateTime round_to_second(DateTime t) {
    if (t.millisecond < 500) {
        t.millisecond = 0;
        return t;
    }
    t.millisecond = 0;
    if (++t.second < 60) return t;
    t.second = 0;
    if (++t.minute < 60) return t;
    t.minute = 0;
    if (++t.hour < 24) return t;
    t.hour = 0;
    if (!is_valid_date(t.year, t.month, t.day)) return t;
    using namespace std::chrono;
    const year_month_day next{sys_days{year{t.year} / t.month / t.day} + days{1}};
    t.year = static_cast<int>(next.year());
    t.month = static_cast<int>(static_cast<unsigned>(next.month()));
    t.day = static_cast<int>(static_cast<unsigned>(next.day()));
    return t;
}

// 0 = Sunday.
int weekday_of(const DateTime& t) {
    if (!is_valid_date(t.year, t.month, t.day)) return 0;
    using namespace std::chrono;
    return static_cast<int>(
        std::chrono::weekday{sys_days{year{t.year} / t.month / t.day}}.c_encoding());
}

int day_of_year(const DateTime& t) {
    if (!is_valid_date(t.year, t.month, t.day)) return 0;
    using namespace std::chrono;
    const sys_days d{year{t.year} / t.month / t.day};
    return static_cast<int>((d - sys_days{year{t.year} / January / 1}).count()) + 1;
}

// Week of the year with Sunday as the first day and the week of 1 January as week 1.
int week_of_year(const DateTime& t) {
    const int doy = day_of_year(t);
    if (doy == 0) return 0;
    DateTime jan1 = t;
    jan1.month = 1;
    jan1.day = 1;
    return (doy - 1 + weekday_of(jan1)) / 7 + 1;
}

std::string_view month_name(const DateNames& n, int month, bool full) {
    if (month < 1 || month > 12) return {};
    return full ? n.months[month - 1] : n.monthsShort[month - 1];
}

int hour12(int h) {
    return h % 12 == 0 ? 12 : h % 12;
}

std::size_t run_length(std::string_view p, std::size_t i, char lower) {
    std::size_t n = 0;
    while (i + n < p.size() && detail::lower_ascii(p[i + n]) == lower) ++n;
    return n;
}

std::size_t exact_run(std::string_view p, std::size_t i) {
    std::size_t n = 0;
    while (i + n < p.size() && p[i + n] == p[i]) ++n;
    return n;
}

// Windows locale patterns ("M/d/yyyy", "HH:mm:ss", "h:mm:ss tt"): case decides the token.
std::string format_windows(const DateTime& t, std::string_view p, const RegionalProfile& r) {
    const DateNames& names = detail::names_for(r.name);
    std::string out;
    for (std::size_t i = 0; i < p.size();) {
        const char c = p[i];
        const std::size_t n = exact_run(p, i);
        switch (c) {
            case 'd':
                if (n == 1) append_num(out, t.day);
                if (n == 2) append2(out, t.day);
                if (n == 3) out.append(names.daysShort[weekday_of(t)]);
                if (n >= 4) out.append(names.days[weekday_of(t)]);
                break;
            case 'M':
                if (n == 1) append_num(out, t.month);
                if (n == 2) append2(out, t.month);
                if (n >= 3) out.append(month_name(names, t.month, n >= 4));
                break;
            case 'y':
                if (n <= 2) {
                    const int yy = t.year % 100;
                    n == 1 ? append_num(out, yy) : append2(out, yy);
                } else {
                    append_num(out, t.year);
                }
                break;
            case 'h':
                n == 1 ? append_num(out, hour12(t.hour)) : append2(out, hour12(t.hour));
                break;
            case 'H':
                n == 1 ? append_num(out, t.hour) : append2(out, t.hour);
                break;
            case 'm':
                n == 1 ? append_num(out, t.minute) : append2(out, t.minute);
                break;
            case 's':
                n == 1 ? append_num(out, t.second) : append2(out, t.second);
                break;
            case 't': {
                const std::string& s = t.hour < 12 ? r.am : r.pm;
                out.append(n == 1 ? std::string_view(s).substr(0, 1) : std::string_view(s));
                break;
            }
            case 'g':
                break;  // era: none in the Gregorian profiles
            case '\'': {
                // Quoted literal; '' inside stands for one quote.
                std::size_t j = i + 1;
                while (j < p.size()) {
                    if (p[j] == '\'') {
                        if (j + 1 < p.size() && p[j + 1] == '\'') {
                            out.push_back('\'');
                            j += 2;
                            continue;
                        }
                        break;
                    }
                    out.push_back(p[j++]);
                }
                i = j + 1;
                continue;
            }
            default:
                out.append(p.substr(i, n));
                break;
        }
        i += n;
    }
    return out;
}

std::string general_date(const DateTime& t, const RegionalProfile& r) {
    const bool hasTime = t.hour != 0 || t.minute != 0 || t.second != 0;
    if (is_zero_date(t)) return format_windows(t, r.timeFormat, r);
    if (!hasTime) return format_windows(t, r.shortDate, r);
    return format_windows(t, r.shortDate, r) + " " + format_windows(t, r.timeFormat, r);
}

bool pattern_has_ampm(std::string_view p) {
    for (std::size_t i = 0; i < p.size(); ++i) {
        if (p[i] == '"') {
            const auto close = p.find('"', i + 1);
            if (close == std::string_view::npos) return false;
            i = close;
        } else if (p[i] == '\\') {
            ++i;
        } else if (detail::ampm_token_length(p, i) != 0) {
            return true;
        }
    }
    return false;
}

// VB user patterns: letters in either case; "m" after an hour token means minutes; "/" and
// ":" are the regional separators; the rest is literal.
std::string format_user(const DateTime& t, std::string_view p, const RegionalProfile& r) {
    const DateNames& names = detail::names_for(r.name);
    const bool twelve = pattern_has_ampm(p);
    const int hour = twelve ? hour12(t.hour) : t.hour;
    bool afterHour = false;
    std::string out;
    for (std::size_t i = 0; i < p.size();) {
        const char c = p[i];
        const char lc = detail::lower_ascii(c);
        std::size_t n = 0;
        bool dateToken = true;
        switch (lc) {
            case 'd':
                n = run_length(p, i, 'd');
                if (n > 6) n = 6;
                if (n == 1) append_num(out, t.day);
                if (n == 2) append2(out, t.day);
                if (n == 3) out.append(names.daysShort[weekday_of(t)]);
                if (n == 4) out.append(names.days[weekday_of(t)]);
                if (n == 5) out.append(format_windows(t, r.shortDate, r));
                if (n == 6) out.append(format_windows(t, r.longDate, r));
                break;
            case 'w':
                n = run_length(p, i, 'w') >= 2 ? 2 : 1;
                append_num(out, n == 1 ? weekday_of(t) + 1 : week_of_year(t));
                break;
            case 'm':
                n = run_length(p, i, 'm');
                if (n > 4) n = 4;
                if (n <= 2 && afterHour) {
                    n == 1 ? append_num(out, t.minute) : append2(out, t.minute);
                } else if (n <= 2) {
                    n == 1 ? append_num(out, t.month) : append2(out, t.month);
                } else {
                    out.append(month_name(names, t.month, n == 4));
                }
                break;
            case 'n':
                n = run_length(p, i, 'n') >= 2 ? 2 : 1;
                n == 1 ? append_num(out, t.minute) : append2(out, t.minute);
                break;
            case 's':
                n = run_length(p, i, 's') >= 2 ? 2 : 1;
                n == 1 ? append_num(out, t.second) : append2(out, t.second);
                break;
            case 'h':
                n = run_length(p, i, 'h') >= 2 ? 2 : 1;
                n == 1 ? append_num(out, hour) : append2(out, hour);
                break;
            case 'q':
                n = 1;
                append_num(out, (t.month - 1) / 3 + 1);
                break;
            case 'y':
                n = run_length(p, i, 'y');
                if (n >= 4) {
                    n = 4;
                    append_num(out, t.year);
                } else if (n >= 2) {
                    n = 2;
                    append2(out, t.year % 100);
                } else {
                    append_num(out, day_of_year(t));
                }
                break;
            case 'c':
                n = 1;
                out.append(general_date(t, r));
                break;
            case 't':
                if (detail::istarts_with(p, i, "ttttt")) {
                    n = 5;
                    out.append(format_windows(t, r.timeFormat, r));
                } else {
                    dateToken = false;
                }
                break;
            case 'a':
                n = detail::ampm_token_length(p, i);
                if (n == 4) {
                    out.append(t.hour < 12 ? r.am : r.pm);
                } else if (n != 0) {
                    // "AM/PM" and "A/P" keep the case the pattern writes them in.
                    const std::size_t at = t.hour < 12 ? i : i + (n == 5 ? 3 : 2);
                    out.append(p.substr(at, n == 5 ? 2 : 1));
                } else {
                    dateToken = false;
                }
                break;
            default:
                dateToken = false;
                break;
        }
        if (dateToken) {
            afterHour = lc == 'h';
            i += n;
            continue;
        }
        if (c == '/') {
            out.append(r.dateSep);
            ++i;
        } else if (c == ':') {
            out.append(r.timeSep);
            ++i;
        } else if (c == '"') {
            const auto close = p.find('"', i + 1);
            const std::size_t end = close == std::string_view::npos ? p.size() : close;
            out.append(p.substr(i + 1, end - i - 1));
            i = end + 1;
        } else if (c == '\\') {
            if (i + 1 < p.size()) {
                const std::size_t len = detail::utf8_length(p[i + 1]);
                out.append(p.substr(i + 1, len));
                i += 1 + len;
            } else {
                ++i;
            }
        } else {
            const std::size_t len = detail::utf8_length(c);
            out.append(p.substr(i, len));
            i += len;
        }
    }
    return out;
}

// ---- CDate -----------------------------------------------------------------------------

struct Num {
    int value = 0;
    int digits = 0;
};

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           static_cast<unsigned char>(c) >= 0x80;
}

int year_of(const Num& n) {
    // Two-digit years: 00-29 are 20xx, the classic Windows window.
    if (n.digits <= 2) return n.value < 30 ? 2000 + n.value : 1900 + n.value;
    return n.value;
}

int current_year() {
    using namespace std::chrono;
    const year_month_day today{floor<days>(system_clock::now())};
    return static_cast<int>(today.year());
}

int match_month(std::string_view w, const DateNames& local) {
    for (const DateNames* n : {&local, &detail::kEnglishNames})
        for (int m = 0; m < 12; ++m)
            if (detail::iequals_ascii(w, n->months[m]) ||
                detail::iequals_ascii(w, n->monthsShort[m]))
                return m + 1;
    return 0;
}

bool is_weekday_name(std::string_view w, const DateNames& local) {
    for (const DateNames* n : {&local, &detail::kEnglishNames})
        for (int d = 0; d < 7; ++d)
            if (detail::iequals_ascii(w, n->days[d]) || detail::iequals_ascii(w, n->daysShort[d]))
                return true;
    return false;
}

enum class Order { MDY, DMY, YMD };

bool assemble(const Num (&n)[3], Order o, DateTime& d) {
    int y = 0, m = 0, dd = 0;
    switch (o) {
        case Order::MDY:
            if (n[0].digits > 2 || n[1].digits > 2) return false;
            m = n[0].value, dd = n[1].value, y = year_of(n[2]);
            break;
        case Order::DMY:
            if (n[0].digits > 2 || n[1].digits > 2) return false;
            dd = n[0].value, m = n[1].value, y = year_of(n[2]);
            break;
        case Order::YMD:
            if (n[1].digits > 2 || n[2].digits > 2) return false;
            y = year_of(n[0]), m = n[1].value, dd = n[2].value;
            break;
    }
    if (!is_valid_date(y, m, dd)) return false;
    d.year = y, d.month = m, d.day = dd;
    return true;
}

bool set_date(DateTime& d, int y, int m, int dd) {
    if (!is_valid_date(y, m, dd)) return false;
    d.year = y, d.month = m, d.day = dd;
    return true;
}

}  // namespace

namespace detail {
bool is_named_date_format(std::string_view p) {
    for (const char* n : {"General Date", "Long Date", "Medium Date", "Short Date", "Long Time",
                          "Medium Time", "Short Time"})
        if (iequals_ascii(p, n)) return true;
    return false;
}
}  // namespace detail

std::string FormatDate(const DateTime& d, std::string_view pattern, const RegionalProfile& r) {
    const DateTime t = round_to_second(d);
    using detail::iequals_ascii;
    if (iequals_ascii(pattern, "Short Date")) return format_windows(t, r.shortDate, r);
    if (iequals_ascii(pattern, "Long Date")) return format_windows(t, r.longDate, r);
    if (iequals_ascii(pattern, "Long Time")) return format_windows(t, r.timeFormat, r);
    if (iequals_ascii(pattern, "General Date")) return general_date(t, r);
    if (iequals_ascii(pattern, "Medium Date")) return format_user(t, "dd-mmm-yy", r);
    // Both with the regional time separator; Short Time is 24-hour by definition.
    if (iequals_ascii(pattern, "Short Time")) return format_user(t, "hh:nn", r);
    if (iequals_ascii(pattern, "Medium Time")) return format_user(t, "hh:nn AMPM", r);
    if (pattern.empty()) return general_date(t, r);
    return format_user(t, pattern, r);
}

std::optional<DateTime> CDate(std::string_view text, const RegionalProfile& r) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    if (text.empty()) return std::nullopt;

    const DateNames& names = detail::names_for(r.name);
    Num dateNums[3];
    int nd = 0;
    int timeParts[3] = {0, 0, 0};
    int nt = 0;
    int month = 0;
    int ampm = 0;  // 1 AM, 2 PM
    const std::string_view timeSep = r.timeSep.empty() ? std::string_view(":") : r.timeSep;
    const bool dotIsTime = r.dateSep != ".";

    auto read_num = [&](std::size_t& i, Num& n) {
        n = {};
        while (i < text.size() && is_digit(text[i])) {
            if (n.digits == 9) return false;  // no date or time field is that long
            n.value = n.value * 10 + (text[i++] - '0');
            ++n.digits;
        }
        return n.digits > 0;
    };
    auto time_sep_at = [&](std::size_t i, bool dots) -> std::size_t {
        if (i >= text.size()) return 0;
        if (text[i] == ':') return 1;
        if (dots && text[i] == '.') return 1;
        if (text.substr(i).starts_with(timeSep)) return timeSep.size();
        return 0;
    };

    std::size_t i = 0;
    while (i < text.size()) {
        const char c = text[i];
        if (is_digit(c)) {
            Num n;
            if (!read_num(i, n)) return std::nullopt;
            std::size_t sep = time_sep_at(i, false);
            bool dots = false;
            if (sep == 0 && dotIsTime && i + 1 < text.size() && text[i] == '.' &&
                is_digit(text[i + 1])) {
                // "." is no date separator here, so "9.3.07" is a time.
                dots = true;
                sep = 1;
            }
            if (sep != 0 && i + sep < text.size() && is_digit(text[i + sep])) {
                if (nt != 0) return std::nullopt;
                timeParts[nt++] = n.value;
                while ((sep = time_sep_at(i, dots)) != 0 && i + sep < text.size() &&
                       is_digit(text[i + sep])) {
                    if (nt == 3) return std::nullopt;
                    i += sep;
                    Num part;
                    if (!read_num(i, part)) return std::nullopt;
                    timeParts[nt++] = part.value;
                }
                continue;
            }
            if (nd == 3) return std::nullopt;
            dateNums[nd++] = n;
            continue;
        }
        if (is_letter(c)) {
            std::size_t j = i;
            while (j < text.size() && is_letter(text[j])) ++j;
            const std::string_view w = text.substr(i, j - i);
            i = j;
            const bool am = detail::iequals_ascii(w, "AM") || detail::iequals_ascii(w, "A") ||
                            (!r.am.empty() && detail::iequals_ascii(w, r.am));
            const bool pm = detail::iequals_ascii(w, "PM") || detail::iequals_ascii(w, "P") ||
                            (!r.pm.empty() && detail::iequals_ascii(w, r.pm));
            if (am || pm) {
                if (ampm != 0) return std::nullopt;
                ampm = am ? 1 : 2;
            } else if (const int m = match_month(w, names); m != 0) {
                if (month != 0) return std::nullopt;
                month = m;
            } else if (!is_weekday_name(w, names)) {
                return std::nullopt;
            }
            continue;
        }
        if (c == ' ' || c == '\t' || c == ',' || c == '/' || c == '-' || c == '.') {
            ++i;
            continue;
        }
        if (!r.dateSep.empty() && text.substr(i).starts_with(r.dateSep)) {
            i += r.dateSep.size();
            continue;
        }
        return std::nullopt;
    }

    // "3 PM": a lone number before AM/PM is the hour.
    if (nt == 0 && ampm != 0 && nd > 0 && dateNums[nd - 1].digits <= 2) {
        timeParts[nt++] = dateNums[--nd].value;
    }
    if (nt == 0 && ampm != 0) return std::nullopt;

    DateTime d;  // 1899-12-30, the date of a bare time
    if (nt > 0) {
        int h = timeParts[0];
        if (ampm == 2 && h < 12) h += 12;
        if (ampm == 1 && h == 12) h = 0;
        if (h > 23 || timeParts[1] > 59 || timeParts[2] > 59) return std::nullopt;
        d.hour = h, d.minute = timeParts[1], d.second = timeParts[2];
    }

    if (month != 0) {
        if (nd == 1) {
            const Num& n = dateNums[0];
            const bool ok = n.digits > 2 ? set_date(d, n.value, month, 1)
                                         : set_date(d, current_year(), month, n.value);
            return ok ? std::optional<DateTime>(d) : std::nullopt;
        }
        if (nd == 2) {
            if (dateNums[0].digits <= 2 &&
                set_date(d, year_of(dateNums[1]), month, dateNums[0].value))
                return d;
            if (dateNums[1].digits <= 2 &&
                set_date(d, year_of(dateNums[0]), month, dateNums[1].value))
                return d;
        }
        return std::nullopt;
    }

    switch (nd) {
        case 0:
            if (nt == 0) return std::nullopt;
            return d;
        case 1:
            return std::nullopt;
        case 2: {
            const Num& a = dateNums[0];
            const Num& b = dateNums[1];
            if (b.digits > 2)
                return set_date(d, b.value, a.value, 1) ? std::optional(d) : std::nullopt;
            if (a.digits > 2)
                return set_date(d, a.value, b.value, 1) ? std::optional(d) : std::nullopt;
            const int y = current_year();
            const bool dayFirst = r.dateOrder == 1;
            if (set_date(d, y, dayFirst ? b.value : a.value, dayFirst ? a.value : b.value))
                return d;
            if (set_date(d, y, dayFirst ? a.value : b.value, dayFirst ? b.value : a.value))
                return d;
            return std::nullopt;
        }
        default:
            break;
    }
    // Three numbers: the regional order first, then the others; the first valid date wins.
    const Order local = r.dateOrder == 1 ? Order::DMY : r.dateOrder == 2 ? Order::YMD : Order::MDY;
    for (Order o : {local, Order::YMD, Order::MDY, Order::DMY}) {
        if (assemble(dateNums, o, d)) return d;
    }
    return std::nullopt;
}

}  // namespace qumbrel::vb
