#pragma once
// The value sink: every CSV and XLS value of the report generators goes through
// fkt_convertsetvalue, which appends a BIFF2 cell to the one ExcelFile of the run or
// collects a CSV field into the field array and prints the line at its end.
//
//   open_csv_report(ctx, "/out/r.tmp");
//   reset_field_array(ctx);
//   fkt_convertsetvalue(ctx, 0, 1, 1, std::string("Recorder"), false, 0);
//   fkt_convertsetvalue(ctx, 0, 2, 1, std::string("VT210"), true, 0);  // "Recorder";"VT210";
//   close_csv_report(ctx);
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/context.h"
#include "reports/cellvalue.h"
#include "reports/excelfile.h"
#include "reports/output.h"

namespace qumbrel {

// The field array of the CSV line: lower bound 1, so element 0 is never used.
using FieldArray = std::vector<std::string>;

// Per-run state of the sink, alive from report to report.
struct SinkState {
    FieldArray fields;  // empty until the first value of the run arrives
    OutputFile csv;     // the CSV output file, opened by the generator
    std::string line;   // the line being joined, kept for its buffer
    std::unique_ptr<ExcelFile> g_ExcelFile;

    // Channels parsed once per distinct list: "ALL" or the entry's leading number.
    struct ChannelEntry {
        bool all = false;
        double number = 0;
    };
    std::vector<std::string> parsedFrom;
    std::vector<ChannelEntry> channels;
};

// The one ExcelFile of the run, created on first use with the run's regional conversions.
ExcelFile& excel_file(Program& ctx);

// The generators' CSV file: opened for sequential output (an old file is replaced) and
// closed at the end of the report; both return 0 or the error number. An unfinished line
// is dropped, never written.
std::int32_t open_csv_report(Program& ctx, const std::string& path);
std::int32_t close_csv_report(Program& ctx);

// Sets the field array to bounds 1 to 1, as each generator does before its first data row.
void reset_field_array(Program& ctx);

void fkt_convertsetvalue(Program& ctx, std::int16_t iFileFormat, std::int32_t iColum,
                         std::int32_t iRow, const CellValue& vValue, bool bEndOfRow,
                         std::int32_t iValueType);

bool fkt_showchannel(Program& ctx, std::int32_t iChannel);
std::int32_t fkt_colpos(Program& ctx, std::int32_t iChannel, std::int32_t iDefault);

// Inserts into the field array without losing the values to the right (index from 1).
void ArrayInsert(Program& ctx, FieldArray& aValues, std::int32_t iIndex, std::string vValue,
                 std::optional<std::int32_t> vUpperBound = std::nullopt,
                 std::optional<bool> vGrow = std::nullopt);

}  // namespace qumbrel
