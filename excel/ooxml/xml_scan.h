#pragma once
// Finding elements in XML text without parsing it: for the parts that are spliced rather
// than rebuilt (a sheet around its <sheetData>), and for VML, which Excel does not always
// write well-formed. Elements are matched by local name, with or without a prefix.
#include <cstddef>
#include <string>
#include <string_view>

namespace qumbrel::ooxml {

struct Tag {
    std::size_t start = std::string::npos;  // at '<'
    std::size_t end = 0;                    // behind '>'
    bool selfClosing = false;
    std::string prefix;  // "x:" or ""
    bool found() const { return start != std::string::npos; }
};

// The first start tag of an element with local name `local` at or after `from`.
Tag find_start(const std::string& xml, std::string_view local, std::size_t from);
// Behind the element's end tag (behind the tag itself when it closes itself); npos when
// the end tag is missing. Elements of the same name inside it are not expected.
std::size_t element_end(const std::string& xml, const Tag& tag, std::string_view local);

}  // namespace qumbrel::ooxml
