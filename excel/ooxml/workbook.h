#pragma once
// An OOXML workbook (.xlsx, .xlsm, .xltx, .xltm) as the template reports see it: its sheets
// in tab order, its defined names with their scope and the cell they point at, and values
// written into cells. Saving writes a new package in which only the sheets that got values
// (and, when a formula was overwritten, the workbook part and the calculation chain) change;
// every other part is copied byte for byte.
//
//   Workbook book = Workbook::open("/t/template.xltx");        // throws PackageError
//   if (const DefinedName* n = book.find_name("filename", 0))
//       book.set(*n->sheet, n->cell.row, n->cell.col, std::string("a.oge"));
//   book.save_as("/out/report.xlsx");                           // template type converted
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "excel/ooxml/sheet_filler.h"
#include "excel/ooxml/styles.h"
#include "excel/ooxml/zip_package.h"

namespace qumbrel::ooxml {

inline constexpr std::uint32_t kMaxRows = 1'048'576;
inline constexpr std::uint32_t kMaxColumns = 16'384;

struct Sheet {
    std::string name;
    std::string part;       // package part name, e.g. "xl/worksheets/sheet1.xml"
    bool worksheet = true;  // chart, dialog and macro sheets count in the tab order too
};

struct CellAddress {
    std::uint32_t row = 0;  // from 1
    std::uint32_t col = 0;  // from 1
};

struct DefinedName {
    std::string name;                  // as stored, without a sheet prefix
    std::optional<std::size_t> scope;  // tab position (from 0) of a sheet-scoped name
    bool hidden = false;
    std::string refersTo;              // the reference text
    std::optional<std::size_t> sheet;  // the sheet the reference points at
    CellAddress cell;                  // its first cell
    std::string skipped;               // why the name points at no usable cell ("" if it does)
};

// A value for a cell: a number stays a number, a text stays a text, nothing empties it.
using CellInput = std::variant<std::monostate, double, std::string>;

// What a save did beyond writing values.
struct SaveReport {
    std::size_t cellsWritten = 0;
    std::size_t cellsDropped = 0;  // beyond the sheet's last row or column (at set)
    std::size_t notesDeleted = 0;
    bool formulasOverwritten = false;
    std::vector<std::string> warnings;
};

class Workbook {
  public:
    static Workbook open(const std::string& path);
    // A new workbook of one empty worksheet, written to `path` and opened: the six parts
    // every reader needs (content types, relationships, workbook, sheet, styles).
    static Workbook create(const std::string& path, const std::string& sheetName);
    Workbook(Workbook&&) noexcept;
    Workbook& operator=(Workbook&&) noexcept;
    ~Workbook();

    const std::vector<Sheet>& sheets() const { return sheets_; }
    const std::vector<DefinedName>& names() const { return names_; }
    // The tab position of a sheet by its name, compared without regard to case.
    std::optional<std::size_t> sheet_by_name(std::string_view name) const;
    // A usable name as a reference on `onSheet` resolves it: the name scoped to that sheet
    // first, then the global one. nullptr when neither exists or it points at no cell.
    const DefinedName* find_name(std::string_view name, std::size_t onSheet) const;

    // Writes are kept compactly and applied at the save; a later write to the same cell
    // wins. `sheet` is a tab position of a worksheet. A cell beyond the sheet's last row
    // or column is dropped (counted in the next save's report).
    void set(std::size_t sheet, std::uint32_t row, std::uint32_t col, CellInput value);

    // Shows the numbers of a range by a format code ("0.00", "hh:mm:ss", "@", ...);
    // the cells keep their content. PackageError for a range of more than 4,194,304 cells.
    void number_format(std::size_t sheet, CellAddress from, CellAddress to, std::string_view code);

    // A global defined name for a reference in R1C1 notation, "=Sheet1!R3C2" (a quoted
    // sheet name as in A1 references). PackageError for a name Excel does not take or a
    // reference to no cell of a worksheet.
    void add_name(const std::string& name, std::string_view refersToR1C1);

    // Deletes the cell's comment (legacy note or thread) at the save; a cell without one
    // is no error.
    void delete_comment(std::size_t sheet, std::uint32_t row, std::uint32_t col);

    // A new package at `out`; its workbook type follows out's extension (.xlsx, .xlsm).
    SaveReport save_as(const std::string& out) const;

  private:
    explicit Workbook(ZipPackage package);
    void read_structure();
    Styles& styles();

    ZipPackage package_;
    std::string workbookPart_;
    std::vector<Sheet> sheets_;
    std::vector<DefinedName> names_;
    // By tab position; sorted and compacted by a save, which keeps their meaning.
    mutable std::vector<std::vector<SheetFiller::Cell>> writes_;
    std::vector<std::vector<CellAddress>> uncommented_;  // by tab position
    std::vector<std::string> texts_;
    std::uint32_t order_ = 0;
    std::string stylesPart_;
    std::unique_ptr<Styles> styles_;
    std::vector<DefinedName> added_;  // names to put into the workbook part
    std::size_t dropped_ = 0;

    friend class SheetFiller;
};

// Whether Excel takes `name` as a defined name: at most 255 characters, a letter, "_" or
// "\\" first, no blanks, not TRUE or FALSE, no A1 reference and nothing that begins with
// an R1C1 reference ("R1C2", "A1", "R2D2" and "C" are no names).
bool valid_defined_name(std::string_view name);

// The first cell of an A1 reference "Sheet!$A$1" or "'O''Brien'!A1:B2": the sheet name
// and the cell; false for every other form (#REF!, constants, formulas, several areas,
// whole rows or columns, 3-D and external references).
bool parse_reference(std::string_view text, std::string& sheet, CellAddress& cell);

}  // namespace qumbrel::ooxml
