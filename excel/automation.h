#pragma once
// ExcelAutomation: everything the template reports need of a spreadsheet program, as an
// interface of our own. Failures are VbErrors carrying the numbers the report logic acts
// on: 1004 (no such name, a row past the sheet's end, no such sheet; also what a missing
// macro gives), 462 and 424 (the program has gone). The session of one report lives in the
// program context (ExcelSession).
//
//   ExcelSession& s = ctx.state<ExcelSession>();
//   s.app = make_native_automation();
//   s.alive = true;
//   s.app->open("/out/report.xlsx");
//   const ExcelRange at = s.app->range("filename");     // VbError 1004 when unknown
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace qumbrel {

class PrinterSystem;

// A value for a cell: a number stays a number, a text stays a text.
using ExcelValue = std::variant<std::monostate, double, std::string>;

// A cell: the sheet's tab position and the cell's row and column, all from 1.
struct ExcelRange {
    std::int32_t sheet = 0;
    std::int32_t row = 0;
    std::int32_t column = 0;
};

class ExcelAutomation {
  public:
    virtual ~ExcelAutomation() = default;

    virtual std::string version() = 0;               // Application.version
    virtual void open(const std::string& file) = 0;  // Workbooks.Open, UpdateLinks 0
    virtual void add(const std::optional<std::string>& templateFile) = 0;  // Workbooks.Add
    virtual std::string workbook_name() = 0;                               // ActiveWorkbook.name
    virtual std::int32_t sheet_count() = 0;                                // sheets.Count
    virtual std::string sheet_name(std::int32_t index) = 0;                // sheets(index).name
    virtual void activate_sheet(std::int32_t index) = 0;                   // sheets(index).Activate
    virtual void activate_sheet(const std::string& name) = 0;              // sheets(name).Activate
    virtual std::int32_t active_sheet() = 0;
    // ActiveWorkbook.Names: each name's text as Excel gives it, "Sheet!name" for a name
    // scoped to a sheet.
    virtual std::vector<std::string> names() = 0;
    // Application.Range(name): on the active sheet's scope, then the workbook's.
    virtual ExcelRange range(const std::string& name) = 0;
    // Worksheets(sheet).Range(name).
    virtual ExcelRange sheet_range(std::int32_t sheet, const std::string& name) = 0;
    // Cells(row, column) = value; Range(name).Value = value sets the range's cells.
    virtual void set_cell(const ExcelRange& cell, const ExcelValue& value) = 0;
    virtual void set_range(const std::string& name, const ExcelValue& value) = 0;
    // .Cells.comment.Delete: a cell without a comment may fail; callers ignore that.
    virtual void delete_comment(const ExcelRange& cell) = 0;
    // Names.Add Name, RefersToR1C1.
    virtual void add_name(const std::string& name, const std::string& refersToR1C1) = 0;
    // Selection.NumberFormat on the cells from `from` to `to` of one sheet.
    virtual void number_format(const ExcelRange& from, const ExcelRange& to,
                               const std::string& format) = 0;
    virtual void run_macro(const std::string& macro) = 0;  // Application.Run
    // Workbook.PrintOut and ActiveSheet.PrintOut, on the named printer (Excel prints on the
    // default printer, which the session has just made this one).
    virtual void print_workbook(const std::string& printer) = 0;
    virtual void print_active_sheet(const std::string& printer) = 0;
    virtual void save() = 0;                            // Workbook.Save
    virtual void save_as(const std::string& file) = 0;  // ActiveWorkbook.SaveAs
    virtual void close() = 0;                           // Workbook.Close False
    virtual void quit() = 0;                            // Application.Quit
    // What the program noted beside its work since the last call (a sheet cut to the rows
    // of an .xls workbook, ...), for the log.
    virtual std::vector<std::string> take_warnings() { return {}; }
};

// The session of one report: the program, whether it is still there, and the extension
// of report workbooks (with its dot).
struct ExcelSession {
    std::unique_ptr<ExcelAutomation> app;
    bool alive = false;
    std::string extension;        // excelExtension
    std::int32_t fileFormat = 0;  // excelFileFormat: computed, read by nothing (kept so)
    // bExcelFailed: a report of this conversion took its failure path; the source stays.
    bool failed = false;
    // A print of this report failed: in FDA mode the report is kept, not deleted unprinted.
    bool printFailed = false;
};

// The native binding: OOXML workbooks read and written in process (.xlsx, .xlsm, .xltx,
// .xltm). Legacy .xls/.xlt workbooks, the macro and printing go through the LibreOffice
// binding when it is installed (printed on `printers`); otherwise they fail with 1004 and
// say what to install.
std::unique_ptr<ExcelAutomation> make_native_automation(
    std::shared_ptr<PrinterSystem> printers = nullptr);

}  // namespace qumbrel
