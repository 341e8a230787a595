#include "ui/run_gui.h"

#include <QApplication>
#include <cstdlib>

#include "frame/clock.h"
#include "frame/options_io.h"
#include "platform/cups/cups_printers.h"
#include "ui/main_window.h"
#include "ui/oneshot_form.h"
#include "ui/pages.h"
#include "ui/qt_host.h"
#include "ui/tray_form.h"

namespace qumbrel {

bool display_available() {
    for (const char* v : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (const char* s = std::getenv(v); s && *s) return true;
    return false;
}

int run_main_window(Program& headless, int argc, char** argv, const std::string& note) {
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
    if (!note.empty()) {
        window.ShowForm("frm_mdic_run fra_manu");
        if (RunPage* run = window.run_page()) run->status()->addItem(QString::fromStdString(note));
        window.SetStatusbar(QString::fromStdString(note));
    }
    return app.exec();
}

int run_one_shot_form(Program& headless, int argc, char** argv,
                      const std::function<int(Program&)>& convert) {
    QApplication app(argc, argv);
    QtHost host;
    SystemClock clock;
    Program ctx(headless.info, host, clock, headless.eventLog, headless.regional);
    ctx.run = headless.run;
    use_cups_printers(ctx);
    read_regional_values(ctx);
    fkt_loadoptionfile(ctx);
    OneShotForm form(ctx, convert);
    std::unique_ptr<MainWindow> window;
    QObject::connect(&form, &OneShotForm::windowWanted, [&] {
        window = std::make_unique<MainWindow>(ctx, host);
        window->show();
    });
    const int status = form.run();
    return window ? app.exec() : status;
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
