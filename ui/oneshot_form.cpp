#include "ui/oneshot_form.h"

#include <QApplication>
#include <QEventLoop>
#include <QStyle>
#include <QTimer>

namespace qumbrel {

OneShotForm::OneShotForm(Program& ctx, Conversion convert, QObject* parent)
    : QObject(parent), ctx_(ctx), convert_(std::move(convert)) {}

int OneShotForm::run() {
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        icon_ = new QSystemTrayIcon(QApplication::style()->standardIcon(QStyle::SP_BrowserReload),
                                    this);
        icon_->setToolTip(QString::fromStdString(ctx_.info.program_name()));
        menu_ = std::make_unique<QMenu>();
        QAction* option = menu_->addAction("Open the window");
        option->setObjectName("mnu_systray_option");
        QAction* exit = menu_->addAction("Exit");
        exit->setObjectName("mnu_systray_exit");
        connect(option, &QAction::triggered, this, &OneShotForm::open_window);
        connect(exit, &QAction::triggered, this, &OneShotForm::exit_program);
        connect(icon_, &QSystemTrayIcon::activated, this, [this](auto reason) {
            if (reason == QSystemTrayIcon::DoubleClick) open_window();
        });
        icon_->setContextMenu(menu_.get());
        icon_->show();
    }
    QCoreApplication::processEvents();
    const int status = convert_(ctx_);
    const bool hadIcon = icon_ != nullptr;
    remove_icon();
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
