#pragma once
// ExcelFile: writes a BIFF2 worksheet stream record by record (no compound document, one
// sheet). Usage: CreateFile, SetFont, page settings, one WriteValue per cell in report
// order, CloseFile. Records are written when called, in call order.
//
//   ExcelFile xls;
//   xls.CreateFile("/tmp/a.xls");
//   xls.SetFont("Arial", 10, 0);
//   xls.WriteValue(1, 0, 3, 0, 1, 1, 2.5, 4);  // NUMBER, right-aligned, "#,##0.00"
//   if (xls.CloseFile() != 0) { /* the file is incomplete */ }
//
// Every operation traps its own failures: it writes nothing further and returns the error
// number (6 overflow, 13 type mismatch, 52 no open file, 61/57 write failure, 70/75/76 open
// failure), else 0. Rows and columns count from 1 at the interface (see file_row_col).
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reports/cellvalue.h"
#include "reports/output.h"

namespace qumbrel {

// How cell values turn into numbers and texts. The defaults use the C conventions; the
// value sink installs the regional ones of the run.
struct CellConversions {
    // CDbl of a text; nullopt where it is not a number.
    std::function<std::optional<double>(std::string_view)> text_to_number;
    // Text of a date.
    std::function<std::string(const DateTime&)> date_to_text;
    std::string decimal = ".";

    static CellConversions c_locale();
};

// The row and column rule: up to 32767 the value minus 1, above it the value minus 65536,
// as a 16-bit two's complement number. Throws VbError 6 outside the 16-bit range.
std::int16_t file_row_col(std::int32_t value);
// The same rule without the throw: nullopt outside the 16-bit range. Inline: called
// twice for every cell.
inline std::optional<std::int16_t> checked_row_col(std::int32_t value) noexcept {
    const std::int64_t v = value <= 32767 ? std::int64_t{value} - 1 : std::int64_t{value} - 65536;
    if (v < -32768 || v > 32767) return std::nullopt;
    return static_cast<std::int16_t>(v);
}

class ExcelFile {
  public:
    explicit ExcelFile(CellConversions conv = CellConversions::c_locale(),
                       std::shared_ptr<FileIo> io = nullptr);

    // Tests route the output through a FileIo of their own.
    void set_io(std::shared_ptr<FileIo> io) { out_.set_io(std::move(io)); }
    void set_conversions(CellConversions conv) { conv_ = std::move(conv); }

    CellValue CreateFile(const std::string& FileName);
    std::int16_t CloseFile();
    std::int16_t InsertHorizPageBreak(std::int32_t lRow);
    std::int16_t WriteValue(std::int32_t ValueType, std::int32_t CellFontUsed,
                            std::int32_t Alignment, std::int32_t HiddenLocked, std::int32_t lRow,
                            std::int32_t lCol, const CellValue& Value, std::int32_t CellFormat);
    std::int16_t SetMargin(std::int32_t Margin, double MarginValue);
    CellValue SetColumnWidth(std::uint8_t FirstColumn, std::uint8_t LastColumn,
                             std::int16_t WidthValue);
    std::int16_t SetFont(std::string_view FontName, std::int16_t FontHeight,
                         std::int32_t FontFormat);
    std::int16_t SetHeader(std::string_view HeaderText);
    std::int16_t SetFooter(std::string_view FooterText);
    std::int16_t SetFilePassword(std::string_view PasswordText);
    std::int16_t PrintGridLines(bool NewValue);
    std::int16_t ProtectSpreadsheet(bool NewValue);
    std::int16_t WriteDefaultFormats();
    static std::string MKI(std::int16_t Value);
    CellValue SetDefaultRowHeight(std::int16_t HeightValue);
    CellValue SetRowHeight(std::int32_t lRow, std::int16_t HeightValue);

    // 0 when no file was ever opened; stays set after CloseFile, as the file number does.
    int file_number() const { return fileNumber_; }

    // The format table of WriteDefaultFormats, index = CellFormat.
    static const std::vector<std::string>& default_formats();

  private:
    template <class Fn>
    std::int16_t trapped(Fn&& fn) noexcept;
    void put(const void* data, std::size_t size) { out_.write(data, size); }
    void require_open() const;

    CellConversions conv_;
    OutputFile out_;
    int fileNumber_ = 0;
    // Element 0 is a spare that is never written; the rows are 16-bit as stored.
    std::vector<std::int16_t> pageBreaks_{0};
    std::int16_t pageBreakCount_ = 0;
};

}  // namespace qumbrel
