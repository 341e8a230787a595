#include "ui/tray_icon.h"

#include "frame/language.h"

namespace qumbrel {

TrayIcon make_tray_icon(Program& ctx, const std::string& form, QObject* owner, const QIcon& picture,
                        const std::function<void()>& open, const std::function<void()>& exit) {
    const std::string file = resolve_language_path(ctx, ctx.opt.language);
    const auto text = [&](const char* name, const char* designed) {
        return QString::fromStdString(
            fkt_readlanguage(file, form, std::string(name) + ".Caption", designed));
    };
    TrayIcon t;
    t.icon = new QSystemTrayIcon(picture, owner);
    t.menu = std::make_unique<QMenu>();
    QAction* option = t.menu->addAction(text("mnu_systray_option", "Open the window"));
    option->setObjectName("mnu_systray_option");
    QAction* end = t.menu->addAction(text("mnu_systray_exit", "Exit"));
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
