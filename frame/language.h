#pragma once
// The language catalogue: status texts from section "MSG" of the language file, and the
// key rules the forms use to translate their captions and tool tips.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/context.h"

namespace qumbrel {

// Text of `key` in section "MSG" of the `language` file; "" when absent.
std::string fkt_translate(Program& ctx, std::string_view key);
// The same, with the English text when the language file has no such key (a language
// file older than the program).
std::string translate_or(Program& ctx, std::string_view key, std::string_view english);

// One profile read with a 255-character buffer: a text of at most 254 characters.
std::string fkt_readlanguage(const std::string& path, std::string_view section,
                             std::string_view key, std::string_view defaultValue);
// One profile write; true when written.
bool fkt_writelanguage(const std::string& path, std::string_view section, std::string_view key,
                       std::string_view value);

}  // namespace qumbrel

namespace qumbrel {

// What a form walk sees of a form: its name and caption, and each control's name, array
// index (when it belongs to a control array) and the texts it has. A text that is absent
// is a property the control does not have.
struct TranslatableControl {
    std::string name;
    std::optional<int> index;
    std::optional<std::string> caption;
    std::optional<std::string> toolTip;
};

struct TranslatableForm {
    std::string name;
    std::string caption;
    std::vector<TranslatableControl> controls;
};

// The language file actually used for `languagePath`: a bare file name lies in the
// program folder.
std::string resolve_language_path(const Program& ctx, const std::string& languagePath);

// Translates one form from `languagePath` and remembers the choice (in memory and in
// section "file" of the option file). A missing key keeps the present text.
void sub_translateform(Program& ctx, TranslatableForm& form, const std::string& languagePath);

// The catalogue step of a form load for a form that shows nothing here (the tray forms of
// a headless run): the language file is resolved and remembered as every form load does,
// so a bare file name in the option file means the one in the program folder.
void translate_headless_form(Program& ctx, const std::string& formName);

}  // namespace qumbrel
