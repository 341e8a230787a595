// Saves a picture of every page of the main window and of the login box, made on the
// offscreen platform from a program folder with sample files: docs/make_screenshots.sh.
//
//   qumbrel-screenshots HOME OUTDIR [language file]
#include <QApplication>
#include <QListWidget>
#include <QPixmap>
#include <cstdio>

#include "frame/clock.h"
#include "frame/options_io.h"
#include "platform/syslog/syslog_eventlog.h"
#include "ui/login_dialog.h"
#include "ui/main_window.h"
#include "ui/pages.h"
#include "ui/qt_host.h"

namespace {

// systemctl for the pictures: no unit is ever there.
class NoService final : public qumbrel::SystemctlRunner {
  public:
    int run(const std::vector<std::string>&, std::string& out) override {
        out = "not-found\n";
        return 0;
    }
};

}  // namespace

int main(int argc, char** argv) {
    using namespace qumbrel;
    if (argc < 3) {
        std::fprintf(stderr, "usage: qumbrel-screenshots HOME OUTDIR\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QtHost host;
    SystemClock clock;
    SyslogEventLog log;
    ProgramInfo info;
    info.folder = argv[1];
    Program ctx(info, host, clock, log, clsRegionalSettings(*clsRegionalSettings::named("en-US")));
    read_regional_values(ctx);
    ctx.run.strOptionFile = ctx.program_file("qumbrel.ini");
    ctx.run.bNoSplash = kTrue;
    ctx.run.strRegisterFile = ctx.program_file("sourcefiledb.dat");
    fkt_loadoptionfile(ctx);
    const QString out = argv[2];
    MainWindow w(ctx, host);
    w.service.runner = std::make_shared<NoService>();  // the pictures never ask systemd
    w.resize(900, 600);
    w.show();
    const auto shot = [&](QWidget* widget, const char* name) {
        QApplication::processEvents();
        if (!widget->grab().save(out + "/" + name + ".png")) {
            std::fprintf(stderr, "qumbrel-screenshots: cannot write %s\n", name);
            std::exit(1);
        }
    };
    shot(&w, "home");
    w.ShowForm("frm_mdic_run fra_manu");
    RunPage* run = w.run_page();
    QStringList files;
    for (int i = 3; i < argc; ++i) files << argv[i];
    run->add_files(files);
    if (run->files()->count() > 0) run->files()->setCurrentRow(0);
    shot(&w, "run-files");
    run->convert_all();
    shot(&w, "run-converted");
    w.ShowForm("frm_mdic_run fra_auto");
    shot(&w, "run-automatic");
    for (const char* frame : {"fra_optionfile", "fra_properties", "fra_option", "fra_more"}) {
        w.ShowForm(QString("frm_mdic_settings ") + frame);
        shot(&w, (std::string("settings-") + (frame + 4)).c_str());
    }
    w.ShowForm("frm_mdic_prgsettings fra_settings");
    shot(&w, "program-settings");
    w.ShowForm("frm_mdic_info fra_help");
    shot(&w, "info");
    LoginDialog login(ctx);
    login.show();
    shot(&login, "login");
    return 0;
}
