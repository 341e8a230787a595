#pragma once
// Writes values into a worksheet part by splicing its <sheetData>: the bytes before and
// after it stay as they are (but for a true <dimension>), the template's rows are parsed
// (a template's are few), merged with the new cells and written back as text, rows and
// cells in ascending order and every cell with its address. The new cells are generated
// as text, never as a DOM, so a million of them cost their text and little more.
//
// A written cell keeps its style; a new one takes its row's style when the row has a
// custom format, else its column's. A format set on a cell (before or after its value)
// replaces the style and keeps the content. A formula in a written cell is removed; when it was
// the master of a shared formula, the cells sharing it keep their last values (a
// warning says so).
//
//   SheetFiller f(sheetXml, "xl/worksheets/sheet1.xml");
//   std::string filled = f.fill(cells, texts);
//   FilledPart big = f.fill_part(cells, texts, 8 << 20);  // spilled to a temporary file

#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace qumbrel::ooxml {

// A filled part: its bytes, or, when it grew past the spill size, an anonymous temporary
// file holding them (rewound), so that a sheet of a million rows is never held whole.
struct FilledPart {
    std::string bytes;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file{nullptr, &std::fclose};
};

class SheetFiller {
  public:
    // 24 bytes: a million of them are the largest thing a fill holds beside its text.
    struct Cell {
        std::uint32_t row;
        std::uint32_t order;  // of equal cells the one with the highest order wins
        std::uint32_t style;  // a cell format index + 1 set on the cell; 0 none
        std::uint16_t col;
        std::uint8_t kind;  // 0 empty, 1 number, 2 text, 3 format only (content kept)
        double value;       // the number, or the text's index into the texts
    };
    static constexpr std::uint8_t kFormatOnly = 3;

    SheetFiller(std::string xml, std::string part);

    // The filled part. `cells` (all within the sheet's rows and columns) is sorted and
    // rid of overwritten writes in place; `texts` holds the text cells' texts. Throws
    // PackageError for a sheet whose XML is damaged.
    std::string fill(std::vector<Cell>& cells, const std::vector<std::string>& texts) {
        return fill_part(cells, texts, std::numeric_limits<std::size_t>::max()).bytes;
    }
    // The same, spilled to a temporary file once it holds more than `spillAbove` bytes.
    FilledPart fill_part(std::vector<Cell>& cells, const std::vector<std::string>& texts,
                         std::size_t spillAbove);

    std::size_t written() const { return written_; }
    bool formulas_overwritten() const { return formulasOverwritten_; }
    const std::vector<std::string>& warnings() const { return warnings_; }

  private:
    std::string xml_;
    std::string part_;
    std::size_t written_ = 0;
    bool formulasOverwritten_ = false;
    std::vector<std::string> warnings_;
};

// "A", "Z", "AA", ... for columns from 1.
std::string column_letters(std::uint32_t col);

}  // namespace qumbrel::ooxml
