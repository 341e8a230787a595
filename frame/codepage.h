#pragma once
// Windows-1252 <-> UTF-8. Library text fields and BIFF2 labels are Windows-1252; the
// program works in UTF-8.
#include <string>
#include <string_view>

namespace qumbrel {

std::string cp1252_to_utf8(std::string_view bytes);
// Characters outside Windows-1252 become '?'. Invalid UTF-8 bytes are taken as 1252.
std::string utf8_to_cp1252(std::string_view text);
bool is_valid_utf8(std::string_view text);
// Valid UTF-8 stays as it is; anything else is read as Windows-1252.
std::string utf8_or_cp1252(std::string_view bytes);
// The first `count` characters (code points) of a UTF-8 text.
std::string_view utf8_prefix(std::string_view text, std::size_t count);
std::size_t utf8_length(std::string_view text);

}  // namespace qumbrel
