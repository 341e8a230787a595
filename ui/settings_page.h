#pragma once
// frm_mdic_settings: the data options of a conversion on four frames (files, report,
// options, printing). Every control edits one option; a change sets bOptionsChanged,
// which the main window asks about before the program ends.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMap>
#include <QMenu>
#include <QRadioButton>
#include <QStackedWidget>
#include <functional>

#include "ui/pages.h"

namespace qumbrel {

class SettingsPage final : public Page {
    Q_OBJECT
  public:
    SettingsPage(Program& ctx, QWidget* parent = nullptr);
    void ShowFrame(const QString& frame) override;

    // fkt_saveoption: every option of the page written, read back and shown again.
    bool sub_optionSave();
    // The options as they are in memory shown again; the changes thrown away.
    void sub_optioncancel();
    // Paints the path boxes: red (255) for a folder or template that does not exist.
    void sub_checkallpath();
    // The enabled states of the target format `index` (0 CSV, 1 XLS, 2 template, 3 text).
    void targetformat_changed(int index);
    // The element menu of a box; each entry puts its token at the box's cursor.
    QMenu* element_menu(const QString& box) const { return elementMenus_.value(box); }
    QMenu* channel_menu(int k) const { return channelMenus_.value(k); }
    // The information list of a recorder file, to see the elements a name can take.
    void sample_file(const QString& file);
    bool bOptionsChanged = false;

    // Where the status lines of a save go (the main window's status bar).
    std::function<void(const QString&)> statusbar;

  private:
    QWidget* files_frame();
    QWidget* report_frame();
    QWidget* options_frame();
    QWidget* printing_frame();
    QLineEdit* line(const QString& name, QWidget* parent);
    QCheckBox* check(const QString& name, const QString& text, QWidget* parent);
    QPushButton* browse(const QString& name, QLineEdit* box, bool folder, const QString& filter);
    QPushButton* elements(const QString& name, QLineEdit* box);
    void changed();
    // set_editbox, set_channelbox, set_printpage: the controls from the options.
    void load_to_screen();
    Options from_screen() const;
    void say(const QString& line);

    Program& ctx_;
    QStackedWidget* frames_;
    QMap<QString, QLineEdit*> boxes_;
    QMap<QString, QCheckBox*> checks_;
    QMap<QString, QMenu*> elementMenus_;
    QMap<int, QMenu*> channelMenus_;
    QRadioButton* binfilemodus_[3]{};
    QRadioButton* noconversion_[2]{};
    QRadioButton* orientation_[2]{};
    QComboBox* targetformat_ = nullptr;
    QComboBox* targetname_ = nullptr;
    QComboBox* printer_[2]{};
    QListWidget* sample_ = nullptr;
    bool loading_ = false;
};

}  // namespace qumbrel
