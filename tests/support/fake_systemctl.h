#pragma once
// A fake systemctl for the service's control: it keeps a unit's state (loaded when its
// file exists after a daemon-reload, enabled, running) and records the operations.
#include <filesystem>
#include <string>
#include <vector>

#include "automation/service_control.h"

namespace qumbrel::testing {

// systemctl as far as the control uses it: a unit is loaded when its file exists.
class FakeSystemctl final : public SystemctlRunner {
  public:
    explicit FakeSystemctl(std::string unitFile) : unitFile_(std::move(unitFile)) {}
    int run(const std::vector<std::string>& args, std::string& out) override {
        calls.push_back(args.front());
        const bool present = std::filesystem::exists(unitFile_) && reloaded_;
        const std::string& op = args.front();
        if (op == "daemon-reload") {
            reloaded_ = true;
            return 0;
        }
        if (op == "show") {
            if (args[1] == "--property=LoadState") out = present ? "loaded\n" : "not-found\n";
            if (args[1] == "--property=ActiveState") out = running ? "active\n" : "inactive\n";
            return 0;
        }
        if (!present) return 5;  // systemctl: unit not found
        if (op == "enable") enabled = true;
        if (op == "disable") enabled = false;
        if (op == "start") running = true;
        if (op == "stop") running = false;
        if (op == "is-enabled") {
            out = enabled ? "enabled\n" : "disabled\n";
            return enabled ? 0 : 1;
        }
        return 0;
    }
    std::vector<std::string> calls;
    bool running = false, enabled = false;

  private:
    std::string unitFile_;
    bool reloaded_ = false;
};

}  // namespace qumbrel::testing
