#include "tools/svc/service.h"

#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <optional>

#include "automation/scanner.h"
#include "automation/stop_signals.h"
#include "automation/wildcard.h"
#include "frame/apifile.h"
#include "frame/ini.h"
#include "frame/options_io.h"
#include "frame/vbformat.h"
#include "pipeline/family_table.h"
#include "recorder/vt_reader.h"
#include "tools/svc/settle.h"
#include "tools/svc/source_watch.h"

namespace qumbrel {
namespace {

namespace fs = std::filesystem;
using Steady = std::chrono::steady_clock;

constexpr int kInfo = 2, kWarning = 3, kError = 4;

void log(Program& ctx, int type, const std::string& text) {
    ctx.eventLog.report("qumbrel-svc", type, 0, text);
    std::fprintf(stderr, "qumbrel-svc: %s\n", text.c_str());
}

struct Settings {
    std::string source;
    std::vector<std::string> patterns;
    std::chrono::seconds timeout{600};
};

Settings load(Program& ctx) {
    fkt_loadoptionfile(ctx);
    Settings s;
    s.source = ctx.opt.sourcepath;
    while (s.source.size() > 1 && s.source.back() == '/') s.source.pop_back();
    s.patterns = scan_patterns(ctx.opt);
    const std::string t =
        clsINI(ctx.run.strOptionFile).GetKeyValue("service", "timeoutcountsec", {}, std::string());
    const double seconds = vb::Val(t);
    if (seconds >= 1 && seconds <= 86400)
        s.timeout = std::chrono::seconds(static_cast<long>(seconds));
    return s;
}

bool matches(const Settings& s, const std::string& path) {
    const std::string name = fs::path(path).filename().string();
    for (const auto& p : s.patterns)
        if (wildcard_match(p, name)) return true;
    return false;
}

// A whole recorder file: the header of its family, and no check-sum error.
bool complete(Program& ctx, const std::string& path) {
    const auto fam = family_of_extension(Cls_APIFile::GetFileExtension(path, true));
    if (!fam) return false;
    const FamilyFunctions& f = family_table(ctx).of(fam->family);
    if (!f.typeCheck || !f.fileInfo || !f.typeCheck(ctx, path).empty()) return false;
    FileInfoList info;
    f.fileInfo(ctx, info, path);
    return info.backColor != kInfoColorDamaged;
}

// One conversion by the program, in a process group of its own, stopped after `timeout`.
void convert(Program& ctx, const ServiceConfig& config, const Settings& s,
             const std::string& path) {
    log(ctx, kInfo, "converting " + path);
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::setpgid(0, 0);
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);  // the stop signals are ours, not its
        const std::string source = "--source=" + path;
        ::execl(config.qumbrel.c_str(), config.qumbrel.c_str(), "--home", config.home.c_str(),
                "--headless", "--from-service", source.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    if (pid < 0) {
        log(ctx, kError, "cannot start " + config.qumbrel);
        return;
    }
    ::setpgid(pid, pid);
    const auto deadline = Steady::now() + s.timeout;
    int status = 0;
    for (;;) {
        const pid_t r = ::waitpid(pid, &status, WNOHANG);
        if (r == pid) break;
        if (Steady::now() >= deadline) {
            log(ctx, kError,
                "the conversion of " + path + " took longer than " +
                    std::to_string(s.timeout.count()) + " s and was stopped");
            ::kill(-pid, SIGTERM);
            for (int k = 0; k < 50 && ::waitpid(pid, &status, WNOHANG) == 0; ++k) ::usleep(100000);
            ::kill(-pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            return;
        }
        ::usleep(20000);
    }
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    log(ctx, code == 0 ? kInfo : kWarning,
        "converted " + path + (code == 0 ? "" : " with exit status " + std::to_string(code)));
}

std::optional<struct stat> stat_file(const std::string& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
    return st;
}

}  // namespace

int run_service(Program& ctx, const ServiceConfig& config) {
    StopSignals stop;
    read_regional_values(ctx);
    ctx.run.strOptionFile = ctx.program_file(ctx.info.baseName + ".ini");
    ctx.run.bStartsFromService = kTrue;
    Settings s = load(ctx);
    SettleTracker tracker(config.settle);
    std::optional<SourceWatch> watch;
    auto arm = [&] {
        watch.reset();
        std::error_code ec;
        if (s.source.empty() || !fs::is_directory(s.source, ec)) {
            log(ctx, kError, "the source folder \"" + s.source + "\" does not exist; waiting");
            return;
        }
        watch.emplace(s.source);
        if (!watch->valid()) log(ctx, kWarning, "no inotify: the folder is rescanned only");
        log(ctx, kInfo, "watching " + s.source);
    };
    arm();
    auto lastScan = Steady::time_point{};
    auto lastReload = Steady::now();
    const auto see = [&](const std::string& path, Steady::time_point now) {
        if (!matches(s, path)) return;
        if (const auto st = stat_file(path))
            tracker.observe(
                path, static_cast<std::uint64_t>(st->st_size),
                static_cast<std::int64_t>(st->st_mtim.tv_sec) * 1000000000 + st->st_mtim.tv_nsec,
                now);
        else
            tracker.forget(path);
    };
    while (!stop.pending()) {
        const auto now = Steady::now();
        if (now - lastReload >= std::chrono::seconds(1)) {
            lastReload = now;
            clsINI ini(ctx.run.strOptionFile);
            if (vb::Val(ini.GetKeyValue("file", "savetogglesvc", {}, std::string("0"))) != 0) {
                ini.CreateKeyValue("file", "savetogglesvc", "0");
                const std::string before = s.source;
                s = load(ctx);
                log(ctx, kInfo, "options reloaded");
                if (s.source != before || !watch) arm();
                lastScan = {};
            }
        }
        if (watch && watch->valid())
            for (const std::string& p : watch->take()) see(p, now);
        if (now - lastScan >= config.rescan) {
            lastScan = now;
            if (!watch) arm();
            std::vector<std::string> found;
            if (watch) fkt_scansourcefolder(ctx, found);
            for (const std::string& p : found) see(p, now);
        }
        for (const std::string& p : tracker.paths()) see(p, now);
        for (const std::string& p :
             tracker.ready(now, [&](const std::string& f) { return complete(ctx, f); })) {
            if (stop.pending()) break;
            if (!stat_file(p)) {
                tracker.forget(p);
                continue;
            }
            convert(ctx, config, s, p);
            tracker.done(p);
            see(p, Steady::now());  // gone (moved, deleted) or kept as it was
        }
        pollfd fd{watch && watch->valid() ? watch->fd() : -1, POLLIN, 0};
        ::poll(&fd, 1, 200);
    }
    log(ctx, kInfo, "stopped");
    return 0;
}

}  // namespace qumbrel
