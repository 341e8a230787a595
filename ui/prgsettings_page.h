#pragma once
// frm_mdic_prgsettings: what concerns the program and not a conversion: the protection of
// program control (a password kept in the registry store), the language, and the
// companion service with its time-out.
#include <QCheckBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <functional>

#include "automation/service_control.h"
#include "ui/pages.h"

namespace qumbrel {

class PrgSettingsPage final : public Page {
    Q_OBJECT
  public:
    // What runs frm_login modal with the given prompt; true on a good login.
    using LoginRunner = std::function<bool(const QString& prompt)>;

    PrgSettingsPage(Program& ctx, ServiceControl service, QWidget* parent = nullptr);
    void ShowFrame(const QString&) override {}

    void cbx_protection_Click();
    void cmd_saveprotection_Click();
    // The buttons' captions and states from fkt_svcstate.
    void refresh_service();
    void cmd_serviceInstall_Click();
    void cmd_serviceStart_Click();
    // A language file of the menu chosen: the page translated, `language` saved.
    void choose_language(const QString& file);
    QMenu* language_menu() const { return languages_; }

    bool bPasswordChanged = false;
    LoginRunner login;                           // frm_login by default
    std::function<void(const QString&)> inform;  // a message box by default
    int serviceWaitMs = 1000;                    // the pause after a start or stop

  signals:
    // EnableCloseButton of the main window.
    void closeButtonWanted(bool enabled);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void fill_language_menu();
    void write_protection(bool on);

    Program& ctx_;
    ServiceControl service_;
    QCheckBox* protection_;
    QLineEdit* password_;
    QPushButton* saveProtection_;
    QPushButton* install_;
    QPushButton* start_;
    QLineEdit* timeout_;
    QMenu* languages_;
    int serviceState_ = kServiceMissing;
};

}  // namespace qumbrel
