#pragma once
// What the template report tests share: the templates of tests/excel/make_templates.py,
// made once per test program with openpyxl (never by our engine), and a workbook read back
// by openpyxl into cell -> "type\tvalue" ("s\t'text'", "n\t1.5"), comments as
// "<cell>#comment".
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "tests/reports/vt_report_fixture.h"

namespace qumbrel::test {

using Sheet = std::map<std::string, std::string>;

// The folder of the made templates; empty when openpyxl is missing.
inline const std::string& template_folder() {
    static testing::TempDir dir;
    static const bool made =
        std::system("/usr/bin/python3 -c 'import openpyxl' 2>/dev/null") == 0 &&
        std::system(("/usr/bin/python3 " QUMBREL_SOURCE_DIR "/tests/excel/make_templates.py '" +
                     dir.file("") + "'")
                        .c_str()) == 0;
    static const std::string folder = made ? dir.path().string() : std::string();
    return folder;
}

// The cells of `workbook`; with `qualified` keyed "Sheet!B1", else "B1" (one sheet).
inline Sheet read_workbook(const std::string& workbook, const std::string& scratch,
                           bool qualified) {
    const std::string cmd = "/usr/bin/python3 " QUMBREL_SOURCE_DIR "/tests/excel/read_back.py '" +
                            workbook + "' > '" + scratch + "' 2>&1";
    EXPECT_EQ(std::system(cmd.c_str()), 0) << testing::read_file(scratch);
    Sheet cells;
    for (const std::string& line : lines_of(testing::read_file(scratch))) {
        const auto f = split(line, '\t');
        if (f.size() < 4 || f[0] == "name") continue;
        const std::string cell = qualified ? f[0] + "!" + f[1] : f[1];
        if (f[2] == "comment")
            cells[cell + "#comment"] = f[3];
        else
            cells[cell] = f[2] + "\t" + f[3];
    }
    return cells;
}

// A number cell by its value; NaN when the cell holds none.
inline double value_of(const Sheet& s, const std::string& cell) {
    const auto it = s.find(cell);
    if (it == s.end() || !it->second.starts_with("n\t")) return NAN;
    return std::strtod(it->second.c_str() + 2, nullptr);
}

// The sample lines of the CSV report of `src` by `csv` (targetformat 0), split at ",".
inline std::vector<std::vector<std::string>> csv_samples(VtReportFixture& f, const std::string& src,
                                                         int (*csv)(Program&, const std::string&,
                                                                    const std::string&, Flag)) {
    f.options({{"targetformat", "0"}});
    f.generator = csv;
    std::vector<std::vector<std::string>> rows;
    for (const auto& l : samples_of(lines_of(f.convert(src, "csv")))) rows.push_back(split(l, ','));
    return rows;
}

// A CSV field without its quotes.
inline std::string unquote(const std::string& s) {
    return s.size() >= 2 && s.front() == '"' ? s.substr(1, s.size() - 2) : s;
}

}  // namespace qumbrel::test
