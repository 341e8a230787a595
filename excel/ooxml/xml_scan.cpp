#include "excel/ooxml/xml_scan.h"

#include <cctype>

namespace qumbrel::ooxml {

namespace {

bool name_char(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.';
}

}  // namespace

Tag find_start(const std::string& xml, std::string_view local, std::size_t from) {
    for (std::size_t at = xml.find(local, from); at != std::string::npos;
         at = xml.find(local, at + 1)) {
        const std::size_t after = at + local.size();
        if (after >= xml.size() || name_char(xml[after]) || xml[after] == ':') continue;
        std::size_t begin = at;
        if (begin > 0 && xml[begin - 1] == ':') {
            --begin;
            while (begin > 0 && name_char(xml[begin - 1])) --begin;
        }
        if (begin == 0 || xml[begin - 1] != '<') continue;
        const std::size_t close = xml.find('>', after);
        if (close == std::string::npos) return Tag{};
        Tag t;
        t.start = begin - 1;
        t.prefix = xml.substr(begin, at - begin);
        t.end = close + 1;
        t.selfClosing = xml[close - 1] == '/';
        return t;
    }
    return Tag{};
}

std::size_t element_end(const std::string& xml, const Tag& tag, std::string_view local) {
    if (tag.selfClosing) return tag.end;
    const std::string close = "</" + tag.prefix + std::string(local) + ">";
    const std::size_t at = xml.find(close, tag.end);
    return at == std::string::npos ? std::string::npos : at + close.size();
}

}  // namespace qumbrel::ooxml
