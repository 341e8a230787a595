#include "pipeline/name_composer.h"

#include "frame/apifile.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/text.h"
#include "pipeline/family_table.h"
#include "recorder/file_elements.h"

namespace qumbrel {

namespace {

// How many characters may follow the first one of a key.
int allowance(char c) {
    switch (c) {
        case 'Y':
            return 3;
        case 'D':
        case 'M':
        case 'm':
        case 'H':
        case 'S':
        case 'C':
            return 1;
        case 'O':
        case 'B':
        case 'L':
        case 'F':
        case '1':
        case '2':
        case '3':
        case '4':
            return 0;
        default:
            return -1;
    }
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// The keys that give their element; all others but "Y" and "YYY" give nothing.
bool names_element(const std::string& key) {
    static constexpr std::string_view kKeys[] = {"O",  "B",    "C",  "C1", "C2", "C3", "L",
                                                 "F",  "1",    "2",  "3",  "4",  "DD", "MM",
                                                 "YY", "YYYY", "HH", "mm", "SS", "S"};
    for (auto k : kKeys)
        if (key == k) return true;
    return false;
}

std::string last_character(const std::string& s) {
    if (s.empty()) return {};
    std::size_t i = s.size() - 1;
    while (i > 0 && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80) --i;
    return s.substr(i);
}

}  // namespace

void fkt_convertfilename(Program& ctx, const std::string& source) {
    int step = 1;
    try {
        const std::string stem = Cls_APIFile::GetFileNoExtension(Cls_APIFile::GetFileName(source));
        const std::string ext = Cls_APIFile::GetFileExtension(source, true);
        step = 2;
        if (ctx.host.status_list_up()) {
            fkt_lststatus(ctx, fkt_translate(ctx, "puzzlefilename"));
            ctx.host.pump_events();
        }
        step = 3;
        // KL has no elements function, and an unknown extension calls nothing: the
        // elements of the previous file stand but for O and C.
        if (auto fam = family_of_extension(ext); fam && fam->family != RecorderFamily::KL) {
            auto& reader = family_table(ctx).of(fam->family).fileElements;
            if (reader) reader(ctx, source);
        }
        step = 4;
        auto& e = ctx.state<FileElements>();
        e.ti_O = stem;
        e.ti_C = last_character(stem);
    } catch (...) {
        report_trapped(ctx, "fkt_convertfilename()", step);
    }
}

std::string fkt_FormatName(Program& ctx, const std::string& format, Flag pathMode) {
    try {
        const auto& e = ctx.state<FileElements>();
        if (ctx.opt.targetname == 0) return e.ti_O;
        std::string out;
        std::size_t i = 0;
        while (i < format.size()) {
            const char ch = format[i];
            if (ch != '$') {
                out += ch;
                ++i;
                continue;
            }
            if (i + 1 >= format.size()) {
                out += '$';
                break;
            }
            const char c = format[i + 1];
            int allowed = allowance(c);
            if (allowed < 0) {
                out += '$';
                out += c;
                i += 2;
                continue;
            }
            std::string key(1, c);
            std::size_t j = i + 2;
            while (allowed > 0 && j < format.size() &&
                   (is_digit(format[j]) || format[j] == key.back())) {
                key += format[j];
                ++j;
                --allowed;
            }
            i = j;
            if (names_element(key)) {
                if (const std::string* v = e.find(key)) out += *v;
            } else if (key == "Y") {
                out += "$Y";
            } else if (key == "YYY") {
                out += "Y" + e.ti_YY;
            }
        }
        return fkt_filterillegal(out, pathMode);
    } catch (...) {
        report_trapped(ctx, "fkt_FormatName()", 0);
        return {};
    }
}

std::string fkt_filterillegal(const std::string& text, Flag pathMode) {
    std::string out = text;
    for (std::size_t i = 0; i < out.size(); ++i) {
        char& c = out[i];
        switch (c) {
            case '*':
            case '?':
            case '"':
            case '>':
            case '<':
            case '|':
            case '\\':
                c = '_';
                break;
            case '/':
                if (!is_set(pathMode)) c = '_';
                break;
            case ':':
                // A drive letter survives in path mode: ":" at the second position, and only
                // in front of the separator ("D:/x" keeps it, "a:b" does not).
                if (!is_set(pathMode) || i != 1 || i + 1 >= out.size() || out[i + 1] != '/')
                    c = '_';
                break;
            default:
                break;
        }
    }
    return out;
}

}  // namespace qumbrel
