#include "reports/excelfile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <new>

#include "frame/codepage.h"
#include "frame/errors.h"
#include "reports/biff2.h"
#include "reports/numbertext.h"

namespace qumbrel {

namespace {

// More breaks would overflow the 16-bit length of the page-break record.
constexpr std::int16_t kMaxPageBreaks = 16382;

[[noreturn]] void overflow() {
    throw VbError(errnum::kOverflow, "Overflow");
}
[[noreturn]] void type_mismatch() {
    throw VbError(errnum::kTypeMismatch, "Type mismatch");
}

std::int16_t to_i16(std::int64_t v) {
    if (v < -32768 || v > 32767) overflow();
    return static_cast<std::int16_t>(v);
}

std::uint8_t to_byte(std::int64_t v) {
    if (v < 0 || v > 255) overflow();
    return static_cast<std::uint8_t>(v);
}

// CInt: banker's rounding, overflow outside the 16-bit range.
std::int16_t round_i16(double v) {
    const double r = std::nearbyint(v);
    if (!(r >= -32768.0 && r <= 32767.0)) overflow();
    return static_cast<std::int16_t>(r);
}

std::string_view trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

// Texts of the sheet are Windows-1252; the length byte counts its bytes.
std::string sheet_text(std::string_view utf8) {
    bool ascii = true;
    for (const char c : utf8) ascii = ascii && static_cast<unsigned char>(c) < 0x80;
    return ascii ? std::string(utf8) : utf8_to_cp1252(utf8);
}

std::string counted(std::string_view utf8) {
    std::string t = sheet_text(utf8);
    if (t.size() > 255) overflow();
    return t;
}

template <std::size_t N>
std::string_view bytes(const std::array<std::uint8_t, N>& a) {
    return {reinterpret_cast<const char*>(a.data()), N};
}

}  // namespace

CellConversions CellConversions::c_locale() {
    CellConversions c;
    c.text_to_number = [](std::string_view text) -> std::optional<double> {
        const std::string_view t = trim(text);
        double v = 0;
        const auto res = std::from_chars(t.data(), t.data() + t.size(), v);
        if (t.empty() || res.ec != std::errc() || res.ptr != t.data() + t.size()) {
            return std::nullopt;
        }
        return v;
    };
    c.date_to_text = [](const DateTime& d) { return number_text(to_serial(d), "."); };
    return c;
}

std::int16_t file_row_col(std::int32_t value) {
    const auto rc = checked_row_col(value);
    if (!rc) overflow();
    return *rc;
}

ExcelFile::ExcelFile(CellConversions conv, std::shared_ptr<FileIo> io)
    : conv_(std::move(conv)), out_(std::move(io)) {}

template <class Fn>
std::int16_t ExcelFile::trapped(Fn&& fn) noexcept {
    try {
        fn();
        return 0;
    } catch (const VbError& e) {
        return static_cast<std::int16_t>(e.number());
    } catch (const std::bad_alloc&) {
        return static_cast<std::int16_t>(errnum::kOutOfMemory);
    } catch (...) {
        return static_cast<std::int16_t>(errnum::kInvalidArgument);
    }
}

const std::vector<std::string>& ExcelFile::default_formats() {
    static const std::vector<std::string> formats = {
        "General",
        "0",
        "0.00",
        "#,##0",
        "#,##0.00",
        R"(#,##0\ "$";\-#,##0\ "$")",
        R"(#,##0\ "$";[Red]\-#,##0\ "$")",
        R"(#,##0.00\ "$";\-#,##0.00\ "$")",
        R"(#,##0.00\ "$";[Red]\-#,##0.00\ "$")",
        "0%",
        "0.00%",
        "0.00E+00",
        "dd/mm/yy",
        R"(dd/\ mmm\ yy)",
        R"(dd/\ mmm)",
        R"(mmm\ yy)",
        R"(h:mm\ AM/PM)",
        R"(h:mm:ss\ AM/PM)",
        "hh:mm",
        "hh:mm:ss",
        R"(dd/mm/yy\ hh:mm)",
        "##0.0E+0",
        "mm:ss",
        "@",
    };
    return formats;
}

CellValue ExcelFile::CreateFile(const std::string& FileName) {
    return std::int32_t{trapped([&] {
        ++fileNumber_;
        out_.open(FileName);
        put(biff2::bof().data(), 8);
        if (const auto rc = WriteDefaultFormats(); rc != 0)
            throw VbError(rc, "WriteDefaultFormats");
        pageBreaks_.assign(1, 0);
        pageBreakCount_ = 0;
    })};
}

std::int16_t ExcelFile::CloseFile() {
    if (fileNumber_ == 0) return 0;
    return trapped([&] {
        if (pageBreakCount_ > 0) {
            // The spare element takes part in the sort; equal rows stay.
            std::sort(pageBreaks_.begin(), pageBreaks_.end());
            out_.write(biff2::horizontal_page_breaks(
                std::span(pageBreaks_).subspan(1, static_cast<std::size_t>(pageBreakCount_))));
        }
        out_.write(bytes(biff2::eof()));
        out_.close();
    });
}

std::int16_t ExcelFile::InsertHorizPageBreak(std::int32_t lRow) {
    return trapped([&] {
        const std::int16_t row = file_row_col(lRow);
        if (pageBreakCount_ >= kMaxPageBreaks) overflow();
        pageBreaks_.push_back(row);
        ++pageBreakCount_;
    });
}

std::int16_t ExcelFile::WriteValue(std::int32_t ValueType, std::int32_t CellFontUsed,
                                   std::int32_t Alignment, std::int32_t HiddenLocked,
                                   std::int32_t lRow, std::int32_t lCol, const CellValue& Value,
                                   std::int32_t CellFormat) {
    // Every cell past the last addressable row lands here in a long report: answer without
    // the cost of an exception.
    const auto fileRow = checked_row_col(lRow);
    const auto fileCol = checked_row_col(lCol);
    if (!fileRow || !fileCol) return static_cast<std::int16_t>(errnum::kOverflow);
    return trapped([&] {
        const auto row = static_cast<std::uint16_t>(*fileRow);
        const auto col = static_cast<std::uint16_t>(*fileCol);
        if (ValueType < 0 || ValueType > 3) return;
        const biff2::CellAttributes a{
            to_byte(HiddenLocked), to_byte(std::int64_t{CellFormat} + std::int64_t{CellFontUsed}),
            to_byte(Alignment)};
        switch (ValueType) {
            case 1: {
                double v = 0;
                if (const double* d = std::get_if<double>(&Value)) {
                    v = *d;
                } else if (const auto* i = std::get_if<std::int32_t>(&Value)) {
                    v = *i;
                } else if (const auto* s = std::get_if<std::string>(&Value)) {
                    const auto n = conv_.text_to_number(*s);
                    if (!n) type_mismatch();
                    v = *n;
                } else if (const auto* t = std::get_if<DateTime>(&Value)) {
                    v = to_serial(*t);
                }
                put(biff2::number(row, col, a, v).data(), 19);
                return;
            }
            case 0:
            case 3: {
                std::int16_t v = 0;
                if (const auto* i = std::get_if<std::int32_t>(&Value)) {
                    v = to_i16(*i);
                } else if (const double* d = std::get_if<double>(&Value)) {
                    v = round_i16(*d);
                } else if (const auto* s = std::get_if<std::string>(&Value)) {
                    const auto n = conv_.text_to_number(*s);
                    if (!n) type_mismatch();
                    v = round_i16(*n);
                } else if (const auto* t = std::get_if<DateTime>(&Value)) {
                    v = round_i16(to_serial(*t));
                }
                if (ValueType == 0) {
                    put(biff2::integer(row, col, a, v).data(), 13);
                } else {
                    put(biff2::integer_long(row, col, a, v).data(), 15);
                }
                return;
            }
            default: {
                std::string text;
                if (const auto* s = std::get_if<std::string>(&Value)) {
                    text = counted(*s);
                } else if (const auto* i = std::get_if<std::int32_t>(&Value)) {
                    text = std::to_string(*i);
                } else if (const double* d = std::get_if<double>(&Value)) {
                    text = counted(number_text(*d, conv_.decimal));
                } else if (const auto* t = std::get_if<DateTime>(&Value)) {
                    text = counted(conv_.date_to_text(*t));
                }
                out_.write(biff2::label(row, col, a, text));
                return;
            }
        }
    });
}

std::int16_t ExcelFile::SetMargin(std::int32_t Margin, double MarginValue) {
    return trapped([&] {
        const auto recordId = static_cast<std::uint16_t>(to_i16(Margin));
        put(biff2::margin(recordId, MarginValue).data(), 12);
    });
}

CellValue ExcelFile::SetColumnWidth(std::uint8_t FirstColumn, std::uint8_t LastColumn,
                                    std::int16_t WidthValue) {
    return std::int32_t{trapped([&] {
        const std::uint8_t first = to_byte(std::int64_t{FirstColumn} - 1);
        const std::uint8_t last = to_byte(std::int64_t{LastColumn} - 1);
        const auto width = static_cast<std::uint16_t>(to_i16(std::int64_t{WidthValue} * 256));
        put(biff2::column_width(first, last, width).data(), 8);
    })};
}

std::int16_t ExcelFile::SetFont(std::string_view FontName, std::int16_t FontHeight,
                                std::int32_t FontFormat) {
    return trapped([&] {
        const auto height = static_cast<std::uint16_t>(to_i16(std::int64_t{FontHeight} * 20));
        const std::uint8_t attributes = to_byte(FontFormat);
        out_.write(biff2::font(height, attributes, counted(FontName)));
    });
}

std::int16_t ExcelFile::SetHeader(std::string_view HeaderText) {
    return trapped([&] { out_.write(biff2::header(counted(HeaderText))); });
}

std::int16_t ExcelFile::SetFooter(std::string_view FooterText) {
    return trapped([&] { out_.write(biff2::footer(counted(FooterText))); });
}

std::int16_t ExcelFile::SetFilePassword(std::string_view PasswordText) {
    return trapped([&] {
        const std::string text = sheet_text(PasswordText);
        to_i16(static_cast<std::int64_t>(text.size()));
        out_.write(biff2::file_pass(text));
    });
}

std::int16_t ExcelFile::PrintGridLines(bool NewValue) {
    return trapped([&] { put(biff2::print_grid_lines(NewValue).data(), 6); });
}

std::int16_t ExcelFile::ProtectSpreadsheet(bool NewValue) {
    return trapped([&] { put(biff2::protect(NewValue).data(), 6); });
}

std::int16_t ExcelFile::WriteDefaultFormats() {
    return trapped([&] {
        const auto& formats = default_formats();
        // The count states the table's upper bound, one less than the records that follow.
        put(biff2::format_count(static_cast<std::uint16_t>(formats.size() - 1)).data(), 6);
        for (const auto& f : formats) out_.write(biff2::format(f));
    });
}

std::string ExcelFile::MKI(std::int16_t Value) {
    const auto u = static_cast<std::uint16_t>(Value);
    return {static_cast<char>(u & 0xFF), static_cast<char>(u >> 8)};
}

CellValue ExcelFile::SetDefaultRowHeight(std::int16_t HeightValue) {
    return std::int32_t{trapped([&] {
        const auto height = static_cast<std::uint16_t>(to_i16(std::int64_t{HeightValue} * 20));
        put(biff2::default_row_height(height).data(), 6);
    })};
}

CellValue ExcelFile::SetRowHeight(std::int32_t lRow, std::int16_t HeightValue) {
    return std::int32_t{trapped([&] {
        const auto row = static_cast<std::uint16_t>(file_row_col(lRow));
        const auto height = static_cast<std::uint16_t>(to_i16(std::int64_t{HeightValue} * 20));
        put(biff2::row(row, height).data(), 20);
    })};
}

}  // namespace qumbrel
