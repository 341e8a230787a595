#pragma once
// Comparing an XLS report, as an outside reader sees it, with the CSV report of the same
// file: sheet row k is CSV line k (row 1, no free texts), cell by cell, numbers by value.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "test_util.h"
#include "vt_report_fixture.h"

namespace qumbrel::test {

using Cells = std::map<std::pair<int, int>, std::string>;  // (row, column) from 0

// Splits at `sep`, cutting a trailing CR off each piece.
inline std::vector<std::string> split(const std::string& text, char sep) {
    std::vector<std::string> out;
    for (std::size_t at = 0, end = 0; at <= text.size(); at = end + 1) {
        end = std::min(text.find(sep, at), text.size());
        out.push_back(text.substr(at, end - at));
        if (out.back().ends_with('\r')) out.back().pop_back();
    }
    return out;
}

// A cell that is empty or blank is left out: CSV trims texts, so a blank cell of the
// sheet is an empty field there.
inline void put(Cells& cells, int r, int c, const std::string& v) {
    if (v.find_first_not_of(' ') != std::string::npos) cells[{r, c}] = v;
}

// CSV with "," as separator and CR LF (ours) or LF (LibreOffice's) line ends; a field in
// double quotes loses them (neither puts a separator inside quotes).
inline Cells csv_cells(const std::string& text) {
    Cells cells;
    const auto lines = split(text, '\n');
    for (std::size_t r = 0; r < lines.size(); ++r) {
        const auto fields = split(lines[r], ',');
        for (std::size_t c = 0; c < fields.size(); ++c) {
            const std::string& f = fields[c];
            const bool quoted = f.size() >= 2 && f.front() == '"' && f.back() == '"';
            put(cells, static_cast<int>(r), static_cast<int>(c),
                quoted ? f.substr(1, f.size() - 2) : f);
        }
    }
    return cells;
}

// The lines of tests/reports/xlrd_dump.py: row, column, type, value, ...
inline Cells xlrd_cells(const std::string& dump) {
    Cells cells;
    for (const auto& line : split(dump, '\n')) {
        const auto f = split(line, '\t');
        if (f.size() >= 5 && f[0] != "breaks") put(cells, std::stoi(f[0]), std::stoi(f[1]), f[3]);
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

// Every cell of both sides agrees, except the repeated label of the "Channel No" row,
// which only CSV shows twice.
inline void expect_same_cells(const Cells& csv, const Cells& xls) {
    int channelRow = -1;
    for (const auto& [at, v] : csv) {
        if (v == "Channel No") channelRow = at.first;
    }
    ASSERT_NE(channelRow, -1);
    const auto skip = [&](const std::pair<int, int>& at) {
        return at.first == channelRow && at.second == 1;
    };
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
        EXPECT_TRUE(skip(at) || csv.count(at))
            << "only in XLS: row " << at.first << " col " << at.second << ": " << v;
    }
    EXPECT_GT(compared, 40);
}

struct VtReaders : ::testing::Test, VtReportFixture {
    VtReaders() : VtReportFixture("en-US") {}
    // A file of 3 channels and 25 samples with messages and batch, converted to
    // <base>.tmp and <base>.xls; gives the CSV's cells.
    Cells csv_and_xls(reclib::Kind kind, const std::string& base) {
        auto o = vt_sim(kind, 3, 25);
        o.messages = 2;
        o.batch = true;
        const std::string src = make(o, base + (kind == reclib::Kind::Event ? ".oge" : ".ogd"));
        options({{"messageinclusive", "1"}});
        const Cells csv = csv_cells(convert(src, base));
        options({{"messageinclusive", "1"}, {"targetformat", "1"}});
        convert(src, base);
        return csv;
    }
};

}  // namespace qumbrel::test
