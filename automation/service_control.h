#pragma once
// The companion service under systemd: a unit QumbrelSvc.service for qumbrel-svc,
// installed, removed, started, stopped and queried through systemctl behind an interface
// (tests give a fake). As root the system's instance (/etc/systemd/system), otherwise the
// user's (`systemctl --user`, $XDG_CONFIG_HOME/systemd/user).
//
//   ServiceControl svc = ServiceControl::for_this_user(programFolder, svcBinary);
//   if (fkt_svcstate(svc) == kServiceMissing) fkt_svcinstall(svc);
//   fkt_svcstart(svc);
#include <memory>
#include <string>
#include <vector>

namespace qumbrel {

// Runs `systemctl ARGS`; the exit status, its standard output in `out`.
class SystemctlRunner {
  public:
    virtual ~SystemctlRunner() = default;
    virtual int run(const std::vector<std::string>& args, std::string& out) = 0;
};

// The real one: /bin/systemctl (with --user when not root).
std::shared_ptr<SystemctlRunner> make_systemctl_runner(bool user);

inline constexpr int kServiceMissing = 0;
inline constexpr int kServiceStopped = 1;
inline constexpr int kServiceRunning = 4;
inline constexpr int kStartAutomatic = 2;
inline constexpr int kStartDemand = 3;
inline constexpr const char* kServiceUnit = "QumbrelSvc.service";

struct ServiceControl {
    std::shared_ptr<SystemctlRunner> runner;
    std::string unitFolder;  // where the unit file goes
    std::string binary;      // qumbrel-svc
    std::string home;        // the program folder it serves
    bool user = false;       // the user's systemd instance

    static ServiceControl for_this_user(const std::string& home, const std::string& binary);
};

// 0 or an error number (the page shows it); a text of the failure in `why`.
int fkt_svcinstall(ServiceControl& s, std::string* why = nullptr);
int fkt_svcuninstall(ServiceControl& s, std::string* why = nullptr);
int fkt_svcstart(ServiceControl& s, std::string* why = nullptr);
int fkt_svcstop(ServiceControl& s, std::string* why = nullptr);
// kServiceMissing, kServiceStopped or kServiceRunning.
int fkt_svcstate(ServiceControl& s);
// The binary the unit runs and its start type (kStartAutomatic when enabled, else
// kStartDemand); an empty path when the service is missing.
struct ServiceStartType {
    std::string binary;
    int startType = 0;
};
ServiceStartType fkt_svcstarttype(ServiceControl& s);

}  // namespace qumbrel
