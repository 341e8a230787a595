#pragma once
// The four cell operations of the template reports over the session's ExcelAutomation
// (ExcelSession in the program context), with the error handling by number: 462 and 424
// end the session (excelAlive cleared, a status line), 1004 and every other error resume
// at the next statement.
//
//   fkt_excelinsertname(ctx, "filename", std::string("a.oge"), 0, 0);  // every *filename
//   std::int32_t row = 0, col = 0, sheet = 0;
//   fkt_excelfindname(ctx, "measdate", row, col, sheet);               // sheet -1: absent
//   fkt_excelinsertfest(ctx, row, col, 42.0, 3, 0, sheet);             // two rows below
#include <cstdint>
#include <string>

#include "excel/automation.h"
#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

// With rowOffset above 0: the cell named exactly `keyword`, moved by the offsets. With 0:
// every defined name whose right end is the keyword (compared in upper case, no word
// boundary), filled. The comment of each written cell goes.
Flag fkt_excelinsertname(Program& ctx, const std::string& keyword, const ExcelValue& value,
                         std::int32_t rowOffset, std::int32_t colOffset);

// The position of a list keyword: the bare name on the first sheet, overridden by
// "qmb<n>keyword" on sheet n. `sheet` is -1 when neither exists; `row` and `column` then
// keep what they had. The active sheet afterwards is the last one tried.
void fkt_excelfindname(Program& ctx, const std::string& keyword, std::int32_t& row,
                       std::int32_t& column, std::int32_t& sheet);

// One value at (row + rowOffset - 1, column + colOffset) of `sheet` (at row, column with
// rowOffset 0). Nothing for a row or sheet of 0 or less; false when the write failed, a
// value past the sheet's last row included, which is lost without a word.
Flag fkt_excelinsertfest(Program& ctx, std::int32_t row, std::int32_t column,
                         const ExcelValue& value, std::int32_t rowOffset, std::int32_t colOffset,
                         std::int32_t sheet);

// As fkt_excelinsertname by the exact name, on the first sheet by the bare keyword and on
// every sheet n by "qmb<n>keyword"; it does not stop at the first match.
Flag fkt_excelinsertsheets(Program& ctx, const std::string& keyword, const ExcelValue& value,
                           std::int32_t rowOffset, std::int32_t colOffset);

}  // namespace qumbrel
