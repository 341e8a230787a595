#include "ui/main_window.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>
#include <filesystem>

#include "frame/language.h"
#include "ui/login_dialog.h"
#include "ui/pages.h"
#include "ui/picture.h"
#include "ui/prgsettings_page.h"
#include "ui/qt_host.h"
#include "ui/settings_page.h"
#include "ui/splash.h"
#include "ui/translate.h"
#include "ui/tray_form.h"

namespace qumbrel {
namespace {

struct Link {
    const char* name;
    const char* text;
    const char* target;
};
constexpr Link kLinks[] = {
    {"cmd_explorerbar_home", "Home", "frm_mdic_home fra_home"},
    {"cmd_explorerbar_manu", "Convert by hand", "frm_mdic_run fra_manu"},
    {"cmd_explorerbar_auto", "Automatic mode", "frm_mdic_run fra_auto"},
    {"cmd_explorerbar_properties", "Report", "frm_mdic_settings fra_properties"},
    {"cmd_explorerbar_optionfile", "Files", "frm_mdic_settings fra_optionfile"},
    {"cmd_explorerbar_option", "Options", "frm_mdic_settings fra_option"},
    {"cmd_explorerbar_more", "More", "frm_mdic_settings fra_more"},
    {"cmd_explorerbar_prgsettings", "Program settings", "frm_mdic_prgsettings fra_settings"},
    {"cmd_explorerbar_info", "Info", "frm_mdic_info fra_help"},
};

}  // namespace

MainWindow::MainWindow(Program& ctx, QtHost& host, QWidget* parent)
    : QMainWindow(parent), ctx_(ctx), host_(host) {
    setObjectName("frm_mdi_main");
    setWindowTitle("Qumbrel");
    auto* central = new QWidget(this);
    auto* layout = new QHBoxLayout(central);
    auto* bar = new QWidget(central);
    bar->setObjectName("fra_explorerbar");
    auto* links = new QVBoxLayout(bar);
    // The program folder's logo above the links, when there is one.
    auto* logo = new QLabel(bar);
    logo->setObjectName("img_logo");
    if (const auto picture = read_picture(ctx_.program_file("logo.t")))
        logo->setPixmap(*picture);
    else
        logo->setVisible(false);
    links->addWidget(logo);
    for (const Link& l : kLinks) {
        auto* b = new QPushButton(l.text, bar);
        b->setObjectName(l.name);
        b->setFlat(true);
        const QString target = l.target;
        connect(b, &QPushButton::clicked, this, [this, target] { ShowForm(target); });
        links->addWidget(b);
    }
    links->addStretch();
    pages_ = new QStackedWidget(central);
    layout->addWidget(bar);
    layout->addWidget(pages_, 1);
    setCentralWidget(central);

    // Five drop-down buttons, each with its menu; the entries are control arrays.
    auto* toolbar = addToolBar("toolbar");
    toolbar->setObjectName("tbr_main");
    const auto menu = [&](const char* name, const char* text,
                          std::initializer_list<std::pair<int, const char*>> items,
                          const char* itemName, const std::function<void(int)>& chosen) {
        auto* m = new QMenu(this);
        m->setObjectName(name);
        for (const auto& [index, caption] : items) {
            QAction* a = m->addAction(caption);
            a->setObjectName(QString("%1(%2)").arg(itemName).arg(index));
            connect(a, &QAction::triggered, this, [chosen, i = index] { chosen(i); });
        }
        auto* b = new QToolButton(toolbar);
        b->setObjectName(QString(name) + "_button");
        b->setText(text);
        b->setMenu(m);
        b->setPopupMode(QToolButton::InstantPopup);
        toolbar->addWidget(b);
    };
    menu("mnu_file", "File", {{0, "Home"}, {1, "Exit"}}, "mnu_fileItem", [this](int i) {
        if (i == 0) ShowForm("frm_mdic_home fra_home");
        if (i == 1) exit_program();
    });
    menu("mnu_export", "Convert", {{0, "By hand"}, {1, "Automatic"}}, "mnu_exportItems",
         [this](int i) { ShowForm(i == 0 ? "frm_mdic_run fra_manu" : "frm_mdic_run fra_auto"); });
    menu("mnu_option", "Options", {{0, "Report"}, {2, "Files"}, {3, "Options"}, {4, "More"}},
         "mnu_optionItem", [this](int i) {
             static const char* frames[] = {"fra_properties", "", "fra_optionfile", "fra_option",
                                            "fra_more"};
             ShowForm(QString("frm_mdic_settings ") + frames[i]);
         });
    menu("mnu_prgoption", "Program", {{0, "Program settings"}}, "mnu_prgoptionitem",
         [this](int) { ShowForm("frm_mdic_prgsettings fra_settings"); });
    menu("mnu_help", "Help", {{0, "Manual"}, {1, "Info"}}, "mnu_helpItems", [this](int i) {
        if (i == 1) return ShowForm("frm_mdic_info fra_help");
        QDesktopServices::openUrl(QUrl::fromLocalFile(
            QString::fromStdString(ctx_.program_file(ctx_.info.baseName + ".pdf"))));
    });

    std::error_code ec;
    const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    service = ServiceControl::for_this_user(ctx_.info.folder.string(),
                                            (exe.parent_path() / "qumbrel-svc").string());

    status_ = new QLabel(this);
    status_->setObjectName("lbl_statusbar");
    statusBar()->addWidget(status_, 1);
    translate_widget(ctx_, this);
    host_.set_main_window_opened();
    if (!is_set(ctx_.run.bNoSplash)) Splash(ctx_).exec();
    build_title();
    SetStatusbar("");
    resize(960, 640);
    ShowForm("frm_mdic_home fra_home");
}

MainWindow::~MainWindow() = default;

void MainWindow::build_title() {
    title_ = QString("Version %1.%2  Build: %3")
                 .arg(ctx_.info.major)
                 .arg(ctx_.info.minor)
                 .arg(ctx_.info.revision);
    const QString sep = "       |       ";
    if (is_set(ctx_.run.bFda)) title_ += sep + "FDA";
    if (is_set(ctx_.run.bDebug)) title_ += sep + "--> Debug mode <--";
    if (is_set(ctx_.run.bConfiguration)) title_ += sep + "--> Config mode <--";
    if (!ctx_.opt.strProtectionPassword.empty()) title_ += sep + "PROTECTION";
}

void MainWindow::SetStatusbar(const QString& text) {
    status_->setText(text.isEmpty() ? title_ : text);
    host_.pump_events();
}

void MainWindow::ShowForm(const QString& target) {
    const QString form = target.section(' ', 0, 0).toLower();
    const QString frame = target.section(' ', 1, 1);
    Page* page = loaded_.value(form, nullptr);
    if (!page) {
        if (form == "frm_mdic_home")
            page = new HomePage(ctx_, pages_);
        else if (form == "frm_mdic_run") {
            auto* run = new RunPage(ctx_, host_, pages_);
            connect(run, &RunPage::automaticWanted, this, &MainWindow::start_automatic);
            run->settleOptions = [this] { return settle_changes(false); };
            run->statusbar = [this](const QString& line) { SetStatusbar(line); };
            page = run;
        } else if (form == "frm_mdic_info")
            page = new InfoPage(ctx_, pages_);
        else if (form == "frm_mdic_settings") {
            auto* settings = new SettingsPage(ctx_, pages_);
            settings->statusbar = [this](const QString& line) { SetStatusbar(line); };
            page = settings;
        } else if (form == "frm_mdic_prgsettings") {
            auto* prg = new PrgSettingsPage(ctx_, service, pages_);
            connect(prg, &PrgSettingsPage::closeButtonWanted, this, &MainWindow::EnableCloseButton);
            page = prg;
        } else
            return;
        loaded_.insert(form, page);
        pages_->addWidget(page);
    }
    pages_->setCurrentWidget(page);
    page->ShowFrame(frame);
}

Page* MainWindow::current_page() const {
    return qobject_cast<Page*>(pages_->currentWidget());
}

RunPage* MainWindow::run_page() const {
    return qobject_cast<RunPage*>(loaded_.value("frm_mdic_run", nullptr));
}

SettingsPage* MainWindow::settings_page() const {
    return qobject_cast<SettingsPage*>(loaded_.value("frm_mdic_settings", nullptr));
}

void MainWindow::exit_program() {
    if (!ctx_.opt.strProtectionPassword.empty()) {
        LoginDialog login(ctx_, this);
        login.exec();
        if (!is_set(ctx_.opt.bLoggedIn)) return;
    }
    if (unload()) {
        ended_ = true;
        QCoreApplication::quit();  // at once: nothing else is unloaded or written
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    // The close button is off while nobody is logged in.
    if (!is_set(ctx_.opt.bLoggedIn) || !closeButton_ || !unload()) {
        event->ignore();
        return;
    }
    ended_ = true;
    event->accept();
}

bool MainWindow::unload() {
    return settle_changes();
}

void MainWindow::start_automatic() {
    if (!settle_changes()) return;
    std::error_code ec;
    if (!std::filesystem::is_directory(ctx_.opt.sourcepath, ec)) {
        const RunPage* run = run_page();
        const QLabel* warning = run ? run->findChild<QLabel*>("lbl_nosourcepath") : nullptr;
        if (testAnswer == Answer::Ask)
            QMessageBox::critical(this, windowTitle(), warning ? warning->text() : QString());
        return;
    }
    hide();
    host_.pump_events();
    tray_ = std::make_unique<TrayForm>(ctx_);
    connect(tray_.get(), &TrayForm::windowWanted, this, [this] {
        tray_.release()->deleteLater();  // it is still in its signal
        show();
    });
    if (!tray_->start()) {
        tray_.reset();
        show();
    }
}

bool MainWindow::settle_changes(bool withRunPage) {
    RunPage* run = run_page();
    SettingsPage* settings = settings_page();
    const bool runChanged = withRunPage && run && run->runOptionsChanged;
    const bool optionsChanged = settings && settings->bOptionsChanged;
    if (!runChanged && !optionsChanged) return true;
    Answer a = testAnswer;
    if (a == Answer::Ask) {
        const auto b = QMessageBox::question(
            this, windowTitle(), QString::fromStdString(fkt_translate(ctx_, "SaveChanges")),
            QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        a = b == QMessageBox::Yes  ? Answer::Yes
            : b == QMessageBox::No ? Answer::No
                                   : Answer::Cancel;
    }
    if (a == Answer::Cancel) return false;
    if (a == Answer::Yes) {
        if (runChanged) run->sub_optionSave();
        if (optionsChanged) settings->sub_optionSave();
    }
    if (a == Answer::No) {  // thrown away
        if (runChanged) run->runOptionsChanged = false;
        if (optionsChanged) settings->sub_optioncancel();
    }
    return true;
}

}  // namespace qumbrel
