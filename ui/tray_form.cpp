#include "ui/tray_form.h"

#include <QApplication>
#include <QStyle>
#include <cstdio>

#include "ui/login_dialog.h"
#include "ui/tray_icon.h"

namespace qumbrel {

TrayForm::TrayForm(Program& ctx, QObject* parent) : QObject(parent), ctx_(ctx), form_(ctx, this) {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &TrayForm::poll);
    animation_.setInterval(250);
    connect(&animation_, &QTimer::timeout, this, [this] {
        frame_ = (frame_ + 1) % 4;
        if (icon_)
            icon_->setIcon(QApplication::style()->standardIcon(
                frame_ % 2 ? QStyle::SP_BrowserReload : QStyle::SP_ComputerIcon));
    });
}

TrayForm::~TrayForm() {
    stop();
}

bool TrayForm::start() {
    if (!form_.form_load()) return false;
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        TrayIcon t = make_tray_icon(
            ctx_, "frm_systray", this, QApplication::style()->standardIcon(QStyle::SP_ComputerIcon),
            [this] { open_window(); }, [this] { exit_program(); });
        icon_ = t.icon;
        menu_ = std::move(t.menu);
        reset_icon();
        icon_->show();
    } else {
        std::fprintf(stderr,
                     "qumbrel: the desktop has no system tray: the automatic mode runs without "
                     "its icon until the program is ended\n");
    }
    poll();
    return true;
}

void TrayForm::poll() {
    form_.tick();
    const std::int64_t due = form_.next_due_ms();
    if (due == INT64_MAX) return;
    const std::int64_t wait = std::max<std::int64_t>(0, due - ctx_.clock.steady_ms());
    timer_.start(static_cast<int>(std::min<std::int64_t>(wait, 24 * 3600 * 1000)));
}

bool TrayForm::logged_in() {
    if (ctx_.opt.strProtectionPassword.empty()) return true;
    LoginDialog login(ctx_);
    login.exec();
    return is_set(ctx_.opt.bLoggedIn);
}

void TrayForm::stop() {
    form_.stop_timers();
    timer_.stop();
    animation_.stop();
    if (icon_) icon_->hide();
}

bool TrayForm::open_window() {
    if (!logged_in()) return false;
    stop();
    emit windowWanted();
    return true;
}

bool TrayForm::exit_program() {
    if (!logged_in()) return false;
    stop();
    QCoreApplication::quit();
    return true;
}

void TrayForm::set_animation(bool on) {
    if (on)
        animation_.start();
    else
        animation_.stop();
}

void TrayForm::set_tip(std::string_view tip) {
    if (icon_) icon_->setToolTip(QString::fromUtf8(tip.data(), static_cast<int>(tip.size())));
}

void TrayForm::reset_icon() {
    if (!icon_) return;
    icon_->setIcon(QApplication::style()->standardIcon(QStyle::SP_ComputerIcon));
    icon_->setToolTip(QString::fromStdString(ctx_.info.program_name()));
}

}  // namespace qumbrel
