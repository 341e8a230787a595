// The program's run-time binding of the recorder libraries: search order, caching, and
// the two run-time errors the readers' traps expect.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

#include "frame/errors.h"
#include "recorder/library_loader.h"
#include "tests/support/test_support.h"

namespace qumbrel::testing {
namespace {

namespace fs = std::filesystem;

// Sets QUMBREL_RECLIB_PATH for one test, then clears it.
struct ReclibPath {
    explicit ReclibPath(const std::string& v) { ::setenv("QUMBREL_RECLIB_PATH", v.c_str(), 1); }
    ~ReclibPath() { ::unsetenv("QUMBREL_RECLIB_PATH"); }
};

std::int32_t error_number(const std::function<void()>& f, std::string* text) {
    try {
        f();
    } catch (const VbError& e) {
        *text = e.description();
        return e.number();
    }
    return 0;
}

TEST(LibraryLoader, FindsEveryFamilyThroughTheEnvironmentAndCaches) {
    TestProgram p;
    ReclibPath env(std::string("/nonexistent:") + QUMBREL_BIN_DIR);
    const auto& vt = recorder::vt_library(*p);
    EXPECT_EQ(&vt, &recorder::vt_library(*p));  // once per Program
    EXPECT_EQ(vt.lib.path(), fs::path(QUMBREL_BIN_DIR) / "libDllVTFileAccess32.so");
    EXPECT_NE(recorder::vu_library(*p).DllVUGetShortData, nullptr);
    EXPECT_NE(recorder::vq_library(*p).DllVQgetCrcStatus, nullptr);
    EXPECT_NE(recorder::kl_library(*p).DllKLgetAlarm, nullptr);
    EXPECT_NE(recorder::hn_library(*p).DllHNGetFileFifoFloatData, nullptr);
}

TEST(LibraryLoader, MissingLibraryIsError53) {
    // The system's search finds a library this process loaded before (ctest runs each
    // test in a process of its own).
    for (const char* name : {"libDllVTFileAccess32.so", "libDllHNFileAccess.so"}) {
        if (void* loaded = ::dlopen(name, RTLD_NOW | RTLD_NOLOAD)) {
            ::dlclose(loaded);
            GTEST_SKIP() << name << " is already loaded in this process";
        }
    }
    TestProgram p;
    ReclibPath env(p.dir.path().string());
    std::string text;
    EXPECT_EQ(error_number([&] { recorder::vt_library(*p); }, &text), errnum::kFileNotFound);
    EXPECT_EQ(text, "File not found: libDllVTFileAccess32.so");
    // Nothing is cached: a later call tries again.
    EXPECT_EQ(error_number([&] { recorder::hn_library(*p); }, &text), errnum::kFileNotFound);
    EXPECT_EQ(text, "File not found: libDllHNFileAccess.so");
}

TEST(LibraryLoader, MissingSymbolIsError453) {
    TestProgram p;
    // A library by the VT name that holds the VU symbols.
    fs::copy_file(fs::path(QUMBREL_BIN_DIR) / "libDllVUFileAccess.so",
                  p.dir.path() / "libDllVTFileAccess32.so");
    ReclibPath env("/nonexistent");
    std::string text;
    EXPECT_EQ(error_number([&] { recorder::vt_library(*p); }, &text), recorder::kErrDllEntryPoint);
    EXPECT_EQ(text, "Can't find DLL entry point DllVTopenReadFile in libDllVTFileAccess32.so");
}

TEST(LibraryLoader, SearchFoldersInOrder) {
    TestProgram p;
    ReclibPath env("/a::/b");
    const auto folders = recorder::library_search_folders(*p);
    ASSERT_GE(folders.size(), 4u);
    EXPECT_EQ(folders[0], "/a");
    EXPECT_EQ(folders[1], "/b");
    EXPECT_EQ(folders[2], p->info.folder);
    EXPECT_EQ(folders[3], fs::read_symlink("/proc/self/exe").parent_path());
}

}  // namespace
}  // namespace qumbrel::testing
