// The folder scanner on temporary trees: pattern order, depth order, the pattern rules,
// links, hidden folders, the guard, and the relative folder of a found file.
#include "automation/scanner.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "automation/wildcard.h"
#include "frame/errors.h"
#include "tests/automation/pumping_host.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

namespace {

struct Scanner : ::testing::Test {
    TestProgram p;
    std::string src = p->program_file("src");
    Lines list{"left over"};

    void SetUp() override {
        fs::create_directories(src);
        p->opt.sourcepath = src;
    }
    std::string touch(const std::string& rel) {
        const std::string path = src + "/" + rel;
        fs::create_directories(fs::path(path).parent_path());
        write_file(path, "x");
        return path;
    }
    Lines scan() {
        fkt_scansourcefolder(*p, list);
        Lines rel;
        for (const auto& f : list) rel.push_back(f.substr(src.size() + 1));
        return rel;
    }
};

}  // namespace

TEST(Wildcard, StarQuestionMarkAndCase) {
    EXPECT_TRUE(wildcard_match("*.OGD", "run.ogd"));
    EXPECT_TRUE(wildcard_match("*.OGD", ".OGD"));
    EXPECT_FALSE(wildcard_match("*.OGD", "run.ogdx"));
    EXPECT_FALSE(wildcard_match("*.OGD", "run.og"));
    EXPECT_TRUE(wildcard_match("r?n*.*d", "RUN.a.ogd"));
    EXPECT_FALSE(wildcard_match("r?n", "rn"));
    EXPECT_TRUE(wildcard_match("a[1]*", "a[1]b"));  // brackets are plain characters
    EXPECT_TRUE(wildcard_match("*", ""));
    EXPECT_FALSE(wildcard_match("", "a"));
    // Many stars against a long name that almost matches finishes quickly.
    EXPECT_FALSE(wildcard_match("*a*a*a*a*a*a*a*a*b", std::string(5000, 'a')));
}

TEST(ScanPatterns, UserPatternIsTrimmedAndKeepsItsCase) {
    Options o;
    o.filetyp = 3;
    o.filetypuserdef = "  *.kld ";
    EXPECT_EQ(scan_patterns(o), (Lines{"*.kld"}));
    o.filetyp = 4;
    EXPECT_TRUE(scan_patterns(o).empty());
}

TEST_F(Scanner, PatternAfterPatternDeepestFoldersFirst) {
    touch("top.ogd");
    touch("top.osd");
    touch("a/b/deep.ogd");
    touch("a/mid.OGD");  // extensions match without regard to case
    touch("a/b/deep.osd");
    touch("c/side.ogd");
    touch("a/b/other.txt");
    touch("a/b/run.kld");  // KL files only through the user pattern
    EXPECT_EQ(scan(), (Lines{"a/b/deep.ogd", "a/mid.OGD", "c/side.ogd", "top.ogd", "a/b/deep.osd",
                             "top.osd"}));
    EXPECT_EQ(list.front(), src + "/a/b/deep.ogd");
}

TEST_F(Scanner, UserPatternAndThePatternWithoutADot) {
    touch("x/run.KLD");
    touch("run.kle");
    touch("abc");
    touch("d/Alpha.txt");
    touch("banana.ogd");
    p->opt.filetyp = 3;
    p->opt.filetypuserdef = "*.kld";
    EXPECT_EQ(scan(), (Lines{"x/run.KLD"}));
    // "a" becomes "a*": every name that starts with an a.
    p->opt.filetypuserdef = " a ";
    EXPECT_EQ(scan(), (Lines{"d/Alpha.txt", "abc"}));
    // A dot behind the first character: nothing is added.
    p->opt.filetypuserdef = "ab.c";
    EXPECT_TRUE(scan().empty());
    // A dot only in front: "*" is added.
    p->opt.filetypuserdef = ".x";
    EXPECT_TRUE(scan().empty());
}

TEST_F(Scanner, SharedWalkListsAsOneSearchPerPattern) {
    // A mixed tree; every file kind of the all-files table in several depths.
    const char* ext[] = {"osd", "OSE", "ogd", "oad", "obd", "hnd",
                         "oge", "oae", "obe", "hns", "txt"};
    int n = 0;
    for (const char* folder : {"", "z/", "b/", "b/a/", "b/a/q/", "B2/", ".h/", "b/c/"})
        for (int i = 0; i < 11; ++i, ++n)
            touch(std::string(folder) + "f" + std::to_string(n % 7) + "." + ext[(i + n) % 11]);
    p->opt.filetyp = 2;
    Lines separate;
    for (const auto& pattern : scan_patterns(p->opt)) fkt_searchfiles(*p, pattern, src, separate);
    ASSERT_TRUE(fkt_scansourcefolder(*p, list));
    EXPECT_EQ(list, separate);
    EXPECT_EQ(list.size(), 80u);  // all but the eight .txt files
}

TEST_F(Scanner, EmptyMissingAndUnknownGiveNothing) {
    EXPECT_FALSE(fkt_scansourcefolder(*p, list));
    EXPECT_TRUE(list.empty());  // the old lines are cleared
    touch("a.ogd");
    p->opt.filetyp = 9;
    EXPECT_FALSE(fkt_scansourcefolder(*p, list));
    p->opt.filetyp = 0;
    p->opt.sourcepath = p->program_file("nowhere");
    EXPECT_FALSE(fkt_scansourcefolder(*p, list));
    EXPECT_FALSE(fs::exists(p->program_file("error.log")));  // and no message
}

TEST_F(Scanner, UnreadableFolderIsSkipped) {
    if (geteuid() == 0) GTEST_SKIP() << "root reads every folder";
    touch("locked/a.ogd");
    touch("open/b.ogd");
    fs::permissions(src + "/locked", fs::perms::none);
    const Lines found = scan();
    fs::permissions(src + "/locked", fs::perms::owner_all);
    EXPECT_EQ(found, (Lines{"open/b.ogd"}));
    EXPECT_FALSE(fs::exists(p->program_file("error.log")));
}

TEST_F(Scanner, LinksAndHiddenEntries) {
    touch("a/b/x.ogd");
    touch(".hidden/h.ogd");                                // hidden folders are searched
    touch("a/.partial.ogd");                               // hidden files are no normal files
    fs::create_directory_symlink(src, src + "/a/b/loop");  // back to the top
    fs::create_directory_symlink(src + "/a", src + "/alias");
    const std::string outside = p->program_file("outside.ogd");
    write_file(outside, "x");
    fs::create_symlink(outside, src + "/linked.ogd");
    fs::create_symlink(p->program_file("gone.ogd"), src + "/dangling.ogd");
    EXPECT_EQ(scan(), (Lines{".hidden/h.ogd", "a/b/x.ogd", "linked.ogd"}));
}

TEST_F(Scanner, DeepTreeNeedsNoDeepStack) {
    std::string rel;
    for (int i = 0; i < 400; ++i) rel += "d/";
    touch(rel + "bottom.ogd");
    touch("top.ogd");
    const Lines found = scan();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0], rel + "bottom.ogd");
    EXPECT_EQ(found[1], "top.ogd");
}

TEST_F(Scanner, GuardAndResultText) {
    touch("a/1.ogd");
    touch("2.ogd");
    list.clear();
    EXPECT_EQ(fkt_searchfiles(*p, "*.ogd", src + "///", list), "2 item(s) found.");
    EXPECT_EQ(list, (Lines{src + "/a/1.ogd", src + "/2.ogd"}));
    // A search that finds another one running returns at once.
    p->state<ScannerState>().searching = true;
    EXPECT_EQ(fkt_searchfiles(*p, "*.ogd", src, list), "");
    EXPECT_EQ(list.size(), 2u);
    p->state<ScannerState>().searching = false;
}

TEST_F(Scanner, ClearedGuardStopsARunningSearch) {
    touch("a/1.ogd");
    touch("b/2.ogd");
    touch("3.ogd");
    // The first folder done, pending events clear the guard.
    qumbrel::testing::PumpingHost host;
    Program ctx(p->info, host, p.clock, p.events, p->regional);
    host.onPump = [&ctx] { cancel_search(ctx); };
    Lines found;
    fkt_searchfiles(ctx, "*.ogd", src, found);
    EXPECT_EQ(found, (Lines{src + "/a/1.ogd"}));
    EXPECT_FALSE(ctx.state<ScannerState>().searching);
}

TEST(GetSubfolder, RelativeFolderOfAFoundFile) {
    TestProgram p;
    p->opt.sourcepath = "/data/in";
    EXPECT_EQ(fkt_getsubfolder(*p, "/data/in/a/b/f.ogd"), "a/b/");
    EXPECT_EQ(fkt_getsubfolder(*p, "/data/in/a/f.ogd"), "a/");
    EXPECT_EQ(fkt_getsubfolder(*p, "/data/in/f.ogd"), "");
    // A source folder stored with its closing separator cuts the first character, and a
    // file directly in it is an invalid argument.
    p->opt.sourcepath = "/data/in/";
    EXPECT_EQ(fkt_getsubfolder(*p, "/data/in/sub/f.ogd"), "ub/");
    for (const char* bad : {"/data/in/f.ogd", "/d"}) {
        try {
            fkt_getsubfolder(*p, bad);
            ADD_FAILURE() << bad;
        } catch (const VbError& e) {
            EXPECT_EQ(e.number(), errnum::kInvalidArgument) << bad;
        }
    }
}
