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
namespace {

// What every run with windows has: the application, the Qt host, and a program context
// over the headless one's run flags with the options loaded anew and CUPS for printing.
struct WindowRun {
    WindowRun(Program& headless, int argc, char** argv)
        : argc_(argc),
          app(argc_, argv),
          ctx(headless.info, host, clock, headless.eventLog, headless.regional) {
        ctx.run = headless.run;
        use_cups_printers(ctx);
        read_regional_values(ctx);
        fkt_loadoptionfile(ctx);
    }
    int argc_;  // QApplication keeps a reference to it
    QApplication app;
    QtHost host;
    SystemClock clock;
    Program ctx;
};

}  // namespace

bool display_available() {
    for (const char* v : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (const char* s = std::getenv(v); s && *s) return true;
    return false;
}

int run_main_window(Program& headless, int argc, char** argv, const std::string& note) {
    WindowRun r(headless, argc, argv);
    QApplication& app = r.app;
    QtHost& host = r.host;
    Program& ctx = r.ctx;
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
    WindowRun r(headless, argc, argv);
    QApplication& app = r.app;
    QtHost& host = r.host;
    Program& ctx = r.ctx;
    host.set_echo(!ctx.run.quiet && !is_set(ctx.run.bStartsFromService));
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
    WindowRun r(headless, argc, argv);
    QApplication& app = r.app;
    app.setQuitOnLastWindowClosed(false);  // the tray runs without a window
    QtHost& host = r.host;
    Program& ctx = r.ctx;
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
