#pragma once
// clsRegionalSettings: the machine's regional values. Named profiles carry the Windows
// defaults of a region (glibc's en_US patterns differ), the C library's locale picks the
// profile, and QUMBREL_REGION forces one so that tests do not depend on installed locales.
#include <optional>
#include <string>
#include <string_view>

namespace qumbrel {

struct RegionalProfile {
    std::string name;        // "en-US", "de-DE", or the locale's name
    std::string shortDate;   // Windows pattern, e.g. "M/d/yyyy"
    std::string longDate;    // e.g. "dddd, MMMM d, yyyy"
    std::string timeFormat;  // long time, e.g. "h:mm:ss tt"
    std::string am = "AM";   // s1159
    std::string pm = "PM";   // s2359
    std::string decimal = ".";
    std::string thousand = ",";
    std::string dateSep = "/";
    std::string timeSep = ":";
    std::string listSep = ",";
    std::string currencySymbol = "$";
    std::string currencyCode = "USD";
    std::string country = "United States";
    int dateOrder = 0;  // iDate: 0 MDY, 1 DMY, 2 YMD
};

class clsRegionalSettings {
  public:
    explicit clsRegionalSettings(RegionalProfile p) : p_(std::move(p)) {}

    // The profile for the process: QUMBREL_REGION, else LC_TIME/LC_NUMERIC of the C
    // library's locale, else en-US.
    static clsRegionalSettings from_environment();
    // A built-in profile by name ("en-US", "de-DE", ...), case-insensitive.
    static std::optional<RegionalProfile> named(std::string_view name);

    const std::string& DateSeparator() const { return p_.dateSep; }
    const std::string& DecimalSymbol() const { return p_.decimal; }
    const std::string& ShortDate() const { return p_.shortDate; }
    const std::string& LongDate() const { return p_.longDate; }
    const std::string& CurrencyCode() const { return p_.currencyCode; }
    const std::string& Country() const { return p_.country; }
    const std::string& ThousandSeparator() const { return p_.thousand; }
    const std::string& TimeSeparator() const { return p_.timeSep; }
    const std::string& ListSeparator() const { return p_.listSep; }

    const RegionalProfile& profile() const { return p_; }

  private:
    RegionalProfile p_;
};

}  // namespace qumbrel
