#include "ui/tray_icon.h"

namespace qumbrel {

TrayIcon make_tray_icon(QObject* owner, const QIcon& picture, const std::function<void()>& open,
                        const std::function<void()>& exit) {
    TrayIcon t;
    t.icon = new QSystemTrayIcon(picture, owner);
    t.menu = std::make_unique<QMenu>();
    QAction* option = t.menu->addAction("Open the window");
    option->setObjectName("mnu_systray_option");
    QAction* end = t.menu->addAction("Exit");
    end->setObjectName("mnu_systray_exit");
    QObject::connect(option, &QAction::triggered, owner, open);
    QObject::connect(end, &QAction::triggered, owner, exit);
    QObject::connect(t.icon, &QSystemTrayIcon::activated, owner, [open](auto reason) {
        if (reason == QSystemTrayIcon::DoubleClick) open();
    });
    t.icon->setContextMenu(t.menu.get());
    return t;
}

}  // namespace qumbrel
