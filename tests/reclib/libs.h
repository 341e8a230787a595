#pragma once
// The five reference libraries opened straight from the build's bin folder with dlopen,
// every symbol bound through the family headers: the C interface as a vendor's caller
// sees it, without the program's loader.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "reclib/civil.h"
#include "reclib/model.h"
#include "reclib/writer.h"

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

#define QUMBREL_TEST_API(Name, Functions, library) \
    struct Name {                                  \
        Dl dl{library};                            \
        Functions(QUMBREL_TEST_MEMBER)             \
    };
QUMBREL_TEST_API(VtApi, QUMBREL_VT_FUNCTIONS, abi::kVtLibraryName)
QUMBREL_TEST_API(VuApi, QUMBREL_VU_FUNCTIONS, abi::kVuLibraryName)
QUMBREL_TEST_API(VqApi, QUMBREL_VQ_FUNCTIONS, abi::kVqLibraryName)
QUMBREL_TEST_API(KlApi, QUMBREL_KL_FUNCTIONS, abi::kKlLibraryName)
QUMBREL_TEST_API(HnApi, QUMBREL_HN_FUNCTIONS, abi::kHnLibraryName)
#undef QUMBREL_TEST_API
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

// `n` values from a C array, for comparing with a brace list.
template <class T>
std::vector<int> ints(const T* p, int n) {
    return std::vector<int>(p, p + n);
}

// Fields from "name=value|name=value": whole numbers as int, other numbers as double,
// the rest as text.
inline reclib::Fields& put(reclib::Fields& f, std::string_view text) {
    while (!text.empty()) {
        const std::string item(text.substr(0, text.find('|')));
        text.remove_prefix(std::min(text.size(), item.size() + 1));
        const auto eq = item.find('=');
        const std::string name = item.substr(0, eq), value = item.substr(eq + 1);
        char* end = nullptr;
        const long n = std::strtol(value.c_str(), &end, 10);
        if (!value.empty() && *end == '\0') {
            f.set(name, static_cast<std::int32_t>(n));
            continue;
        }
        const double d = std::strtod(value.c_str(), &end);
        if (!value.empty() && *end == '\0') {
            f.set(name, d);
        } else {
            f.set(name, value);
        }
    }
    return f;
}
inline reclib::Fields rec(std::string_view text) {
    reclib::Fields f;
    return put(f, text);
}

// `N` out-parameters at p[0] .. p[N-1], spliced into a `call`.
template <std::size_t N>
struct Out {
    static constexpr std::size_t kCount = N;
    std::int32_t* p;
};
template <std::size_t N>
Out<N> out(std::int32_t* p) {
    return {p};
}
template <class T>
auto arg(T& a) {
    if constexpr (requires { T::kCount; }) {
        return [&]<std::size_t... I>(std::index_sequence<I...>) {
            return std::tuple(a.p + I...);
        }
        (std::make_index_sequence<T::kCount>{});
    } else if constexpr (requires { a.raw(); }) {
        return std::tuple<char*>(a);
    } else {
        return std::tuple<T>(a);
    }
}
// f(args...) with every Out<N> expanded to its N pointers.
template <class F, class... A>
auto call(F f, A&&... a) {
    return std::apply(f, std::tuple_cat(arg(a)...));
}

// Every family's toDateTime against the calendar, on the epoch, a leap day, before
// 1970 and the last 32-bit second.
template <class F>
void expect_dates(F toDateTime) {
    for (std::int32_t s : {0, 951'868'799, 1'700'000'000, -1, INT32_MAX}) {
        std::int32_t v[6] = {-1, -1, -1, -1, -1, -1};
        toDateTime(s, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5]);
        const reclib::CivilTime t = reclib::to_civil(s);
        EXPECT_EQ(ints(v, 6),
                  std::vector<int>({t.year, t.month, t.day, t.hour, t.minute, t.second}))
            << s;
    }
}

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

// The fixture of the per-family tests: the library and a folder for its files.
template <class Api>
class Capi : public ::testing::Test {
  protected:
    Api api;
    RecFiles files;
};

}  // namespace qumbrel::testing
