// The value sink in both formats, the field array, and channel selection.
#include "reports/valuesink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "reports/biff2.h"
#include "test_util.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

class SinkTest : public ::testing::Test {
  protected:
    SinkTest() {
        tp->opt.listseparator = ";";
        tp->opt.decseparator = ",";
        tp->opt.thousseparator = ".";
    }
    std::string error_log() { return testing::read_file(tp->program_file("error.log")); }

    testing::TestProgram tp{"de-DE"};
};

// One call of the sink: column, value, whether it ends the line, type, row.
struct Call {
    std::int32_t col;
    CellValue value;
    bool end = false;
    std::int32_t type = 0;
    std::int32_t row = 1;
};
struct CsvCase {
    const char* what;
    std::vector<Call> calls;
    const char* want;
    std::string listsep = ";", decsep = ",";
};

TEST_F(SinkTest, CsvLines) {
    using S = std::string;
    using I = std::int32_t;
    const DateTime t{2024, 1, 2, 3, 4, 5, 0};
    const std::vector<Call> numbers{{1, 21.5, false, 4},        {2, I{-3}, false, 4},
                                    {3, 1e-5, false, 4},        {4, 0.1 + 0.2, false, 4},
                                    {5, S(" 7,25 "), false, 4}, {6, 1e15, true, 4}};
    const CsvCase cases[] = {
        {"from column 1: the spare element is a trailing separator",
         {{1, S("Recorder")}, {2, S("VT210"), true}},
         "\"Recorder\";\"VT210\";\r\n"},
        {"from a later column: leading empty fields, no trailing one",
         {{3, S("value"), true}, {2, I{7}, false, 1}, {3, I{8}, true, 1}},
         ";;\"value\"\r\n;7;8\r\n"},
        {"numeric-looking text (de-DE grouping too) unquoted and untrimmed; other text "
         "trimmed, quoted, unescaped",
         {{1, S("100"), true},
          {1, S("  12,5 "), true},
          {1, S(""), true},
          {1, S(" say \"hi\"; ok "), true},
          {1, S("1.234"), true},
          {1, 2.5, true}},
         "100;\r\n  12,5 ;\r\n\"\";\r\n\"say \"hi\"; ok\";\r\n1.234;\r\n2,5;\r\n"},
        {"numbers in the system's conversion", numbers, "21,5;-3;1E-05;0,3;7,25;1E+15;\r\n"},
        {"numbers quoted when the separators clash", numbers,
         "\"21,5\";\"-3\";\"1E-05\";\"0,3\";\"7,25\";\"1E+15\";\r\n", ";", ";"},
        {"dates: general date, quoted as text",
         {{1, t, true, 12}, {1, t, true, 0}},
         "02.01.2024 03:04:05;\r\n\"02.01.2024 03:04:05\";\r\n"},
        {"a two-character separator keeps the leading one",
         {{1, I{1}, false, 1}, {2, I{2}, true, 1}},
         ";;1;;2;;\r\n",
         ";;"},
        {"an earlier column pushes later fields right",
         {{1, I{10}, false, 1}, {2, I{20}, false, 1}, {1, I{5}, true, 1}},
         "5;10;20;\r\n"},
        {"a label twice in one column stands in two, the next column between",
         {{1, S("Ch")}, {1, S("Ch")}, {2, S("x"), true}},
         "\"Ch\";\"x\";\"Ch\";\r\n"},
        {"row numbers do not decide the line",
         {{1, I{1}, false, 1, 5}, {2, I{2}, true, 1, 2}, {1, I{3}, true, 1, 1}},
         "1;2;\r\n3;\r\n"},
        {"column 0 ends the line with the fields so far; twice: an empty line",
         {{1, S("a")}, {0, CellValue{}, true, 0, 0}, {0, CellValue{}, true, 0, 0}},
         "\"a\";\r\n\r\n"},
        {"an unfinished line is dropped",
         {{1, S("done"), true}, {1, S("half"), false, 0, 2}},
         "\"done\";\r\n"},
        {"other types are written unquoted and trimmed",
         {{1, S("Scale"), false, 48}, {2, S(" 0 "), true, 48}},
         "Scale;0;\r\n"},
    };
    const std::string path = tp.dir.file("r.csv");
    for (const auto& c : cases) {
        tp->opt.listseparator = c.listsep;
        tp->opt.decseparator = c.decsep;
        EXPECT_EQ(open_csv_report(*tp, path), 0);
        reset_field_array(*tp);
        for (const auto& k : c.calls)
            fkt_convertsetvalue(*tp, 0, k.col, k.row, k.value, k.end, k.type);
        EXPECT_EQ(close_csv_report(*tp), 0);
        EXPECT_EQ(testing::read_file(path), c.want) << c.what;
    }
}

TEST_F(SinkTest, AFailedDiskWriteFailsTheClose) {
    auto io = std::make_shared<test::FailingIo>(1);
    tp->state<SinkState>().csv.set_io(io);
    ASSERT_EQ(open_csv_report(*tp, tp.dir.file("full.csv")), 0);
    reset_field_array(*tp);
    // 400 kB: more than the output buffer, so the failing write happens within a line.
    for (int r = 0; r < 2000; ++r) {
        fkt_convertsetvalue(*tp, 0, 1, r, std::string(200, 'r'), false, 1);
        fkt_convertsetvalue(*tp, 0, 2, r, std::int32_t{r}, true, 1);
    }
    EXPECT_EQ(close_csv_report(*tp), 61);  // disk full
    // Told once, by the close that the generator reports, not for each of 4,000 values.
    EXPECT_EQ(error_log().find("fkt_convertsetvalue(iFileFormat:0"), std::string::npos);
    tp->state<SinkState>().csv.set_io(nullptr);
}

TEST_F(SinkTest, XlsCellsByValueType) {
    const std::string path = tp.dir.file("r.xls");
    ExcelFile& xls = excel_file(*tp);
    xls.CreateFile(path);
    fkt_convertsetvalue(*tp, 1, 1, 1, std::string("100"), false, 0);
    fkt_convertsetvalue(*tp, 1, 2, 1, std::int32_t{42}, false, 1);
    fkt_convertsetvalue(*tp, 1, 3, 1, std::string("21,5"), false, 4);  // regional text
    fkt_convertsetvalue(*tp, 1, 4, 1, 45000.5, false, 12);
    fkt_convertsetvalue(*tp, 1, 5, 1, std::string("Scale"), true, 48);   // no cell
    fkt_convertsetvalue(*tp, 1, 6, 1, std::string("abc"), false, 4);     // cell left out
    fkt_convertsetvalue(*tp, 1, 7, 1, std::string(256, 'x'), false, 0);  // cell left out
    fkt_convertsetvalue(*tp, 1, 0, 1, std::string("x"), true, 0);        // no place
    fkt_convertsetvalue(*tp, 1, 1, 0, std::string("x"), true, 0);
    fkt_convertsetvalue(*tp, 1, 8, 1, std::string(""), false, 0);  // an empty label
    tp->opt.decseparator = tp->opt.listseparator;                  // quoting is a CSV matter only
    fkt_convertsetvalue(*tp, 1, 9, 1, 1.5, false, 4);
    ASSERT_EQ(xls.CloseFile(), 0);
    std::string error;
    auto recs = test::walk_biff2(testing::read_file(path), error);
    ASSERT_EQ(error, "");
    ASSERT_EQ(recs.size(), 25u + 6);
    EXPECT_EQ(recs[25].id, biff2::id::kLabel);
    EXPECT_EQ(test::hex(recs[25].data), "00 00 00 00 00 00 01 03 31 30 30");
    EXPECT_EQ(test::hex(recs[26].data), "00 00 01 00 00 00 03 2A 00");
    EXPECT_EQ(test::hex(recs[27].data), "00 00 02 00 00 04 03 00 00 00 00 00 80 35 40");
    EXPECT_EQ(test::hex(recs[28].data.substr(0, 7)), "00 00 03 00 00 0C 03");
    EXPECT_EQ(test::hex(recs[29].data), "00 00 07 00 00 00 01 00");
    EXPECT_EQ(test::hex(recs[30].data), "00 00 08 00 00 04 03 00 00 00 00 00 00 F8 3F");
    EXPECT_EQ(error_log(), "");  // cells left out are not reported
}

TEST_F(SinkTest, ArrayInsertCases) {
    FieldArray a{"", "a", "b"};
    ArrayInsert(*tp, a, 1, "x");  // grown, then a true insertion
    EXPECT_EQ(a, (FieldArray{"", "x", "a", "b"}));
    a = {"", "a"};
    ArrayInsert(*tp, a, 3, "y", 1, false);  // beyond the bound: resized, the gap empty
    EXPECT_EQ(a, (FieldArray{"", "a", "", "y"}));
    ArrayInsert(*tp, a, 3, "z", std::nullopt, false);  // bound equals the index: stored
    EXPECT_EQ(a, (FieldArray{"", "a", "", "z"}));
    ArrayInsert(*tp, a, 1, "q", 3, false);  // the element at the bound moves to the index
    EXPECT_EQ(a, (FieldArray{"", "q", "a", ""}));
    EXPECT_EQ(error_log(), "");
    ArrayInsert(*tp, a, 0, "bad");  // below the lower bound: reported, not inserted
    EXPECT_NE(error_log().find("ArrayInsert()"), std::string::npos);
    EXPECT_EQ(std::count(a.begin(), a.end(), "bad"), 0);
    ArrayInsert(*tp, a, 1 << 30, "huge");  // no unbounded allocation
    EXPECT_LT(a.size(), 16u);
    ArrayInsert(*tp, a, 2, "r", 40, false);  // a bound past the array: reported
    EXPECT_EQ(std::count(a.begin(), a.end(), "r"), 0);
}

TEST_F(SinkTest, ChannelSelection) {
    // A channel list, then {channel, column offered, column given (0: left out)}.
    const std::pair<std::vector<std::string>, std::vector<std::array<std::int32_t, 3>>> cases[] = {
        {{}, {{1, 1, 0}}},
        {{"all"}, {{17, 4, 4}, {0, 4, 0}, {-1, 4, 0}}},
        {{"5", "3"}, {{5, 1, 1}, {3, 2, 2}, {4, 3, 0}}},           // the list's order
        {{"3", "AlL", "5"}, {{3, 9, 1}, {5, 9, 9}}},               // listed ahead of "ALL"
        {{"2abc", "x", " 4"}, {{2, 9, 1}, {4, 9, 3}, {1, 9, 0}}},  // leading number; none: 0
    };
    for (const auto& [list, rows] : cases) {
        tp->opt.vChannelList = list;
        for (const auto& [channel, offered, column] : rows) {
            SCOPED_TRACE(::testing::Message() << "channel " << channel << " of " << list.size());
            EXPECT_EQ(fkt_colpos(*tp, channel, offered), column);
            EXPECT_EQ(fkt_showchannel(*tp, channel), column != 0);
        }
    }
}

}  // namespace
}  // namespace qumbrel
