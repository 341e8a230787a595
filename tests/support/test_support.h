#pragma once
// Test doubles and fixtures shared by the suites: a host and an event log that record
// what they are told, a temporary program folder, and a Program wired to them.
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/context.h"

namespace qumbrel::testing {

class RecordingHost final : public Host {
  public:
    bool up = true;
    std::vector<std::string> lines;
    std::vector<AlertRequest> alerts;
    std::vector<std::string> messages;
    int pumps = 0;
    bool mainWindowOpen = false;

    bool status_list_up() const override { return up; }
    long status_line_count() const override { return static_cast<long>(lines.size()); }
    void clear_status_list() override { lines.clear(); }
    void add_status_line(std::string_view text) override { lines.emplace_back(text); }
    void pump_events() override { ++pumps; }
    void show_alert(const AlertRequest& a) override { alerts.push_back(a); }
    void message_box(std::string_view text, MessageIcon) override { messages.emplace_back(text); }
    bool main_window_opened() const override { return mainWindowOpen; }
};

struct EventEntry {
    std::string source;
    int type;
    std::uint32_t id;
    std::string text;
};

class RecordingEventLog final : public EventLogBackend {
  public:
    std::vector<EventEntry> entries;
    void report(std::string_view source, int type, std::uint32_t id,
                std::string_view text) override {
        entries.push_back({std::string(source), type, id, std::string(text)});
    }
};

// A fresh folder under the system's temporary folder, removed with its contents.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return path_; }
    std::string file(std::string_view name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

// Permission failures as an ordinary user would meet them, also when the tests run as
// root, who ignores folder modes: as root, the tree `owned` is handed to user "nobody" and
// `check` runs in a child process that has dropped root; otherwise `check` runs here.
// Gives check's answer, or nullopt when root could not be dropped.
std::optional<bool> as_ordinary_user(const std::filesystem::path& owned,
                                     const std::function<bool()>& check);

std::string read_file(const std::string& path);
void write_file(const std::string& path, std::string_view bytes);

// A Program with its program folder in a TempDir, the given regional profile, a
// recording host and event log, and a clock standing at 2024-01-02 03:04:05.
struct TestProgram {
    explicit TestProgram(std::string_view region = "de-DE");
    TempDir dir;
    RecordingHost host;
    RecordingEventLog events;
    ManualClock clock;
    std::unique_ptr<Program> ctx;
    Program& operator*() { return *ctx; }
    Program* operator->() { return ctx.get(); }
};

}  // namespace qumbrel::testing
