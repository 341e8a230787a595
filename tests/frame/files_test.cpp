// File utilities, registry store and code page conversion.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>

#include "frame/apifile.h"
#include "frame/codepage.h"
#include "frame/registry.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::as_ordinary_user;
using qumbrel::testing::read_file;
using qumbrel::testing::TempDir;
using qumbrel::testing::write_file;
namespace fs = std::filesystem;

namespace {

TEST(ApiFile, PathTexts) {
    EXPECT_EQ(Cls_APIFile::GetFileName("/data/in/a.b.ogd"), "a.b.ogd");
    EXPECT_EQ(Cls_APIFile::GetFileNameNoExtension("/data/in/a.b.ogd"), "a.b");
    EXPECT_EQ(Cls_APIFile::GetFileExtension("/data/in/a.b.ogd", true), "ogd");
    EXPECT_EQ(Cls_APIFile::GetFileExtension("/data/in/a.b.ogd", false), ".ogd");
    EXPECT_EQ(Cls_APIFile::GetFileExtension("/data/in.d/noext", false), "");
    EXPECT_EQ(Cls_APIFile::GetFileNoExtension("/data/in.d/noext"), "/data/in.d/noext");
    EXPECT_EQ(Cls_APIFile::GetFileNoExtension("/data/in/a.ogd"), "/data/in/a");
    EXPECT_EQ(Cls_APIFile::GetFilePath("/data/in/a.ogd"), "/data/in");
    EXPECT_EQ(Cls_APIFile::GetFilePath("/a.ogd"), "/");
    EXPECT_EQ(Cls_APIFile::GetFilePath("a.ogd"), "");
    EXPECT_EQ(Cls_APIFile::GetDrive("C:\\x"), "C:");
    EXPECT_EQ(Cls_APIFile::GetDrive("/x"), "");
    EXPECT_FALSE(Cls_APIFile::GetWindowsSpecialFolder(2).empty());
}

TEST(ApiFile, CopyMoveRenameDelete) {
    TempDir d;
    Cls_APIFile api;
    write_file(d.file("a.ogd"), "payload");
    EXPECT_EQ(api.CopyFile(d.file("a.ogd"), d.file("b.ogd")), 0);
    EXPECT_EQ(read_file(d.file("b.ogd")), "payload");
    EXPECT_EQ(api.MoveFile(d.file("b.ogd"), d.file("c.ogd")), 0);
    EXPECT_FALSE(fs::exists(d.file("b.ogd")));
    EXPECT_EQ(api.MoveFile(d.file("b.ogd"), d.file("c.ogd")), ENOENT);
    EXPECT_EQ(api.RenameFile(d.file("c.ogd"), d.file("d.ogd")), 0);
    EXPECT_EQ(api.DeleteFile(d.file("d.ogd")), 0);
    EXPECT_EQ(api.DeleteFile(d.file("d.ogd")), ENOENT);

    api.RenameOnCollision = true;
    write_file(d.file("e.ogd"), "e");
    EXPECT_EQ(api.CopyFile(d.file("a.ogd"), d.file("e.ogd")), 0);
    EXPECT_EQ(read_file(d.file("e.ogd")), "e");
    EXPECT_EQ(read_file(d.file("e (2).ogd")), "payload");
}

TEST(ApiFile, AFailingCopyLeavesNoTargetAndTheSourceIntact) {
    TempDir d;
    Cls_APIFile api;
    write_file(d.file("src.ogd"), std::string(3 << 20, 'x'));
    api.failNthWrite = 2;
    EXPECT_NE(api.CopyFile(d.file("src.ogd"), d.file("dst.ogd")), 0);
    EXPECT_FALSE(fs::exists(d.file("dst.ogd")));
    EXPECT_EQ(fs::file_size(d.file("src.ogd")), 3u << 20);
    for (const auto& e : fs::directory_iterator(d.path()))
        EXPECT_EQ(e.path().filename().string().find(".part~"), std::string::npos);
}

TEST(ApiFile, MoveIntoAReadOnlyFolderFailsAndKeepsTheSource) {
    TempDir d;
    fs::create_directory(d.file("ro"));
    write_file(d.file("a.ogd"), "keep");
    fs::permissions(d.file("ro"), fs::perms::owner_read | fs::perms::owner_exec);
    const auto kept = as_ordinary_user(d.path(), [&] {
        return Cls_APIFile().MoveFile(d.file("a.ogd"), d.file("ro/a.ogd")) != 0 &&
               read_file(d.file("a.ogd")) == "keep" && !fs::exists(d.file("ro/a.ogd"));
    });
    if (!kept) GTEST_SKIP() << "cannot run as an ordinary user";
    EXPECT_TRUE(*kept);
}

TEST(ApiFile, MakeFolderTree) {
    TempDir d;
    EXPECT_TRUE(Cls_APIFile::MakeFolderTree(d.file("x/y/z")));
    EXPECT_TRUE(fs::is_directory(d.file("x/y/z")));
    EXPECT_TRUE(Cls_APIFile::MakeFolderTree(d.file("x/y/z")));
    write_file(d.file("plain"), "");
    EXPECT_FALSE(Cls_APIFile::MakeFolderTree(d.file("plain/sub")));
    EXPECT_FALSE(Cls_APIFile::MakeFolderTree(""));
}

TEST(Registry, RootCheckValuesAndErrors) {
    TempDir d;
    RegistryStore reg(d.file("registry.ini"));
    EXPECT_EQ(reg.CreateRegKey("HKEY_LOCAL_MACHINE\\SOFTWARE\\X"), "");
    EXPECT_EQ(reg.SetRegDWORD("HKEY_LOCAL_MACHINE\\SYSTEM\\Y", "TypesSupported", 7), "");
    EXPECT_EQ(reg.SetRegString("HKEY_CURRENT_USER\\Run", "qumbrel", "/usr/bin/qumbrel"), "");
    std::string v;
    EXPECT_EQ(reg.ReadRegValue("HKEY_LOCAL_MACHINE\\SYSTEM\\Y", "typessupported", v), "");
    EXPECT_EQ(v, "7");
    EXPECT_EQ(reg.ReadRegValue("HKEY_CURRENT_USER\\Run", "qumbrel", v), "");
    EXPECT_EQ(v, "/usr/bin/qumbrel");
    EXPECT_EQ(reg.DeleteRegValue("HKEY_CURRENT_USER\\Run", "qumbrel"), "");
    EXPECT_EQ(reg.ReadRegValue("HKEY_CURRENT_USER\\Run", "qumbrel", v), "");
    EXPECT_EQ(v, "");

    EXPECT_EQ(reg.SetRegString("HKEY_NOWHERE\\X", "a", "b"), "Incorrect Format: HKEY_NOWHERE\\X");
    EXPECT_EQ(reg.ReadRegValue("SOFTWARE\\X", "a", v), "Incorrect Format: SOFTWARE\\X");
    EXPECT_EQ(reg.CreateRegKey("HKEY_USERSX"), "Incorrect Format: HKEY_USERSX");

    RegistryStore broken(d.file("no/folder/registry.ini"));
    EXPECT_NE(broken.SetRegString("HKEY_USERS\\a", "b", "c"), "");
    EXPECT_EQ(broken.ReadRegValue("HKEY_USERS\\a", "b", v), "");
}

TEST(Registry, EveryRootNameIsAKeyOfItsOwn) {
    for (const char* root :
         {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE", "HKEY_USERS",
          "HKEY_PERFORMANCE_DATA", "HKEY_CURRENT_CONFIG", "HKEY_DYN_DATA"}) {
        EXPECT_EQ(RegistryStore::check_root(root), "") << root;
        EXPECT_EQ(RegistryStore::check_root(std::string(root) + "\\Software"), "") << root;
    }
    EXPECT_EQ(RegistryStore::check_root("hkey_users\\x"), "Incorrect Format: hkey_users\\x");
}

// Any text comes back as it was set: none reads as a DWORD or loses blanks or quotes.
TEST(Registry, TextValuesReadBackAsWritten) {
    TempDir d;
    RegistryStore reg(d.file("registry.ini"));
    const std::string key = "HKEY_CURRENT_USER\\Software\\Q";
    for (const char* text : {"dword:12", "sz:x", "sz:", "  padded\t", "\"quoted\"", "\"", "a \"b\"",
                             "", "0000000000000000000001"}) {
        ASSERT_EQ(reg.SetRegString(key, "v", text), "") << text;
        std::string v = "stale";
        EXPECT_EQ(reg.ReadRegValue(key, "v", v), "");
        EXPECT_EQ(v, text);
    }
    ASSERT_EQ(reg.SetRegDWORD(key, "n", 4294967295u), "");
    std::string v;
    reg.ReadRegValue(key, "n", v);
    EXPECT_EQ(v, "4294967295");
}

// A key or name that a line of the store cannot hold is refused, and the file stays whole.
TEST(Registry, KeysAndNamesTheStoreCannotHoldAreRefused) {
    TempDir d;
    RegistryStore reg(d.file("registry.ini"));
    ASSERT_EQ(reg.SetRegString("HKEY_USERS\\a", "keep", "1"), "");
    const std::string before = read_file(d.file("registry.ini"));
    const std::pair<std::string, std::string> bad[] = {
        {"HKEY_USERS\\a]\n[b", "m"}, {"HKEY_USERS\\a\r", "m"},  {"HKEY_USERS\\a ", "m"},
        {"HKEY_USERS\\a", "m=n"},    {"HKEY_USERS\\a", "x\ny"}, {"HKEY_USERS\\a", "[s]"},
        {"HKEY_USERS\\a", ";c"},     {"HKEY_USERS\\a", " m"}};
    for (const auto& [key, name] : bad) {
        EXPECT_TRUE(reg.SetRegString(key, name, "v").starts_with("Error")) << key << "/" << name;
        EXPECT_TRUE(reg.SetRegDWORD(key, name, 1).starts_with("Error")) << key << "/" << name;
        std::string v;
        EXPECT_TRUE(reg.ReadRegValue(key, name, v).starts_with("Error")) << key << "/" << name;
    }
    EXPECT_TRUE(reg.CreateRegKey("HKEY_USERS\\a]x").starts_with("Error"));
    EXPECT_EQ(read_file(d.file("registry.ini")), before);
    std::string v;
    EXPECT_EQ(reg.ReadRegValue("HKEY_USERS\\a", "keep", v), "");
    EXPECT_EQ(v, "1");
}

TEST(CodePage, RoundTripsAndReplacesWhatItCannotHold) {
    EXPECT_EQ(cp1252_to_utf8("\x80 \xE4\xFC \x9F"), "\xE2\x82\xAC \xC3\xA4\xC3\xBC \xC5\xB8");
    EXPECT_EQ(utf8_to_cp1252("\xE2\x82\xAC \xC3\xA4 \xE2\x88\x9E"), "\x80 \xE4 ?");
    EXPECT_EQ(utf8_or_cp1252("\xC3\xA4"), "\xC3\xA4");
    EXPECT_EQ(utf8_or_cp1252("\xE4"), "\xC3\xA4");
    EXPECT_FALSE(is_valid_utf8("\xC0\x80"));  // overlong
    EXPECT_EQ(utf8_length("a\xC3\xA4"
                          "b"),
              3u);
}

}  // namespace
