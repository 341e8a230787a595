#pragma once
// Helpers of the VT report tests: simulated VT files (fixed seed and start time), an
// option file loaded the way a run loads it, a conversion, and golden files.
//
// Goldens live in tests/golden/vt/. To regenerate them after a deliberate change of the
// report, run the tests with QUMBREL_UPDATE_GOLDEN=1 and review the diff by hand:
//   QUMBREL_UPDATE_GOLDEN=1 ctest --test-dir build -R reports_vt
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "frame/ini.h"
#include "frame/options_io.h"
#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "reports/vt_report.h"
#include "tests/support/test_support.h"

namespace qumbrel::test {

using Keys = std::map<std::string, std::string>;

inline reclib::SimOptions vt_sim(reclib::Kind kind, int channels = 3, int samples = 12) {
    reclib::SimOptions o;
    o.family = reclib::Family::VT;
    o.kind = kind;
    o.channels = channels;
    o.samples = samples;
    o.seed = 7;
    o.startSeconds = 1709632800;  // 2024-03-05 10:00:00
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
    void options(const Keys& file = {}, const Keys& user = {}) {
        std::filesystem::remove(p->run.strOptionFile);
        clsINI ini(p->run.strOptionFile);
        Keys f{{"language", std::string(QUMBREL_SOURCE_DIR) + "/lang/english.lng"}};
        for (const auto& [k, v] : file) f[k] = v;
        for (const auto& [k, v] : f) ini.CreateKeyValue("file", k, v);
        Keys u{{"Channels", "ALL"}};
        for (const auto& [k, v] : user) u[k] = v;
        for (const auto& [k, v] : u) ini.CreateKeyValue("userdefined", k, v);
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
        errors = fkt_VTconvertCSVXLS(*p, source, p.dir.file(base), interactive);
        return testing::read_file(p.dir.file(base) + (p->opt.targetformat == 1 ? ".xls" : ".tmp"));
    }

    std::string error_log() {
        const std::string path = p->program_file("error.log");
        return std::filesystem::exists(path) ? testing::read_file(path) : std::string();
    }

    testing::TestProgram p;
    int errors = -99;
};

// Compares with tests/golden/vt/<name>, or writes it with QUMBREL_UPDATE_GOLDEN=1.
inline void expect_golden(const std::string& name, const std::string& bytes) {
    const std::string path = std::string(QUMBREL_SOURCE_DIR) + "/tests/golden/vt/" + name;
    if (const char* u = std::getenv("QUMBREL_UPDATE_GOLDEN"); u && std::string(u) == "1") {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        testing::write_file(path, bytes);
        return;
    }
    ASSERT_TRUE(std::filesystem::exists(path)) << "missing golden " << path;
    EXPECT_TRUE(testing::read_file(path) == bytes) << "report differs from golden " << path;
}

// The lines of a CSV report (CR LF cut off).
inline std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> out;
    for (std::size_t at = 0, end = 0; at < text.size(); at = end + 2) {
        end = std::min(text.find("\r\n", at), text.size());
        out.push_back(text.substr(at, end - at));
    }
    return out;
}

// Index of the first line that starts with `prefix`, or -1.
inline int find_line(const std::vector<std::string>& lines, const std::string& prefix) {
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (lines[i].starts_with(prefix)) return static_cast<int>(i);
    return -1;
}

}  // namespace qumbrel::test
