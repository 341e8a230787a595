#pragma once
// A host whose pending events run a given action: the point where timer ticks and menu
// clicks re-enter the automatic mode's work.
#include <functional>

#include "frame/host.h"

namespace qumbrel::testing {

class PumpingHost final : public Host {
  public:
    std::function<void()> onPump;
    bool status_list_up() const override { return false; }
    long status_line_count() const override { return 0; }
    void clear_status_list() override {}
    void add_status_line(std::string_view) override {}
    void show_alert(const AlertRequest&) override {}
    void message_box(std::string_view, MessageIcon) override {}
    void pump_events() override {
        // One level deep: what the action triggers does not pump into itself again.
        if (!onPump || busy_) return;
        busy_ = true;
        onPump();
        busy_ = false;
    }

  private:
    bool busy_ = false;
};

}  // namespace qumbrel::testing
