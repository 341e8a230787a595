#pragma once
// pugixml has no namespaces: workbook parts come with prefixes ("x:worksheet") or without,
// so elements and attributes are matched by their local name. Parts are loaded and saved
// so that pugixml changes nothing it was not asked to (whitespace, declaration).
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace qumbrel::ooxml {

inline constexpr unsigned kParseOptions =
    pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_declaration;

std::string_view local_name(std::string_view qualified);
pugi::xml_node child_named(pugi::xml_node parent, std::string_view local);
pugi::xml_attribute attribute_named(pugi::xml_node node, std::string_view local);
// Loads `bytes`; throws PackageError naming `part` when it is no well-formed XML.
void load_part(pugi::xml_document& doc, const std::string& bytes, const std::string& part);
// The document as text, raw.
std::string save_part(const pugi::xml_document& doc);
// "1", "true" (any case).
bool xml_true(std::string_view value);

}  // namespace qumbrel::ooxml
