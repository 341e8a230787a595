#include "automation/autostart.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "frame/errors.h"
#include "frame/log.h"

namespace qumbrel {

namespace fs = std::filesystem;

std::string autostart_entry_path(const Program& ctx) {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    const std::string base = config && *config ? config
                             : home            ? std::string(home) + "/.config"
                                               : std::string("/tmp");
    return base + "/autostart/" + ctx.info.baseName + ".desktop";
}

void fkt_reg_autostart(Program& ctx, bool enable, const std::string& program) {
    try {
        const std::string path = autostart_entry_path(ctx);
        std::error_code ec;
        if (!enable) {
            // The desktop entry is a setting, not a report or a source: a failure is
            // reported below, nothing of the user's data is at stake.
            fs::remove(path, ec);  // a setting, no user data: no file layer
            if (ec) throw VbError(errnum::kPathFileAccessError, path + ": " + ec.message());
            return;
        }
        std::string exe = program;
        if (exe.empty()) exe = fs::read_symlink("/proc/self/exe", ec).string();
        fs::create_directories(fs::path(path).parent_path(), ec);
        const std::string temp = path + ".new";
        {
            std::ofstream entry(temp, std::ios::trunc);
            entry << "[Desktop Entry]\nType=Application\nName=" << ctx.info.baseName << "\nExec=\""
                  << exe << "\"\nX-GNOME-Autostart-enabled=true\n";
            if (!entry) throw VbError(errnum::kPathFileAccessError, "cannot write " + temp);
        }
        // The entry appears whole (a setting of ours, not a report: no file layer).
        fs::rename(temp, path, ec);  // a setting, no user data: no file layer
        if (ec) throw VbError(errnum::kPathFileAccessError, path + ": " + ec.message());
    } catch (...) {
        report_trapped(ctx, "fkt_reg_autostart()", 0);
    }
}

}  // namespace qumbrel
