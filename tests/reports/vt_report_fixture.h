#pragma once
// Helpers of the VT report tests: simulated VT files, an option file loaded as a run loads
// it, conversions, golden files, and a report's cells as CSV and as outside readers see the
// XLS report. Goldens live in tests/golden/vt/; after a deliberate change of the report,
// regenerate them and review the diff by hand:
//   QUMBREL_UPDATE_GOLDEN=1 ctest --test-dir build -R reports_vt
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "frame/ini.h"
#include "frame/options_io.h"
#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "reports/hn_report.h"
#include "reports/kl_report.h"
#include "reports/vq_report.h"
#include "reports/vt_report.h"
#include "reports/vu_report.h"
#include "test_util.h"

namespace qumbrel::test {

using Keys = std::map<std::string, std::string>;

inline reclib::SimOptions vt_sim(reclib::Kind kind, int channels = 3, int samples = 12) {
    reclib::SimOptions o{.kind = kind, .channels = channels, .samples = samples, .seed = 7};
    o.startSeconds = 1709632800;  // 2024-03-05 10:00:00, one sample a second
    return o;
}

class VtReportFixture {
  public:
    explicit VtReportFixture(std::string_view region) : p(region) {
        ::setenv("QUMBREL_RECLIB_PATH", QUMBREL_BIN_DIR, 1);
        p->run.strOptionFile = p->program_file("qumbrel.ini");
        read_regional_values(*p);
    }

    // Writes the option file ([file] and [userdefined] keys over a few defaults of ours)
    // and loads it as a run does.
    void options(Keys file = {}, Keys user = {}) {
        std::filesystem::remove(p->run.strOptionFile);
        clsINI ini(p->run.strOptionFile);
        file.try_emplace("language", std::string(QUMBREL_SOURCE_DIR) + "/lang/english.lng");
        user.try_emplace("Channels", "ALL");
        for (const auto& [k, v] : file) ini.CreateKeyValue("file", k, v);
        for (const auto& [k, v] : user) ini.CreateKeyValue("userdefined", k, v);
        fkt_loadoptionfile(*p);
    }

    std::string make(const reclib::SimOptions& o, const std::string& name, bool damaged = false) {
        const std::string path = p.dir.file(name);
        std::string error;
        if (!reclib::write_file(reclib::simulate(o), path, {.damaged = damaged}, &error))
            ADD_FAILURE() << error;
        return path;
    }

    // Converts into <dir>/<base>.tmp or .xls and returns the report's bytes.
    std::string convert(const std::string& source, const std::string& base,
                        Flag interactive = kFalse) {
        errors = generator(*p, source, p.dir.file(base), interactive);
        return testing::read_file(p.dir.file(base) + (p->opt.targetformat == 1 ? ".xls" : ".tmp"));
    }

    std::string error_log() { return testing::read_file(p->program_file("error.log")); }

    // Damaged copies of a good file (cut short, bytes overwritten), each converted by an
    // interactive run: converted or refused with a count of errors, never a crash, and a
    // report never holds more sample lines than its header announces.
    void check_damaged_corpus(const std::string& goodPath, const std::string& ext);

    testing::TestProgram p;
    int errors = -99;
    // The family's report; the VU tests set theirs.
    int (*generator)(Program&, const std::string&, const std::string&, Flag) = fkt_VTconvertCSVXLS;
};

// Compares with tests/golden/<family>/<name>, or writes it with QUMBREL_UPDATE_GOLDEN=1.
inline void expect_golden(const std::string& name, const std::string& bytes,
                          const std::string& family = "vt") {
    const std::string path =
        std::string(QUMBREL_SOURCE_DIR) + "/tests/golden/" + family + "/" + name;
    if (const char* u = std::getenv("QUMBREL_UPDATE_GOLDEN"); u && std::string(u) == "1") {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        return testing::write_file(path, bytes);
    }
    ASSERT_TRUE(std::filesystem::exists(path)) << "missing golden " << path;
    EXPECT_TRUE(testing::read_file(path) == bytes) << "report differs from golden " << path;
}

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

// The lines of a CSV report (CR LF cut off).
inline std::vector<std::string> lines_of(const std::string& text) {
    auto lines = split(text, '\n');
    if (lines.back().empty()) lines.pop_back();
    return lines;
}

// Index of the first line that starts with `prefix`, or -1.
inline int find_line(const std::vector<std::string>& lines, const std::string& prefix) {
    const auto it = std::find_if(lines.begin(), lines.end(),
                                 [&](const std::string& l) { return l.starts_with(prefix); });
    return it == lines.end() ? -1 : static_cast<int>(it - lines.begin());
}

// The lines of a report from its column titles on.
inline std::vector<std::string> samples_of(const std::vector<std::string>& l) {
    const int at = find_line(l, "\"date\",\"time\"");
    EXPECT_NE(at, -1);
    return at < 0 ? std::vector<std::string>{} : std::vector(l.begin() + at + 1, l.end());
}

using Cells = std::map<std::pair<int, int>, std::string>;  // (row, column) from 0

// A cell that is empty or blank is left out and texts are compared trimmed: CSV trims
// texts, so a blank cell of the sheet is an empty field there. A number stands by its
// value ("42" and "42.0" agree).
inline void put(Cells& cells, std::size_t r, std::size_t c, const std::string& v) {
    const auto first = v.find_first_not_of(' ');
    if (first == std::string::npos) return;
    char* end = nullptr;
    char number[32];
    std::snprintf(number, sizeof number, "%.17g", std::strtod(v.c_str(), &end));
    cells[{static_cast<int>(r), static_cast<int>(c)}] =
        *end ? v.substr(first, v.find_last_not_of(' ') - first + 1) : number;
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
            put(cells, r, c, quoted ? f.substr(1, f.size() - 2) : f);
        }
    }
    return cells;
}

// The lines of tests/reports/xlrd_dump.py: row, column, type, value, ...
inline Cells xlrd_cells(const std::string& dump) {
    Cells cells;
    for (const auto& line : split(dump, '\n')) {
        const auto f = split(line, '\t');
        if (f.size() >= 5 && f[0] != "breaks") put(cells, std::stoul(f[0]), std::stoul(f[1]), f[3]);
    }
    return cells;
}

// Both sides hold the same cells, except the repeated label of the "Channel No" row,
// which only CSV shows twice.
inline void expect_same_cells(Cells csv, Cells xls) {
    const auto channels = std::find_if(
        csv.begin(), csv.end(), [](const auto& cell) { return cell.second == "Channel No"; });
    ASSERT_NE(channels, csv.end());
    const std::pair<int, int> twice{channels->first.first, 1};
    csv.erase(twice);
    xls.erase(twice);
    EXPECT_GT(csv.size(), 40u);
    EXPECT_EQ(csv, xls);
}

// The CSV and XLS report of a family.
inline auto generator_of(reclib::Family family) {
    switch (family) {
        case reclib::Family::VU:
            return fkt_VUconvertCSVXLS;
        case reclib::Family::VQ:
            return fkt_VQconvertCSVXLS;
        case reclib::Family::KL:
            return fkt_KLconvertCSVXLS;
        case reclib::Family::HN:
            return fkt_HNconvertCSVXLS;
        case reclib::Family::VT:
            break;
    }
    return fkt_VTconvertCSVXLS;
}

// Cells of iValueType 48 that CSV writes and XLS leaves out: in an HN report, the colour
// of a mark (what the mark is) in the last column of the message list.
inline void drop_csv_only_cells(Cells& csv) {
    constexpr std::array<std::string_view, 7> marks = {"Left", "None",   "Trigger", "Right",
                                                       "Flag", "Center", "unknown"};
    std::erase_if(csv, [&](const auto& cell) {
        return cell.first.second == 6 &&
               std::find(marks.begin(), marks.end(), cell.second) != marks.end();
    });
}

// For the outside readers: sheet row k is CSV line k (row 1, no free texts).
struct VtReaders : ::testing::Test, VtReportFixture {
    VtReaders() : VtReportFixture("en-US") {}
    // A file of 3 channels and 25 samples with messages and batch, converted to
    // <base>.tmp and <base>.xls; gives the CSV's cells.
    // A file of another family goes through its family's report.
    Cells csv_and_xls(reclib::Kind kind, const std::string& base,
                      reclib::Family family = reclib::Family::VT) {
        auto o = vt_sim(kind, 3, 25);
        o.family = family;
        o.messages = 2;
        o.batch = true;
        generator = generator_of(family);
        const std::string src =
            make(o, base + std::string(reclib::default_extension(family, kind)));
        options({{"messageinclusive", "1"}});
        const Cells csv = csv_cells(convert(src, base));
        options({{"messageinclusive", "1"}, {"targetformat", "1"}});
        convert(src, base);
        return csv;
    }
};

inline void VtReportFixture::check_damaged_corpus(const std::string& goodPath,
                                                  const std::string& ext) {
    const std::string good = testing::read_file(goodPath);
    std::vector<std::string> corpus;
    for (const std::size_t cut : {std::size_t{0}, std::size_t{16}, std::size_t{100},
                                  good.size() / 3, good.size() / 2, good.size() - 1})
        corpus.push_back(good.substr(0, cut));
    for (std::size_t stride = 7; stride < 200; stride += 31) {
        std::string bent = good;
        for (std::size_t at = stride; at < bent.size(); at += stride * 13)
            bent[at] = static_cast<char>(bent[at] ^ 0x5A);
        corpus.push_back(bent);
    }
    int withSamples = 0;
    for (std::size_t i = 0; i < corpus.size(); ++i) {
        SCOPED_TRACE(i);
        const std::string src = p.dir.file("bad" + std::to_string(i) + ext);
        testing::write_file(src, corpus[i]);
        const auto l = lines_of(convert(src, "r" + std::to_string(i), kTrue));
        EXPECT_TRUE(errors == 0 || errors == 1) << errors;
        const int count = find_line(l, "\"Number of Data\",");
        if (count < 0 || find_line(l, "\"date\",\"time\"") < 0) continue;
        const long announced = std::strtol(l[count].c_str() + 17, nullptr, 10);
        EXPECT_LE(static_cast<long>(samples_of(l).size()), announced);
        ++withSamples;
    }
    EXPECT_GT(withSamples, 2) << "the damage should leave some files readable";
}

}  // namespace qumbrel::test
