#include "excel/office/office_helper.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
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
    if (pid_ > 0) {
        // The end of the requests ends the helper, which closes its soffice; a helper that
        // does not end in time goes with its group.
        ::close(in_);
        in_ = -1;
        const auto deadline = Clock::now() + std::chrono::seconds(20);
        int status = 0;
        while (::waitpid(pid_, &status, WNOHANG) == 0 && Clock::now() < deadline) ::usleep(20000);
        stop();
    }
    if (profile_.empty()) return;
    std::error_code ec;
    // The private LibreOffice profile this helper made in the temporary folder.
    fs::remove_all(profile_, ec);  // our private profile, no user data: no file layer
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

std::string OfficeHelper::start() {
    if (profile_.empty()) {
        const char* tmp = std::getenv("TMPDIR");
        std::string dir = std::string(tmp && *tmp ? tmp : "/tmp") + "/qumbrel-office-XXXXXX";
        if (!::mkdtemp(dir.data())) return "no folder for a LibreOffice profile";
        profile_ = dir;
    }
    std::vector<std::string> argv{kPython, helper_, "--profile", profile_, "serve"};
    std::vector<char*> cargv;
    for (auto& a : argv) cargv.push_back(a.data());
    cargv.push_back(nullptr);

    int inPair[2], outPipe[2], errPipe[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, inPair) != 0)
        return "no channel to the LibreOffice helper";
    if (::pipe2(outPipe, O_CLOEXEC) != 0) {
        ::close(inPair[0]);
        ::close(inPair[1]);
        return "no channel to the LibreOffice helper";
    }
    if (::pipe2(errPipe, O_CLOEXEC) != 0) {
        for (int fd : {inPair[0], inPair[1], outPipe[0], outPipe[1]}) ::close(fd);
        return "no channel to the LibreOffice helper";
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::setpgid(0, 0);  // the helper and its soffice: one group, killed as one
        ::dup2(inPair[1], 0);
        ::dup2(outPipe[1], 1);
        ::dup2(errPipe[1], 2);
        ::execv(kPython, cargv.data());
        ::_exit(127);
    }
    ::close(inPair[1]);
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    if (pid < 0) {
        for (int fd : {inPair[0], outPipe[0], errPipe[0]}) ::close(fd);
        return "the LibreOffice helper could not be started";
    }
    ::setpgid(pid, pid);  // also from here, so the kill in stop() never misses the group
    pid_ = pid;
    in_ = inPair[0];
    out_ = outPipe[0];
    err_ = errPipe[0];
    pending_.clear();
    return {};
}

void OfficeHelper::stop() {
    if (pid_ > 0) {
        ::kill(-pid_, SIGKILL);
        int status = 0;
        while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
    }
    for (int* fd : {&in_, &out_, &err_}) {
        if (*fd >= 0) ::close(*fd);
        *fd = -1;
    }
    pid_ = -1;
    pending_.clear();
}

namespace {

std::string request_line(const std::vector<std::string>& args) {
    std::string line;
    for (std::size_t k = 0; k < args.size(); ++k) {
        if (k > 0) line += '\t';
        for (const char c : args[k]) {
            if (c == '\\')
                line += "\\\\";
            else if (c == '\t')
                line += "\\t";
            else if (c == '\n')
                line += "\\n";
            else
                line += c;
        }
    }
    return line + '\n';
}

bool send_all(int fd, const std::string& data) {
    std::size_t at = 0;
    while (at < data.size()) {
        const ssize_t n = ::send(fd, data.data() + at, data.size() - at, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        at += static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

OfficeResult OfficeHelper::run(const std::vector<std::string>& args) {
    OfficeResult r;
    if (!available()) {
        r.err = missing();
        return r;
    }
    if (pid_ <= 0) {
        r.err = start();
        if (!r.err.empty()) return r;
    }
    if (!send_all(in_, request_line(args))) {
        stop();
        r.err = "the LibreOffice helper ended before the request";
        return r;
    }

    const auto deadline = Clock::now() + limit_;
    pollfd fds[2] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
    std::string complaints;
    char buffer[4096];
    bool ended = false;  // the reply's "end CODE" seen
    bool gone = false;   // the helper closed its output: it has ended
    while (!ended && !gone) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            r.timedOut = true;
            break;
        }
        const int n = ::poll(fds, 2, static_cast<int>(std::min<long long>(left.count(), 1000)));
        if (n < 0 && errno != EINTR) {
            gone = true;
            break;
        }
        for (int k = 0; k < 2 && !ended; ++k) {
            if (fds[k].fd < 0 || !(fds[k].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            const ssize_t got = ::read(fds[k].fd, buffer, sizeof buffer);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) {
                fds[k].fd = -1;
                if (k == 0) gone = true;
                continue;
            }
            if (k == 1) {
                if (complaints.size() < kMaxOutput)
                    complaints.append(buffer, static_cast<std::size_t>(got));
                continue;
            }
            pending_.append(buffer, static_cast<std::size_t>(got));
            if (pending_.size() > kMaxOutput) {  // no reply is that long: not our helper
                gone = true;
                break;
            }
            std::size_t eol;
            while (!ended && (eol = pending_.find('\n')) != std::string::npos) {
                const std::string line = pending_.substr(0, eol);
                pending_.erase(0, eol + 1);
                if (line.starts_with("end ")) {
                    r.exitCode = static_cast<int>(std::strtol(line.c_str() + 4, nullptr, 10));
                    ended = true;
                } else if (line.starts_with("error: ")) {
                    r.err = line.substr(7);
                } else {
                    r.out += line + '\n';
                }
            }
        }
    }
    if (r.timedOut) {
        stop();
        // The stopped office suite leaves its lock files beside the documents it held.
        for (const std::string& a : args) {
            const fs::path file(a);
            std::error_code ec;
            if (file.is_absolute() && file.has_filename())
                // Only the office suite's own lock file, never a document.
                fs::remove(file.parent_path() / (".~lock." + file.filename().string() + "#"),
                           ec);  // a lock file, no document: no file layer
        }
        r.err = "LibreOffice did not finish within " + std::to_string(limit_.count()) +
                " s and was stopped";
        return r;
    }
    if (!ended) {
        // The helper ended without its reply: what it said on stderr is why.
        stop();
        r.exitCode = -1;
        const auto first = complaints.find_last_not_of("\n");
        r.err = complaints.empty() ? "the LibreOffice helper ended unexpectedly"
                                   : complaints.substr(0, first + 1);
    }
    return r;
}

}  // namespace qumbrel
