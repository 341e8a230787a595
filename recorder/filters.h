#pragma once
// Cleaning of the fixed-width text fields the recorder libraries fill: the two character
// filters, the in-place field filter, and the leading-zero trim of number texts.
//
// The libraries write Windows-1252 bytes. Filtering happens on those bytes; the result is
// decoded to UTF-8 only after the filter (filter_field, raw_field), so the filters work on
// single-byte text and every kept byte is one character.
#include <string>
#include <string_view>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

// Both filters, in Windows-1252 ("\xB0" is the degree sign).
inline constexpr std::string_view kDisplayFilter =
    "\xB0 _%()/*-+.@ abcdefghijklmnopqrstuvwxyz0123456789";
inline constexpr std::string_view kFileNameFilter = "-+.,abcdefghijklmnopqrstuvwxyz0123456789";

// Text comparison, as every caller passes it: the lower-case alphabet of the filters also
// lets the upper-case letters through.
inline constexpr int kTextCompare = 1;
inline constexpr int kBinaryCompare = 0;

// Keeps (keep true) or drops (keep false) each byte of `text` that occurs in
// `filterChars`. Errors go to the error log as "fkt_StrFilter()"; the function then
// returns what it has.
std::string fkt_StrFilter(Program& ctx, std::string_view text, std::string_view filterChars,
                          Flag keep, int compare);

// Strips the leading zeros of a number text, keeping one digit before the decimal
// separator (the option `decseparator`). "0000,50" -> "0,50"; "000" (no separator) stays.
std::string fkt_TrimNull(Program& ctx, std::string_view text);

// A fixed-width library field after the call: filtered in place (written back, padded with
// blanks to its width); the filter's result, trimmed of blanks when `trim` is set, decoded
// from Windows-1252 to UTF-8, is the value.
std::string filter_field(Program& ctx, char* field, std::size_t width, std::string_view filter,
                         bool trim);

// A fixed-width field as the library left it, unfiltered and decoded, up to its first zero
// byte (the padding).
std::string raw_field(const char* field, std::size_t width);

}  // namespace qumbrel
