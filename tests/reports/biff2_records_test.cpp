// Every BIFF2 record writer against its literal bytes.
#include "reports/biff2.h"

#include <gtest/gtest.h>

#include <array>

#include "test_util.h"

namespace qumbrel {
namespace {

TEST(Biff2Records, EachRecordByteForByte) {
    const biff2::CellAttributes a{64, 4 + 128, 3};
    const std::array<std::int16_t, 3> rows{9, 29, 49};  // written in the order given
    const std::pair<std::string, const char*> cases[] = {
        {test::hex(biff2::bof()), "09 00 04 00 02 00 0A 00"},  // type 10
        {test::hex(biff2::eof()), "0A 00 00 00"},
        {test::hex(biff2::format_count(23)), "1F 00 02 00 17 00"},
        {test::hex(biff2::format("0.00")), "1E 00 05 00 04 30 2E 30 30"},
        {test::hex(biff2::format("")), "1E 00 01 00 00"},
        // Arial, 10 pt (200 twentieths), bold + italic.
        {test::hex(biff2::font(200, 3, "Arial")), "31 00 0A 00 C8 00 03 00 05 41 72 69 61 6C"},
        {test::hex(biff2::integer(1, 2, a, 300)), "02 00 09 00 01 00 02 00 40 84 03 2C 01"},
        {test::hex(biff2::integer(0, 0, {}, -5)), "02 00 09 00 00 00 00 00 00 00 00 FB FF"},
        // The second integer form states nine bytes and writes fifteen.
        {test::hex(biff2::integer_long(0, 1, {}, -2)),
         "02 00 09 00 00 00 01 00 00 00 00 FE FF FF FF"},
        {test::hex(biff2::number(0x1234, 0x00FF, a, 1.5)),
         "03 00 0F 00 34 12 FF 00 40 84 03 00 00 00 00 00 00 F8 3F"},
        {test::hex(biff2::label(3, 0, {0, 0, 1}, "Ab")),
         "04 00 0A 00 03 00 00 00 00 00 01 02 41 62"},
        {test::hex(biff2::label(0, 0, {}, "")), "04 00 08 00 00 00 00 00 00 00 00 00"},
        {test::hex(biff2::margin(biff2::id::kLeftMargin, 0.75)),
         "26 00 08 00 00 00 00 00 00 00 E8 3F"},
        {test::hex(biff2::margin(biff2::id::kBottomMargin, 1.0)),
         "29 00 08 00 00 00 00 00 00 00 F0 3F"},
        {test::hex(biff2::column_width(0, 3, 12 * 256)), "24 00 04 00 00 03 00 0C"},
        {test::hex(biff2::header("&P")), "14 00 03 00 02 26 50"},
        {test::hex(biff2::footer("x")), "15 00 02 00 01 78"},
        {test::hex(biff2::file_pass("pw")), "2F 00 02 00 70 77"},
        {test::hex(biff2::print_grid_lines(true)), "2B 00 02 00 01 00"},
        {test::hex(biff2::print_grid_lines(false)), "2B 00 02 00 00 00"},
        {test::hex(biff2::protect(true)), "12 00 02 00 01 00"},
        {test::hex(biff2::default_row_height(255)), "25 00 02 00 FF 00"},
        {test::hex(biff2::row(4, 300)),
         "08 00 10 00 04 00 00 00 00 01 2C 01 00 00 00 00 00 00 00 00"},
        {test::hex(biff2::horizontal_page_breaks(rows)), "1B 00 08 00 03 00 09 00 1D 00 31 00"},
        {test::hex(biff2::horizontal_page_breaks({})), "1B 00 02 00 00 00"},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
}

}  // namespace
}  // namespace qumbrel
