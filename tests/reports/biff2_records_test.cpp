// Every BIFF2 record writer against its literal bytes.
#include "reports/biff2.h"

#include <gtest/gtest.h>

#include <array>

#include "test_util.h"

namespace qumbrel {
namespace {

using test::hex;

TEST(Biff2Records, BofCarriesTypeTenAndEofIsEmpty) {
    EXPECT_EQ(hex(biff2::bof()), "09 00 04 00 02 00 0A 00");
    EXPECT_EQ(hex(biff2::eof()), "0A 00 00 00");
}

TEST(Biff2Records, FormatCountAndFormat) {
    EXPECT_EQ(hex(biff2::format_count(23)), "1F 00 02 00 17 00");
    EXPECT_EQ(hex(biff2::format("0.00")), "1E 00 05 00 04 30 2E 30 30");
    EXPECT_EQ(hex(biff2::format("")), "1E 00 01 00 00");
}

TEST(Biff2Records, Font) {
    // Arial, 10 pt (200 twentieths), bold + italic.
    EXPECT_EQ(hex(biff2::font(200, 3, "Arial")), "31 00 0A 00 C8 00 03 00 05 41 72 69 61 6C");
}

TEST(Biff2Records, CellRecords) {
    const biff2::CellAttributes a{64, 4 + 128, 3};
    EXPECT_EQ(hex(biff2::integer(1, 2, a, 300)), "02 00 09 00 01 00 02 00 40 84 03 2C 01");
    EXPECT_EQ(hex(biff2::integer(0, 0, {}, -5)), "02 00 09 00 00 00 00 00 00 00 00 FB FF");
    EXPECT_EQ(hex(biff2::number(0x1234, 0x00FF, a, 1.5)),
              "03 00 0F 00 34 12 FF 00 40 84 03 00 00 00 00 00 00 F8 3F");
    EXPECT_EQ(hex(biff2::label(3, 0, {0, 0, 1}, "Ab")),
              "04 00 0A 00 03 00 00 00 00 00 01 02 41 62");
    EXPECT_EQ(hex(biff2::label(0, 0, {}, "")), "04 00 08 00 00 00 00 00 00 00 00 00");
}

TEST(Biff2Records, SecondIntegerFormStatesNineBytesAndWritesFifteen) {
    EXPECT_EQ(hex(biff2::integer_long(0, 1, {}, -2)),
              "02 00 09 00 00 00 01 00 00 00 00 FE FF FF FF");
}

TEST(Biff2Records, PageSetup) {
    EXPECT_EQ(hex(biff2::margin(biff2::id::kLeftMargin, 0.75)),
              "26 00 08 00 00 00 00 00 00 00 E8 3F");
    EXPECT_EQ(hex(biff2::margin(biff2::id::kBottomMargin, 1.0)),
              "29 00 08 00 00 00 00 00 00 00 F0 3F");
    EXPECT_EQ(hex(biff2::column_width(0, 3, 12 * 256)), "24 00 04 00 00 03 00 0C");
    EXPECT_EQ(hex(biff2::header("&P")), "14 00 03 00 02 26 50");
    EXPECT_EQ(hex(biff2::footer("x")), "15 00 02 00 01 78");
    EXPECT_EQ(hex(biff2::file_pass("pw")), "2F 00 02 00 70 77");
    EXPECT_EQ(hex(biff2::print_grid_lines(true)), "2B 00 02 00 01 00");
    EXPECT_EQ(hex(biff2::print_grid_lines(false)), "2B 00 02 00 00 00");
    EXPECT_EQ(hex(biff2::protect(true)), "12 00 02 00 01 00");
    EXPECT_EQ(hex(biff2::default_row_height(255)), "25 00 02 00 FF 00");
}

TEST(Biff2Records, RowIsSixteenBytesOfData) {
    EXPECT_EQ(hex(biff2::row(4, 300)),
              "08 00 10 00 04 00 00 00 00 01 2C 01 00 00 00 00 00 00 00 00");
}

TEST(Biff2Records, HorizontalPageBreaksInTheOrderGiven) {
    const std::array<std::int16_t, 3> rows{9, 29, 49};
    EXPECT_EQ(hex(biff2::horizontal_page_breaks(rows)), "1B 00 08 00 03 00 09 00 1D 00 31 00");
    EXPECT_EQ(hex(biff2::horizontal_page_breaks({})), "1B 00 02 00 00 00");
}

}  // namespace
}  // namespace qumbrel
