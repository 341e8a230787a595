#pragma once
// The five reference libraries opened straight from the build's bin folder with dlopen,
// every symbol bound through the family headers: the C interface as a vendor's caller
// sees it, without the program's loader.
#include <dlfcn.h>

#include <stdexcept>
#include <string>

#include "recorder/abi/hn.h"
#include "recorder/abi/kl.h"
#include "recorder/abi/vq.h"
#include "recorder/abi/vt.h"
#include "recorder/abi/vu.h"

namespace qumbrel::testing {

class Dl {
  public:
    explicit Dl(const std::string& libraryName) {
        const std::string path = std::string(QUMBREL_BIN_DIR) + "/lib" + libraryName + ".so";
        handle_ = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle_) throw std::runtime_error("cannot load " + path);
    }
    ~Dl() { ::dlclose(handle_); }
    Dl(const Dl&) = delete;
    Dl& operator=(const Dl&) = delete;
    template <class F>
    F sym(const char* name) const {
        void* p = ::dlsym(handle_, name);
        if (!p) throw std::runtime_error(std::string("missing symbol ") + name);
        return reinterpret_cast<F>(p);
    }

  private:
    void* handle_ = nullptr;
};

#define QUMBREL_TEST_MEMBER(name) name##_fn name = dl.sym<name##_fn>(#name);

struct VtApi {
    Dl dl{abi::kVtLibraryName};
    QUMBREL_VT_FUNCTIONS(QUMBREL_TEST_MEMBER)
};
struct VuApi {
    Dl dl{abi::kVuLibraryName};
    QUMBREL_VU_FUNCTIONS(QUMBREL_TEST_MEMBER)
};
struct VqApi {
    Dl dl{abi::kVqLibraryName};
    QUMBREL_VQ_FUNCTIONS(QUMBREL_TEST_MEMBER)
};
struct KlApi {
    Dl dl{abi::kKlLibraryName};
    QUMBREL_KL_FUNCTIONS(QUMBREL_TEST_MEMBER)
};
struct HnApi {
    Dl dl{abi::kHnLibraryName};
    QUMBREL_HN_FUNCTIONS(QUMBREL_TEST_MEMBER)
};

#undef QUMBREL_TEST_MEMBER

// A fixed-width field exactly as the library filled it, all `N` bytes.
template <int N>
struct Text {
    char b[N];
    Text() { std::fill(b, b + N, '#'); }  // the library must overwrite every byte
    operator char*() { return b; }
    std::string raw() const { return std::string(b, N); }
    // The text before the zero padding; checks that the padding is all zero.
    std::string str() const {
        std::string s = raw();
        const auto end = s.find('\0');
        if (end == std::string::npos) return s;
        if (s.find_first_not_of('\0', end) != std::string::npos) return "<bad padding>";
        return s.substr(0, end);
    }
};

}  // namespace qumbrel::testing

#include <unistd.h>

#include <atomic>
#include <filesystem>

#include "reclib/writer.h"

namespace qumbrel::testing {

// A temporary folder for written recorder files, removed afterwards.
class RecFiles {
  public:
    RecFiles() {
        static std::atomic<int> serial{0};
        dir_ = std::filesystem::temp_directory_path() /
               ("reclib_" + std::to_string(::getpid()) + "_" + std::to_string(serial++));
        std::filesystem::create_directories(dir_);
    }
    ~RecFiles() {
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    }
    RecFiles(const RecFiles&) = delete;
    RecFiles& operator=(const RecFiles&) = delete;
    std::string write(const reclib::RecorderFile& f, const char* name, bool damaged = false) {
        const auto path = (dir_ / name).string();
        std::string error;
        if (!reclib::write_file(f, path, {.damaged = damaged}, &error)) {
            throw std::runtime_error(error);
        }
        return path;
    }
    std::filesystem::path dir() const { return dir_; }

  private:
    std::filesystem::path dir_;
};

}  // namespace qumbrel::testing
