// ExcelFile: the file it writes, the row and column rule, the failures that leave a cell
// out, and a write failure at every position of a small report.
#include "reports/excelfile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <random>

#include "frame/errors.h"
#include "reports/biff2.h"
#include "test_util.h"

namespace qumbrel {
namespace {

using test::hex;

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
    EXPECT_EQ(hex(file.substr(0, 14)), "09 00 04 00 02 00 0A 00 1F 00 02 00 17 00");
    EXPECT_EQ(hex(file.substr(14, 12)), "1E 00 08 00 07 47 65 6E 65 72 61 6C");      // "General"
    EXPECT_EQ(hex(file.substr(file.size() - 10)), "1E 00 02 00 01 40 0A 00 00 00");  // "@", EOF
    EXPECT_TRUE(recs.empty());
}

TEST_F(ExcelFileTest, RowAndColumnRule) {
    EXPECT_EQ(file_row_col(1), 0);
    EXPECT_EQ(file_row_col(32767), 32766);
    EXPECT_EQ(static_cast<std::uint16_t>(file_row_col(32768)), 32768);  // 32767 unreachable
    EXPECT_EQ(static_cast<std::uint16_t>(file_row_col(65535)), 65535);
    EXPECT_EQ(file_row_col(65536), 0);  // wraps to the top
    EXPECT_EQ(file_row_col(65537), 1);
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
        EXPECT_EQ(x.WriteValue(-1, 0, 0, 0, 2, 12, 1.0, 0), 0);
    });
    ASSERT_EQ(recs.size(), 5u);
    EXPECT_EQ(recs[0].data.size(), 7u + 1 + 255);
    EXPECT_EQ(hex(recs[1].data), "00 00 02 00 00 00 01 00");  // empty label, length byte 0
    EXPECT_EQ(hex(recs[2].data), "01 00 00 00 00 00 03 FF 7F");
    EXPECT_EQ(hex(recs[3].data), "01 00 05 00 00 04 03 00 00 00 00 00 00 04 40");
    EXPECT_EQ(hex(recs[4].data.substr(0, 7)), "01 00 09 00 C0 FF FF");
}

TEST_F(ExcelFileTest, IntegersRoundToEvenAndConvertDates) {
    const auto recs = records([](ExcelFile& x) {
        x.WriteValue(0, 0, 0, 0, 1, 1, 2.5, 0);
        x.WriteValue(0, 0, 0, 0, 1, 2, 3.5, 0);
        x.WriteValue(0, 0, 0, 0, 1, 3, -5.0, 0);
        x.WriteValue(1, 0, 0, 0, 1, 4, DateTime{1900, 1, 1, 12, 0, 0, 0}, 12);
        x.WriteValue(1, 0, 0, 0, 1, 5, CellValue{}, 0);  // empty reads as 0
    });
    ASSERT_EQ(recs.size(), 5u);
    EXPECT_EQ(hex(recs[0].data.substr(7)), "02 00");
    EXPECT_EQ(hex(recs[1].data.substr(7)), "04 00");
    EXPECT_EQ(hex(recs[2].data.substr(7)), "FB FF");
    EXPECT_EQ(hex(recs[3].data.substr(7)), "00 00 00 00 00 00 04 40");  // serial 2.5
    EXPECT_EQ(hex(recs[4].data.substr(7)), "00 00 00 00 00 00 00 00");
}

TEST_F(ExcelFileTest, SecondIntegerFormIsWrittenAsItStands) {
    xls.CreateFile(dir.file("t3.xls"));
    EXPECT_EQ(xls.WriteValue(3, 0, 0, 0, 1, 1, std::int32_t{-2}, 0), 0);
    xls.CloseFile();
    const std::string file = testing::read_file(dir.file("t3.xls"));
    EXPECT_EQ(hex(file.substr(kEmptySheetSize - 4)),
              "02 00 09 00 00 00 00 00 00 00 00 FE FF FF FF 0A 00 00 00");
}

TEST_F(ExcelFileTest, LabelsAreWindows1252) {
    const auto recs = records([](ExcelFile& x) {
        x.WriteValue(2, 0, 1, 0, 1, 1,
                     std::string("\xE2\x82\xAC 5 \xC2\xB0"
                                 "C"),
                     0);                                                   // € 5 °C
        x.WriteValue(2, 0, 1, 0, 1, 2, std::string("\xE4\xB8\xAD"), 0);    // 中
        x.WriteValue(2, 0, 1, 0, 1, 3, std::string(255, '\xC3') + "", 0);  // bad UTF-8 bytes
        x.WriteValue(2, 0, 1, 0, 1, 4, 1234.5, 0);
        x.WriteValue(2, 0, 1, 0, 1, 5, std::int32_t{-17}, 0);
    });
    ASSERT_EQ(recs.size(), 5u);
    EXPECT_EQ(hex(recs[0].data.substr(7)), "06 80 20 35 20 B0 43");
    EXPECT_EQ(hex(recs[1].data.substr(7)), "01 3F");
    EXPECT_EQ(recs[2].data.size(), 7u + 1 + 255);
    EXPECT_EQ(recs[3].data.substr(8), "1234.5");
    EXPECT_EQ(recs[4].data.substr(8), "-17");
}

TEST_F(ExcelFileTest, PageBreaksAreSortedAtClose) {
    auto recs = records([](ExcelFile& x) {
        EXPECT_EQ(x.InsertHorizPageBreak(50), 0);
        EXPECT_EQ(x.InsertHorizPageBreak(10), 0);
        EXPECT_EQ(x.InsertHorizPageBreak(30), 0);
        EXPECT_EQ(x.InsertHorizPageBreak(10), 0);  // a duplicate stays
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

TEST_F(ExcelFileTest, PageSetupOperations) {
    const auto recs = records([](ExcelFile& x) {
        EXPECT_EQ(x.SetMargin(38, 0.5), 0);
        EXPECT_EQ(std::get<std::int32_t>(x.SetColumnWidth(1, 3, 12)), 0);
        EXPECT_EQ(std::get<std::int32_t>(x.SetColumnWidth(0, 3, 12)), errnum::kOverflow);
        EXPECT_EQ(std::get<std::int32_t>(x.SetColumnWidth(1, 1, 128)), errnum::kOverflow);
        EXPECT_EQ(x.SetHeader("Page &P"), 0);
        EXPECT_EQ(x.SetFooter(std::string(256, 'f')), errnum::kOverflow);
        EXPECT_EQ(x.SetFilePassword("geheim"), 0);
        EXPECT_EQ(x.PrintGridLines(false), 0);
        EXPECT_EQ(x.ProtectSpreadsheet(true), 0);
        EXPECT_EQ(std::get<std::int32_t>(x.SetDefaultRowHeight(12)), 0);
        EXPECT_EQ(std::get<std::int32_t>(x.SetDefaultRowHeight(1639)), errnum::kOverflow);
        EXPECT_EQ(std::get<std::int32_t>(x.SetRowHeight(5, 15)), 0);
        EXPECT_EQ(x.SetFont("Arial", 1639, 0), errnum::kOverflow);
        EXPECT_EQ(x.SetFont("Arial", 10, 256), errnum::kOverflow);
    });
    ASSERT_EQ(recs.size(), 8u);
    EXPECT_EQ(hex(recs[0].data), "00 00 00 00 00 00 E0 3F");
    EXPECT_EQ(hex(recs[1].data), "00 02 00 0C");
    EXPECT_EQ(recs[2].data, "\x07Page &P");
    EXPECT_EQ(recs[3].data, "geheim");
    EXPECT_EQ(hex(recs[4].data), "00 00");
    EXPECT_EQ(hex(recs[5].data), "01 00");
    EXPECT_EQ(hex(recs[6].data), "F0 00");
    EXPECT_EQ(hex(recs[7].data), "04 00 00 00 00 01 2C 01 00 00 00 00 00 00 00 00");
}

TEST_F(ExcelFileTest, FileLifecycle) {
    EXPECT_EQ(xls.CloseFile(), 0);  // never opened
    EXPECT_EQ(xls.WriteValue(1, 0, 0, 0, 1, 1, 1.0, 0), errnum::kBadFileNameOrNumber);

    const std::string path = dir.file("same.xls");
    testing::write_file(path, std::string(5000, 'x'));
    xls.CreateFile(path);
    EXPECT_EQ(xls.CloseFile(), 0);
    EXPECT_EQ(std::filesystem::file_size(path), kEmptySheetSize);  // replaced, not appended
    EXPECT_EQ(xls.CloseFile(), errnum::kBadFileNameOrNumber);      // closed file: harmless
    EXPECT_EQ(std::filesystem::file_size(path), kEmptySheetSize);

    // The same object writes the next report.
    xls.CreateFile(path);
    xls.InsertHorizPageBreak(3);
    xls.CloseFile();
    xls.CreateFile(path);  // page breaks of the last report are gone
    EXPECT_EQ(xls.CloseFile(), 0);
    EXPECT_EQ(std::filesystem::file_size(path), kEmptySheetSize);

    const auto rc = xls.CreateFile(dir.file("missing/folder/a.xls"));
    EXPECT_EQ(std::get<std::int32_t>(rc), errnum::kPathNotFound);
}

TEST_F(ExcelFileTest, AWriteFailureAnywhereFailsTheClose) {
    // A report whose bytes span several buffer flushes; fail each flush in turn.
    const auto write_report = [&](ExcelFile& x, const std::string& path) {
        x.CreateFile(path);
        x.SetFont("Arial", 10, 0);
        for (int r = 1; r <= 40000; ++r) x.WriteValue(1, 0, 3, 0, r, 1, r * 0.5, 4);
        return x.CloseFile();
    };
    auto counting = std::make_shared<test::FailingIo>(0);
    ExcelFile good({}, counting);
    good.set_conversions(CellConversions::c_locale());
    ASSERT_EQ(write_report(good, dir.file("good.xls")), 0);
    const std::string expected = testing::read_file(dir.file("good.xls"));
    ASSERT_GE(counting->writes(), 3);

    for (int n = 1; n <= counting->writes(); ++n) {
        ExcelFile x(CellConversions::c_locale(), std::make_shared<test::FailingIo>(n));
        EXPECT_EQ(write_report(x, dir.file("bad.xls")), 61) << "write " << n;
        EXPECT_NE(testing::read_file(dir.file("bad.xls")), expected);
    }
}

TEST(RecordWalker, RejectsWhatNoReaderChecks) {
    testing::TempDir dir;
    ExcelFile x;
    x.CreateFile(dir.file("w.xls"));
    x.WriteValue(2, 0, 1, 0, 1, 1, std::string("abc"), 0);
    ASSERT_EQ(x.CloseFile(), 0);
    const std::string good = testing::read_file(dir.file("w.xls"));
    std::string error;
    test::walk_biff2(good, error);
    ASSERT_EQ(error, "");

    std::string label = good;
    label[good.size() - 4 - 4] = 4;  // LABEL length byte says 4 for "abc"
    std::string bof = good;
    bof[6] = 0x10;  // the published BOF type is not ours
    for (const auto& [bad, why] : {std::pair{bof, "no BOF"},
                                   {good + '\0', "bytes after EOF"},
                                   {label, "record 4 has a bad length"},
                                   {good.substr(0, good.size() - 4), "without EOF"}}) {
        test::walk_biff2(bad, error);
        EXPECT_NE(error.find(why), std::string::npos) << why << ": " << error;
    }
}

TEST(ExcelFileHostileCalls, AnyArgumentsLeaveAWellFormedFile) {
    // Random operations with arguments drawn around every limit: whatever fails must
    // fail whole, so the file always walks cleanly.
    testing::TempDir dir;
    ExcelFile x;
    std::mt19937 rng(20240102);
    const std::vector<std::int32_t> ints = {-70000, -32769, -32768, -1,    0,     1,
                                            63,     64,     192,    255,   256,   32767,
                                            32768,  65535,  65536,  98303, 98304, 1 << 30};
    const auto pick = [&] { return ints[rng() % ints.size()]; };
    const auto text = [&] {
        return std::string(rng() % 300, static_cast<char>('!' + rng() % 200));
    };
    for (int round = 0; round < 20; ++round) {
        x.CreateFile(dir.file("h.xls"));
        for (int i = 0; i < 300; ++i) {
            // Type 3 is left out: its record is unreadable by design.
            std::int32_t type = static_cast<std::int32_t>(rng() % 6) - 1;
            if (type == 3) type = 1;
            const std::function<void()> ops[] = {
                [&] { x.WriteValue(type, pick(), pick(), pick(), pick(), pick(), text(), pick()); },
                [&] { x.WriteValue(type, 0, 3, 0, pick(), pick(), pick() * 1.5, 4); },
                [&] { x.WriteValue(type, 0, 3, 0, pick(), pick(), pick(), 0); },
                [&] { x.InsertHorizPageBreak(pick()); },
                [&] { x.SetFont(text(), static_cast<std::int16_t>(pick()), pick()); },
                [&] {
                    x.SetHeader(text());
                    x.SetFooter(text());
                },
                [&] { x.SetRowHeight(pick(), static_cast<std::int16_t>(pick())); },
                [&] {
                    x.SetColumnWidth(static_cast<std::uint8_t>(pick()),
                                     static_cast<std::uint8_t>(pick()),
                                     static_cast<std::int16_t>(pick()));
                },
            };
            ops[rng() % std::size(ops)]();
        }
        ASSERT_EQ(x.CloseFile(), 0);
        std::string error;
        test::walk_biff2(testing::read_file(dir.file("h.xls")), error);
        ASSERT_EQ(error, "") << "round " << round;
    }
}

}  // namespace
}  // namespace qumbrel
