#include "excel/ooxml/xml_nodes.h"

#include <sstream>

#include "excel/ooxml/zip_package.h"

namespace qumbrel::ooxml {

std::string_view local_name(std::string_view qualified) {
    const auto colon = qualified.find(':');
    return colon == std::string_view::npos ? qualified : qualified.substr(colon + 1);
}

pugi::xml_node child_named(pugi::xml_node parent, std::string_view local) {
    for (pugi::xml_node c = parent.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element && local_name(c.name()) == local) return c;
    return {};
}

pugi::xml_attribute attribute_named(pugi::xml_node node, std::string_view local) {
    for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute())
        if (local_name(a.name()) == local) return a;
    return {};
}

void load_part(pugi::xml_document& doc, const std::string& bytes, const std::string& part) {
    const pugi::xml_parse_result r = doc.load_buffer(bytes.data(), bytes.size(), kParseOptions);
    if (!r)
        throw PackageError("part " + part + " is no well-formed XML: " + r.description() +
                           " at byte " + std::to_string(r.offset));
}

std::string save_part(const pugi::xml_document& doc) {
    std::ostringstream out;
    doc.save(out, "", pugi::format_raw);
    return out.str();
}

bool xml_true(std::string_view value) {
    return value == "1" || value == "true" || value == "True" || value == "TRUE";
}

}  // namespace qumbrel::ooxml
