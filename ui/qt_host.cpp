#include "ui/qt_host.h"

#include <QApplication>
#include <QMessageBox>
#include <cstdio>

#include "ui/alert_window.h"

namespace qumbrel {

void QtHost::clear_status_list() {
    if (list_) list_->clear();
}

void QtHost::add_status_line(std::string_view text) {
    if (echo_ && !list_) {
        std::printf("%.*s\n", static_cast<int>(text.size()), text.data());
        std::fflush(stdout);
        ++echoed_;
        return;
    }
    if (!list_) return;
    list_->addItem(QString::fromUtf8(text.data(), static_cast<int>(text.size())));
    list_->setCurrentRow(list_->count() - 1);
}

void QtHost::focus_status_list() {
    if (list_) list_->setFocus();
}

void QtHost::pump_events() {
    QCoreApplication::processEvents();
}

void QtHost::show_alert(const AlertRequest& alert) {
    // The window deletes itself when it closes.
    auto* w = new AlertWindow(alert);
    w->show();
}

void QtHost::message_box(std::string_view text, MessageIcon icon) {
    QMessageBox box;
    box.setText(QString::fromUtf8(text.data(), static_cast<int>(text.size())));
    switch (icon) {
        case MessageIcon::Critical:
            box.setIcon(QMessageBox::Critical);
            break;
        case MessageIcon::Question:
            box.setIcon(QMessageBox::Question);
            break;
        case MessageIcon::Exclamation:
            box.setIcon(QMessageBox::Warning);
            break;
        case MessageIcon::Information:
            box.setIcon(QMessageBox::Information);
            break;
        case MessageIcon::None:
            break;
    }
    box.exec();
}

}  // namespace qumbrel
