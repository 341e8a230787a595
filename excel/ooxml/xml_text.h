#pragma once
// Text for the XML of a workbook part: escaped for element content or attributes, with the
// characters XML 1.0 forbids (and CR, which parsers turn into LF) written as Excel's
// _xHHHH_ escapes; a literal _xHHHH_ in the text is itself escaped so it reads back as
// written. Never hand such text to pugixml unescaped: it writes \x01 as "&#01;", which no
// reader accepts.
//
//   out += "<t>" + xml_text("a < b\r\n") + "</t>";   // <t>a &lt; b_x000D_\n</t>
#include <string>
#include <string_view>

namespace qumbrel::ooxml {

std::string xml_text(std::string_view utf8);
std::string xml_attribute(std::string_view utf8);
// True when the text needs xml:space="preserve" (blanks at either end, a line break).
bool needs_preserve(std::string_view utf8);

}  // namespace qumbrel::ooxml
