// The program's run-time binding of the recorder libraries: search order, caching, and
// the two run-time errors the readers' traps expect.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>

#include "frame/errors.h"
#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "recorder/library_loader.h"
#include "tests/support/test_support.h"

namespace qumbrel::testing {
namespace {

namespace fs = std::filesystem;

// Sets QUMBREL_RECLIB_PATH for one test and restores it.
class ReclibPath {
  public:
    explicit ReclibPath(const std::string& value) {
        if (const char* old = std::getenv("QUMBREL_RECLIB_PATH")) old_ = old;
        ::setenv("QUMBREL_RECLIB_PATH", value.c_str(), 1);
    }
    ~ReclibPath() {
        if (old_) {
            ::setenv("QUMBREL_RECLIB_PATH", old_->c_str(), 1);
        } else {
            ::unsetenv("QUMBREL_RECLIB_PATH");
        }
    }

  private:
    std::optional<std::string> old_;
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

    const std::string file = p.dir.file("a.oge");
    ASSERT_TRUE(reclib::write_file(reclib::simulate({.channels = 2, .samples = 10}), file));
    std::int32_t h = 0;
    ASSERT_EQ(vt.DllVTopenReadFile(file.c_str(), &h), abi::kOk);
    std::int32_t groups = 0, width = 0;
    vt.DllVTgetGroupNumFile(h, &groups, &width);
    EXPECT_EQ(groups, 2);
    EXPECT_EQ(vt.DllVTcloseReadFile(h), abi::kOk);
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

TEST(LibraryLoader, MissingSymbolIsError453AndProgramFolderComesAfterTheEnvironment) {
    TestProgram p;
    // A library by the VT name that holds the VU symbols.
    fs::copy_file(fs::path(QUMBREL_BIN_DIR) / "libDllVUFileAccess.so",
                  p.dir.path() / "libDllVTFileAccess32.so");
    {
        ReclibPath env("/nonexistent");
        std::string text;
        EXPECT_EQ(error_number([&] { recorder::vt_library(*p); }, &text),
                  recorder::kErrDllEntryPoint);
        EXPECT_EQ(text, "Can't find DLL entry point DllVTopenReadFile in libDllVTFileAccess32.so");
    }
    TestProgram q;  // the same folder after a good one in the environment
    fs::copy_file(fs::path(QUMBREL_BIN_DIR) / "libDllVUFileAccess.so",
                  q.dir.path() / "libDllVTFileAccess32.so");
    ReclibPath env(QUMBREL_BIN_DIR);
    EXPECT_NO_THROW(recorder::vt_library(*q));
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
    EXPECT_EQ(recorder::library_file_name("DllVQFileAccess"), "libDllVQFileAccess.so");
}

}  // namespace
}  // namespace qumbrel::testing
