// The BIFF2 record writers byte for byte, and ExcelFile: the file it writes, the row and
// column rule, the failures that leave a cell out, and hostile cells.
#include "reports/excelfile.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <random>

#include "frame/errors.h"
#include "reports/biff2.h"
#include "test_util.h"

namespace qumbrel {
namespace {

using test::hex;

// BOF, FORMATCOUNT, FORMAT, EOF and the second integer form: in the ExcelFile tests below.
TEST(Biff2Records, EachRecordByteForByte) {
    const biff2::CellAttributes a{64, 4 + 128, 3};
    const std::array<std::int16_t, 3> rows{9, 29, 49};  // written in the order given
    const std::pair<std::string, const char*> cases[] = {
        // Arial, 10 pt (200 twentieths), bold + italic.
        {hex(biff2::font(200, 3, "Arial")), "31 00 0A 00 C8 00 03 00 05 41 72 69 61 6C"},
        {hex(biff2::integer(1, 2, a, 300)), "02 00 09 00 01 00 02 00 40 84 03 2C 01"},
        {hex(biff2::number(0x1234, 0x00FF, a, 1.5)),
         "03 00 0F 00 34 12 FF 00 40 84 03 00 00 00 00 00 00 F8 3F"},
        {hex(biff2::label(3, 0, {0, 0, 1}, "Ab")), "04 00 0A 00 03 00 00 00 00 00 01 02 41 62"},
        {hex(biff2::margin(biff2::id::kLeftMargin, 0.75)), "26 00 08 00 00 00 00 00 00 00 E8 3F"},
        {hex(biff2::column_width(0, 3, 12 * 256)), "24 00 04 00 00 03 00 0C"},
        {hex(biff2::header("&P")), "14 00 03 00 02 26 50"},
        {hex(biff2::footer("x")), "15 00 02 00 01 78"},
        {hex(biff2::file_pass("pw")), "2F 00 02 00 70 77"},
        {hex(biff2::print_grid_lines(true)), "2B 00 02 00 01 00"},
        {hex(biff2::protect(true)), "12 00 02 00 01 00"},
        {hex(biff2::default_row_height(255)), "25 00 02 00 FF 00"},
        {hex(biff2::row(4, 300)), "08 00 10 00 04 00 00 00 00 01 2C 01 00 00 00 00 00 00 00 00"},
        {hex(biff2::horizontal_page_breaks(rows)), "1B 00 08 00 03 00 09 00 1D 00 31 00"},
        {hex(biff2::horizontal_page_breaks({})), "1B 00 02 00 00 00"},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
}

constexpr std::size_t kEmptySheetSize = 394;  // BOF 8 + FORMATCOUNT 6 + 24 FORMAT 376 + EOF 4

class ExcelFileTest : public ::testing::Test {
  protected:
    // Writes a sheet with `body` between CreateFile and CloseFile and returns the records
    // after the format table (font, cells, page breaks), checked by the strict walker.
    template <class Body>
    std::vector<test::Record> records(Body&& body) {
        const std::string path = dir.file("t.xls");
        EXPECT_EQ(std::get<std::int32_t>(xls.CreateFile(path)), 0);
        body(xls);
        EXPECT_EQ(xls.CloseFile(), 0);
        std::string error;
        auto recs = test::walk_biff2(testing::read_file(path), error);
        EXPECT_EQ(error, "");
        EXPECT_GE(recs.size(), 25u);
        recs.erase(recs.begin(), recs.begin() + std::min<std::size_t>(25, recs.size()));
        return recs;
    }

    testing::TempDir dir;
    ExcelFile xls;
};

TEST_F(ExcelFileTest, EmptySheetIsBofFormatTableAndEof) {
    const auto recs = records([](ExcelFile&) {});
    const std::string file = testing::read_file(dir.file("t.xls"));
    ASSERT_EQ(file.size(), kEmptySheetSize);
    EXPECT_EQ(hex(file.substr(0, 14)), "09 00 04 00 02 00 0A 00 1F 00 02 00 17 00");  // BOF type 10
    EXPECT_EQ(hex(file.substr(14, 12)), "1E 00 08 00 07 47 65 6E 65 72 61 6C");       // "General"
    EXPECT_EQ(hex(file.substr(file.size() - 10)), "1E 00 02 00 01 40 0A 00 00 00");   // "@", EOF
    EXPECT_TRUE(recs.empty());
}

TEST_F(ExcelFileTest, RowAndColumnRule) {
    EXPECT_EQ(file_row_col(98303), 32767);
    EXPECT_EQ(static_cast<std::uint16_t>(file_row_col(0)), 65535);
    EXPECT_THROW(file_row_col(98304), VbError);
    EXPECT_THROW(file_row_col(-32768), VbError);
    const auto recs = records([](ExcelFile& x) {
        EXPECT_EQ(x.WriteValue(1, 0, 0, 0, 32767, 1, 1.0, 0), 0);
        EXPECT_EQ(x.WriteValue(1, 0, 0, 0, 32768, 1, 1.0, 0), 0);
        EXPECT_EQ(x.WriteValue(1, 0, 0, 0, 65536, 70000, 1.0, 0), 0);
        EXPECT_EQ(x.WriteValue(1, 0, 0, 0, 98304, 1, 1.0, 0), errnum::kOverflow);
        EXPECT_EQ(x.WriteValue(2, 0, 1, 0, 1, 98304, std::string("x"), 0), errnum::kOverflow);
    });
    // Row 32767 is file row 32766 but row 32768 is file row 32768: file row 32767 is
    // unreachable. Row 65536 wraps to the top.
    ASSERT_EQ(recs.size(), 3u);
    EXPECT_EQ(hex(recs[0].data.substr(0, 4)), "FE 7F 00 00");
    EXPECT_EQ(hex(recs[1].data.substr(0, 4)), "00 80 00 00");
    EXPECT_EQ(hex(recs[2].data.substr(0, 4)), "00 00 70 11");
}

TEST_F(ExcelFileTest, FailuresLeaveTheCellOut) {
    const auto recs = records([](ExcelFile& x) {
        EXPECT_EQ(x.WriteValue(2, 0, 1, 0, 1, 1, std::string(255, 'a'), 0), 0);
        EXPECT_EQ(x.WriteValue(2, 0, 1, 0, 1, 2, std::string(256, 'a'), 0), errnum::kOverflow);
        EXPECT_EQ(x.WriteValue(2, 0, 1, 0, 1, 3, std::string(), 0), 0);
        EXPECT_EQ(x.WriteValue(0, 0, 3, 0, 2, 1, std::int32_t{32767}, 0), 0);
        EXPECT_EQ(x.WriteValue(0, 0, 3, 0, 2, 2, std::int32_t{32768}, 0), errnum::kOverflow);
        EXPECT_EQ(x.WriteValue(0, 0, 3, 0, 2, 3, 32767.5, 0), errnum::kOverflow);  // rounds up
        EXPECT_EQ(x.WriteValue(0, 0, 3, 0, 2, 4, std::string("abc"), 0), errnum::kTypeMismatch);
        EXPECT_EQ(x.WriteValue(1, 0, 3, 0, 2, 5, std::string(""), 4), errnum::kTypeMismatch);
        EXPECT_EQ(x.WriteValue(1, 0, 3, 0, 2, 6, std::string(" 2.5 "), 4), 0);
        EXPECT_EQ(x.WriteValue(1, 192, 3, 0, 2, 7, 1.0, 64), errnum::kOverflow);  // 256
        EXPECT_EQ(x.WriteValue(1, 0, 256, 0, 2, 8, 1.0, 0), errnum::kOverflow);
        EXPECT_EQ(x.WriteValue(1, 0, 0, -1, 2, 9, 1.0, 0), errnum::kOverflow);
        EXPECT_EQ(x.WriteValue(1, 192, 255, 192, 2, 10, 1.0, 63), 0);
        EXPECT_EQ(x.WriteValue(4, 0, 0, 0, 2, 11, 1.0, 0), 0);  // no such type: nothing
        EXPECT_EQ(x.WriteValue(2, 0, 1, 0, 3, 1, std::string(255, '\xC3'), 0), 0);  // bad UTF-8
    });
    ASSERT_EQ(recs.size(), 6u);
    EXPECT_EQ(recs[0].data.size(), 7u + 1 + 255);
    EXPECT_EQ(hex(recs[1].data), "00 00 02 00 00 00 01 00");  // empty label, length byte 0
    EXPECT_EQ(hex(recs[2].data), "01 00 00 00 00 00 03 FF 7F");
    EXPECT_EQ(hex(recs[3].data), "01 00 05 00 00 04 03 00 00 00 00 00 00 04 40");
    EXPECT_EQ(hex(recs[4].data.substr(0, 7)), "01 00 09 00 C0 FF FF");
    EXPECT_EQ(recs[5].data.size(), 7u + 1 + 255);
}

// It states nine bytes and writes fifteen.
TEST_F(ExcelFileTest, SecondIntegerFormIsWrittenAsItStands) {
    xls.CreateFile(dir.file("t3.xls"));
    EXPECT_EQ(xls.WriteValue(3, 0, 0, 0, 1, 1, std::int32_t{-2}, 0), 0);
    xls.CloseFile();
    EXPECT_EQ(hex(testing::read_file(dir.file("t3.xls")).substr(kEmptySheetSize - 4)),
              "02 00 09 00 00 00 00 00 00 00 00 FE FF FF FF 0A 00 00 00");
}

TEST_F(ExcelFileTest, PageBreaksAreSortedAtClose) {
    auto recs = records([](ExcelFile& x) {
        for (int row : {50, 10, 30, 10}) EXPECT_EQ(x.InsertHorizPageBreak(row), 0);  // 10 twice
        EXPECT_EQ(x.InsertHorizPageBreak(98304), errnum::kOverflow);
    });
    ASSERT_EQ(recs.size(), 1u);
    EXPECT_EQ(recs[0].id, biff2::id::kHorizontalPageBreaks);
    EXPECT_EQ(hex(recs[0].data), "04 00 09 00 09 00 1D 00 31 00");
    // File row 32768 is negative as a 16-bit number: it takes the spare's place, and the
    // spare's 0 is written instead. The array has always behaved so.
    recs = records([](ExcelFile& x) {
        x.InsertHorizPageBreak(20);
        x.InsertHorizPageBreak(32768);
    });
    ASSERT_EQ(recs.size(), 1u);
    EXPECT_EQ(hex(recs[0].data), "02 00 00 00 13 00");
}

TEST_F(ExcelFileTest, AnExistingFileIsReplaced) {
    const std::string path = dir.file("same.xls");
    testing::write_file(path, std::string(5000, 'x'));
    xls.CreateFile(path);
    xls.InsertHorizPageBreak(3);
    EXPECT_EQ(xls.CloseFile(), 0);
    EXPECT_GT(std::filesystem::file_size(path), kEmptySheetSize);
    EXPECT_EQ(xls.CloseFile(), errnum::kBadFileNameOrNumber);  // closed file: harmless
    // The same object writes the next report: replaced, not appended, page breaks gone.
    xls.CreateFile(path);
    EXPECT_EQ(xls.CloseFile(), 0);
    EXPECT_EQ(std::filesystem::file_size(path), kEmptySheetSize);
}

TEST_F(ExcelFileTest, RecordWalkerRejectsWhatNoReaderChecks) {
    records([](ExcelFile& x) { x.WriteValue(2, 0, 1, 0, 1, 1, std::string("abc"), 0); });
    const std::string good = testing::read_file(dir.file("t.xls"));
    std::string label = good, bof = good, error;
    label[good.size() - 4 - 4] = 4;  // LABEL length byte says 4 for "abc"
    bof[6] = 0x10;                   // the published BOF type is not ours
    for (const auto& [bad, why] : {std::pair{bof, "no BOF"},
                                   {good + '\0', "bytes after EOF"},
                                   {label, "record 4 has a bad length"},
                                   {good.substr(0, good.size() - 4), "without EOF"}}) {
        test::walk_biff2(bad, error);
        EXPECT_NE(error.find(why), std::string::npos) << why << ": " << error;
    }
}

TEST(ExcelFileHostileCells, AnyCellLeavesAWellFormedFile) {
    // Cells as a damaged file may give them: rows, columns, attributes, values and texts
    // drawn around every limit. Whatever fails must fail whole, so the file always walks
    // cleanly. Type 3 is left out: its record is unreadable by design.
    testing::TempDir dir;
    ExcelFile x;
    std::mt19937 rng(20240102);
    const std::int32_t ints[] = {-70000, -32769, -32768, -1,    0,     1,
                                 63,     64,     192,    255,   256,   32767,
                                 32768,  65535,  65536,  98303, 98304, 1 << 30};
    const auto n = [&] { return ints[rng() % std::size(ints)]; };
    for (int round = 0; round < 20; ++round) {
        x.CreateFile(dir.file("h.xls"));
        for (int i = 0; i < 300; ++i) {
            const std::int32_t type = std::array{-1, 0, 1, 2, 4}[rng() % 5];
            const std::string text(rng() % 300, static_cast<char>('!' + rng() % 200));
            x.WriteValue(type, n(), n(), n(), n(), n(), text, n());
            x.WriteValue(type, 0, 3, 0, n(), n(), n() * 1.5, 4);
            x.WriteValue(type, 0, 3, 0, n(), n(), n(), 0);
            x.InsertHorizPageBreak(n());
        }
        ASSERT_EQ(x.CloseFile(), 0);
        std::string error;
        test::walk_biff2(testing::read_file(dir.file("h.xls")), error);
        ASSERT_EQ(error, "") << "round " << round;
    }
}

}  // namespace
}  // namespace qumbrel
