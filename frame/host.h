#pragma once
// Everything the core needs from a user interface. The Qt UI implements it; the headless
// host prints to the terminal; tests record what they are told.
#include <string>
#include <string_view>

namespace qumbrel {

enum class MessageIcon { None, Critical, Question, Exclamation, Information };

struct AlertRequest {
    std::string text;
    int seconds = 0;  // 0: stays until closed
    int red = 255, green = 200, blue = 200;
};

class Host {
  public:
    virtual ~Host() = default;
    // Is the run page's status list up (so status lines are shown and logged)?
    virtual bool status_list_up() const = 0;
    virtual long status_line_count() const = 0;
    virtual void clear_status_list() = 0;
    // Adds a line as the last one and selects it.
    virtual void add_status_line(std::string_view text) = 0;
    // Gives the focus to the run page so a scrolled list repaints.
    virtual void focus_status_list() {}
    // Lets pending events run: every status line is a point of re-entrance.
    virtual void pump_events() {}
    virtual void show_alert(const AlertRequest& alert) = 0;
    virtual bool main_window_opened() const { return false; }
    virtual void message_box(std::string_view text, MessageIcon icon) = 0;
};

}  // namespace qumbrel
