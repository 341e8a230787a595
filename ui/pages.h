#pragma once
// The pages of the main window. Each page is a form of the Windows design with one or
// more frames; ShowFrame brings a frame to the front.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>
#include <QWidget>
#include <functional>

#include "frame/context.h"

namespace qumbrel {

class QtHost;

// The information list of a recorder file, by the family of its extension (nothing for
// a file no family reads).
void show_file_info(Program& ctx, QListWidget* list, const QString& file);

class Page : public QWidget {
    Q_OBJECT
  public:
    using QWidget::QWidget;
    // Brings the frame of that name to the front (unknown names keep the present one).
    virtual void ShowFrame(const QString& frame) = 0;
};

// frm_mdic_home: version and description; lbl_patherrors when a configured path is missing.
class HomePage final : public Page {
    Q_OBJECT
  public:
    HomePage(Program& ctx, QWidget* parent = nullptr);
    void ShowFrame(const QString&) override {}
    // The paths of the options exist? Shows lbl_patherrors when not; no painting.
    void sub_checkallpath();

  private:
    Program& ctx_;
    QLabel* pathErrors_;
};

// frm_mdic_info: version, error.log and the manual opened through the desktop.
class InfoPage final : public Page {
    Q_OBJECT
  public:
    InfoPage(Program& ctx, QWidget* parent = nullptr);
    void ShowFrame(const QString&) override {}
};

// frm_mdic_run: hand-picked files (open dialog, drops), their file information, the
// manual conversion with the status list, and the schedule of the automatic mode.
class RunPage final : public Page {
    Q_OBJECT
  public:
    RunPage(Program& ctx, QtHost& host, QWidget* parent = nullptr);
    void ShowFrame(const QString& frame) override;

    // What a drop gives: each file in turn, stopping at the first that is no recorder
    // file; files already listed are skipped.
    void add_files(const QStringList& files);
    void convert_all();
    // The schedule kind's enabled states (day, hour, minute).
    void scheduler_changed(int kind);
    // The page's options into memory and the option file (with savetoggle), and the
    // autostart entry.
    void sub_optionSave();
    QListWidget* files() const { return files_; }
    QListWidget* status() const { return status_; }
    QListWidget* info() const { return info_; }
    bool runOptionsChanged = false;
    // Asked before a manual conversion about changed data options; false cancels it.
    std::function<bool()> settleOptions;
    // Where the status lines of a save go (the main window's status bar).
    std::function<void(const QString&)> statusbar;

  signals:
    void automaticWanted();

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void open_files();
    void show_info(const QString& file);
    void list_menu(QMenu* menu, QListWidget* list, const QPoint& at);
    void save_list();
    static QStringList lines_of(const QListWidget* list);

    Program& ctx_;
    QtHost& host_;
    QStackedWidget* frames_;
    QListWidget* files_;
    QLineEdit* inHand_;
    QPushButton* start_;
    QListWidget* info_;
    QListWidget* status_;
    QComboBox* scheduler_;
    QComboBox* day_;
    QLineEdit* hour_;
    QLineEdit* minute_;
    QComboBox* filetyp_;
    QLineEdit* filetypuserdef_;
    QCheckBox* autostart_;
    QString lastFolder_;
    QMenu* statusMenu_ = nullptr;
    QMenu* infoMenu_ = nullptr;
    QPointer<QListWidget> menuList_;  // the list whose menu is open
};

}  // namespace qumbrel
