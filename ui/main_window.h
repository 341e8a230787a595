#pragma once
// frm_mdi_main: the explorer bar of links, the toolbar of five drop-down buttons, one page
// at a time, the status bar with the title text, and the guarded exit.
#include <QLabel>
#include <QMainWindow>
#include <QMap>
#include <QStackedWidget>
#include <memory>

#include "automation/service_control.h"
#include "frame/context.h"

namespace qumbrel {

class Page;
class QtHost;
class RunPage;
class SettingsPage;
class TrayForm;

class MainWindow final : public QMainWindow {
    Q_OBJECT
  public:
    MainWindow(Program& ctx, QtHost& host, QWidget* parent = nullptr);
    ~MainWindow() override;

    // Brings a page target ("frm_mdic_run fra_manu") to the front; the page is made once.
    void ShowForm(const QString& target);
    // The status bar's text; an empty text shows the title text.
    void SetStatusbar(const QString& text);
    QString title_text() const { return title_; }
    Page* current_page() const;
    RunPage* run_page() const;
    SettingsPage* settings_page() const;
    // The companion service the program settings page controls (tests give a fake).
    ServiceControl service;
    // EnableCloseButton: the protection switched on disables the close button.
    void EnableCloseButton(bool enabled) { closeButton_ = enabled; }
    // The exit of mnu_fileItem(1): the login first when protection is on.
    void exit_program();
    bool ended() const { return ended_; }
    // cmd_startauto: the window hides and the tray form runs the automatic mode; a missing
    // source folder is said in a box instead.
    void start_automatic();
    TrayForm* tray() const { return tray_.get(); }

    // What the unload question is answered with (tests set it; a box asks otherwise).
    enum class Answer { Ask, Yes, No, Cancel };
    Answer testAnswer = Answer::Ask;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    // The unload route; true when the program may end.
    bool unload();
    // The question about unsaved changes of the option pages (and of the run page with
    // `withRunPage`); false when cancelled.
    bool settle_changes(bool withRunPage = true);
    void build_title();

    Program& ctx_;
    QtHost& host_;
    QStackedWidget* pages_;
    QMap<QString, Page*> loaded_;
    QLabel* status_;
    QString title_;
    bool ended_ = false;
    bool closeButton_ = true;
    std::unique_ptr<TrayForm> tray_;
};

}  // namespace qumbrel
