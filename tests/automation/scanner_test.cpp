// The folder scanner on temporary trees: pattern and depth order, the pattern rules,
// links, hidden folders, the guard, and the relative folder of a found file.
#include "automation/scanner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "automation/wildcard.h"
#include "frame/errors.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::as_ordinary_user;
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
    void touch(const std::string& rel) {
        fs::create_directories(fs::path(src + "/" + rel).parent_path());
        write_file(src + "/" + rel, "x");
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
    // clang-format off
    const std::vector<std::tuple<std::string, std::string, bool>> cases{
        {"*.OGD", "run.ogd", true}, {"*.OGD", ".OGD", true}, {"*.OGD", "run.ogdx", false},
        {"*.OGD", "run.og", false}, {"r?n*.*d", "RUN.a.ogd", true}, {"r?n", "rn", false},
        {"a[1]*", "a[1]b", true} /* brackets are plain */, {"*", "", true}, {"", "a", false},
        // Many stars against a long name that almost matches finishes quickly.
        {"*a*a*a*a*a*a*a*a*b", std::string(5000, 'a'), false}};
    // clang-format on
    for (const auto& [pattern, name, match] : cases)
        EXPECT_EQ(wildcard_match(pattern, name), match) << pattern << " " << name.substr(0, 20);
}

TEST_F(Scanner, PatternAfterPatternDeepestFoldersFirst) {
    // Extensions match without regard to case; KL files only through the user pattern.
    for (const char* f : {"top.ogd", "top.osd", "a/b/deep.ogd", "a/mid.OGD", "a/b/deep.osd",
                          "c/side.ogd", "a/b/other.txt", "a/b/run.kld"})
        touch(f);
    EXPECT_EQ(scan(), (Lines{"a/b/deep.ogd", "a/mid.OGD", "c/side.ogd", "top.ogd", "a/b/deep.osd",
                             "top.osd"}));
}

TEST_F(Scanner, UserPatternAndThePatternWithoutADot) {
    for (const char* f : {"x/run.KLD", "run.kle", "abc", "d/Alpha.txt", "banana.ogd"}) touch(f);
    p->opt.filetyp = 3;
    // " a " becomes "a*"; a dot behind the first character adds nothing, one in front "*".
    const std::vector<std::pair<std::string, Lines>> cases{
        {"*.kld", {"x/run.KLD"}}, {" a ", {"d/Alpha.txt", "abc"}}, {"ab.c", {}}, {".x", {}}};
    for (const auto& [pattern, found] : cases) {
        p->opt.filetypuserdef = pattern;
        EXPECT_EQ(scan(), found) << pattern;
    }
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
    touch("locked/a.ogd");
    touch("open/b.ogd");
    fs::permissions(src + "/locked", fs::perms::none);
    const auto skipped = as_ordinary_user(p.dir.path(), [&] {
        return scan() == Lines{"open/b.ogd"} && !fs::exists(p->program_file("error.log"));
    });
    fs::permissions(src + "/locked", fs::perms::owner_all);
    if (!skipped) GTEST_SKIP() << "cannot run as an ordinary user";
    EXPECT_TRUE(*skipped);
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
}

TEST(GetSubfolder, RelativeFolderOfAFoundFile) {
    TestProgram p;
    p->opt.sourcepath = "/data/in";
    EXPECT_EQ(fkt_getsubfolder(*p, "/data/in/a/b/f.ogd"), "a/b/");
    EXPECT_EQ(fkt_getsubfolder(*p, "/data/in/f.ogd"), "");
    // A source folder stored with its closing separator cuts the first character, and a
    // file directly in it has no subfolder.
    p->opt.sourcepath = "/data/in/";
    EXPECT_EQ(fkt_getsubfolder(*p, "/data/in/sub/f.ogd"), "ub/");
    try {
        fkt_getsubfolder(*p, "/data/in/f.ogd");
        ADD_FAILURE() << "no error";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), errnum::kInvalidArgument);
    }
}
