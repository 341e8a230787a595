#pragma once
// The language catalogue: status texts from section "MSG" of the language file, and the
// key rules the forms use to translate their captions and tool tips.
#include <string>
#include <string_view>

#include "frame/context.h"

namespace qumbrel {

// Text of `key` in section "MSG" of the `language` file; "" when absent.
std::string fkt_translate(Program& ctx, std::string_view key);

// One profile read with a 255-character buffer: a text of at most 254 characters.
std::string fkt_readlanguage(const std::string& path, std::string_view section,
                             std::string_view key, std::string_view defaultValue);
// One profile write; true when written.
bool fkt_writelanguage(const std::string& path, std::string_view section, std::string_view key,
                       std::string_view value);

}  // namespace qumbrel
