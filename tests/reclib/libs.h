#pragma once
// The five reference libraries opened straight from the build's bin folder with dlopen,
// every symbol bound through the family headers: the C interface as a vendor's caller
// sees it, without the program's loader.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "reclib/civil.h"
#include "reclib/model.h"
#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "tests/support/test_support.h"

#include "recorder/abi/hn.h"
#include "recorder/abi/kl.h"
#include "recorder/abi/vq.h"
#include "recorder/abi/vt.h"
#include "recorder/abi/vu.h"

namespace qumbrel::testing {

// A library opened by name, closed with its owner.
struct Dl {
    std::unique_ptr<void, int (*)(void*)> handle;
    explicit Dl(const std::string& name)
        : handle(::dlopen((std::string(QUMBREL_BIN_DIR) + "/lib" + name + ".so").c_str(),
                          RTLD_NOW | RTLD_LOCAL),
                 ::dlclose) {
        if (!handle) throw std::runtime_error("cannot load lib" + name + ".so");
    }
    template <class F>
    F sym(const char* name) const {
        void* p = ::dlsym(handle.get(), name);
        if (!p) throw std::runtime_error(std::string("missing symbol ") + name);
        return reinterpret_cast<F>(p);
    }
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

// A library call that must succeed.
#define ASSERT_OK(expr) ASSERT_EQ(expr, abi::kOk)

// A fixed-width field exactly as the library filled it, all its bytes.
struct Text {
    std::string b;
    explicit Text(int width) : b(width, '#') {}  // the library must overwrite every byte
    operator char*() { return b.data(); }
    std::string raw() const { return b; }
    // The text before the zero padding; checks that the padding is all zero.
    std::string str() const {
        const auto end = b.find('\0');
        if (end == std::string::npos) return b;
        if (b.find_first_not_of('\0', end) != std::string::npos) return "<bad padding>";
        return b.substr(0, end);
    }
};

// `n` values from a C array, for comparing with a brace list.
template <class T>
std::vector<int> ints(const T* p, int n) {
    return std::vector<int>(p, p + n);
}

// Fields from "name=value|name=value": whole numbers as int, the rest as text.
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

// A simulated file with batch data and `header`'s fields on top: the per-family scenarios.
inline reclib::RecorderFile scenario(reclib::Family family, reclib::Kind kind, int channels,
                                     int math, int samples, int intervalMs,
                                     std::string_view header) {
    auto f = reclib::simulate({.family = family,
                               .kind = kind,
                               .channels = channels,
                               .mathChannels = math,
                               .samples = samples,
                               .intervalMs = intervalMs,
                               .batch = true});
    put(f.header, header);
    return f;
}

// `N` out-parameters at p[0] .. p[N-1], spliced into a `call`.
template <std::size_t N>
struct Out {
    std::int32_t* p;
};
template <std::size_t N>
Out<N> out(std::int32_t* p) {
    return {p};
}
template <class T>
std::tuple<T> arg(T a) {
    return {a};
}
inline std::tuple<char*> arg(Text& t) {
    return {t};
}
template <std::size_t N>
auto arg(Out<N> a) {
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        return std::tuple(a.p + I...);
    }
    (std::make_index_sequence<N>{});
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

// The fixture of the per-family tests: the library, a folder for its files, a handle,
// out-parameters, and a buffer for the texts a test does not look at.
template <class Api>
class Capi : public ::testing::Test {
  protected:
    // `f` written into the folder; its path.
    std::string write(const reclib::RecorderFile& f, const char* name, bool damaged = false) {
        std::string error;
        if (!reclib::write_file(f, dir.file(name), {.damaged = damaged}, &error)) {
            throw std::runtime_error(error);
        }
        return dir.file(name);
    }
    Api api;
    TempDir dir;
    std::int32_t h = 0, x[34] = {};
    double lo = 0, hi = 0;
    Text any{64};
};

}  // namespace qumbrel::testing
