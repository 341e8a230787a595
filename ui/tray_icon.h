#pragma once
// The icon of the tray forms with its menu: mnu_systray_option (and a double click on the
// icon) and mnu_systray_exit. The icon belongs to `owner`; the menu to the caller.
#include <QMenu>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>
#include <string>

#include "frame/context.h"

namespace qumbrel {

struct TrayIcon {
    QSystemTrayIcon* icon = nullptr;
    std::unique_ptr<QMenu> menu;
};

// The entries' texts come from the form's section of the language file.
TrayIcon make_tray_icon(Program& ctx, const std::string& form, QObject* owner, const QIcon& picture,
                        const std::function<void()>& open, const std::function<void()>& exit);

}  // namespace qumbrel
