#pragma once
// Binds the five recorder libraries at run time by their symbol names.
//
// A family's library is `lib<LibraryName>.so` (libDllVTFileAccess32.so, ...), searched in
// this order: each folder of QUMBREL_RECLIB_PATH (a colon list), the program folder, the
// folder of the running executable, then the system's library path. It is resolved once
// per Program and closed when the Program ends. A missing library throws
// VbError(53, "File not found: <file>"), a missing symbol
// VbError(453, "Can't find DLL entry point <symbol> in <file>"): the readers' traps
// catch both, so a run without libraries shows zero counts, never a crash.
//
//   const auto& vt = recorder::vt_library(ctx);
//   int32_t h = 0;
//   vt.DllVTopenReadFile(path.c_str(), &h);
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "frame/context.h"
#include "recorder/abi/hn.h"
#include "recorder/abi/kl.h"
#include "recorder/abi/vq.h"
#include "recorder/abi/vt.h"
#include "recorder/abi/vu.h"

namespace qumbrel::recorder {

inline constexpr std::int32_t kErrDllEntryPoint = 453;

// An open shared object; closes itself.
class SharedLibrary {
  public:
    SharedLibrary() = default;
    SharedLibrary(void* handle, std::filesystem::path path, std::string fileName)
        : handle_(handle), path_(std::move(path)), fileName_(std::move(fileName)) {}
    SharedLibrary(SharedLibrary&& other) noexcept;
    SharedLibrary& operator=(SharedLibrary&& other) noexcept;
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;
    ~SharedLibrary();

    // The address of `symbol`; throws VbError 453 when the library lacks it.
    void* symbol(const char* symbol) const;
    const std::filesystem::path& path() const { return path_; }  // as loaded
    const std::string& file_name() const { return fileName_; }   // libX.so

  private:
    void* handle_ = nullptr;
    std::filesystem::path path_;
    std::string fileName_;
};

#define QUMBREL_LOADER_MEMBER(name) name##_fn name = nullptr;

struct VtLibrary {
    SharedLibrary lib;
    QUMBREL_VT_FUNCTIONS(QUMBREL_LOADER_MEMBER)
};
struct VuLibrary {
    SharedLibrary lib;
    QUMBREL_VU_FUNCTIONS(QUMBREL_LOADER_MEMBER)
};
struct VqLibrary {
    SharedLibrary lib;
    QUMBREL_VQ_FUNCTIONS(QUMBREL_LOADER_MEMBER)
};
struct KlLibrary {
    SharedLibrary lib;
    QUMBREL_KL_FUNCTIONS(QUMBREL_LOADER_MEMBER)
};
struct HnLibrary {
    SharedLibrary lib;
    QUMBREL_HN_FUNCTIONS(QUMBREL_LOADER_MEMBER)
};

#undef QUMBREL_LOADER_MEMBER

// The family's library of this Program, loaded on first use.
const VtLibrary& vt_library(Program& ctx);
const VuLibrary& vu_library(Program& ctx);
const VqLibrary& vq_library(Program& ctx);
const KlLibrary& kl_library(Program& ctx);
const HnLibrary& hn_library(Program& ctx);

// "lib" + name + ".so".
std::string library_file_name(std::string_view libraryName);

// The folders searched before the system's library path, in order.
std::vector<std::filesystem::path> library_search_folders(const Program& ctx);

// Loads `lib<libraryName>.so` by the search order above; throws VbError 53.
SharedLibrary load_library(const Program& ctx, std::string_view libraryName);

}  // namespace qumbrel::recorder
