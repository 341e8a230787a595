// libFuzzer target for the workbook engine: any bytes must be answered with a result or a
// PackageError, never a crash, a read outside the input or an unbounded allocation.
// The first byte picks the layer: 'S' the sheet splicer on the rest as a worksheet's XML,
// 'R' the reference and name rules on the rest as text, anything else the whole engine on
// the input as a workbook file (opened, its names resolved, cells written and comments
// deleted, saved).
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "excel/ooxml/sheet_filler.h"
#include "excel/ooxml/workbook.h"

using namespace qumbrel::ooxml;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    try {
        if (data[0] == 'S') {
            static const std::vector<std::string> texts = {"  text <&> \x01", std::string(40, 'x')};
            std::vector<SheetFiller::Cell> cells = {{1, 0, 0, 1, 1, 0.0},
                                                    {3, 1, 0, 2, 2, 1.0},
                                                    {3, 2, 2, 2, SheetFiller::kFormatOnly, 0.0},
                                                    {2, 3, 0, 16384, 1, 1e300}};
            SheetFiller f(rest, "sheet");
            volatile std::size_t n = f.fill(cells, texts).size();
            (void)n;
        } else if (data[0] == 'R') {
            std::string sheet;
            CellAddress cell;
            volatile bool ok = parse_reference(rest, sheet, cell) || valid_defined_name(rest);
            (void)ok;
        } else {
            static const std::string in =
                "/tmp/qumbrel-wbfuzz-" + std::to_string(::getpid()) + ".xlsx";
            static const std::string out =
                "/tmp/qumbrel-wbfuzz-" + std::to_string(::getpid()) + "-out.xlsx";
            {
                std::ofstream f(in, std::ios::binary | std::ios::trunc);
                f.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
            }
            Workbook book = Workbook::open(in);
            for (const auto& d : book.names()) {
                if (!d.sheet) continue;
                book.set(*d.sheet, d.cell.row, d.cell.col, std::string("value"));
                book.delete_comment(*d.sheet, d.cell.row, d.cell.col);
            }
            for (std::size_t s = 0; s < book.sheets().size(); ++s) {
                if (!book.sheets()[s].worksheet) continue;
                book.set(s, 1, 1, 1.5);
                if (book.find_name("x", s)) book.set(s, 2, 2, 2.0);
            }
            book.save_as(out);
            std::remove(out.c_str());
        }
    } catch (const PackageError&) {
    }
    return 0;
}
