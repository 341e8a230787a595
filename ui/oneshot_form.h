#pragma once
// frm_systrayOnce: the one-shot conversion of a file named on the command line, with a tray
// icon while it runs where the desktop has a tray. Its menu opens the main window (the
// program then goes on with the window) or asks the program to end after the file in hand;
// neither asks for the password. Without a tray the conversion runs without an icon.
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>

#include "frame/context.h"

namespace qumbrel {

class OneShotForm final : public QObject {
    Q_OBJECT
  public:
    using Conversion = std::function<int(Program&)>;
    OneShotForm(Program& ctx, Conversion convert, QObject* parent = nullptr);

    // Form load: the icon, the conversion, the icon removed and, when an icon was shown,
    // 3 seconds before the end (none when the window was asked for or the exit chosen);
    // an alert still open is waited for.
    // The conversion's exit status.
    int run();
    bool has_icon() const { return icon_ != nullptr; }
    bool window_wanted() const { return windowWanted_; }
    int endWaitMs = 3000;
    int alertWaitMs = 600000;  // the longest an open alert keeps the program

    // mnu_systray_option and the double click; mnu_systray_exit.
    void open_window();
    void exit_program();

  signals:
    void windowWanted();

  private:
    void remove_icon();

    Program& ctx_;
    Conversion convert_;
    std::unique_ptr<QMenu> menu_;
    QSystemTrayIcon* icon_ = nullptr;
    bool windowWanted_ = false;
    bool exitWanted_ = false;
};

}  // namespace qumbrel
