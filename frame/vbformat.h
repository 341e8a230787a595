#pragma once
// VB-style formatting and conversion: Format with digit and date patterns, CStr of a
// double, Val, IsNumeric/CDbl under the regional rules, CInt/CLng with banker's rounding.
// All locale-dependent results take the regional profile explicitly.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "frame/datetime.h"
#include "frame/regional.h"

namespace qumbrel::vb {

// Format(number, pattern): digit patterns ("00", "0.00 ms", "##0", "#,##0.00", "0.00E+00",
// sections "pos;neg;zero"), half away from zero on the 15-digit decimal text; "." becomes
// the regional decimal symbol. Named formats ("Fixed", "Standard", "Currency", ...) too.
// A date pattern shows the number as an OLE date; beyond the Date range: VbError 6.
// Example: Format(7.6, "0.00 ms", de-DE) == "7,60 ms"; Format(7.6, "00", en-US) == "08".
std::string Format(double value, std::string_view pattern, const RegionalProfile& r);
// Format(text, pattern): a numeric text is parsed under the regional rules and formatted;
// a text that is not numeric comes back unchanged.
std::string FormatText(std::string_view text, std::string_view pattern, const RegionalProfile& r);
// Format(date, pattern): "Short Date", "Long Date", "Long Time", "Short Time",
// "General Date", or user patterns ("ss", "dd.MM.yy", "yyyy/mm/dd hh:nn:ss", ...).
std::string FormatDate(const DateTime& d, std::string_view pattern, const RegionalProfile& r);

// CStr(double): 15 significant digits, no trailing zeros, exponent form like VB.
// Example: CStr(1.0 / 3, de-DE) == "0,333333333333333"; CStr(0.00001, en-US) == "1E-05".
std::string CStr(double value, const RegionalProfile& r);

// Val(text): the leading number, "." only, blanks inside skipped, &H/&O.
// VbError 6 beyond the double range, 13 for a fraction with a "%"/"&" suffix ("50.5%").
double Val(std::string_view text);

// CDbl(text) under the regional rules; nullopt where VB raises error 13, VbError 6 (overflow)
// beyond the double range. IsNumeric is true exactly when CDbl gives a value.
std::optional<double> CDbl(std::string_view text, const RegionalProfile& r);
bool IsNumeric(std::string_view text, const RegionalProfile& r);

// CDate(text) under the regional rules; nullopt where VB raises error 13.
std::optional<DateTime> CDate(std::string_view text, const RegionalProfile& r);

// Banker's rounding; throw VbError 6 (overflow) outside the type's range.
std::int16_t CInt(double value);
std::int32_t CLng(double value);

}  // namespace qumbrel::vb
