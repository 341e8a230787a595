#include "app/program_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace qumbrel {

namespace fs = std::filesystem;

ProgramLocation locate_program(const std::optional<std::string>& home, const char* argv0) {
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
    fs::path config = xdg && *xdg ? fs::path(xdg) : fs::path(userHome ? userHome : "/tmp") / ".config";
    loc.folder = (config / "qumbrel").string();
    fs::create_directories(loc.folder, ec);
    return loc;
}

}  // namespace qumbrel
