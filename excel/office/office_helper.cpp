#include "excel/office/office_helper.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace qumbrel {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr const char* kSoffice = "/usr/bin/soffice";
constexpr const char* kPython = "/usr/bin/python3";
constexpr const char* kUno = "/usr/lib/python3/dist-packages/uno.py";
// What a helper may say before it is cut off: its messages are short.
constexpr std::size_t kMaxOutput = 1 << 20;

bool exists(const std::string& path) {
    std::error_code ec;
    return !path.empty() && fs::exists(path, ec);
}

std::chrono::seconds time_limit() {
    if (const char* v = std::getenv("QUMBREL_OFFICE_TIMEOUT")) {
        const long s = std::strtol(v, nullptr, 10);
        if (s > 0 && s <= 86400) return std::chrono::seconds(s);
    }
    return std::chrono::seconds(300);
}

}  // namespace

std::string office_helper_path() {
    if (const char* v = std::getenv("QUMBREL_OFFICE_HELPER"); v && *v) return v;
    std::error_code ec;
    const fs::path self = fs::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        const fs::path beside = self.parent_path() / "qumbrel-office";
        if (fs::exists(beside, ec)) return beside.string();
    }
#ifdef QUMBREL_OFFICE_HELPER_DEFAULT
    return QUMBREL_OFFICE_HELPER_DEFAULT;
#else
    return {};
#endif
}

OfficeHelper::OfficeHelper() : helper_(office_helper_path()), limit_(time_limit()) {}

OfficeHelper::~OfficeHelper() {
    if (profile_.empty()) return;
    std::error_code ec;
    // The private LibreOffice profile this helper made in the temporary folder.
    fs::remove_all(profile_, ec);
}

bool OfficeHelper::available() const {
    return missing().empty();
}

std::string OfficeHelper::missing() const {
    if (!exists(kSoffice)) return "LibreOffice is not installed (libreoffice-calc-nogui)";
    if (!exists(kUno)) return "Python-UNO is not installed (python3-uno)";
    if (!exists(helper_)) return "the LibreOffice helper qumbrel-office is missing";
    return {};
}

OfficeResult OfficeHelper::run(const std::vector<std::string>& args) const {
    OfficeResult r;
    if (!available()) {
        r.err = missing();
        return r;
    }
    if (profile_.empty()) {
        const char* tmp = std::getenv("TMPDIR");
        std::string dir = std::string(tmp && *tmp ? tmp : "/tmp") + "/qumbrel-office-XXXXXX";
        if (!::mkdtemp(dir.data())) {
            r.err = "no folder for a LibreOffice profile";
            return r;
        }
        profile_ = dir;
    }
    std::vector<std::string> argv{kPython, helper_, "--profile", profile_};
    argv.insert(argv.end(), args.begin(), args.end());
    std::vector<char*> cargv;
    for (auto& a : argv) cargv.push_back(a.data());
    cargv.push_back(nullptr);

    int outPipe[2], errPipe[2];
    if (::pipe2(outPipe, O_CLOEXEC) != 0) return r;
    if (::pipe2(errPipe, O_CLOEXEC) != 0) {
        ::close(outPipe[0]);
        ::close(outPipe[1]);
        return r;
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::setpgid(0, 0);  // the helper and its soffice: one group, killed as one
        ::dup2(outPipe[1], 1);
        ::dup2(errPipe[1], 2);
        ::execv(kPython, cargv.data());
        ::_exit(127);
    }
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    if (pid < 0) {
        ::close(outPipe[0]);
        ::close(errPipe[0]);
        r.err = "the LibreOffice helper could not be started";
        return r;
    }
    ::setpgid(pid, pid);  // also from here, so the kill below never misses the group

    const auto deadline = Clock::now() + limit_;
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string* sinks[2] = {&r.out, &r.err};
    int open = 2;
    char buffer[4096];
    while (open > 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            r.timedOut = true;
            break;
        }
        const int n = ::poll(fds, 2, static_cast<int>(std::min<long long>(left.count(), 1000)));
        if (n < 0 && errno != EINTR) break;
        for (int k = 0; k < 2; ++k) {
            if (fds[k].fd < 0 || !(fds[k].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            const ssize_t got = ::read(fds[k].fd, buffer, sizeof buffer);
            if (got > 0) {
                if (sinks[k]->size() < kMaxOutput)
                    sinks[k]->append(buffer, static_cast<std::size_t>(got));
            } else if (got == 0 || errno != EINTR) {
                ::close(fds[k].fd);
                fds[k].fd = -1;
                --open;
            }
        }
    }
    for (auto& f : fds)
        if (f.fd >= 0) ::close(f.fd);
    int status = 0;
    if (r.timedOut) {
        ::kill(-pid, SIGKILL);
        ::waitpid(pid, &status, 0);
        // The stopped office suite leaves its lock files beside the documents it held.
        for (const std::string& a : args) {
            const fs::path file(a);
            std::error_code ec;
            if (file.is_absolute() && file.has_filename())
                // Only the office suite's own lock file, never a document.
                fs::remove(file.parent_path() / (".~lock." + file.filename().string() + "#"), ec);
        }
        r.err = "LibreOffice did not finish within " + std::to_string(limit_.count()) +
                " s and was stopped";
        return r;
    }
    // The pipes are closed: the helper is ending; its soffice, if any is left, goes too.
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    ::kill(-pid, SIGKILL);
    r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return r;
}

}  // namespace qumbrel
