#include "reports/biff2.h"

#include <bit>
#include <cstring>

namespace qumbrel::biff2 {

namespace {

template <std::size_t N>
struct Fixed {
    std::array<std::uint8_t, N> b{};
    std::size_t at = 0;

    Fixed& u8(std::uint8_t v) {
        b[at++] = v;
        return *this;
    }
    Fixed& u16(std::uint16_t v) {
        b[at++] = static_cast<std::uint8_t>(v & 0xFF);
        b[at++] = static_cast<std::uint8_t>(v >> 8);
        return *this;
    }
    Fixed& u32(std::uint32_t v) {
        for (int i = 0; i < 4; ++i) b[at++] = static_cast<std::uint8_t>(v >> (8 * i));
        return *this;
    }
    Fixed& f64(double v) {
        const auto bits = std::bit_cast<std::uint64_t>(v);
        for (int i = 0; i < 8; ++i) b[at++] = static_cast<std::uint8_t>(bits >> (8 * i));
        return *this;
    }
    Fixed& cell(std::uint16_t id, std::uint16_t length, std::uint16_t row, std::uint16_t col,
                CellAttributes a) {
        return u16(id)
            .u16(length)
            .u16(row)
            .u16(col)
            .u8(a.hiddenLocked)
            .u8(a.formatAndFont)
            .u8(a.alignment);
    }
};

void put_u16(std::string& s, std::uint16_t v) {
    s.push_back(static_cast<char>(v & 0xFF));
    s.push_back(static_cast<char>(v >> 8));
}

std::string counted_text(std::uint16_t recordId, std::string_view text) {
    std::string s;
    s.reserve(5 + text.size());
    put_u16(s, recordId);
    put_u16(s, static_cast<std::uint16_t>(1 + text.size()));
    s.push_back(static_cast<char>(text.size()));
    s.append(text);
    return s;
}

std::array<std::uint8_t, 6> flag_record(std::uint16_t recordId, bool on) {
    return Fixed<6>{}.u16(recordId).u16(2).u16(on ? 1 : 0).b;
}

}  // namespace

std::array<std::uint8_t, 8> bof() {
    return Fixed<8>{}.u16(id::kBof).u16(4).u16(2).u16(10).b;
}

std::array<std::uint8_t, 4> eof() {
    return Fixed<4>{}.u16(id::kEof).u16(0).b;
}

std::array<std::uint8_t, 6> format_count(std::uint16_t count) {
    return Fixed<6>{}.u16(id::kFormatCount).u16(2).u16(count).b;
}

std::string format(std::string_view text) {
    return counted_text(id::kFormat, text);
}

std::string font(std::uint16_t height, std::uint8_t attributes, std::string_view name) {
    std::string s;
    s.reserve(9 + name.size());
    put_u16(s, id::kFont);
    put_u16(s, static_cast<std::uint16_t>(5 + name.size()));
    put_u16(s, height);
    s.push_back(static_cast<char>(attributes));
    s.push_back('\0');
    s.push_back(static_cast<char>(name.size()));
    s.append(name);
    return s;
}

std::array<std::uint8_t, 15> integer_long(std::uint16_t row, std::uint16_t col, CellAttributes a,
                                          std::int16_t value) {
    return Fixed<15>{}
        .cell(id::kInteger, 9, row, col, a)
        .u32(static_cast<std::uint32_t>(static_cast<std::int32_t>(value)))
        .b;
}

std::string label(std::uint16_t row, std::uint16_t col, CellAttributes a, std::string_view text) {
    const auto head =
        Fixed<11>{}.cell(id::kLabel, static_cast<std::uint16_t>(8 + text.size()), row, col, a);
    std::string s;
    s.reserve(12 + text.size());
    s.append(reinterpret_cast<const char*>(head.b.data()), head.b.size());
    s.push_back(static_cast<char>(text.size()));
    s.append(text);
    return s;
}

std::array<std::uint8_t, 12> margin(std::uint16_t recordId, double inches) {
    return Fixed<12>{}.u16(recordId).u16(8).f64(inches).b;
}

std::array<std::uint8_t, 8> column_width(std::uint8_t first, std::uint8_t last,
                                         std::uint16_t width) {
    return Fixed<8>{}.u16(id::kColWidth).u16(4).u8(first).u8(last).u16(width).b;
}

std::string header(std::string_view text) {
    return counted_text(id::kHeader, text);
}

std::string footer(std::string_view text) {
    return counted_text(id::kFooter, text);
}

std::string file_pass(std::string_view text) {
    std::string s;
    s.reserve(4 + text.size());
    put_u16(s, id::kFilePass);
    put_u16(s, static_cast<std::uint16_t>(text.size()));
    s.append(text);
    return s;
}

std::array<std::uint8_t, 6> print_grid_lines(bool on) {
    return flag_record(id::kPrintGridLines, on);
}

std::array<std::uint8_t, 6> protect(bool on) {
    return flag_record(id::kProtect, on);
}

std::array<std::uint8_t, 6> default_row_height(std::uint16_t height) {
    return Fixed<6>{}.u16(id::kDefaultRowHeight).u16(2).u16(height).b;
}

std::array<std::uint8_t, 20> row(std::uint16_t row, std::uint16_t height) {
    return Fixed<20>{}
        .u16(id::kRow)
        .u16(16)
        .u16(row)
        .u16(0)
        .u16(256)
        .u16(height)
        .u16(0)
        .u8(0)
        .u16(0)
        .u8(0)
        .u8(0)
        .u8(0)
        .b;
}

std::string horizontal_page_breaks(std::span<const std::int16_t> rows) {
    std::string s;
    s.reserve(6 + 2 * rows.size());
    put_u16(s, id::kHorizontalPageBreaks);
    put_u16(s, static_cast<std::uint16_t>(2 + 2 * rows.size()));
    put_u16(s, static_cast<std::uint16_t>(rows.size()));
    for (const std::int16_t r : rows) put_u16(s, static_cast<std::uint16_t>(r));
    return s;
}

}  // namespace qumbrel::biff2
