#pragma once
// Comparing an XLS report, as an outside reader sees it, with the CSV report of the same
// file: sheet row k is CSV line k (row 1, no free texts), cell by cell, numbers by value.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "vt_report_fixture.h"

namespace qumbrel::test {

using Cells = std::map<std::pair<int, int>, std::string>;  // (row, column) from 0

inline std::string run_command(const std::string& command, int& status) {
    std::string out;
    FILE* p = ::popen(command.c_str(), "r");
    if (!p) {
        status = -1;
        return out;
    }
    char buf[4096];
    while (std::size_t n = std::fread(buf, 1, sizeof buf, p)) out.append(buf, n);
    status = ::pclose(p);
    return out;
}

// CSV with "," as separator; a field in double quotes loses them (our reports and
// LibreOffice's never put a separator inside quotes). Empty and blank fields are left
// out: CSV trims texts, so a blank cell of the sheet is an empty field there.
inline Cells csv_cells(const std::string& text) {
    Cells cells;
    int r = 0;
    std::vector<std::string> lines;  // CR LF from us, LF from LibreOffice
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = text.find('\n', at);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(at, end - at);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(std::move(line));
        at = end + 1;
    }
    for (const auto& line : lines) {
        std::size_t at = 0;
        for (int c = 0;; ++c) {
            std::size_t end = line.find(',', at);
            std::string f =
                line.substr(at, end == std::string::npos ? std::string::npos : end - at);
            if (f.size() >= 2 && f.front() == '"' && f.back() == '"') f = f.substr(1, f.size() - 2);
            if (f.find_first_not_of(' ') != std::string::npos) cells[{r, c}] = f;
            if (end == std::string::npos) break;
            at = end + 1;
        }
        ++r;
    }
    return cells;
}

// The lines of tests/reports/xlrd_dump.py: row, column, type, value, ...
inline Cells xlrd_cells(const std::string& dump) {
    Cells cells;
    std::size_t at = 0;
    while (at < dump.size()) {
        std::size_t end = dump.find('\n', at);
        if (end == std::string::npos) end = dump.size();
        const std::string line = dump.substr(at, end - at);
        at = end + 1;
        if (line.rfind("breaks", 0) == 0) continue;
        std::size_t t1 = line.find('\t'), t2 = line.find('\t', t1 + 1),
                    t3 = line.find('\t', t2 + 1), t4 = line.find('\t', t3 + 1);
        if (t4 == std::string::npos) continue;
        const std::string value = line.substr(t3 + 1, t4 - t3 - 1);
        // CSV trims texts, so a blank cell reads as empty there.
        if (value.find_first_not_of(' ') != std::string::npos)
            cells[{std::stoi(line.substr(0, t1)), std::stoi(line.substr(t1 + 1, t2 - t1 - 1))}] =
                value;
    }
    return cells;
}

inline bool same_value(const std::string& a, const std::string& b) {
    if (a == b) return true;
    char* ea = nullptr;
    char* eb = nullptr;
    const double da = std::strtod(a.c_str(), &ea);
    const double db = std::strtod(b.c_str(), &eb);
    return *ea == 0 && *eb == 0 && !a.empty() && !b.empty() && da == db;
}

// Every cell of both sides agrees, except those `skip` names.
template <class Skip>
void expect_same_cells(const Cells& csv, const Cells& xls, Skip skip) {
    int compared = 0;
    for (const auto& [at, v] : csv) {
        if (skip(at)) continue;
        const auto it = xls.find(at);
        EXPECT_TRUE(it != xls.end() && same_value(v, it->second))
            << "row " << at.first << " col " << at.second << ": CSV " << v << ", XLS "
            << (it == xls.end() ? "(none)" : it->second);
        ++compared;
    }
    for (const auto& [at, v] : xls) {
        if (skip(at)) continue;
        EXPECT_TRUE(csv.count(at))
            << "only in XLS: row " << at.first << " col " << at.second << ": " << v;
    }
    EXPECT_GT(compared, 40);
}

}  // namespace qumbrel::test
