// The native workbook engine over templates made by openpyxl (tests/excel/make_templates.py),
// results read back by openpyxl and checked on their XML: names and scopes, values with
// their styles, formulas and the calculation chain, template types, prefixed XML and cells
// without addresses, a chart and a macro part left byte for byte, LibreOffice reading the
// results, and hostile packages.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>

#include "excel/ooxml/sheet_filler.h"
#include "excel/ooxml/workbook.h"
#include "excel/ooxml/xml_text.h"
#include "tests/support/test_support.h"

namespace qumbrel::ooxml {
namespace {

std::string shell_quote(const std::string& s) {
    return "'" + s + "'";
}

class Ooxml : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        if (std::system("/usr/bin/python3 -c 'import openpyxl' 2>/dev/null") != 0) return;
        made_ =
            std::system(("/usr/bin/python3 " QUMBREL_SOURCE_DIR "/tests/excel/make_templates.py " +
                         shell_quote(folder().file("")))
                            .c_str()) == 0;
    }
    void SetUp() override {
        if (!made_) GTEST_SKIP() << "python3-openpyxl is needed to make the templates";
    }
    static const testing::TempDir& folder() {
        static testing::TempDir dir;
        return dir;
    }
    static std::string path(const std::string& name) { return folder().file(name); }
    // What openpyxl reads: "sheet\tcell\ttype\tvalue\tformat\tbold" lines.
    static std::string read_back(const std::string& file) {
        const std::string out = path("readback.txt");
        const std::string cmd = "/usr/bin/python3 " QUMBREL_SOURCE_DIR
                                "/tests/excel/read_back.py " +
                                shell_quote(file) + " > " + shell_quote(out) + " 2>&1";
        EXPECT_EQ(std::system(cmd.c_str()), 0) << testing::read_file(out);
        return testing::read_file(out);
    }
    static std::string part(const std::string& file, const std::string& name) {
        return ZipPackage::open(file).read(name);
    }

    static inline bool made_ = false;
};

// Rows ascending, cells ascending within their row, every cell addressed inside its own
// row: what Excel needs and the outside readers do not check.
void expect_ordered(const std::string& sheetXml) {
    const std::regex cell(R"re(<(?:\w+:)?(row|c) r="([A-Z]*)(\d+)")re");
    std::uint64_t row = 0, lastCol = 0;
    for (auto it = std::sregex_iterator(sheetXml.begin(), sheetXml.end(), cell);
         it != std::sregex_iterator(); ++it) {
        const std::uint64_t r = std::stoull((*it)[3]);
        if ((*it)[1] == "row") {
            EXPECT_GT(r, row) << "rows out of order";
            row = r;
            lastCol = 0;
            continue;
        }
        std::uint64_t col = 0;
        for (const char ch : std::string((*it)[2]))
            col = col * 26 + static_cast<unsigned>(ch - 'A' + 1);
        EXPECT_EQ(r, row) << "cell in the wrong row";
        EXPECT_GT(col, lastCol) << "cells out of order in row " << row;
        lastCol = col;
    }
}

TEST(OoxmlReference, FormsOfOneCellOrAreaOnly) {
    std::string sheet;
    CellAddress c;
    ASSERT_TRUE(parse_reference("Sheet1!$B$3", sheet, c));
    EXPECT_EQ(sheet, "Sheet1");
    EXPECT_EQ(std::pair(c.row, c.col), std::pair(3u, 2u));
    ASSERT_TRUE(parse_reference("'O''Brien'!AB12:AC13", sheet, c));
    EXPECT_EQ(sheet, "O'Brien");
    EXPECT_EQ(std::pair(c.row, c.col), std::pair(12u, 28u));
    for (const char* bad :
         {"#REF!", "Sheet1!#REF!", "42", "\"abc\"", "SUM(A1:A2)", "Sheet1!$A$1,Sheet1!$B$2",
          "Sheet1:Sheet2!$B$5", "Sheet1!$G:$G", "Sheet1!$10:$10", "[1]Sheet1!$A$1", "Sheet1!XFE1",
          "Sheet1!A1048577", "'unclosed!A1"})
        EXPECT_FALSE(parse_reference(bad, sheet, c)) << bad;
}

TEST(OoxmlText, EscapesForXmlAndExcel) {
    EXPECT_EQ(xml_text("a < b & c > d \"q\""), "a &lt; b &amp; c &gt; d \"q\"");
    EXPECT_EQ(xml_attribute("\"x\"\n"), "&quot;x&quot;_x000A_");
    EXPECT_EQ(xml_text(std::string("\x01line\r\n", 7)), "_x0001_line_x000D_\n");
    EXPECT_EQ(xml_text("_x0041_"), "_x005F_x0041_");  // reads back as written
    EXPECT_EQ(xml_text("\xEF\xBF\xBE"), "_xFFFE_");
    EXPECT_EQ(xml_text("\xC3\xA4"), "\xC3\xA4");  // ä stays
    EXPECT_TRUE(needs_preserve(" lead"));
    EXPECT_TRUE(needs_preserve("two\nlines"));
    EXPECT_FALSE(needs_preserve("plain"));
    EXPECT_EQ(column_letters(1), "A");
    EXPECT_EQ(column_letters(28), "AB");
    EXPECT_EQ(column_letters(16384), "XFD");
}

TEST_F(Ooxml, NamesScopesAndWhatIsSkipped) {
    const Workbook book = Workbook::open(path("names.xlsx"));
    ASSERT_EQ(book.sheets().size(), 3u);
    EXPECT_EQ(book.sheets()[2].name, "O'Brien");
    EXPECT_EQ(book.sheet_by_name("o'brien"), 2u);
    const auto skipped = [&book](const std::string& name) {
        for (const auto& d : book.names())
            if (d.name == name) return d.skipped;
        return std::string("absent");
    };
    EXPECT_EQ(skipped("secret"), "hidden");
    EXPECT_NE(skipped("broken").find("no single cell"), std::string::npos);
    EXPECT_NE(skipped("twoareas").find("no single cell"), std::string::npos);
    EXPECT_NE(skipped("constant").find("no single cell"), std::string::npos);
    EXPECT_NE(skipped("elsewhere").find("Nosuch"), std::string::npos);
    EXPECT_NE(skipped("_xlnm.Print_Area").find("built-in"), std::string::npos);

    const DefinedName* k = book.find_name("Kopffilename", 0);
    ASSERT_NE(k, nullptr);
    EXPECT_EQ(k->sheet, 2u);
    EXPECT_EQ(std::pair(k->cell.row, k->cell.col), std::pair(1u, 1u));
    // On the second sheet its own "scoped" wins; elsewhere the global one.
    EXPECT_EQ(book.find_name("SCOPED", 1)->sheet, 1u);
    EXPECT_EQ(book.find_name("scoped", 0)->sheet, 0u);
    EXPECT_EQ(book.find_name("scoped", 2)->sheet, 0u);
    EXPECT_EQ(book.find_name("secret", 0), nullptr);
    EXPECT_EQ(book.find_name("nothing", 0), nullptr);
}

TEST_F(Ooxml, ValuesKeepStylesAndUntouchedPartsStayByteForByte) {
    Workbook book = Workbook::open(path("names.xlsx"));
    book.set(0, 1, 2, std::string("a.oge"));               // bold B1 stays bold
    book.set(0, 4, 3, 1.5);                                // column C has 0.000
    book.set(0, 5, 1, std::string("  two\nlines & <x>"));  // a new row
    book.set(0, 5, 1, std::string("last wins"));
    book.set(0, 3, 4, std::nan(""));  // no reader takes NaN: left empty
    book.set(1, 7, 2, 45000.25);
    book.set(0, kMaxRows + 1, 1, 1.0);  // beyond the last row: dropped
    const SaveReport r = book.save_as(path("names_out.xlsx"));
    EXPECT_EQ(r.cellsDropped, 1u);
    EXPECT_FALSE(r.formulasOverwritten);

    const std::string back = read_back(path("names_out.xlsx"));
    EXPECT_NE(back.find("Overview\tB1\ts\t'a.oge'\tGeneral\tTrue"), std::string::npos) << back;
    EXPECT_NE(back.find("Overview\tC4\tn\t1.5\t0.000\tFalse"), std::string::npos) << back;
    EXPECT_NE(back.find("Overview\tA5\ts\t'last wins'"), std::string::npos) << back;
    EXPECT_NE(back.find("2024\tB7\tn\t45000.25"), std::string::npos) << back;
    EXPECT_EQ(back.find("D3"), std::string::npos);

    const std::string sheet = part(path("names_out.xlsx"), "xl/worksheets/sheet1.xml");
    expect_ordered(sheet);
    EXPECT_NE(sheet.find("<dimension ref=\"A1:D5\"/>"), std::string::npos) << sheet;
    // The third sheet, the styles and the workbook part are the template's own bytes.
    for (const char* p :
         {"xl/worksheets/sheet3.xml", "xl/styles.xml", "xl/workbook.xml", "[Content_Types].xml"})
        EXPECT_EQ(part(path("names_out.xlsx"), p), part(path("names.xlsx"), p)) << p;
}

TEST_F(Ooxml, FormulasCalcChainAndTheTemplateType) {
    Workbook book = Workbook::open(path("formulas.xltx"));
    const DefinedName* total = book.find_name("total", 0);
    const DefinedName* master = book.find_name("master", 0);
    ASSERT_TRUE(total && master);
    book.set(0, total->cell.row, total->cell.col, 99.0);
    book.set(0, master->cell.row, master->cell.col, std::string("replaced"));
    const SaveReport r = book.save_as(path("formulas_out.xlsx"));
    EXPECT_TRUE(r.formulasOverwritten);
    ASSERT_EQ(r.warnings.size(), 2u);  // D6 and D7 shared the master's formula
    EXPECT_NE(r.warnings[0].find("D6"), std::string::npos);

    const ZipPackage out = ZipPackage::open(path("formulas_out.xlsx"));
    EXPECT_FALSE(out.has("xl/calcChain.xml"));
    EXPECT_EQ(out.read("xl/_rels/workbook.xml.rels").find("calcChain"), std::string::npos);
    const std::string types = out.read("[Content_Types].xml");
    EXPECT_EQ(types.find("calcChain"), std::string::npos);
    EXPECT_NE(types.find("spreadsheetml.sheet.main+xml"), std::string::npos);
    EXPECT_EQ(types.find("template.main+xml"), std::string::npos);
    EXPECT_NE(out.read("xl/workbook.xml").find("fullCalcOnLoad=\"1\""), std::string::npos);
    const std::string sheet = out.read("xl/worksheets/sheet1.xml");
    EXPECT_EQ(sheet.find("<f"), std::string::npos) << sheet;  // no formula left half-shared
    expect_ordered(sheet);

    const std::string back = read_back(path("formulas_out.xlsx"));
    EXPECT_NE(back.find("Data\tB2\tn\t99"), std::string::npos) << back;
    EXPECT_NE(back.find("Data\tD5\ts\t'replaced'"), std::string::npos) << back;
    EXPECT_NE(back.find("Data\tD6\tn\t12"), std::string::npos) << back;
    EXPECT_NE(back.find("Data\tF1\ts\t'untouched'"), std::string::npos) << back;
}

TEST_F(Ooxml, PrefixedXmlAndRowsAndCellsWithoutAddresses) {
    Workbook book = Workbook::open(path("prefixed.xlsx"));
    const DefinedName* t = book.find_name("target", 0);
    ASSERT_NE(t, nullptr);
    book.set(0, t->cell.row, t->cell.col, 7.0);
    book.set(0, 1, 2, std::string("over"));  // B1, counted from A1 in its row
    book.save_as(path("prefixed_out.xlsx"));
    const std::string sheet = part(path("prefixed_out.xlsx"), "xl/worksheets/sheet1.xml");
    EXPECT_NE(sheet.find("<x:c r=\"B2\"><x:v>7</x:v></x:c>"), std::string::npos) << sheet;
    // openpyxl left out the empty row 2, so its row 3 without an address is row 2 now.
    EXPECT_NE(sheet.find("<x:dimension ref=\"A1:B2\"/>"), std::string::npos) << sheet;
    EXPECT_NE(sheet.find("<x:row r=\"2\"><x:c t=\"inlineStr\"><x:is><x:t>c</x:t></x:is></x:c><x:c "
                         "r=\"B2\">"),
              std::string::npos)
        << sheet;
    const std::string back = read_back(path("prefixed_out.xlsx"));
    EXPECT_NE(back.find("Sheet1\tA1\ts\t'a'"), std::string::npos) << back;
    EXPECT_NE(back.find("Sheet1\tB1\ts\t'over'"), std::string::npos) << back;
    EXPECT_NE(back.find("Sheet1\tA2\ts\t'c'"), std::string::npos) << back;
}

TEST_F(Ooxml, CommentsOfFilledCellsGoWithAllTheirParts) {
    // One note deleted: the other stays, in both of its parts.
    Workbook one = Workbook::open(path("notes.xlsx"));
    const DefinedName* d = one.find_name("described", 0);
    ASSERT_NE(d, nullptr);
    one.set(0, d->cell.row, d->cell.col, std::string("value"));
    one.delete_comment(0, d->cell.row, d->cell.col);
    one.delete_comment(0, 9, 9);  // a cell without a comment is no error
    EXPECT_EQ(one.save_as(path("notes_one.xlsx")).notesDeleted, 1u);
    std::string back = read_back(path("notes_one.xlsx"));
    EXPECT_EQ(back.find("B1\tcomment"), std::string::npos) << back;
    EXPECT_NE(back.find("Notes\tC3\tcomment\tdescribes C3"), std::string::npos) << back;
    const ZipPackage p1 = ZipPackage::open(path("notes_one.xlsx"));
    const std::string vml = p1.read(p1.find("xl/drawings/commentsDrawing1.vml"));
    EXPECT_EQ(vml.find("<ns2:Row>0</ns2:Row>"), std::string::npos);
    EXPECT_NE(vml.find("<ns2:Row>2</ns2:Row>"), std::string::npos);
    EXPECT_TRUE(p1.has("xl/threadedComments/threadedComment1.xml"));

    // Every comment deleted: the parts, their relationships, overrides and the sheet's
    // <legacyDrawing> go; the thread goes with its reply.
    Workbook all = Workbook::open(path("notes.xlsx"));
    for (const auto& [row, col] : {std::pair(1u, 2u), std::pair(3u, 3u), std::pair(4u, 4u)})
        all.delete_comment(0, row, col);
    EXPECT_EQ(all.save_as(path("notes_all.xlsx")).notesDeleted, 2u);
    const ZipPackage p2 = ZipPackage::open(path("notes_all.xlsx"));
    for (const char* gone : {"xl/comments/comment1.xml", "xl/drawings/commentsDrawing1.vml",
                             "xl/threadedComments/threadedComment1.xml"})
        EXPECT_FALSE(p2.has(gone)) << gone;
    const std::string rels = p2.read("xl/worksheets/_rels/sheet1.xml.rels");
    EXPECT_EQ(rels.find("comment"), std::string::npos) << rels;
    EXPECT_EQ(rels.find("vml"), std::string::npos) << rels;
    const std::string types = p2.read("[Content_Types].xml");
    EXPECT_EQ(types.find("threadedcomments"), std::string::npos);
    EXPECT_EQ(types.find("comments+xml"), std::string::npos);
    EXPECT_EQ(p2.read("xl/worksheets/sheet1.xml").find("legacyDrawing"), std::string::npos);
    back = read_back(path("notes_all.xlsx"));
    EXPECT_EQ(back.find("comment"), std::string::npos) << back;
    EXPECT_NE(back.find("Notes\tB1\ts\t'named'"), std::string::npos) << back;
}

TEST_F(Ooxml, AMacroWorkbookKeepsItsChartAndMacroAndOpensInLibreOffice) {
    Workbook book = Workbook::open(path("macro.xlsm"));
    const DefinedName* v = book.find_name("value", 0);
    ASSERT_NE(v, nullptr);
    book.set(0, v->cell.row, v->cell.col, 33.5);
    book.set(0, 7, 2, std::string("note; with \"quotes\""));
    book.save_as(path("macro_out.xlsm"));
    Workbook names = Workbook::open(path("names.xlsx"));
    names.set(0, 1, 2, std::string("a.oge"));
    names.set(0, 4, 3, 1.5);
    names.set(0, 5, 1, std::string("last wins"));
    names.save_as(path("names_lo.xlsx"));

    const ZipPackage in = ZipPackage::open(path("macro.xlsm"));
    const ZipPackage out = ZipPackage::open(path("macro_out.xlsm"));
    for (const char* p :
         {"xl/vbaProject.bin", "xl/charts/chart1.xml", "xl/drawings/drawing1.xml",
          "xl/drawings/_rels/drawing1.xml.rels", "xl/worksheets/_rels/sheet1.xml.rels",
          "xl/_rels/workbook.xml.rels", "[Content_Types].xml"})
        EXPECT_EQ(out.read(p), in.read(p)) << p;
    const std::string sheet = out.read("xl/worksheets/sheet1.xml");
    expect_ordered(sheet);
    EXPECT_NE(sheet.find("r:id=\"rId1\"/></worksheet>"), std::string::npos) << sheet;
    EXPECT_NE(sheet.find("<dimension ref=\"A1:B7\"/>"), std::string::npos) << sheet;

    const std::string soffice = "/usr/bin/soffice";
    if (!std::filesystem::exists(soffice))
        GTEST_SKIP() << "LibreOffice (libreoffice-calc-nogui) is not installed";
    // The filled workbooks converted to CSV by LibreOffice (first sheet each).
    const std::string command =
        soffice + " -env:UserInstallation=file://" + path("profile") +
        " --headless --convert-to 'csv:Text - txt - csv (StarCalc):44,34,76,1,,0,true,false' "
        "--outdir " +
        path("lo") + " " + path("macro_out.xlsm") + " " + path("names_lo.xlsx") +
        " >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    ASSERT_TRUE(std::filesystem::exists(path("lo/macro_out.csv")));
    EXPECT_EQ(testing::read_file(path("lo/macro_out.csv")),
              "10,\n20,\n33.5,\n40,\n50,\n,\n,\"note; with \"\"quotes\"\"\"\n");
    ASSERT_TRUE(std::filesystem::exists(path("lo/names_lo.csv")));
    // Shown as formatted: column C's "0.000" reached the new cell.
    EXPECT_EQ(testing::read_file(path("lo/names_lo.csv")),
              ",\"a.oge\",\n,,\n,,\n,,1.500\n\"last wins\",,\n");
}

// A large sheet goes through a temporary file in chunks; its bytes are those of the sheet
// made in memory.
TEST(OoxmlSpill, ASpilledSheetHasTheBytesOfOneInMemory) {
    const std::string xml =
        "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
        "<sheetData><row r=\"2\"><c r=\"B2\"><v>1</v></c></row></sheetData></worksheet>";
    std::vector<SheetFiller::Cell> cells;
    const std::vector<std::string> texts{"a & b"};
    for (std::uint32_t r = 1; r <= 300; ++r)
        for (std::uint16_t c = 1; c <= 3; ++c)
            cells.push_back({r, r * 3u + c, 0, c, static_cast<std::uint8_t>(c == 3 ? 2 : 1),
                             c == 3 ? 0.0 : r * 0.25});
    auto again = cells;
    const std::string inMemory = SheetFiller(xml, "s.xml").fill(cells, texts);
    FilledPart part = SheetFiller(xml, "s.xml").fill_part(again, texts, 100);
    ASSERT_TRUE(part.file);
    EXPECT_TRUE(part.bytes.empty());
    std::string spilled;
    char chunk[4096];
    for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, part.file.get())) > 0;)
        spilled.append(chunk, n);
    EXPECT_EQ(spilled, inMemory);
    EXPECT_NE(inMemory.find("<dimension ref=\"A1:C300\"/>"), std::string::npos);
}

TEST_F(Ooxml, ALargeSheetGoesToTheArchiveWhole) {
    Workbook book = Workbook::open(path("names.xlsx"));
    for (std::uint32_t r = 1; r <= 100000; ++r)
        for (std::uint32_t c = 1; c <= 4; ++c) book.set(1, r, c, r + c * 0.5);  // ~12 MB
    book.save_as(path("large.xlsx"));
    const std::string sheet = part(path("large.xlsx"), "xl/worksheets/sheet2.xml");
    EXPECT_GT(sheet.size(), 8u << 20);
    expect_ordered(sheet.substr(sheet.find("<row", sheet.size() - 4096)));
    EXPECT_NE(sheet.find("<dimension ref=\"A1:D100000\"/>"), std::string::npos);
    EXPECT_NE(sheet.find("<c r=\"D100000\"><v>100002</v></c></row></sheetData>"),
              std::string::npos);
    EXPECT_EQ(part(path("large.xlsx"), "xl/worksheets/sheet1.xml"),
              part(path("names.xlsx"), "xl/worksheets/sheet1.xml"));
}

TEST(OoxmlNames, WhatExcelTakesAsAName) {
    for (const char* ok : {"filename", "qmb2measdate", "_x", "\\back", "Report", "Cell", "RXa",
                           "Gr\xC3\xB6\xC3\x9F"
                           "e"})
        EXPECT_TRUE(valid_defined_name(ok)) << ok;
    for (const char* bad : {"", "R1C2", "A1", "R2D2", "C", "R", "RC", "C12x", "TRUE", "false",
                            "two words", "1st", "XFD1048576"})
        EXPECT_FALSE(valid_defined_name(bad)) << bad;
    EXPECT_FALSE(valid_defined_name(std::string(256, 'a')));
}

TEST_F(Ooxml, ANewWorkbookWithFormatsAndNames) {
    Workbook book = Workbook::create(path("new.xlsx"), "Daten 1");
    ASSERT_EQ(book.sheets().size(), 1u);
    book.add_name("measdate", "='Daten 1'!R8C1");
    book.add_name("filename", "=Daten 1!R1C2");  // unquoted names with blanks are taken too
    EXPECT_THROW(book.add_name("R1C2", "='Daten 1'!R1C1"), PackageError);
    EXPECT_THROW(book.add_name("x", "=Nosuch!R1C1"), PackageError);
    EXPECT_THROW(book.add_name("x", "='Daten 1'!A1"), PackageError);
    book.number_format(0, {8, 1}, {10, 1}, "@");
    book.number_format(0, {8, 2}, {10, 2}, "hh:mm:ss");
    book.set(0, 8, 1, std::string("05.03.2024"));  // a value after its format keeps it
    book.set(0, 9, 2, 0.5);
    book.number_format(0, {9, 2}, {9, 2}, "hh:mm:ss");  // the same format again: no new one
    EXPECT_EQ(book.find_name("measdate", 0)->cell.row, 8u);
    book.save_as(path("new_out.xlsx"));

    const std::string back = read_back(path("new_out.xlsx"));
    EXPECT_NE(back.find("name\tmeasdate\t'Daten 1'!$A$8"), std::string::npos) << back;
    EXPECT_NE(back.find("name\tfilename\t'Daten 1'!$B$1"), std::string::npos) << back;
    EXPECT_NE(back.find("Daten 1\tA8\ts\t'05.03.2024'\t@"), std::string::npos) << back;
    EXPECT_NE(back.find("Daten 1\tB9\td\tdatetime.time(12, 0)\thh:mm:ss"), std::string::npos)
        << back;
    const std::string styles = part(path("new_out.xlsx"), "xl/styles.xml");
    // One custom format, used by one new cell format; "@" is built in.
    EXPECT_NE(styles.find("<numFmt numFmtId=\"164\" formatCode=\"hh:mm:ss\"/>"), std::string::npos);
    EXPECT_EQ(styles.find("formatCode=\"hh:mm:ss\""), styles.rfind("formatCode=\"hh:mm:ss\""));
    EXPECT_NE(styles.find("<cellXfs count=\"3\">"), std::string::npos) << styles;
    const std::string sheet = part(path("new_out.xlsx"), "xl/worksheets/sheet1.xml");
    expect_ordered(sheet);
    EXPECT_NE(sheet.find("<c r=\"A10\" s=\"1\"/>"), std::string::npos)
        << sheet;  // formatted, empty
}

TEST_F(Ooxml, HostilePackagesAreRefusedWithAReason) {
    const auto refused = [](const std::string& file) -> std::string {
        try {
            Workbook::open(file);
        } catch (const PackageError& e) {
            return e.what();
        }
        return {};
    };
    testing::write_file(path("text.xlsx"), "not a workbook");
    EXPECT_NE(refused(path("text.xlsx")).find("no workbook"), std::string::npos);
    testing::write_file(path("cfb.xlsx"), std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8));
    EXPECT_NE(refused(path("cfb.xlsx")).find("encrypted or legacy"), std::string::npos);
    EXPECT_NE(refused(path("missing.xlsx")).find("cannot open"), std::string::npos);

    // Zip edits by Python's zipfile: a part that climbs out, no workbook, broken XML.
    const std::string script =
        "import zipfile,sys\n"
        "src=zipfile.ZipFile(sys.argv[1])\n"
        "def make(name, edit):\n"
        "  with zipfile.ZipFile(name,'w') as z:\n"
        "    for i in src.infolist():\n"
        "      d=edit(i.filename, src.read(i.filename))\n"
        "      if d is not None: z.writestr(i.filename, d)\n"
        "    if name.endswith('climb.xlsx'): z.writestr('../evil.txt', b'x')\n"
        "make(sys.argv[2]+'/climb.xlsx', lambda n,d: d)\n"
        "make(sys.argv[2]+'/nobook.xlsx', lambda n,d: None if n=='xl/workbook.xml' else d)\n"
        "make(sys.argv[2]+'/badxml.xlsx', lambda n,d: b'<workbook><sheets>' if "
        "n=='xl/workbook.xml' else d)\n"
        // The first entry's headers patched: a size of 3 GB, the encryption flag.
        "def patch(name, central, local, value, width):\n"
        "  b=bytearray(open(sys.argv[1],'rb').read())\n"
        "  c=b.find(b'PK\\x01\\x02')\n"
        "  for at in (c+central, local): b[at:at+width]=value.to_bytes(width,'little')\n"
        "  open(sys.argv[2]+'/'+name,'wb').write(b)\n"
        "patch('huge.xlsx', 24, 22, 3<<30, 4)\n"
        "patch('locked.xlsx', 8, 6, 1, 2)\n";
    testing::write_file(path("hostile.py"), script);
    ASSERT_EQ(std::system(("/usr/bin/python3 " + shell_quote(path("hostile.py")) + " " +
                           shell_quote(path("names.xlsx")) + " " + shell_quote(path("")))
                              .c_str()),
              0);
    EXPECT_NE(refused(path("climb.xlsx")).find("unsafe"), std::string::npos);
    EXPECT_NE(refused(path("nobook.xlsx")).find("missing"), std::string::npos);
    EXPECT_NE(refused(path("badxml.xlsx")).find("no well-formed XML"), std::string::npos);
    EXPECT_NE(refused(path("huge.xlsx")).find("claims 3221225472 bytes"), std::string::npos)
        << refused(path("huge.xlsx"));
    EXPECT_NE(refused(path("locked.xlsx")).find("encrypted"), std::string::npos)
        << refused(path("locked.xlsx"));
}

}  // namespace
}  // namespace qumbrel::ooxml
