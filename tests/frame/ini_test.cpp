#include "frame/ini.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "frame/profile.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TempDir;
using qumbrel::testing::write_file;

namespace {

using Names = std::vector<std::string>;

struct IniTest : ::testing::Test {
    TempDir dir;
    std::string path = dir.file("test.ini");
    clsINI ini{path};
};

TEST_F(IniTest, LookupIsCaseInsensitiveFirstMatchWinsAndValuesAreTrimmed) {
    write_file(path, "[File]\r\nTargetPath = /a \r\nTARGETPATH=/b\r\n[file]\r\ntargetpath=/c\r\n");
    EXPECT_EQ(ini.GetKeyValue("FILE", "targetpath"), "/a");
    EXPECT_EQ(profile::keys(path, "file", 1024), (Names{"TargetPath", "TARGETPATH"}));
    // Values are trimmed and unquoted; comments only at a line's start.
    write_file(path,
               "; comment=1\n[s]\n;k=commented\nk= \"  padded \" \nq=\"half\nsemi=a;b\n"
               "  ;indented=x\n");
    EXPECT_EQ(ini.GetKeyValue("s", "k"), "  padded ");
    EXPECT_EQ(ini.GetKeyValue("s", "q"), "\"half");
    EXPECT_EQ(ini.GetKeyValue("s", "semi"), "a;b");
    EXPECT_EQ(ini.GetKeyValue("s", "indented", {}, std::string("dflt")), "dflt");
}

TEST_F(IniTest, ValueIsCutByTheSevenHundredCharacterBuffer) {
    write_file(path, "[s]\nk=" + std::string(800, 'x') + "\n");
    EXPECT_EQ(ini.GetKeyValue("s", "k").size(), 699u);
    // The cut counts characters, not bytes: a multi-byte character is never split.
    write_file(path, "[s]\nk=" + std::string(698, 'a') + "\xC3\xA4\xC3\xA4\n");
    EXPECT_EQ(ini.GetKeyValue("s", "k"), std::string(698, 'a') + "\xC3\xA4");
}

// The optional file argument is created empty and used for that call alone.
TEST_F(IniTest, OptionalFileMissingFileAndEmptyValue) {
    const std::string other = dir.file("other.ini");
    EXPECT_EQ(ini.GetKeyValue("s", "k", other, std::string("d")), "d");
    EXPECT_TRUE(std::filesystem::exists(other));
    EXPECT_EQ(read_file(other), "");
    ASSERT_TRUE(ini.CreateKeyValue("s", "k", "v", other));
    EXPECT_EQ(ini.GetKeyValue("s", "k", other), "v");
    EXPECT_FALSE(std::filesystem::exists(path));
    // An empty value, a missing key or a missing file gives the default.
    write_file(path, "[s]\nempty=\n");
    ini.DefaultReturnValue("fallback");
    EXPECT_EQ(ini.GetKeyValue("s", "empty"), "fallback");
    EXPECT_EQ(ini.GetKeyValue("s", "absent"), "fallback");
    EXPECT_EQ(clsINI(dir.file("missing.ini")).GetKeyValue("s", "k", {}, std::string("d")), "d");
    EXPECT_FALSE(std::filesystem::exists(dir.file("missing.ini")));
}

TEST_F(IniTest, WriteKeepsOtherLinesOrderAndEitherLineEnd) {
    write_file(path, "; head\r\n[a]\r\nx=1\r\n\r\n[b]\r\ny=2\r\n");
    ASSERT_TRUE(ini.CreateKeyValue("A", "X", "10"));
    ASSERT_TRUE(ini.CreateKeyValue("a", "new", "n"));
    ASSERT_TRUE(ini.CreateKeyValue("c", "z", "3"));
    EXPECT_EQ(read_file(path),
              "; head\r\n[a]\r\nx=10\r\nnew=n\r\n\r\n[b]\r\ny=2\r\n[c]\r\nz=3\r\n");

    std::filesystem::remove(path);  // a missing file is created
    ASSERT_TRUE(ini.CreateKeyValue("s", "k", "v"));
    EXPECT_EQ(read_file(path), "[s]\r\nk=v\r\n");
    write_file(path, "[s]\nk=v\n");
    ASSERT_TRUE(ini.CreateKeyValue("s", "k2", "w"));
    EXPECT_EQ(read_file(path), "[s]\nk=v\nk2=w\n");

    // Line breaks in a value cannot forge keys.
    ASSERT_TRUE(ini.CreateKeyValue("s", "k", "v\r\n[evil]\r\nx=1"));
    EXPECT_EQ(ini.GetSections(), Names{"s"});
}

TEST_F(IniTest, DeleteAndRename) {
    write_file(path, "[a]\nx=1\ny=2\n[b]\nz=3\n");
    ASSERT_TRUE(ini.DeleteKeyValue("a", "x"));
    EXPECT_EQ(ini.GetKeysInSection("a"), (Names{"x", "y"}));
    EXPECT_EQ(ini.GetKeyValue("a", "x", {}, std::string("gone")), "gone");
    ASSERT_TRUE(ini.DeleteKey("a", "x"));
    ASSERT_TRUE(ini.RenameKey("a", "y", "w"));
    EXPECT_EQ(ini.GetKeysInSection("a"), Names{"w"});
    EXPECT_EQ(ini.GetKeyValue("a", "w"), "2");
    ASSERT_TRUE(ini.RenameSection("b", "c"));
    ASSERT_TRUE(ini.RenameSection("c", "C"));  // same name: nothing lost
    ASSERT_TRUE(ini.DeleteSection("a"));
    EXPECT_EQ(ini.GetSections(), Names{"c"});
    EXPECT_EQ(ini.GetKeyValue("c", "z"), "3");
}

TEST_F(IniTest, HostileFilesGiveDefaultsNotCrashes) {
    std::string binary;
    for (int i = 0; i < 100000; ++i) binary.push_back(static_cast<char>((i * 7919) & 0xFF));
    write_file(path, binary);
    (void)ini.GetSections();
    EXPECT_EQ(ini.GetKeyValue("file", "targetpath", {}, std::string("d")), "d");

    write_file(path, "[s]\nk=v\n" + std::string(profile::kMaxFileBytes, '#'));
    EXPECT_EQ(profile::probe(path), profile::FileState::TooLarge);
    EXPECT_EQ(ini.GetKeyValue("s", "k", {}, std::string("d")), "d");
    EXPECT_FALSE(ini.CreateKeyValue("s", "k", "w"));  // never rewrites what it could not read

    std::filesystem::create_directory(dir.file("adir"));
    EXPECT_EQ(clsINI(dir.file("adir")).GetKeyValue("s", "k", {}, std::string("d")), "d");
}

}  // namespace
