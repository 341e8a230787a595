#include "frame/language.h"

#include "frame/profile.h"

namespace qumbrel {

namespace {
constexpr std::size_t kLanguageBuffer = 255;  // a translated text holds at most 254
}

std::string fkt_readlanguage(const std::string& path, std::string_view section,
                             std::string_view key, std::string_view defaultValue) {
    return profile::read(path, section, key, defaultValue, kLanguageBuffer);
}

bool fkt_writelanguage(const std::string& path, std::string_view section, std::string_view key,
                       std::string_view value) {
    return profile::write(path, section, key, value);
}

std::string fkt_translate(Program& ctx, std::string_view key) {
    return fkt_readlanguage(ctx.opt.language, "MSG", key, "");
}

std::string translate_or(Program& ctx, std::string_view key, std::string_view english) {
    std::string text = fkt_translate(ctx, key);
    if (text.empty()) text = english;
    return text;
}

std::string resolve_language_path(const Program& ctx, const std::string& languagePath) {
    if (languagePath.find('/') == std::string::npos) return ctx.program_file(languagePath);
    return languagePath;
}

void sub_translateform(Program& ctx, TranslatableForm& form, const std::string& languagePath) {
    const std::string path = resolve_language_path(ctx, languagePath);
    ctx.opt.language = path;

    // The caption's key is its present text, so an open form keeps its last caption
    // after a change of language until it is loaded anew.
    form.caption = fkt_readlanguage(path, form.name, form.caption, form.caption);

    for (auto& c : form.controls) {
        const std::string stem = c.index ? c.name + "(" + std::to_string(*c.index) + ")" : c.name;
        if (c.caption) c.caption = fkt_readlanguage(path, form.name, stem + ".Caption", *c.caption);
        if (c.toolTip)
            c.toolTip = fkt_readlanguage(path, form.name, stem + ".ToolTipText", *c.toolTip);
    }

    if (!ctx.run.strOptionFile.empty() && ctx.run.optionFileWritable)
        fkt_writelanguage(ctx.run.strOptionFile, "file", "language", path);
}

void translate_headless_form(Program& ctx, const std::string& formName) {
    TranslatableForm form{formName, ctx.info.baseName, {}};
    sub_translateform(ctx, form, ctx.opt.language);
}

}  // namespace qumbrel
