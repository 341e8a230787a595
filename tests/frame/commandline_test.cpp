#include "frame/commandline.h"

#include <gtest/gtest.h>

#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;

namespace {

using Tokens = std::vector<std::string>;

Tokens cut(std::string_view line) {
    Tokens t;
    fkt_getcommandtokens(line, t, "/");
    return t;
}

TEST(CommandTokens, CutAtTheSeparator) {
    EXPECT_TRUE(cut("").empty());
    EXPECT_EQ(cut("/SOURCE:C:\\a.ogd /TARGET:C:\\out\\name /SUBFOLDER:x\\"),
              (Tokens{"SOURCE:C:\\a.ogd", "TARGET:C:\\out\\name", "SUBFOLDER:x\\"}));
    EXPECT_EQ(cut("\"/SOURCE:C:\\a.ogd\""), Tokens{"SOURCE:C:\\a.ogd"});
    EXPECT_EQ(cut("\"/DEBUG /FDA"), (Tokens{"\"", "DEBUG", "FDA"}));
    EXPECT_EQ(cut(" / /debug  /  "), Tokens{"debug"});
    EXPECT_EQ(cut("\""), Tokens{"\""});
    Tokens t;
    EXPECT_EQ(fkt_getcommandtokens("/a/b", t, "/"), 2u);
}

TEST(CommandTokens, PosixArgumentsFeedTheSameTokens) {
    auto p = parse_arguments({"/SOURCE:/data/a.ogd", "--debug", "--target=/out/name", "--subfolder",
                              "x/", "/fda", "/other/path", "--from-service", "--no-splash",
                              "--configuration"});
    ASSERT_EQ(p.error, "");
    EXPECT_EQ(p.tokens,
              (Tokens{"SOURCE:/data/a.ogd", "DEBUG", "TARGET:/out/name", "SUBFOLDER:x/", "fda",
                      "/other/path", "STARTSFROMSERVICE", "NOSPLASH", "CONFIGURATION"}));
    auto extra = parse_arguments({"--headless", "--quiet", "--home", "/h", "--info=/f.ogd",
                                  "--version", "--help", "--auto", "--once"});
    ASSERT_EQ(extra.error, "");
    EXPECT_TRUE(extra.extra.headless && extra.extra.quiet && extra.extra.version &&
                extra.extra.help && extra.extra.automatic && extra.extra.once);
    EXPECT_TRUE(extra.tokens.empty());
    EXPECT_EQ(extra.extra.home, "/h");
    EXPECT_EQ(extra.extra.info, "/f.ogd");
    EXPECT_EQ(parse_arguments({"--bogus"}).error, "unknown option --bogus");
    EXPECT_EQ(parse_arguments({"--source"}).error, "option --source needs a value");
}

TEST(CommandTokens, TokenTableOfMain) {
    TestProgram p;
    const std::string file = p->program_file("a.ogd");
    write_file(file, "x");

    apply_command_tokens(*p, {"source:" + file, "TARGET:/out/Name", "SUBFOLDER:x/"});
    EXPECT_EQ(p->run.strSourceFile, file);  // the text after the keyword keeps its case
    EXPECT_EQ(p->run.strTargetName, "/out/Name");
    EXPECT_EQ(p->run.strSubfolder, "x/");

    TestProgram q;
    apply_command_tokens(*q, {"debug:" + file});  // keyword with a path behind one character
    EXPECT_EQ(q->run.bDebug, kTrue);
    EXPECT_EQ(q->run.strSourceFile, file);

    TestProgram r;
    apply_command_tokens(*r, {file, r->program_file("missing.ogd")});
    EXPECT_EQ(r->run.strSourceFile, file);  // a missing bare path is ignored

    TestProgram s;
    apply_command_tokens(*s, {"SOURCE:/first.ogd", "SOURCE:/second.ogd", "STARTSFROMSERVICE",
                              "NOSPLASH", "CONFIGURATION", "FDA"});
    EXPECT_EQ(s->run.strSourceFile, "/second.ogd");  // a later token wins
    EXPECT_TRUE(s->run.bStartsFromService == kTrue && s->run.bNoSplash == kTrue &&
                s->run.bConfiguration == kTrue && s->run.bFda == kTrue);
}

}  // namespace
