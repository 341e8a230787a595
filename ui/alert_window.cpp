#include "ui/alert_window.h"

#include <QApplication>
#include <QTimer>

namespace qumbrel {

AlertWindow::AlertWindow(const AlertRequest& alert, QWidget* parent) : QLabel(parent) {
    setObjectName("frm_alert");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setText(QString::fromStdString(alert.text));
    setAlignment(Qt::AlignCenter);
    setMargin(16);
    setAutoFillBackground(true);
    QPalette p = palette();
    p.setColor(QPalette::Window, QColor(alert.red, alert.green, alert.blue));
    setPalette(p);
    if (alert.seconds > 0) QTimer::singleShot(alert.seconds * 1000, this, &QWidget::close);
}

void AlertWindow::mousePressEvent(QMouseEvent*) {
    close();
}

bool AlertWindow::any_open() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (qobject_cast<AlertWindow*>(w) && w->isVisible()) return true;
    return false;
}

}  // namespace qumbrel
