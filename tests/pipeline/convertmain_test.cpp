// The conversion driver with stand-in family functions: the VT "generator" writes a small
// report and returns the error count the test asks for.
#include "pipeline/convertmain.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>

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
    std::string in = p->program_file("in"), out = p->program_file("out");
    int generatorErrors = 0;
    Lines bases;

    Env() {
        for (const auto& d : {in, out}) fs::create_directories(d);
        p->opt.targetpath = p->opt.targetpathRaw = out;
        auto& vt = family_table(*p).vt;
        vt.typeCheck = nullptr;  // the stand-in sources are no VT files
        vt.fileElements = [](Program& ctx, const std::string&) {
            ctx.state<FileElements>().ti_S = "SER1";
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
    ConvertOutcome run(const std::string& src, const std::string& target = "") {
        return fkt_convertmain(*p, src, "", target, kFalse);
    }
};

}  // namespace

// What a failing or unusual run leaves where; paths below the program folder. The plain
// runs of every mode, and the skip of a registered file, are in the end-to-end tests.
TEST(Driver, DisposalByModeAndOption) {
    struct Case {
        const char* what;
        std::string source;
        int errors;
        std::function<void(Program&)> setup;
        Lines present, absent;
        std::string target = "";
        std::optional<std::string> registered = {};  // the register afterwards
    };
    const auto none = [](Program&) {};
    // clang-format off
    const std::vector<Case> cases{
        {"xls error marks", "b.oge", 2, [](Program& p) { p.opt.targetformat = 1; },
         {"out/b.Error.xls", "out/b.oge.Error.oge"}, {"out/b.xls", "in/b.oge"}},
        {"delete mode keeps a failed source, marked", "a.ogd", 1,
         [](Program& p) { p.opt.binfilemodus = 1; },
         {"out/a.csv.Error.csv", "out/a.ogd.Error.ogd"}, {"in/a.ogd", "out/a.ogd"}},
        {"index mode marks a failed source", "a.ogd", 1, [](Program& p) { p.opt.binfilemodus = 2; },
         {"in/a.ogd.Error.ogd", "sourcefiledb.dat"}, {"in/a.ogd"}},
        {"debug keeps the source and registers nothing", "a.ogd", 0,
         [](Program& p) { p.run.bDebug = kTrue; p.opt.binfilemodus = 2; },
         {"out/a.csv", "in/a.ogd", "status.log"}, {}, "", ""},
        // The register line holds the composed target name.
        {"index mode registers", "a.ogd", 0, [](Program& p) {
             p.opt.binfilemodus = 2; p.opt.targetname = 1; p.opt.targetnameformat = "$S_$O"; },
         {"out/SER1_a.csv", "in/a.ogd"}, {}, "", "a.ogd    SER1_a.ogd\r\n"},
        {"empty composed name", "a.ogd", 0,
         [](Program& p) { p.opt.targetname = 1; p.opt.targetnameformat = ""; }, {"out/.csv"}, {}},
        {"explicit target failing", "a.ogd", 1, none, {"explicit.Error.csv"}, {"explicit"},
         "explicit"},
        {"known family without a generator", "u.osd", 0, none, {"out/u.osd.Error.osd"},
         {"in/u.osd"}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Env d;
        d.generatorErrors = c.errors;
        c.setup(*d.p);
        const std::string target = c.target.empty() ? "" : d.p->program_file(c.target);
        const ConvertOutcome r = d.run(d.source(c.source), target);
        EXPECT_EQ(r.failed(), c.errors > 0 || c.source == "u.osd");
        for (const auto& f : c.present) EXPECT_TRUE(fs::exists(d.p->program_file(f))) << f;
        for (const auto& f : c.absent) EXPECT_FALSE(fs::exists(d.p->program_file(f))) << f;
        EXPECT_EQ(d.bases.empty(), c.source == "u.osd");
        if (c.registered) {
            EXPECT_EQ(read_file(d.p->run.strRegisterFile), *c.registered);
        }
    }
}

// Whatever fails along the way, the source's bytes stand afterwards in exactly one
// place: where they were, or where the disposal put them, marked after a failure.
TEST(Driver, NoFailureLosesTheSource) {
    enum Fault { kThrows, kErrors, kMoveBlocked, kRegisterUnwritable };
    for (int mode : {0, 2}) {
        for (Fault fault : {kThrows, kErrors, kMoveBlocked, kRegisterUnwritable}) {
            SCOPED_TRACE(::testing::Message() << "mode " << mode << " fault " << fault);
            Env d;
            const std::string done = d.p->program_file("done");
            d.p->opt.binfilemodus = mode;
            d.p->opt.targetpathsourcefile = d.p->opt.targetpathsourcefileRaw = done;
            d.generatorErrors = fault == kErrors ? 1 : 0;
            if (fault == kThrows)
                family_table(*d.p).vt.convertCSVXLS = [](Program&, const std::string&,
                                                         const std::string&, Flag) -> int {
                    throw std::runtime_error("generator failed");
                };
            // A plain file where the folder should be: no user, root included, moves into it.
            if (fault == kMoveBlocked) write_file(done, "a file, not a folder");
            if (fault == kRegisterUnwritable)
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
            const bool moveFails = fault == kMoveBlocked && mode == 0;
            EXPECT_EQ(r.failed(), moveFails || fault == kThrows || fault == kErrors);
            EXPECT_EQ(r.moveFailed, moveFails);
            if (moveFails) {
                EXPECT_EQ(places, Lines{src});
                EXPECT_NE(read_file(d.p->program_file("error.log")).find("could not be moved"),
                          std::string::npos);
            }
        }
    }
}
