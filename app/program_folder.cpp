#include "app/program_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace qumbrel {

namespace fs = std::filesystem;

namespace {

// A program folder of its own starts with the shipped language files and the VQ message
// catalogues beside them, so the default language resolves there; files the user already
// has are left alone.
void provide_language_files(const ProgramLocation& loc) {
    std::error_code ec;
    if (loc.exeFolder.empty() || fs::equivalent(loc.folder, loc.exeFolder, ec)) return;
    fs::create_directories(loc.folder, ec);
    for (fs::directory_iterator it(loc.exeFolder, ec), end; !ec && it != end; it.increment(ec)) {
        const fs::path& f = it->path();
        if ((f.extension() != ".lng" && f.extension() != ".bin") || !it->is_regular_file(ec))
            continue;
        const fs::path target = fs::path(loc.folder) / f.filename();
        std::error_code copyError;
        if (!fs::exists(target, copyError))
            // Shipped language files into the program folder at start-up, before any
            // Program (and its file layer) exists; a failed copy only leaves texts English.
            fs::copy_file(f, target, fs::copy_options::skip_existing,
                          copyError);  // before any Program: no file layer yet
    }
}

ProgramLocation choose(const std::optional<std::string>& home, const char* argv0);

}  // namespace

ProgramLocation locate_program(const std::optional<std::string>& home, const char* argv0) {
    ProgramLocation loc = choose(home, argv0);
    provide_language_files(loc);
    return loc;
}

namespace {

ProgramLocation choose(const std::optional<std::string>& home, const char* argv0) {
    ProgramLocation loc;
    std::error_code ec;
    fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    if (ec) exe = fs::absolute(argv0 ? argv0 : "qumbrel", ec);
    loc.exeFolder = exe.parent_path().string();
    loc.baseName = exe.stem().string();
    if (loc.baseName.empty()) loc.baseName = "qumbrel";

    if (home && !home->empty()) {
        loc.folder = fs::absolute(*home, ec).string();
        return loc;
    }
    if (const char* env = std::getenv("QUMBREL_HOME"); env && *env) {
        loc.folder = fs::absolute(env, ec).string();
        return loc;
    }
    if (::access(loc.exeFolder.c_str(), W_OK) == 0) {
        loc.folder = loc.exeFolder;
        return loc;
    }
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    const char* userHome = std::getenv("HOME");
    fs::path config =
        xdg && *xdg ? fs::path(xdg) : fs::path(userHome ? userHome : "/tmp") / ".config";
    loc.folder = (config / "qumbrel").string();
    fs::create_directories(loc.folder, ec);
    return loc;
}

}  // namespace

}  // namespace qumbrel
