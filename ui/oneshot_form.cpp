#include "ui/oneshot_form.h"

#include "ui/alert_window.h"
#include "ui/tray_icon.h"

#include <QApplication>
#include <QEventLoop>
#include <QStyle>
#include <QThread>
#include <QTimer>
#include <chrono>

namespace qumbrel {

OneShotForm::OneShotForm(Program& ctx, Conversion convert, QObject* parent)
    : QObject(parent), ctx_(ctx), convert_(std::move(convert)) {}

int OneShotForm::run() {
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        TrayIcon t = make_tray_icon(
            ctx_, "frm_systrayOnce", this,
            QApplication::style()->standardIcon(QStyle::SP_BrowserReload),
            [this] { open_window(); }, [this] { exit_program(); });
        icon_ = t.icon;
        menu_ = std::move(t.menu);
        icon_->setToolTip(QString::fromStdString(ctx_.info.program_name()));
        icon_->show();
    }
    QCoreApplication::processEvents();
    const int status = convert_(ctx_);
    const bool hadIcon = icon_ != nullptr;
    remove_icon();
    // An alert of the conversion is read before the program ends: it closes by itself
    // after its seconds, or when clicked.
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(alertWaitMs);
    while (AlertWindow::any_open() && std::chrono::steady_clock::now() < until) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(20);
    }
    if (hadIcon && !windowWanted_ && !exitWanted_) {
        QEventLoop wait;
        QTimer::singleShot(endWaitMs, &wait, &QEventLoop::quit);
        wait.exec();
    }
    return status;
}

void OneShotForm::open_window() {
    if (windowWanted_) return;
    windowWanted_ = true;
    remove_icon();
    emit windowWanted();
}

void OneShotForm::exit_program() {
    // The file in hand is finished first: a conversion cut off would leave its source
    // undisposed and a hidden partial report behind.
    exitWanted_ = true;
    remove_icon();
}

void OneShotForm::remove_icon() {
    if (!icon_) return;
    icon_->hide();
    icon_->deleteLater();
    icon_ = nullptr;
}

}  // namespace qumbrel
