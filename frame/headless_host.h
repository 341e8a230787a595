#pragma once
// The host of a run without windows: status lines go to stdout, alerts and message boxes
// to stderr, and there are no events to pump. In a service run or with --quiet the
// status list is not up, as in the tray runs.
#include <cstdio>

#include "frame/host.h"

namespace qumbrel {

class HeadlessHost final : public Host {
  public:
    HeadlessHost(bool statusListUp, std::FILE* out = stdout, std::FILE* err = stderr)
        : up_(statusListUp), out_(out), err_(err) {}

    bool status_list_up() const override { return up_; }
    void set_status_list_up(bool up) { up_ = up; }
    long status_line_count() const override { return lines_; }
    void clear_status_list() override { lines_ = 0; }
    void add_status_line(std::string_view text) override;
    void show_alert(const AlertRequest& alert) override;
    void message_box(std::string_view text, MessageIcon icon) override;

  private:
    bool up_;
    std::FILE* out_;
    std::FILE* err_;
    long lines_ = 0;
};

}  // namespace qumbrel
