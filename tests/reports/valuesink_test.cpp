// The value sink in both formats, the field array, and channel selection.
#include "reports/valuesink.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "reports/biff2.h"
#include "test_util.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

using Row = std::vector<std::pair<std::int32_t, CellValue>>;

class SinkTest : public ::testing::Test {
  protected:
    SinkTest() {
        tp->opt.listseparator = ";";
        tp->opt.decseparator = ",";
        tp->opt.thousseparator = ".";
    }

    // Writes the calls as CSV and returns the file's text.
    template <class Calls>
    std::string csv(Calls&& calls) {
        const std::string path = tp.dir.file("r.csv");
        EXPECT_EQ(open_csv_report(*tp, path), 0);
        reset_field_array(*tp);
        calls();
        EXPECT_EQ(close_csv_report(*tp), 0);
        return testing::read_file(path);
    }
    // One line: each value with its column and the type; the last one ends the line.
    void line(const Row& values, std::int32_t type = 0, std::int16_t format = 0) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            fkt_convertsetvalue(*tp, format, values[i].first, 1, values[i].second,
                                i + 1 == values.size(), type);
        }
    }
    std::string error_log() { return testing::read_file(tp->program_file("error.log")); }

    testing::TestProgram tp{"de-DE"};
};

TEST_F(SinkTest, LineFromColumnOneKeepsTheSpareElementAsTrailingSeparator) {
    EXPECT_EQ(csv([&] {
                  line({{1, std::string("Recorder")}, {2, std::string("VT210")}});
              }),
              "\"Recorder\";\"VT210\";\r\n");
}

TEST_F(SinkTest, LineFromALaterColumnHasLeadingEmptyFields) {
    EXPECT_EQ(csv([&] { line({{3, std::string("value")}}); }), ";;\"value\"\r\n");
    EXPECT_EQ(csv([&] { line({{2, std::int32_t{7}}, {3, std::int32_t{8}}}, 1); }), ";7;8\r\n");
}

TEST_F(SinkTest, TypeZeroTexts) {
    const std::string out = csv([&] {
        line({{1, std::string("100")}});               // numeric-looking: unquoted
        line({{1, std::string("  12,5 ")}});           // numeric: untrimmed
        line({{1, std::string("")}});                  // two double quotes
        line({{1, std::string(" say \"hi\"; ok ")}});  // trimmed, no escaping
        line({{1, std::string("1;2")}});               // not numeric: quoted
        line({{1, std::string("1.234")}});             // de-DE: a number with grouping
        line({{1, 2.5}});                              // a double as text: numeric
    });
    EXPECT_EQ(out,
              "100;\r\n  12,5 ;\r\n\"\";\r\n\"say \"hi\"; ok\";\r\n\"1;2\";\r\n1.234;\r\n"
              "2,5;\r\n");
}

TEST_F(SinkTest, NumbersUseTheSystemsConversionAndAreQuotedWhenSeparatorsClash) {
    const Row values{{1, 21.5},      {2, std::int32_t{-3}},      {3, 1e-5},
                     {4, 0.1 + 0.2}, {5, std::string(" 7,25 ")}, {6, 1e15}};
    EXPECT_EQ(csv([&] { line(values, 4); }), "21,5;-3;1E-05;0,3;7,25;1E+15;\r\n");
    tp->opt.decseparator = ";";
    EXPECT_EQ(csv([&] { line(values, 4); }),
              "\"21,5\";\"-3\";\"1E-05\";\"0,3\";\"7,25\";\"1E+15\";\r\n");
}

TEST_F(SinkTest, DatesAsTextAreTheSystemsGeneralDate) {
    const DateTime t{2024, 1, 2, 3, 4, 5, 0};
    EXPECT_EQ(csv([&] { line({{1, t}}, 12); }), "02.01.2024 03:04:05;\r\n");
    EXPECT_EQ(csv([&] { line({{1, t}}, 0); }), "\"02.01.2024 03:04:05\";\r\n");
}

TEST_F(SinkTest, TwoCharacterSeparatorKeepsTheLeadingSeparator) {
    tp->opt.listseparator = ";;";
    EXPECT_EQ(csv([&] { line({{1, std::int32_t{1}}, {2, std::int32_t{2}}}, 1); }), ";;1;;2;;\r\n");
}

TEST_F(SinkTest, InsertingAtAnEarlierColumnPushesLaterFieldsRight) {
    // Channel order differs from the file: the second value lands before the first.
    EXPECT_EQ(csv([&] {
                  line({{1, std::int32_t{10}}, {2, std::int32_t{20}}, {1, std::int32_t{5}}}, 1);
              }),
              "5;10;20;\r\n");
    // A label written twice to the same column stands in two columns, and what follows
    // in the next column lands between them.
    EXPECT_EQ(csv([&] {
                  line({{1, std::string("Ch")}, {1, std::string("Ch")}, {2, std::string("x")}});
              }),
              "\"Ch\";\"x\";\"Ch\";\r\n");
}

TEST_F(SinkTest, RowNumbersDoNotDecideTheLine) {
    const std::string out = csv([&] {
        fkt_convertsetvalue(*tp, 0, 1, 5, std::int32_t{1}, false, 1);
        fkt_convertsetvalue(*tp, 0, 2, 2, std::int32_t{2}, true, 1);
        fkt_convertsetvalue(*tp, 0, 1, 1, std::int32_t{3}, true, 1);
    });
    EXPECT_EQ(out, "1;2;\r\n3;\r\n");
}

TEST_F(SinkTest, ColumnZeroEndsTheLineWithTheFieldsSoFar) {
    const std::string out = csv([&] {
        fkt_convertsetvalue(*tp, 0, 1, 1, std::string("a"), false, 0);
        fkt_convertsetvalue(*tp, 0, 0, 0, CellValue{}, true, 0);
        fkt_convertsetvalue(*tp, 0, 0, 0, CellValue{}, true, 0);  // an empty line
    });
    EXPECT_EQ(out, "\"a\";\r\n\r\n");
}

TEST_F(SinkTest, UnfinishedLineIsDropped) {
    EXPECT_EQ(csv([&] {
                  line({{1, std::string("done")}});
                  fkt_convertsetvalue(*tp, 0, 1, 2, std::string("half"), false, 0);
              }),
              "\"done\";\r\n");
}

TEST_F(SinkTest, OtherTypesAreWrittenInCsv) {
    EXPECT_EQ(csv([&] {
                  line({{1, std::string("Scale")}, {2, std::string(" 0 ")}}, 48);
              }),
              "Scale;0;\r\n");
}

TEST_F(SinkTest, BadFileFormatIsLoggedOnEveryCall) {
    fkt_convertsetvalue(*tp, 2, 1, 1, std::string("x"), false, 0);
    fkt_convertsetvalue(*tp, 2, 1, 1, std::string("x"), true, 0);
    const std::string log = error_log();
    const std::string text = "fkt_convertsetvalue() - Dateiformat fehlerhaft";
    const auto first = log.find(text);
    ASSERT_NE(first, std::string::npos) << log;
    EXPECT_NE(log.find(text, first + 1), std::string::npos) << log;
}

TEST_F(SinkTest, AFailedWriteIsLoggedWithItsPlace) {
    reset_field_array(*tp);  // no CSV file open
    fkt_convertsetvalue(*tp, 0, 2, 7, std::string("x"), true, 0);
    EXPECT_NE(error_log().find("fkt_convertsetvalue(iFileFormat:0,iColum:2,iRow:7"),
              std::string::npos)
        << error_log();
}

TEST_F(SinkTest, AFailedDiskWriteFailsTheClose) {
    auto io = std::make_shared<test::FailingIo>(1);
    tp->state<SinkState>().csv.set_io(io);
    ASSERT_EQ(open_csv_report(*tp, tp.dir.file("full.csv")), 0);
    reset_field_array(*tp);
    // 400 kB: more than the output buffer, so the failing write happens within a line.
    for (int r = 0; r < 2000; ++r) line({{1, std::string(200, 'r')}, {2, std::int32_t{r}}}, 1);
    EXPECT_EQ(close_csv_report(*tp), 61);  // disk full
    EXPECT_NE(error_log().find("fkt_convertsetvalue(iFileFormat:0"), std::string::npos);
    tp->state<SinkState>().csv.set_io(nullptr);
}

TEST_F(SinkTest, XlsCellsByValueType) {
    const std::string path = tp.dir.file("r.xls");
    ExcelFile& xls = excel_file(*tp);
    EXPECT_EQ(&xls, &excel_file(*tp));  // one object for the run
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
    auto recs = test::walk_biff2(test::read_all(path), error);
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
    ArrayInsert(*tp, a, 5, "w");  // grown to 4, then resized to 5
    EXPECT_EQ(a, (FieldArray{"", "a", "", "z", "", "w"}));
    EXPECT_EQ(error_log(), "");

    ArrayInsert(*tp, a, 2, "q", 5, false);  // the element at the bound moves to the index
    EXPECT_EQ(a, (FieldArray{"", "a", "q", "", "z", ""}));
    ArrayInsert(*tp, a, 0, "bad");  // below the lower bound: reported, not inserted
    EXPECT_NE(error_log().find("ArrayInsert()"), std::string::npos);
    EXPECT_EQ(std::count(a.begin(), a.end(), "bad"), 0);
    ArrayInsert(*tp, a, 1 << 30, "huge");  // no unbounded allocation
    EXPECT_LT(a.size(), 16u);
    ArrayInsert(*tp, a, 2, "r", 40, false);  // a bound past the array: reported
    EXPECT_EQ(std::count(a.begin(), a.end(), "r"), 0);
}

TEST_F(SinkTest, ChannelSelection) {
    const auto set = [&](std::vector<std::string> list) { tp->opt.vChannelList = std::move(list); };
    set({});
    EXPECT_FALSE(fkt_showchannel(*tp, 1));
    EXPECT_EQ(fkt_colpos(*tp, 1, 1), 0);

    set({"all"});
    EXPECT_TRUE(fkt_showchannel(*tp, 17));
    EXPECT_FALSE(fkt_showchannel(*tp, 0));
    EXPECT_FALSE(fkt_showchannel(*tp, -1));
    EXPECT_EQ(fkt_colpos(*tp, 17, 4), 4);
    EXPECT_EQ(fkt_colpos(*tp, 0, 4), 0);

    set({"5", "3"});
    EXPECT_EQ(fkt_colpos(*tp, 5, 1), 1);
    EXPECT_EQ(fkt_colpos(*tp, 3, 2), 2);
    EXPECT_EQ(fkt_colpos(*tp, 4, 3), 0);
    EXPECT_TRUE(fkt_showchannel(*tp, 3));
    EXPECT_FALSE(fkt_showchannel(*tp, 4));

    set({"3", "AlL", "5"});
    EXPECT_EQ(fkt_colpos(*tp, 3, 9), 1);
    EXPECT_EQ(fkt_colpos(*tp, 5, 9), 9);
    EXPECT_EQ(fkt_colpos(*tp, 7, 9), 9);

    set({"2abc", "x", " 4"});  // leading number of the text; none gives 0
    EXPECT_EQ(fkt_colpos(*tp, 2, 9), 1);
    EXPECT_EQ(fkt_colpos(*tp, 4, 9), 3);
    EXPECT_FALSE(fkt_showchannel(*tp, 1));
}

}  // namespace
}  // namespace qumbrel
