#include "automation/service_control.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace qumbrel {
namespace {

namespace fs = std::filesystem;

constexpr int kNotInstalled = 1060;  // as the service manager says of a missing service

class Systemctl final : public SystemctlRunner {
  public:
    explicit Systemctl(bool user) : user_(user) {}
    int run(const std::vector<std::string>& args, std::string& out) override {
        std::vector<std::string> argv{"/bin/systemctl"};
        if (user_) argv.emplace_back("--user");
        argv.insert(argv.end(), args.begin(), args.end());
        std::vector<char*> cargv;
        for (auto& a : argv) cargv.push_back(a.data());
        cargv.push_back(nullptr);
        int pipeFd[2];
        if (::pipe2(pipeFd, O_CLOEXEC) != 0) return errno;
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::dup2(pipeFd[1], 1);
            ::execv(argv[0].c_str(), cargv.data());
            ::_exit(127);
        }
        ::close(pipeFd[1]);
        char buffer[4096];
        for (ssize_t n; (n = ::read(pipeFd[0], buffer, sizeof buffer)) > 0;)
            if (out.size() < (1 << 20)) out.append(buffer, static_cast<std::size_t>(n));
        ::close(pipeFd[0]);
        int status = 0;
        if (pid < 0 || ::waitpid(pid, &status, 0) < 0) return ECHILD;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

  private:
    bool user_;
};

std::string unit_path(const ServiceControl& s) {
    return (fs::path(s.unitFolder) / kServiceUnit).string();
}

int call(ServiceControl& s, const std::vector<std::string>& args, std::string* why) {
    std::string out;
    const int rc = s.runner->run(args, out);
    if (rc != 0 && why) *why = "systemctl " + args.front() + " failed (" + std::to_string(rc) + ")";
    return rc;
}

std::string show(ServiceControl& s, const std::string& property) {
    std::string out;
    s.runner->run({"show", "--property=" + property, "--value", kServiceUnit}, out);
    while (!out.empty() && (out.back() == '\n' || out.back() == ' ')) out.pop_back();
    return out;
}

// Arguments of a unit's command line are quoted for systemd.
std::string unit_arg(const std::string& s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

}  // namespace

std::shared_ptr<SystemctlRunner> make_systemctl_runner(bool user) {
    return std::make_shared<Systemctl>(user);
}

ServiceControl ServiceControl::for_this_user(const std::string& home, const std::string& binary) {
    ServiceControl s;
    s.user = ::geteuid() != 0;
    if (s.user) {
        const char* config = std::getenv("XDG_CONFIG_HOME");
        const char* homeDir = std::getenv("HOME");
        const std::string base = config && *config ? config
                                 : homeDir         ? std::string(homeDir) + "/.config"
                                                   : std::string("/tmp");
        s.unitFolder = base + "/systemd/user";
    } else {
        s.unitFolder = "/etc/systemd/system";
    }
    s.runner = make_systemctl_runner(s.user);
    s.binary = binary;
    s.home = home;
    return s;
}

int fkt_svcinstall(ServiceControl& s, std::string* why) {
    std::error_code ec;
    fs::create_directories(s.unitFolder, ec);
    const std::string path = unit_path(s);
    const std::string temp = path + ".new";
    {
        std::ofstream unit(temp, std::ios::trunc);
        unit << "[Unit]\n"
                "Description=Service program for Tarnwick Qumbrel.\n"
                "After=local-fs.target\n\n"
                "[Service]\n"
                "Type=simple\n"
             << "ExecStart=" << unit_arg(s.binary) << " --home " << unit_arg(s.home) << "\n"
             << "Restart=on-failure\n"
                "KillSignal=SIGTERM\n"
                "TimeoutStopSec=infinity\n\n"
                "[Install]\n"
             << "WantedBy=" << (s.user ? "default.target" : "multi-user.target") << "\n";
        if (!unit) {
            if (why) *why = "cannot write " + temp;
            return EIO;
        }
    }
    // The unit file is a setting, not a report or a source; its failure is returned.
    fs::rename(temp, path, ec);  // the unit, a setting: no file layer
    if (ec) {
        if (why) *why = "cannot write " + path + ": " + ec.message();
        return ec.value();
    }
    if (const int rc = call(s, {"daemon-reload"}, why); rc != 0) return rc;
    return call(s, {"enable", kServiceUnit}, why);
}

int fkt_svcuninstall(ServiceControl& s, std::string* why) {
    if (fkt_svcstate(s) == kServiceMissing) {
        if (why) *why = "the service is not installed";
        return kNotInstalled;
    }
    call(s, {"stop", kServiceUnit}, nullptr);
    call(s, {"disable", kServiceUnit}, nullptr);
    std::error_code ec;
    // The unit file of our own install; its failure is returned.
    fs::remove(unit_path(s), ec);  // the unit, a setting: no file layer
    if (ec) {
        if (why) *why = "cannot remove " + unit_path(s) + ": " + ec.message();
        return ec.value();
    }
    return call(s, {"daemon-reload"}, why);
}

int fkt_svcstart(ServiceControl& s, std::string* why) {
    if (fkt_svcstate(s) == kServiceMissing) {
        if (why) *why = "the service is not installed";
        return kNotInstalled;
    }
    return call(s, {"start", kServiceUnit}, why);
}

int fkt_svcstop(ServiceControl& s, std::string* why) {
    if (fkt_svcstate(s) == kServiceMissing) {
        if (why) *why = "the service is not installed";
        return kNotInstalled;
    }
    return call(s, {"stop", kServiceUnit}, why);
}

int fkt_svcstate(ServiceControl& s) {
    const std::string load = show(s, "LoadState");
    if (load.empty() || load == "not-found") return kServiceMissing;
    return show(s, "ActiveState") == "active" ? kServiceRunning : kServiceStopped;
}

ServiceStartType fkt_svcstarttype(ServiceControl& s) {
    ServiceStartType t;
    if (fkt_svcstate(s) == kServiceMissing) return t;
    t.binary = s.binary;
    std::string out;
    s.runner->run({"is-enabled", kServiceUnit}, out);
    t.startType = out.rfind("enabled", 0) == 0 ? kStartAutomatic : kStartDemand;
    return t;
}

}  // namespace qumbrel
