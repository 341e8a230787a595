// The conversion driver with stand-in family functions: the VT "generator" writes a small
// report and returns the error count the test asks for.
#include "pipeline/convertmain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <tuple>

#include "pipeline/family_table.h"
#include "recorder/file_elements.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

namespace {

struct Env {
    TestProgram p;
    std::string in = p->program_file("in");
    std::string out = p->program_file("out");
    int generatorErrors = 0;
    Lines bases;

    Env() {
        fs::create_directories(in);
        fs::create_directories(out);
        write_file(p->program_file("english.lng"),
                   "[MSG]\nstartconverting=start\nmovefile=move\ndeletefile=delete\n"
                   "finished=done\ntime=\"time \"\npuzzlefilename=names\nallreadycompiled=seen\n"
                   "Pathnotexist=no path\n");
        p->opt.language = p->program_file("english.lng");
        p->opt.targetpath = p->opt.targetpathRaw = out;
        auto& vt = family_table(*p).vt;
        vt.fileElements = [](Program& ctx, const std::string&) {
            auto& e = ctx.state<FileElements>();
            e.ti_YYYY = "2007";
            e.ti_MM = "03";
            e.ti_S = "SER1";
        };
        vt.convertCSVXLS = [this](Program& ctx, const std::string&, const std::string& base, Flag) {
            bases.push_back(base);
            write_file(base + (ctx.opt.targetformat == 1 ? ".xls" : ".tmp"), "report");
            return generatorErrors;
        };
    }
    std::string source(const std::string& name = "a.ogd") {
        write_file(in + "/" + name, "recorder bytes");
        return in + "/" + name;
    }
    ConvertOutcome run(const std::string& src, Flag interactive = kFalse,
                       const std::string& subfolder = "", const std::string& target = "") {
        return fkt_convertmain(*p, src, subfolder, target, interactive);
    }
    std::string error_log() { return read_file(p->program_file("error.log")); }
};

}  // namespace

// What one run leaves where, by disposal mode and option; paths below the program folder.
TEST(Driver, DisposalByModeAndOption) {
    struct Case {
        const char* what;
        std::string source;
        int errors;
        std::function<void(Program&)> setup;
        Lines present, absent;
        bool generated = true;
        std::string subfolder = "", target = "";
    };
    const auto none = [](Program&) {};
    // clang-format off
    const std::vector<Case> cases{
        {"move", "a.ogd", 0, [](Program& p) {
             p.opt.targetpathsourcefile = p.opt.targetpathsourcefileRaw = p.program_file("done"); },
         {"out/a.csv", "done/a.ogd"}, {"out/a.tmp", "in/a.ogd"}},
        // Source folder shorter than 3 characters: the target folder takes the source.
        {"csv error marks", "a.ogd", 2, none, {"out/a.csv.Error.csv", "out/a.ogd.Error.ogd"},
         {"out/a.csv", "in/a.ogd"}},
        {"xls error marks", "b.oge", 2, [](Program& p) { p.opt.targetformat = 1; },
         {"out/b.Error.xls", "out/b.oge.Error.oge"}, {"out/b.xls"}},
        {"delete even after a failure", "a.ogd", 1, [](Program& p) { p.opt.binfilemodus = 1; },
         {"out/a.csv.Error.csv"}, {"in/a.ogd", "out/a.ogd", "out/a.ogd.Error.ogd"}},
        {"index mode marks a failed source", "a.ogd", 1, [](Program& p) { p.opt.binfilemodus = 2; },
         {"in/a.ogd.Error.ogd", "sourcefiledb.dat"}, {"in/a.ogd"}},
        {"debug keeps the source and registers nothing", "a.ogd", 0,
         [](Program& p) { p.run.bDebug = kTrue; p.opt.binfilemodus = 2; },
         {"out/a.csv", "in/a.ogd", "status.log"}, {}},
        {"noconversion only disposes", "a.ogd", 0, [](Program& p) { p.opt.noconversion = 1; },
         {"out/a.ogd"}, {"out/a.csv", "in/a.ogd"}, false},
        {"$YYYY/$MM folders, the source following", "a.ogd", 0, [](Program& p) {
             p.opt.targetname = 1; p.opt.targetpathRaw = p.program_file("out/$YYYY/$MM"); },
         {"out/2007/03/a.csv", "out/2007/03/a.ogd"}, {"out/a.csv"}},
        {"source renamed like the target", "a.ogd", 0, [](Program& p) {
             p.opt.targetname = 1; p.opt.sourcenamesametarget = "1";
             p.opt.targetnameformat = "$S"; },
         {"out/SER1.csv", "out/SER1.ogd"}, {"out/a.ogd"}},
        {"empty composed name", "a.ogd", 0,
         [](Program& p) { p.opt.targetname = 1; p.opt.targetnameformat = ""; }, {"out/.csv"}, {}},
        {"subfolder", "a.ogd", 0, none, {"out/sub/a.csv", "out/sub/a.ogd"}, {"out/a.csv"}, true,
         "sub/"},
        // The target is the report's whole name: no extension is added on success.
        {"explicit target", "a.ogd", 0, none, {"explicit"}, {"explicit.csv", "out/a.csv"}, true, "",
         "explicit"},
        {"explicit target failing", "a.ogd", 1, none, {"explicit.Error.csv"}, {"explicit"}, true,
         "", "explicit"},
        {"unknown extension", "notes.txt", 0, none, {"out/notes.txt"},
         {"out/notes.csv", "in/notes.txt"}, false},
        {"known family without a generator", "u.osd", 0, none, {"out/u.osd.Error.osd"},
         {"in/u.osd"}, false},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Env d;
        d.generatorErrors = c.errors;
        c.setup(*d.p);
        const std::string target = c.target.empty() ? "" : d.p->program_file(c.target);
        const ConvertOutcome r = d.run(d.source(c.source), kFalse, c.subfolder, target);
        EXPECT_EQ(r.failed(), c.errors > 0 || c.source == "u.osd");
        for (const auto& f : c.present) EXPECT_TRUE(fs::exists(d.p->program_file(f))) << f;
        for (const auto& f : c.absent) EXPECT_FALSE(fs::exists(d.p->program_file(f))) << f;
        EXPECT_EQ(d.bases.empty(), !c.generated);
        if (is_set(d.p->run.bDebug)) {
            EXPECT_EQ(read_file(d.p->run.strRegisterFile), "");
        }
    }
}

TEST(Driver, IndexModeRegistersOnceAndSkipsRegisteredFilesInTrayRuns) {
    Env d;
    d.p->opt.binfilemodus = 2;
    d.p->opt.targetname = 1;
    d.p->opt.targetnameformat = "$S_$O";
    const std::string src = d.source(), report = d.out + "/SER1_a.csv";
    const std::string line = "a.ogd    SER1_a.ogd\r\n";
    d.run(src);
    EXPECT_TRUE(fs::exists(src));
    EXPECT_EQ(read_file(d.p->run.strRegisterFile), line);
    EXPECT_TRUE(fs::exists(report));

    // Tray run: no report, no change.
    fs::remove(report);
    EXPECT_TRUE(d.run(src).skipped);
    EXPECT_FALSE(fs::exists(report));

    // Run page with the main window open: alert, new report, still one register line.
    d.p.host.mainWindowOpen = true;
    d.run(src, kTrue);
    ASSERT_EQ(d.p.host.alerts.size(), 1u);
    const auto& a = d.p.host.alerts[0];
    EXPECT_EQ(a.text, "seen\r\na.ogd\r\n\r\n03:04");
    EXPECT_EQ(std::tuple(a.seconds, a.red, a.green, a.blue), std::tuple(4, 0xFF, 0xFF, 0xC0));
    EXPECT_TRUE(fs::exists(report));
    EXPECT_EQ(read_file(d.p->run.strRegisterFile), line);
    fs::remove(report);

    // Interactive without the main window (a one-shot run): no alert, so nothing marks
    // the file as registered: converted again and registered a second time.
    d.p.host.mainWindowOpen = false;
    d.run(src, kTrue);
    EXPECT_EQ(d.p.host.alerts.size(), 1u);
    EXPECT_TRUE(fs::exists(report));
    EXPECT_EQ(read_file(d.p->run.strRegisterFile), line + line);
}

// Template reports: the workbook extension comes from the session; an alarm workbook
// that fails marks the first workbook, not itself.
TEST(Driver, TemplateWorkbookAndSeparateAlarmWorkbook) {
    Env d;
    const std::string out = d.out;
    d.p->opt.targetformat = 2;
    d.p->opt.excelsourcefilealarmseparate = "1";
    d.p->opt.alarminclusive = kTrue;
    Lines alarmBases;
    int alarmErrors = 1;
    auto& t = family_table(*d.p);
    t.templates.excelformat = [](Program&, const std::string&, Flag) {
        return std::string(".xlsx");
    };
    t.templates.exceltemplate = [](Program&, const std::string&, const std::string& target) {
        write_file(target, "workbook");
        return true;
    };
    t.vt.convertXLSTPL = [](Program&, const std::string&, const std::string&, Flag) { return 0; };
    t.vt.convertXLSTPLALML = [&](Program&, const std::string&, const std::string& base, Flag) {
        alarmBases.push_back(base);
        return alarmErrors;
    };
    d.run(d.source());
    EXPECT_EQ(alarmBases, (Lines{out + "/a_AL_ML"}));
    EXPECT_TRUE(fs::exists(out + "/a.Error.xlsx"));
    EXPECT_TRUE(fs::exists(out + "/a_AL_ML.xlsx"));
    EXPECT_TRUE(fs::exists(out + "/a.ogd.Error.ogd"));
    const auto& lines = d.p.host.lines;
    EXPECT_NE(std::find(lines.begin(), lines.end(), out + "/a_AL_ML.xlsx"), lines.end());

    // A suffix is cleaned in name mode; delete-after-printing removes the alarm workbook.
    alarmErrors = 0;
    d.p->opt.almlsuffix = "-al:m/l";
    d.p->opt.delreportfile = kTrue;
    d.run(d.source("b.ogd"));
    ASSERT_EQ(alarmBases.size(), 2u);
    EXPECT_EQ(alarmBases[1], out + "/b-al_m_l");
    EXPECT_FALSE(fs::exists(out + "/b.xlsx") || fs::exists(out + "/b-al_m_l.xlsx"));
    EXPECT_TRUE(fs::exists(out + "/b.ogd"));
}

TEST(Driver, MissingTargetFolderTouchesNothing) {
    Env d;
    d.p->opt.targetpath = d.p->opt.targetpathRaw = d.p->program_file("nowhere");
    const std::string src = d.source();
    EXPECT_TRUE(d.run(src).pathMissing);
    EXPECT_TRUE(fs::exists(src));
    EXPECT_TRUE(d.bases.empty());
    EXPECT_NE(d.error_log().find("no path"), std::string::npos);
}

// Whatever fails along the way, the source's bytes stand afterwards in exactly one
// place: where they were, or where the disposal put them, marked after a failure.
TEST(Driver, NoFailureLosesTheSource) {
    enum class Fault { GeneratorThrows, GeneratorErrors, MoveBlocked, RegisterUnwritable };
    for (int mode : {0, 2}) {
        for (Fault fault : {Fault::GeneratorThrows, Fault::GeneratorErrors, Fault::MoveBlocked,
                            Fault::RegisterUnwritable}) {
            SCOPED_TRACE("mode " + std::to_string(mode) + " fault " +
                         std::to_string(static_cast<int>(fault)));
            Env d;
            const std::string done = d.p->program_file("done");
            d.p->opt.binfilemodus = mode;
            d.p->opt.targetpathsourcefile = d.p->opt.targetpathsourcefileRaw = done;
            d.generatorErrors = fault == Fault::GeneratorErrors ? 1 : 0;
            if (fault == Fault::GeneratorThrows)
                family_table(*d.p).vt.convertCSVXLS = [](Program&, const std::string&,
                                                         const std::string&, Flag) -> int {
                    throw std::runtime_error("generator failed");
                };
            // A plain file where the folder should be: no user, root included, moves into it.
            if (fault == Fault::MoveBlocked) write_file(done, "a file, not a folder");
            if (fault == Fault::RegisterUnwritable)
                d.p->run.strRegisterFile = d.p->program_file("no/such/folder/db.dat");

            const std::string src = d.source();
            const ConvertOutcome r = d.run(src);
            Lines places;
            for (const std::string& c :
                 {src, src + ".Error.ogd", done + "/a.ogd", done + "/a.ogd.Error.ogd"}) {
                std::error_code ec;
                if (fs::is_regular_file(c, ec) && read_file(c) == "recorder bytes")
                    places.push_back(c);
            }
            EXPECT_EQ(places.size(), 1u);
            // An index run has nothing to move; a register that cannot be written loses
            // a line of the register, not the file.
            const bool moveFails = fault == Fault::MoveBlocked && mode == 0;
            EXPECT_EQ(r.failed(), moveFails || fault == Fault::GeneratorThrows ||
                                      fault == Fault::GeneratorErrors);
            EXPECT_EQ(r.moveFailed, moveFails);
            if (moveFails) {
                EXPECT_EQ(places, Lines{src});
                EXPECT_NE(d.error_log().find("could not be moved"), std::string::npos);
            }
        }
    }
}
