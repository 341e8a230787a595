#include "ui/run_gui.h"

#include <QApplication>
#include <cstdlib>

#include "frame/clock.h"
#include "frame/options_io.h"
#include "platform/cups/cups_printers.h"
#include "ui/main_window.h"
#include "ui/qt_host.h"
#include "ui/tray_form.h"

namespace qumbrel {

bool display_available() {
    for (const char* v : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (const char* s = std::getenv(v); s && *s) return true;
    return false;
}

int run_main_window(Program& headless, int argc, char** argv) {
    QApplication app(argc, argv);
    QtHost host;
    SystemClock clock;
    Program ctx(headless.info, host, clock, headless.eventLog, headless.regional);
    ctx.run = headless.run;
    use_cups_printers(ctx);
    read_regional_values(ctx);
    fkt_loadoptionfile(ctx);
    MainWindow window(ctx, host);
    window.show();
    return app.exec();
}

int run_tray(Program& headless, int argc, char** argv) {
    QApplication app(argc, argv);
    app.setQuitOnLastWindowClosed(false);  // the tray runs without a window
    QtHost host;
    SystemClock clock;
    Program ctx(headless.info, host, clock, headless.eventLog, headless.regional);
    ctx.run = headless.run;
    use_cups_printers(ctx);
    read_regional_values(ctx);
    fkt_loadoptionfile(ctx);
    TrayForm tray(ctx);
    std::unique_ptr<MainWindow> window;
    QObject::connect(&tray, &TrayForm::windowWanted, [&] {
        window = std::make_unique<MainWindow>(ctx, host);
        app.setQuitOnLastWindowClosed(true);
        window->show();
    });
    if (!tray.start()) return 2;
    return app.exec();
}

}  // namespace qumbrel
