#pragma once
// BIFF2 worksheet records, one writer per record. Each returns the record's bytes: id,
// length and data, little-endian, unpadded. Arguments are already in their file form
// (0-based 16-bit rows and columns, attribute bytes, cp1252 text of at most 255 bytes);
// range checks belong to ExcelFile, which raises its failures before a record is built.
#include <array>
#include <bit>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qumbrel::biff2 {

namespace id {
inline constexpr std::uint16_t kRow = 8;
inline constexpr std::uint16_t kBof = 9;
inline constexpr std::uint16_t kEof = 10;
inline constexpr std::uint16_t kInteger = 2;
inline constexpr std::uint16_t kNumber = 3;
inline constexpr std::uint16_t kLabel = 4;
inline constexpr std::uint16_t kProtect = 18;
inline constexpr std::uint16_t kHeader = 20;
inline constexpr std::uint16_t kFooter = 21;
inline constexpr std::uint16_t kHorizontalPageBreaks = 27;
inline constexpr std::uint16_t kFormat = 30;
inline constexpr std::uint16_t kFormatCount = 31;
inline constexpr std::uint16_t kColWidth = 36;
inline constexpr std::uint16_t kDefaultRowHeight = 37;
inline constexpr std::uint16_t kLeftMargin = 38;
inline constexpr std::uint16_t kRightMargin = 39;
inline constexpr std::uint16_t kTopMargin = 40;
inline constexpr std::uint16_t kBottomMargin = 41;
inline constexpr std::uint16_t kPrintGridLines = 43;
inline constexpr std::uint16_t kFilePass = 47;
inline constexpr std::uint16_t kFont = 49;
}  // namespace id

// The three attribute bytes of a cell: protection, format index + font, alignment.
struct CellAttributes {
    std::uint8_t hiddenLocked = 0;
    std::uint8_t formatAndFont = 0;
    std::uint8_t alignment = 0;
};

// BOF: version 2, type 10 (decimal ten, as the file has always carried it).
std::array<std::uint8_t, 8> bof();
// EOF: no data.
std::array<std::uint8_t, 4> eof();
// FORMATCOUNT: the count it states (23 for a table of 24 formats).
std::array<std::uint8_t, 6> format_count(std::uint16_t count);
// FORMAT: length byte and text.
std::string format(std::string_view text);
// FONT: height in twentieths of a point, attribute byte, 0, length byte, name.
std::string font(std::uint16_t height, std::uint8_t attributes, std::string_view name);
namespace detail {
// Little-endian stores at fixed offsets; the cell records are on the hot path.
inline void le16(std::uint8_t* p, std::uint16_t v) {
    p[0] = static_cast<std::uint8_t>(v);
    p[1] = static_cast<std::uint8_t>(v >> 8);
}
inline void cell_header(std::uint8_t* p, std::uint16_t id, std::uint16_t length, std::uint16_t row,
                        std::uint16_t col, CellAttributes a) {
    le16(p, id);
    le16(p + 2, length);
    le16(p + 4, row);
    le16(p + 6, col);
    p[8] = a.hiddenLocked;
    p[9] = a.formatAndFont;
    p[10] = a.alignment;
}
}  // namespace detail

// INTEGER: cell header and an unsigned-as-read 16-bit value.
inline std::array<std::uint8_t, 13> integer(std::uint16_t row, std::uint16_t col, CellAttributes a,
                                            std::int16_t value) {
    std::array<std::uint8_t, 13> b;
    detail::cell_header(b.data(), id::kInteger, 9, row, col, a);
    detail::le16(b.data() + 11, static_cast<std::uint16_t>(value));
    return b;
}
// The second integer form: id 2 stating 9 bytes, followed by the value sign-extended to 32
// bits (15 bytes in all). Kept for the interface; readers cannot follow it.
std::array<std::uint8_t, 15> integer_long(std::uint16_t row, std::uint16_t col, CellAttributes a,
                                          std::int16_t value);
// NUMBER: cell header and an IEEE double.
inline std::array<std::uint8_t, 19> number(std::uint16_t row, std::uint16_t col, CellAttributes a,
                                           double value) {
    std::array<std::uint8_t, 19> b;
    detail::cell_header(b.data(), id::kNumber, 15, row, col, a);
    const auto bits = std::bit_cast<std::uint64_t>(value);
    for (int i = 0; i < 8; ++i) b[11 + i] = static_cast<std::uint8_t>(bits >> (8 * i));
    return b;
}
// LABEL: cell header, length byte, text.
std::string label(std::uint16_t row, std::uint16_t col, CellAttributes a, std::string_view text);
// LEFT/RIGHT/TOP/BOTTOMMARGIN (or whatever id the caller gives): a double in inches.
std::array<std::uint8_t, 12> margin(std::uint16_t recordId, double inches);
// COLWIDTH: first and last column (0-based) and the width in 1/256 of a character.
std::array<std::uint8_t, 8> column_width(std::uint8_t first, std::uint8_t last,
                                         std::uint16_t width);
// HEADER and FOOTER: length byte and text.
std::string header(std::string_view text);
std::string footer(std::string_view text);
// FILEPASS: the text as it is, without length byte.
std::string file_pass(std::string_view text);
// PRINTGRIDLINES and PROTECT: 1 or 0.
std::array<std::uint8_t, 6> print_grid_lines(bool on);
std::array<std::uint8_t, 6> protect(bool on);
// DEFAULTROWHEIGHT in twentieths of a point.
std::array<std::uint8_t, 6> default_row_height(std::uint16_t height);
// ROW: row, columns 0 to 256, height, no default attributes.
std::array<std::uint8_t, 20> row(std::uint16_t row, std::uint16_t height);
// HORIZONTALPAGEBREAKS: count and rows, in the order given.
std::string horizontal_page_breaks(std::span<const std::int16_t> rows);

}  // namespace qumbrel::biff2
