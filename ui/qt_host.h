#pragma once
// The Host of a run with windows: the run page's status list, the event pump, the alert
// window and message boxes.
#include <QListWidget>
#include <QPointer>

#include "frame/host.h"

namespace qumbrel {

class QtHost final : public Host {
  public:
    bool status_list_up() const override { return (up_ && list_) || echo_; }
    long status_line_count() const override { return list_ ? list_->count() : echoed_; }
    void clear_status_list() override;
    void add_status_line(std::string_view text) override;
    void focus_status_list() override;
    void pump_events() override;
    void show_alert(const AlertRequest& alert) override;
    bool main_window_opened() const override { return mainWindowOpened_; }
    void message_box(std::string_view text, MessageIcon icon) override;

    // The run page hands its list over and says when it is up (a manual conversion).
    void set_status_list(QListWidget* list) { list_ = list; }
    void set_status_list_up(bool up) { up_ = up; }
    void set_main_window_opened() { mainWindowOpened_ = true; }
    // Status lines also to standard output while no window shows them (the one-shot form
    // started from a terminal).
    void set_echo(bool on) { echo_ = on; }

  private:
    QPointer<QListWidget> list_;
    bool up_ = false;
    bool mainWindowOpened_ = false;
    bool echo_ = false;
    long echoed_ = 0;
};

}  // namespace qumbrel
