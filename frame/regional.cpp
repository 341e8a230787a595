// Regional profiles: the Windows defaults of the regions we know, picked from the C
// library's locale; other regions are read from the locale's own data.
#include "frame/regional.h"

#include <langinfo.h>
#include <locale.h>

#include <array>
#include <cstdlib>
#include <memory>

namespace qumbrel {

namespace {

RegionalProfile en_us() {
    RegionalProfile p;
    p.name = "en-US";
    p.shortDate = "M/d/yyyy";
    p.longDate = "dddd, MMMM d, yyyy";
    p.timeFormat = "h:mm:ss tt";
    return p;  // the rest are the struct's defaults
}

RegionalProfile en_gb() {
    RegionalProfile p;
    p.name = "en-GB";
    p.shortDate = "dd/MM/yyyy";
    p.longDate = "dd MMMM yyyy";
    p.timeFormat = "HH:mm:ss";
    p.currencySymbol = "\xC2\xA3";  // £
    p.currencyCode = "GBP";
    p.country = "United Kingdom";
    p.dateOrder = 1;
    return p;
}

RegionalProfile de_de() {
    RegionalProfile p;
    p.name = "de-DE";
    p.shortDate = "dd.MM.yyyy";
    p.longDate = "dddd, d. MMMM yyyy";
    p.timeFormat = "HH:mm:ss";
    p.am.clear();
    p.pm.clear();
    p.decimal = ",";
    p.thousand = ".";
    p.dateSep = ".";
    p.listSep = ";";
    p.currencySymbol = "\xE2\x82\xAC";  // €
    p.currencyCode = "EUR";
    p.country = "Deutschland";
    p.dateOrder = 1;
    return p;
}

RegionalProfile fr_fr() {
    RegionalProfile p;
    p.name = "fr-FR";
    p.shortDate = "dd/MM/yyyy";
    p.longDate = "dddd d MMMM yyyy";
    p.timeFormat = "HH:mm:ss";
    p.am.clear();
    p.pm.clear();
    p.decimal = ",";
    p.thousand = "\xC2\xA0";  // no-break space
    p.listSep = ";";
    p.currencySymbol = "\xE2\x82\xAC";
    p.currencyCode = "EUR";
    p.country = "France";
    p.dateOrder = 1;
    return p;
}

char lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool same_region(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const char x = a[i] == '_' ? '-' : lower(a[i]);
        const char y = b[i] == '_' ? '-' : lower(b[i]);
        if (x != y) return false;
    }
    return true;
}

// "de_DE.UTF-8@euro" -> "de-DE"; "" for C/POSIX or a name without a region.
std::string region_of_locale(std::string_view locale) {
    const auto cut = locale.find_first_of(".@");
    if (cut != std::string_view::npos) locale = locale.substr(0, cut);
    const auto us = locale.find('_');
    if (us == std::string_view::npos || us == 0 || us + 1 >= locale.size()) return {};
    std::string out(locale);
    out[us] = '-';
    return out;
}

const char* env(const char* name) {
    const char* v = std::getenv(name);
    return (v != nullptr && *v != '\0') ? v : nullptr;
}

// The locale the C library would use for `category`, as POSIX orders the variables.
std::string locale_name_for(const char* category) {
    if (const char* v = env("LC_ALL")) return v;
    if (const char* v = env(category)) return v;
    if (const char* v = env("LANG")) return v;
    return {};
}

struct LocaleDeleter {
    void operator()(locale_t l) const {
        if (l != static_cast<locale_t>(0)) freelocale(l);
    }
};
using LocaleHandle = std::unique_ptr<std::remove_pointer_t<locale_t>, LocaleDeleter>;

// A strftime pattern to the Windows pattern language ("%d.%m.%Y" -> "dd.MM.yyyy").
std::string windows_pattern(std::string_view f, int* order) {
    std::string out;
    std::string seen;  // d, m, y in the order they appear
    for (std::size_t i = 0; i < f.size(); ++i) {
        if (f[i] != '%' || i + 1 >= f.size()) {
            if (f[i] == '\'')
                out.append("''");
            else
                out.push_back(f[i]);
            continue;
        }
        char c = f[++i];
        if ((c == 'E' || c == 'O' || c == '-' || c == '_' || c == '0') && i + 1 < f.size())
            c = f[++i];
        switch (c) {
            case 'd':
                out.append("dd"), seen.push_back('d');
                break;
            case 'e':
                out.append("d"), seen.push_back('d');
                break;
            case 'm':
                out.append("MM"), seen.push_back('m');
                break;
            case 'b':
            case 'h':
                out.append("MMM"), seen.push_back('m');
                break;
            case 'B':
                out.append("MMMM"), seen.push_back('m');
                break;
            case 'Y':
                out.append("yyyy"), seen.push_back('y');
                break;
            case 'y':
                out.append("yy"), seen.push_back('y');
                break;
            case 'a':
                out.append("ddd");
                break;
            case 'A':
                out.append("dddd");
                break;
            case 'H':
                out.append("HH");
                break;
            case 'k':
                out.append("H");
                break;
            case 'I':
                out.append("hh");
                break;
            case 'l':
                out.append("h");
                break;
            case 'M':
                out.append("mm");
                break;
            case 'S':
                out.append("ss");
                break;
            case 'p':
            case 'P':
                out.append("tt");
                break;
            case 'T':
                out.append("HH:mm:ss");
                break;
            case 'R':
                out.append("HH:mm");
                break;
            case 'r':
                out.append("hh:mm:ss tt");
                break;
            case 'D':
                out.append("MM/dd/yy"), seen.append("mdy");
                break;
            case 'F':
                out.append("yyyy-MM-dd"), seen.append("ymd");
                break;
            case '%':
                out.push_back('%');
                break;
            default:
                break;
        }
    }
    if (order != nullptr) {
        if (seen.starts_with("d"))
            *order = 1;
        else if (seen.starts_with("y"))
            *order = 2;
        else
            *order = 0;
    }
    return out;
}

// The first character of a pattern that is no letter, digit or blank: its separator.
std::string separator_of(std::string_view winPattern, std::string_view fallback) {
    for (std::size_t i = 0; i < winPattern.size(); ++i) {
        const auto c = static_cast<unsigned char>(winPattern[i]);
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == ' ' || c == '\'' || c == ',';
        if (!plain) {
            std::size_t len = 1;
            while (i + len < winPattern.size() &&
                   (static_cast<unsigned char>(winPattern[i + len]) & 0xC0) == 0x80)
                ++len;
            return std::string(winPattern.substr(i, len));
        }
    }
    return std::string(fallback);
}

std::string item(nl_item what, locale_t l) {
    const char* v = nl_langinfo_l(what, l);
    return v != nullptr ? std::string(v) : std::string();
}

// A region without a built-in profile: its patterns and symbols from the locale itself.
std::optional<RegionalProfile> from_locale_data(const std::string& localeName,
                                                const std::string& region) {
    LocaleHandle l(newlocale(LC_ALL_MASK, localeName.c_str(), static_cast<locale_t>(0)));
    if (!l) return std::nullopt;
    RegionalProfile p;
    p.name = region;
    p.shortDate = windows_pattern(item(D_FMT, l.get()), &p.dateOrder);
    p.timeFormat = windows_pattern(item(T_FMT, l.get()), nullptr);
    p.longDate = "dddd, " + p.shortDate;
    p.am = item(AM_STR, l.get());
    p.pm = item(PM_STR, l.get());
    p.decimal = item(RADIXCHAR, l.get());
    if (p.decimal.empty()) p.decimal = ".";
    p.thousand = item(THOUSEP, l.get());
    p.dateSep = separator_of(p.shortDate, "/");
    p.timeSep = separator_of(p.timeFormat, ":");
    p.listSep = p.decimal == "," ? ";" : ",";
    // CRNCYSTR carries a position mark in front: '-' before, '+' after, '.' in place of
    // the radix.
    const std::string cur = item(CRNCYSTR, l.get());
    p.currencySymbol = cur.size() > 1 ? cur.substr(1) : cur;
    std::string code = item(INT_CURR_SYMBOL, l.get());
    while (!code.empty() && code.back() == ' ') code.pop_back();
    p.currencyCode = code;
    p.country = item(_NL_ADDRESS_COUNTRY_NAME, l.get());
    if (p.shortDate.empty() || p.timeFormat.empty()) return std::nullopt;
    return p;
}

}  // namespace

std::optional<RegionalProfile> clsRegionalSettings::named(std::string_view name) {
    static constexpr std::array<RegionalProfile (*)(), 4> kProfiles{en_us, en_gb, de_de, fr_fr};
    for (auto make : kProfiles) {
        RegionalProfile p = make();
        if (same_region(p.name, name)) return p;
    }
    return std::nullopt;
}

clsRegionalSettings clsRegionalSettings::from_environment() {
    if (const char* forced = env("QUMBREL_REGION")) {
        if (auto p = named(forced)) return clsRegionalSettings(std::move(*p));
    }
    // Dates follow LC_TIME, numbers LC_NUMERIC; the profile is chosen by the first that
    // names a region.
    for (const char* category : {"LC_TIME", "LC_NUMERIC"}) {
        const std::string locale = locale_name_for(category);
        const std::string region = region_of_locale(locale);
        if (region.empty()) continue;
        if (auto p = named(region)) return clsRegionalSettings(std::move(*p));
        if (auto p = from_locale_data(locale, region)) return clsRegionalSettings(std::move(*p));
    }
    return clsRegionalSettings(en_us());
}

}  // namespace qumbrel
