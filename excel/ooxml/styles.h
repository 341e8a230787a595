#pragma once
// The cell formats of a workbook's styles part: the index of a cell format that shows
// numbers by a format code, added (with the code, when it is no built-in one) when the
// workbook has none yet.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace pugi {
class xml_document;
}

namespace qumbrel::ooxml {

class Styles {
  public:
    Styles(const std::string& xml, std::string part);
    ~Styles();
    Styles(Styles&&) noexcept;
    Styles& operator=(Styles&&) noexcept;

    // The cellXfs index of the default cell format with `code` as its number format.
    std::uint32_t format_index(std::string_view code);
    bool changed() const { return changed_; }
    std::string xml() const;

  private:
    std::unique_ptr<pugi::xml_document> doc_;
    std::string part_;
    bool changed_ = false;
};

// The id of a built-in number format with this code, or -1.
int builtin_format_id(std::string_view code);

}  // namespace qumbrel::ooxml
