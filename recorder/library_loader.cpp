#include "recorder/library_loader.h"

#include <dlfcn.h>

#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include "frame/errors.h"

namespace qumbrel::recorder {

namespace {

// Loaded libraries of one Program.
struct LoaderState {
    std::unique_ptr<VtLibrary> vt;
    std::unique_ptr<VuLibrary> vu;
    std::unique_ptr<VqLibrary> vq;
    std::unique_ptr<KlLibrary> kl;
    std::unique_ptr<HnLibrary> hn;
};

void* try_open(const std::string& name) {
    return ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
}

template <class Fn>
Fn bind(const SharedLibrary& lib, const char* name) {
    return reinterpret_cast<Fn>(lib.symbol(name));
}

#define QUMBREL_LOADER_BIND(name) out->name = bind<name##_fn>(out->lib, #name);

template <class Lib>
const Lib& cached(std::unique_ptr<Lib>& slot, const Program& ctx, std::string_view name,
                  void (*bindAll)(Lib*)) {
    if (!slot) {
        auto lib = std::make_unique<Lib>();
        lib->lib = load_library(ctx, name);
        bindAll(lib.get());
        slot = std::move(lib);
    }
    return *slot;
}

void bind_vt(VtLibrary* out) {
    QUMBREL_VT_FUNCTIONS(QUMBREL_LOADER_BIND)
}
void bind_vu(VuLibrary* out) {
    QUMBREL_VU_FUNCTIONS(QUMBREL_LOADER_BIND)
}
void bind_vq(VqLibrary* out) {
    QUMBREL_VQ_FUNCTIONS(QUMBREL_LOADER_BIND)
}
void bind_kl(KlLibrary* out) {
    QUMBREL_KL_FUNCTIONS(QUMBREL_LOADER_BIND)
}
void bind_hn(HnLibrary* out) {
    QUMBREL_HN_FUNCTIONS(QUMBREL_LOADER_BIND)
}

#undef QUMBREL_LOADER_BIND

}  // namespace

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)),
      path_(std::move(other.path_)),
      fileName_(std::move(other.fileName_)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    if (this != &other) {
        if (handle_) ::dlclose(handle_);
        handle_ = std::exchange(other.handle_, nullptr);
        path_ = std::move(other.path_);
        fileName_ = std::move(other.fileName_);
    }
    return *this;
}

SharedLibrary::~SharedLibrary() {
    if (handle_) ::dlclose(handle_);
}

void* SharedLibrary::symbol(const char* name) const {
    void* address = handle_ ? ::dlsym(handle_, name) : nullptr;
    if (!address) {
        throw VbError(kErrDllEntryPoint,
                      "Can't find DLL entry point " + std::string(name) + " in " + fileName_);
    }
    return address;
}

std::string library_file_name(std::string_view libraryName) {
    return "lib" + std::string(libraryName) + ".so";
}

std::vector<std::filesystem::path> library_search_folders(const Program& ctx) {
    std::vector<std::filesystem::path> folders;
    if (const char* env = std::getenv("QUMBREL_RECLIB_PATH")) {
        std::string_view rest(env);
        while (!rest.empty()) {
            const auto colon = rest.find(':');
            const auto part = rest.substr(0, colon);
            if (!part.empty()) folders.emplace_back(part);
            if (colon == std::string_view::npos) break;
            rest.remove_prefix(colon + 1);
        }
    }
    if (!ctx.info.folder.empty()) folders.push_back(ctx.info.folder);
    std::error_code ec;
    const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (!ec && exe.has_parent_path()) folders.push_back(exe.parent_path());
    return folders;
}

SharedLibrary load_library(const Program& ctx, std::string_view libraryName) {
    const std::string file = library_file_name(libraryName);
    for (const auto& folder : library_search_folders(ctx)) {
        const auto candidate = folder / file;
        std::error_code ec;
        if (!std::filesystem::is_regular_file(candidate, ec)) continue;
        if (void* handle = try_open(candidate.string())) return {handle, candidate, file};
    }
    // The system's own search (LD_LIBRARY_PATH, ld.so.cache, default folders).
    if (void* handle = try_open(file)) return {handle, file, file};
    throw VbError(errnum::kFileNotFound, "File not found: " + file);
}

const VtLibrary& vt_library(Program& ctx) {
    return cached(ctx.state<LoaderState>().vt, ctx, abi::kVtLibraryName, &bind_vt);
}
const VuLibrary& vu_library(Program& ctx) {
    return cached(ctx.state<LoaderState>().vu, ctx, abi::kVuLibraryName, &bind_vu);
}
const VqLibrary& vq_library(Program& ctx) {
    return cached(ctx.state<LoaderState>().vq, ctx, abi::kVqLibraryName, &bind_vq);
}
const KlLibrary& kl_library(Program& ctx) {
    return cached(ctx.state<LoaderState>().kl, ctx, abi::kKlLibraryName, &bind_kl);
}
const HnLibrary& hn_library(Program& ctx) {
    return cached(ctx.state<LoaderState>().hn, ctx, abi::kHnLibraryName, &bind_hn);
}

}  // namespace qumbrel::recorder
