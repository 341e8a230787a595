#include "ui/prgsettings_page.h"

#include <QDir>
#include <QEventLoop>
#include <QFocusEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QRegularExpressionValidator>
#include <QTimer>
#include <QVBoxLayout>
#include <chrono>
#include <thread>

#include "frame/ini.h"
#include "frame/log.h"
#include "frame/options_io.h"
#include "frame/registry.h"
#include "ui/login_dialog.h"
#include "ui/translate.h"
#include "ui/widgets.h"

namespace qumbrel {
namespace {

constexpr const char* kTrap = "cmd_saveprotection_Click of Formular frm_mdic_prgsettings";

}  // namespace

PrgSettingsPage::PrgSettingsPage(Program& ctx, ServiceControl service, QWidget* parent)
    : Page(parent), ctx_(ctx), service_(std::move(service)) {
    setObjectName("frm_mdic_prgsettings");

    auto* protection = new QGroupBox("Protection", this);
    protection->setObjectName("fra_protection");
    protection_ = new QCheckBox("protect program control", protection);
    protection_->setObjectName("cbx_protection");
    password_ = new QLineEdit(protection);
    password_->setObjectName("txt_password");
    password_->setEchoMode(QLineEdit::Password);
    saveProtection_ = named_button("cmd_saveprotection", "Apply", protection);
    saveProtection_->setEnabled(false);
    // Captions frm_login takes for its two questions; never shown on the page.
    auto* oldPassword = named_label("lbl_oldpassword", "Present password", protection);
    oldPassword->setVisible(false);
    auto* newPassword = named_label("lbl_password", "New password", protection);
    auto* p = new QFormLayout(protection);
    p->addRow(protection_);
    p->addRow(newPassword, password_);
    p->addRow(oldPassword);
    p->addRow(saveProtection_);

    auto* language = new QGroupBox("Language", this);
    language->setObjectName("fra_language");
    auto* chooseLanguage = named_button("cmd_language", "Language...", language);
    languages_ = new QMenu(this);
    languages_->setObjectName("MNtranslate");
    auto* l = new QVBoxLayout(language);
    l->addWidget(chooseLanguage);

    auto* svc = new QGroupBox("Service", this);
    svc->setObjectName("fra_service");
    install_ = named_button("cmd_serviceInstall", "Install Service", svc);
    start_ = named_button("cmd_serviceStart", "Start Service", svc);
    timeout_ = new QLineEdit(svc);
    timeout_->setObjectName("txt_timeoutcountsec");
    timeout_->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]*"), timeout_));
    timeout_->installEventFilter(this);
    auto* s = new QFormLayout(svc);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(install_);
    buttons->addWidget(start_);
    s->addRow(buttons);
    auto* timeoutRow = new QHBoxLayout;
    timeoutRow->addWidget(timeout_, 1);
    timeoutRow->addWidget(named_label("lbl_sec", "seconds", svc));
    s->addRow(named_label("lbl_timeout", "Time-out of a conversion", svc), timeoutRow);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(protection);
    layout->addWidget(language);
    layout->addWidget(svc);
    layout->addStretch();

    login = [this](const QString& prompt) {
        LoginDialog box(ctx_, this);
        box.set_prompt(prompt);
        return box.exec() == QDialog::Accepted;
    };
    inform = [this](const QString& text) { QMessageBox::information(this, windowTitle(), text); };

    connect(protection_, &QCheckBox::clicked, this, &PrgSettingsPage::cbx_protection_Click);
    connect(password_, &QLineEdit::textChanged, this, [this](const QString& t) {
        bPasswordChanged = true;
        saveProtection_->setEnabled(!t.isEmpty());
    });
    connect(saveProtection_, &QPushButton::clicked, this,
            &PrgSettingsPage::cmd_saveprotection_Click);
    connect(chooseLanguage, &QPushButton::clicked, this, [this, chooseLanguage] {
        languages_->popup(chooseLanguage->mapToGlobal(QPoint(0, chooseLanguage->height())));
    });
    connect(install_, &QPushButton::clicked, this, &PrgSettingsPage::cmd_serviceInstall_Click);
    connect(start_, &QPushButton::clicked, this, &PrgSettingsPage::cmd_serviceStart_Click);

    // Load: translated, the language menu filled, the service's state, the protection box.
    fill_language_menu();
    translate_widget(ctx_, this);
    refresh_service();
    timeout_->setText(
        QString::fromStdString(clsINI(ctx_.run.strOptionFile)
                                   .GetKeyValue("service", "timeoutcountsec", {}, std::string())));
    protection_->setChecked(!is_set(ctx_.opt.bLoggedIn));
    password_->setEnabled(protection_->isChecked());
    newPassword->setEnabled(protection_->isChecked());
}

void PrgSettingsPage::fill_language_menu() {
    languages_->clear();
    const QDir folder(QString::fromStdString(ctx_.info.folder.string()));
    for (const QString& file : folder.entryList({"*.lng"}, QDir::Files, QDir::Name))
        connect(languages_->addAction(file), &QAction::triggered, this,
                [this, file] { choose_language(file); });
    languages_->addSeparator();
    QAction* other = languages_->addAction("Other language...");
    other->setObjectName("MNtranslateOther");
    connect(other, &QAction::triggered, this, [this] {
        inform("Translate this file " + QString::fromStdString(ctx_.opt.language) + "\n" +
               "and save it in the application folder like this: " + "your country's name .LNG" +
               "\n" + "It will apear in the translate menu");
    });
}

void PrgSettingsPage::choose_language(const QString& file) {
    ctx_.opt.language = (ctx_.info.folder / file.toStdString()).string();
    translate_widget(ctx_, this);
    fkt_saveoption_prgsettings(ctx_, ctx_.opt);
}

void PrgSettingsPage::cbx_protection_Click() {
    const bool ticked = protection_->isChecked();
    password_->setEnabled(ticked);
    if (auto* l = findChild<QLabel*>("lbl_password")) l->setEnabled(ticked);
    if (!ticked && !ctx_.opt.strProtectionPassword.empty()) cmd_saveprotection_Click();
}

void PrgSettingsPage::cmd_saveprotection_Click() {
    const std::string old = ctx_.opt.strProtectionPassword;
    const auto caption = [this](const char* name) {
        const QLabel* l = findChild<QLabel*>(name);
        return l ? l->text() : QString();
    };
    try {
        const bool ticked = protection_->isChecked();
        bool on = false;
        if (!old.empty() && bPasswordChanged && ticked) {
            // A new password: the present one first, then the new one a second time.
            if (!login(caption("lbl_oldpassword"))) return;
            ctx_.opt.strProtectionPassword = password_->text().toStdString();
            if (!login(caption("lbl_password"))) {
                ctx_.opt.strProtectionPassword = old;
                return;
            }
            on = true;
        } else if (!old.empty() && !ticked) {
            // Protection off.
            if (!login(caption("lbl_oldpassword"))) {
                protection_->setChecked(true);
                password_->setEnabled(true);
                ctx_.opt.strProtectionPassword = old;
                return;
            }
            password_->clear();
            ctx_.opt.strProtectionPassword.clear();
            emit closeButtonWanted(true);
        } else if (old.empty() && ticked) {
            // Protection on: the new password a second time.
            ctx_.opt.strProtectionPassword = password_->text().toStdString();
            if (!login(caption("lbl_password"))) {
                protection_->setChecked(false);
                password_->setEnabled(false);
                ctx_.opt.strProtectionPassword = old;
                return;
            }
            emit closeButtonWanted(false);
            on = true;
        } else {
            return;
        }
        write_protection(on);
        bPasswordChanged = false;
    } catch (...) {
        report_trapped(ctx_, kTrap, 0);
    }
}

void PrgSettingsPage::write_protection(bool on) {
    // The seconds piece carries no meaning; the pause keeps two saves apart as they were.
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    RegistryStore registry(ctx_.program_file("registry.ini"));
    std::string error = on ? registry.CreateRegKey(kProtectionKey) : std::string();
    if (error.empty())
        error = registry.SetRegString(
            kProtectionKey, kProtectionValue,
            build_protection_value(ctx_.clock.now().second, ctx_.opt.strProtectionPassword, on));
    // Not written (no right to the store): the password in memory holds for this run.
    if (!error.empty()) report_plain(ctx_, kTrap, error);
}

void PrgSettingsPage::refresh_service() {
    serviceState_ = fkt_svcstate(service_);
    if (serviceState_ == kServiceMissing) {
        install_->setText("Install Service");
        install_->setEnabled(true);
        start_->setEnabled(false);
        return;
    }
    install_->setText("Uninstall Service");
    install_->setEnabled(serviceState_ == kServiceStopped);
    start_->setText(serviceState_ == kServiceRunning ? "Stop Service" : "Start Service");
    start_->setEnabled(serviceState_ == kServiceStopped || serviceState_ == kServiceRunning);
}

void PrgSettingsPage::cmd_serviceInstall_Click() {
    refresh_service();
    if (install_->isEnabled()) install_->setEnabled(false);
    std::string why;
    const int err = serviceState_ == kServiceMissing ? fkt_svcinstall(service_, &why)
                                                     : fkt_svcuninstall(service_, &why);
    if (err != 0) report_plain(ctx_, "cmd_serviceInstall_Click", why);
    refresh_service();
}

void PrgSettingsPage::cmd_serviceStart_Click() {
    refresh_service();
    start_->setEnabled(false);
    std::string why;
    int err = 0;
    if (serviceState_ == kServiceRunning) err = fkt_svcstop(service_, &why);
    if (serviceState_ == kServiceStopped) err = fkt_svcstart(service_, &why);
    if (err != 0) report_plain(ctx_, "cmd_serviceStart_Click", why);
    QEventLoop wait;  // the window keeps painting while the service settles
    QTimer::singleShot(serviceWaitMs, &wait, &QEventLoop::quit);
    wait.exec();
    refresh_service();
}

bool PrgSettingsPage::eventFilter(QObject* watched, QEvent* event) {
    if (watched == timeout_ && event->type() == QEvent::FocusOut) {
        clsINI ini(ctx_.run.strOptionFile);
        ini.CreateKeyValue("service", "timeoutcountsec", timeout_->text().toStdString());
        ini.CreateKeyValue("file", "savetogglesvc", "1");
    }
    return Page::eventFilter(watched, event);
}

}  // namespace qumbrel
