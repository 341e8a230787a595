#pragma once
// A sheet with every kind of cell the generators write, for the independent readers.
#include <string>

#include "reports/excelfile.h"

namespace qumbrel::test {

inline std::int16_t write_sample_sheet(ExcelFile& x, const std::string& path) {
    x.CreateFile(path);
    x.SetFont("Arial", 10, 0);
    x.WriteValue(2, 0, 1, 0, 1, 1, std::string("Recorder"), 0);
    x.WriteValue(2, 0, 1, 0, 1, 2,
                 std::string("VT210 \xE2\x82\xAC \xC2\xB0"
                             "C"),
                 0);                                        // € °C
    x.WriteValue(2, 0, 1, 0, 2, 1, std::string("100"), 0);  // a label, though numeric
    x.WriteValue(0, 0, 3, 0, 2, 2, std::int32_t{42}, 0);
    x.WriteValue(1, 0, 3, 0, 3, 1, 21.5, 4);
    x.WriteValue(1, 0, 3, 0, 3, 2, 45000.5, 12);
    x.WriteValue(1, 0, 3, 0, 3, 3, 1.0 / 3.0, 4);
    x.WriteValue(1, 0, 3, 0, 3, 4, -1234567.125, 0);
    x.WriteValue(2, 0, 1, 0, 4, 1, std::string(255, 'z'), 0);
    x.WriteValue(2, 0, 1, 0, 4, 2, std::string(256, 'y'), 0);  // left out
    x.WriteValue(2, 0, 1, 0, 4, 3, std::string(), 0);
    x.InsertHorizPageBreak(50);
    x.InsertHorizPageBreak(10);
    x.InsertHorizPageBreak(30);
    return x.CloseFile();
}

}  // namespace qumbrel::test
