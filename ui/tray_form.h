#pragma once
// frm_systray with its icon: the automatic mode's cycle (automation/systray) driven by a Qt
// timer, a tray icon with its menu where the desktop has a tray, and without one the same
// cycle with a line saying so (the offscreen platform and desktops without a tray).
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>
#include <memory>

#include "automation/systray.h"
#include "frame/context.h"

namespace qumbrel {

class TrayForm final : public QObject, public TrayView {
    Q_OBJECT
  public:
    explicit TrayForm(Program& ctx, QObject* parent = nullptr);
    ~TrayForm() override;

    // Form load: false when the source folder is missing (reported; nothing runs).
    bool start();
    bool has_icon() const { return icon_ != nullptr; }
    // Runs the ticks that are due now and sets the timer for the next one.
    void poll();
    frm_systray& form() { return form_; }

    // mnu_systray_option / double click, and mnu_systray_exit: the login first when
    // protection is on; false when it failed.
    bool open_window();
    bool exit_program();

    void set_animation(bool on) override;
    void set_tip(std::string_view tip) override;
    void reset_icon() override;

  signals:
    void windowWanted();

  private:
    bool logged_in();
    void stop();

    Program& ctx_;
    frm_systray form_;
    QTimer timer_;
    QTimer animation_;
    int frame_ = 0;
    std::unique_ptr<QMenu> menu_;
    QSystemTrayIcon* icon_ = nullptr;
};

}  // namespace qumbrel
