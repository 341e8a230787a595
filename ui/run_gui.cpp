#include "ui/run_gui.h"

#include <QApplication>
#include <cstdlib>

#include "frame/clock.h"
#include "frame/options_io.h"
#include "ui/main_window.h"
#include "ui/qt_host.h"

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
    read_regional_values(ctx);
    fkt_loadoptionfile(ctx);
    MainWindow window(ctx, host);
    window.show();
    return app.exec();
}

}  // namespace qumbrel
