#include "pipeline/convertmain.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "frame/ini.h"
#include "pipeline/family_table.h"
#include "recorder/file_elements.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;
namespace fs = std::filesystem;

namespace {

// A driver run with stand-in family functions: the VT "generator" writes a small report
// and returns the error count the test asks for.
struct Driver : ::testing::Test {
    TestProgram p;
    std::string in = p->program_file("in");
    std::string out = p->program_file("out");
    int generatorErrors = 0;
    std::vector<std::string> bases;

    void SetUp() override {
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
        auto generator = [this](Program& ctx, const std::string&, const std::string& base, Flag) {
            bases.push_back(base);
            write_file(base + (ctx.opt.targetformat == 1 ? ".xls" : ".tmp"), "report");
            return generatorErrors;
        };
        vt.convertCSVXLS = generator;
    }
    std::string source(const std::string& name = "a.ogd") {
        write_file(in + "/" + name, "recorder bytes");
        return in + "/" + name;
    }
    ConvertOutcome run(const std::string& src, Flag interactive = kFalse,
                       const std::string& subfolder = "", const std::string& target = "") {
        return fkt_convertmain(*p, src, subfolder, target, interactive);
    }
};

TEST_F(Driver, CsvRunWithMoveNamesTheReportAndMovesTheSource) {
    p->opt.targetpathsourcefile = p->opt.targetpathsourcefileRaw = p->program_file("done");
    const auto r = run(source());
    EXPECT_FALSE(r.failed());
    EXPECT_EQ(read_file(out + "/a.csv"), "report");
    EXPECT_FALSE(fs::exists(out + "/a.tmp"));
    EXPECT_FALSE(fs::exists(in + "/a.ogd"));
    EXPECT_EQ(read_file(p->program_file("done/a.ogd")), "recorder bytes");
    ASSERT_EQ(p.host.lines.size(), 6u);  // the stand-in generator lists nothing
    EXPECT_EQ(p.host.lines[0], "names");
    EXPECT_EQ(p.host.lines[1], "start");
    EXPECT_EQ(p.host.lines[2], out + "/a.tmp");
    EXPECT_EQ(p.host.lines[3], "move");
    EXPECT_EQ(p.host.lines[4], "done");
    EXPECT_EQ(p.host.lines[5].rfind("time ", 0), 0u);
    EXPECT_EQ(p.host.lines[5].substr(p.host.lines[5].size() - 3), " ms");
}

TEST_F(Driver, FailedReportAndSourceCarryTheErrorMarks) {
    generatorErrors = 2;
    const auto r = run(source());
    EXPECT_TRUE(r.failed());
    EXPECT_TRUE(fs::exists(out + "/a.csv.Error.csv"));
    // Source folder shorter than 3 characters: the target folder takes the source.
    EXPECT_TRUE(fs::exists(out + "/a.ogd.Error.ogd"));

    p->opt.targetformat = 1;
    run(source("b.oge"));
    EXPECT_TRUE(fs::exists(out + "/b.Error.xls"));
    EXPECT_TRUE(fs::exists(out + "/b.oge.Error.oge"));
}

TEST_F(Driver, DeleteModeDeletesEvenAfterAFailure) {
    p->opt.binfilemodus = 1;
    generatorErrors = 1;
    run(source());
    EXPECT_FALSE(fs::exists(in + "/a.ogd"));
    EXPECT_TRUE(fs::exists(out + "/a.csv.Error.csv"));
}

TEST_F(Driver, IndexModeRegistersOnceAndSkipsRegisteredFilesInTrayRuns) {
    p->opt.binfilemodus = 2;
    p->opt.targetname = 1;
    p->opt.targetnameformat = "$S_$O";
    const std::string src = source();
    run(src);
    EXPECT_TRUE(fs::exists(src));
    EXPECT_EQ(read_file(p->run.strRegisterFile), "a.ogd    SER1_a.ogd\r\n");
    EXPECT_TRUE(fs::exists(out + "/SER1_a.csv"));

    // Tray run: no report, no change, one log line (only in a service run's event log).
    fs::remove(out + "/SER1_a.csv");
    const auto skipped = run(src);
    EXPECT_TRUE(skipped.skipped);
    EXPECT_FALSE(fs::exists(out + "/SER1_a.csv"));

    // Interactive without the main window (a headless one-shot run): converted again on
    // demand, no alert, still one register line.
    run(src, kTrue);
    EXPECT_TRUE(p.host.alerts.empty());
    EXPECT_TRUE(fs::exists(out + "/SER1_a.csv"));
    EXPECT_EQ(read_file(p->run.strRegisterFile), "a.ogd    SER1_a.ogd\r\n");
    fs::remove(out + "/SER1_a.csv");

    // Run page with the main window open: alert, new report, still one register line.
    p.host.mainWindowOpen = true;
    run(src, kTrue);
    ASSERT_EQ(p.host.alerts.size(), 1u);
    EXPECT_EQ(p.host.alerts[0].text, "seen\r\na.ogd\r\n\r\n03:04");
    EXPECT_EQ(p.host.alerts[0].seconds, 4);
    EXPECT_TRUE(fs::exists(out + "/SER1_a.csv"));
    EXPECT_EQ(read_file(p->run.strRegisterFile), "a.ogd    SER1_a.ogd\r\n");
}

TEST_F(Driver, IndexModeMarksAFailedSource) {
    p->opt.binfilemodus = 2;
    generatorErrors = 1;
    const std::string src = source();
    run(src);
    EXPECT_TRUE(fs::exists(src + ".Error.ogd"));
    EXPECT_EQ(read_file(p->run.strRegisterFile), "a.ogd.Error.ogd    a.ogd.Error.ogd\r\n");
}

TEST_F(Driver, DebugModeWritesTheReportAndKeepsTheSource) {
    p->run.bDebug = kTrue;
    p->opt.binfilemodus = 2;
    const std::string src = source();
    run(src);
    EXPECT_TRUE(fs::exists(out + "/a.csv"));
    EXPECT_TRUE(fs::exists(src));
    EXPECT_EQ(read_file(p->run.strRegisterFile), "");
    EXPECT_TRUE(fs::exists(p->program_file("status.log")));
}

TEST_F(Driver, NoconversionOnlyDisposes) {
    p->opt.noconversion = 1;
    run(source());
    EXPECT_TRUE(bases.empty());
    EXPECT_FALSE(fs::exists(out + "/a.csv"));
    EXPECT_TRUE(fs::exists(out + "/a.ogd"));
    EXPECT_NE(std::find(p.host.lines.begin(), p.host.lines.end(), "move"), p.host.lines.end());
}

TEST_F(Driver, DollarTargetPathCreatesFoldersPerFile) {
    p->opt.targetname = 1;
    p->opt.targetpathRaw = out + "/$YYYY/$MM";
    run(source());
    EXPECT_TRUE(fs::exists(out + "/2007/03/a.csv"));
    EXPECT_TRUE(fs::exists(out + "/2007/03/a.ogd"));  // source folder follows the target
}

TEST_F(Driver, SourceNameSameTargetRenamesTheMovedSource) {
    p->opt.targetname = 1;
    p->opt.sourcenamesametarget = "1";
    p->opt.targetnameformat = "$S";
    run(source());
    EXPECT_TRUE(fs::exists(out + "/SER1.csv"));
    EXPECT_TRUE(fs::exists(out + "/SER1.ogd"));
}

TEST_F(Driver, TargetNameAndSubfolder) {
    run(source(), kFalse, "sub/");
    EXPECT_TRUE(fs::exists(out + "/sub/a.csv"));
    EXPECT_TRUE(fs::exists(out + "/sub/a.ogd"));

    const std::string explicitName = p->program_file("explicit");
    run(source("b.ogd"), kFalse, "", explicitName);
    EXPECT_EQ(read_file(explicitName), "report");  // no extension added on success
    generatorErrors = 1;
    run(source("c.ogd"), kFalse, "", explicitName);
    EXPECT_TRUE(fs::exists(explicitName + ".Error.csv"));
}

TEST_F(Driver, UnknownExtensionIsDisposedOfWithNoReport) {
    run(source("notes.txt"));
    EXPECT_TRUE(bases.empty());
    EXPECT_TRUE(fs::exists(out + "/notes.txt"));
    EXPECT_FALSE(fs::exists(out + "/notes.csv"));
}

TEST_F(Driver, KnownFamilyWithoutGeneratorIsMarkedNotLost) {
    run(source("u.osd"));
    EXPECT_TRUE(fs::exists(out + "/u.osd.Error.osd"));
    EXPECT_NE(read_file(p->program_file("error.log")).find("not available in this build"),
              std::string::npos);
}

TEST_F(Driver, MissingTargetFolderTouchesNothing) {
    p->opt.targetpath = p->opt.targetpathRaw = p->program_file("nowhere");
    const std::string src = source();
    const auto r = run(src);
    EXPECT_TRUE(r.pathMissing);
    EXPECT_TRUE(fs::exists(src));
    EXPECT_TRUE(bases.empty());
    EXPECT_NE(read_file(p->program_file("error.log")).find("no path"), std::string::npos);
}

TEST_F(Driver, AFailingMoveIsReportedAndLosesNothing) {
    // A plain file where the folder should be: no user, root included, can move into it.
    write_file(p->program_file("blocker"), "x");
    const std::string done = p->program_file("blocker/done");
    p->opt.targetpathsourcefile = p->opt.targetpathsourcefileRaw = done;
    const std::string src = source();
    const ConvertOutcome outcome = run(src);
    EXPECT_TRUE(outcome.moveFailed);
    EXPECT_TRUE(outcome.failed());
    EXPECT_EQ(read_file(src), "recorder bytes");
    EXPECT_NE(read_file(p->program_file("error.log")).find("could not be moved"),
              std::string::npos);
}

// Whatever fails along the way, the source's bytes stand afterwards in exactly one
// place: where they were, or where the disposal put them, marked after a failure.
TEST_F(Driver, NoFailureLosesTheSource) {
    enum class Fault { GeneratorThrows, GeneratorErrors, MoveBlocked, RegisterUnwritable };
    const std::string done = p->program_file("done");
    int caseNo = 0;
    for (int mode : {0, 2}) {
        for (Fault fault : {Fault::GeneratorThrows, Fault::GeneratorErrors, Fault::MoveBlocked,
                            Fault::RegisterUnwritable}) {
            SCOPED_TRACE("mode " + std::to_string(mode) + " fault " +
                         std::to_string(static_cast<int>(fault)));
            const std::string name = "f" + std::to_string(++caseNo) + ".ogd";
            p->opt.binfilemodus = mode;
            p->opt.targetpathsourcefile = p->opt.targetpathsourcefileRaw = done;
            p->run.strRegisterFile = p->program_file("sourcefiledb.dat");
            fs::remove_all(done);
            generatorErrors = fault == Fault::GeneratorErrors ? 1 : 0;
            auto& vt = family_table(*p).vt;
            const auto keep = vt.convertCSVXLS;
            if (fault == Fault::GeneratorThrows)
                vt.convertCSVXLS = [](Program&, const std::string&, const std::string&,
                                      Flag) -> int {
                    throw std::runtime_error("generator failed");
                };
            if (fault == Fault::MoveBlocked) write_file(done, "a file, not a folder");
            if (fault == Fault::RegisterUnwritable)
                p->run.strRegisterFile = p->program_file("no/such/folder/db.dat");

            const std::string src = source(name);
            const ConvertOutcome r = run(src);
            vt.convertCSVXLS = keep;

            const std::string moved = done + "/" + name;
            std::vector<std::string> places;
            for (const std::string& c : {src, src + ".Error.ogd", moved, moved + ".Error.ogd"}) {
                std::error_code ec;
                if (fs::is_regular_file(c, ec) && read_file(c) == "recorder bytes")
                    places.push_back(c);
            }
            ASSERT_EQ(places.size(), 1u);
            // An index run has nothing to move; a register that cannot be written loses
            // a line of the register, not the file.
            const bool failed = fault == Fault::GeneratorThrows ||
                                fault == Fault::GeneratorErrors ||
                                (fault == Fault::MoveBlocked && mode == 0);
            EXPECT_EQ(r.failed(), failed);
        }
    }
}

}  // namespace
