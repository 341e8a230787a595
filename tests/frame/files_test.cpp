// File utilities and the registry store.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>

#include "frame/apifile.h"
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
    EXPECT_EQ(Cls_APIFile::GetFileNameNoExtension("/data/in/a.b.ogd"), "a.b");
    EXPECT_EQ(Cls_APIFile::GetFileExtension("/data/in/a.b.ogd", false), ".ogd");
    // A dot in a folder name is no extension.
    EXPECT_EQ(Cls_APIFile::GetFileExtension("/data/in.d/noext", false), "");
    EXPECT_EQ(Cls_APIFile::GetFileNoExtension("/data/in.d/noext"), "/data/in.d/noext");
    EXPECT_EQ(Cls_APIFile::GetFilePath("/a.ogd"), "/");
    EXPECT_EQ(Cls_APIFile::GetFilePath("a.ogd"), "");
    EXPECT_EQ(Cls_APIFile::GetDrive("C:\\x"), "C:");
}

TEST(ApiFile, CopyMoveRenameDelete) {
    TempDir d;
    Cls_APIFile api;
    write_file(d.file("a.ogd"), "payload");
    EXPECT_EQ(api.CopyFile(d.file("a.ogd"), d.file("b.ogd")), 0);
    EXPECT_EQ(read_file(d.file("b.ogd")), "payload");
    EXPECT_EQ(api.MoveFile(d.file("b.ogd"), d.file("c.ogd")), 0);
    EXPECT_EQ(api.MoveFile(d.file("b.ogd"), d.file("c.ogd")), ENOENT);  // b is gone
    EXPECT_EQ(api.RenameFile(d.file("c.ogd"), d.file("d.ogd")), 0);
    EXPECT_EQ(api.DeleteFile(d.file("d.ogd")), 0);
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

TEST(Registry, RootCheckValuesAndErrors) {
    TempDir d;
    RegistryStore reg(d.file("registry.ini"));
    const std::string key = "HKEY_LOCAL_MACHINE\\SYSTEM\\Y";
    EXPECT_EQ(reg.SetRegDWORD(key, "TypesSupported", 7), "");
    std::string v;
    EXPECT_EQ(reg.ReadRegValue(key, "typessupported", v), "");
    EXPECT_EQ(v, "7");
    EXPECT_EQ(reg.DeleteRegValue(key, "TypesSupported"), "");
    EXPECT_EQ(reg.ReadRegValue(key, "TypesSupported", v), "");
    EXPECT_EQ(v, "");
    // Any text comes back as it was set: none reads as a DWORD or loses blanks or quotes.
    for (const char* text : {"dword:12", "sz:", "  padded\t", "\"quoted\"", "a \"b\"", ""}) {
        ASSERT_EQ(reg.SetRegString(key, "v", text), "") << text;
        EXPECT_EQ(reg.ReadRegValue(key, "v", v), "");
        EXPECT_EQ(v, text);
    }

    EXPECT_EQ(reg.SetRegString("HKEY_NOWHERE\\X", "a", "b"), "Incorrect Format: HKEY_NOWHERE\\X");
    EXPECT_EQ(reg.ReadRegValue("SOFTWARE\\X", "a", v), "Incorrect Format: SOFTWARE\\X");
    EXPECT_EQ(reg.CreateRegKey("HKEY_USERSX"), "Incorrect Format: HKEY_USERSX");
    EXPECT_EQ(RegistryStore::check_root("HKEY_DYN_DATA"), "");  // a root alone is a key
    EXPECT_EQ(RegistryStore::check_root("hkey_users\\x"), "Incorrect Format: hkey_users\\x");

    RegistryStore broken(d.file("no/folder/registry.ini"));
    EXPECT_NE(broken.SetRegString("HKEY_USERS\\a", "b", "c"), "");
    EXPECT_EQ(broken.ReadRegValue("HKEY_USERS\\a", "b", v), "");
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
        SCOPED_TRACE(key + "/" + name);
        EXPECT_TRUE(reg.SetRegString(key, name, "v").starts_with("Error"));
        EXPECT_TRUE(reg.SetRegDWORD(key, name, 1).starts_with("Error"));
    }
    EXPECT_TRUE(reg.CreateRegKey("HKEY_USERS\\a]x").starts_with("Error"));
    EXPECT_EQ(read_file(d.file("registry.ini")), before);
}

}  // namespace
