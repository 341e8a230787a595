#include "ui/settings_page.h"

#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "frame/apifile.h"
#include "frame/log.h"
#include "frame/options_io.h"
#include "frame/vbformat.h"
#include "reports/printer.h"
#include "ui/text_filters.h"
#include "ui/translate.h"
#include "ui/widgets.h"

namespace qumbrel {
namespace {

struct Element {
    const char* name;
    const char* caption;
    const char* token;
};
constexpr Element kElements[] = {
    {"mnu_elem_org", "Name of the source file", "$O"},
    {"mnu_elem_filemessage", "File message", "$F"},
    {"mnu_elem_serialno", "Serial number", "$S"},
    {"mnu_elem_batchname", "Batch name", "$B"},
    {"mnu_elem_1groupname", "Group name 1", "$1"},
    {"mnu_elem_2groupname", "Group name 2", "$2"},
    {"mnu_elem_3groupname", "Group name 3", "$3"},
    {"mnu_elem_4groupname", "Group name 4", "$4"},
    {"mnu_elem_losno", "Lot number", "$L"},
    {"mnu_elem_losno2", "Lot number, 2 digits", "$LL"},
    {"mnu_elem_losno3", "Lot number, 3 digits", "$LLL"},
    {"mnu_elem_losno4", "Lot number, 4 digits", "$LLLL"},
    {"mnu_elem_daycounter", "Day counter", "$C"},
    {"mnu_elem_BC1", "Batch comment 1", "$C1"},
    {"mnu_elem_BC2", "Batch comment 2", "$C2"},
    {"mnu_elem_BC3", "Batch comment 3", "$C3"},
    {"mnu_elem_year2", "Year, 2 digits", "$YY"},
    {"mnu_elem_year4", "Year, 4 digits", "$YYYY"},
    {"mnu_elem_month", "Month", "$MM"},
    {"mnu_elem_day", "Day", "$DD"},
    {"mnu_elem_hour", "Hour", "$HH"},
    {"mnu_elem_minute", "Minute", "$mm"},
    {"mnu_elem_sec", "Second", "$SS"},
};

// The four channel menus and the channel numbers each offers.
struct ChannelRange {
    const char* menu;
    int first;
    int last;
};
constexpr ChannelRange kChannelRanges[] = {{"mnu_channel1", 1, 30},
                                           {"mnu_channel30", 31, 60},
                                           {"mnu_channel100", 101, 130},
                                           {"mnu_channel130", 131, 160}};

constexpr const char* kInclusions[] = {"cbx_measurementsinclusive", "cbx_alarminclusive",
                                       "cbx_messageinclusive",      "cbx_operatinloginclusive",
                                       "cbx_signatureinclusive",    "cbx_scaleinfoinclusive",
                                       "cbx_pveventinclusive",      "cbx_ctrleventinclusive"};

Flag* inclusion(Options& o, const QString& name) {
    if (name == "cbx_measurementsinclusive") return &o.measurementsinclusive;
    if (name == "cbx_alarminclusive") return &o.alarminclusive;
    if (name == "cbx_messageinclusive") return &o.messageinclusive;
    if (name == "cbx_operatinloginclusive") return &o.operatinloginclusive;
    if (name == "cbx_signatureinclusive") return &o.signatureinclusive;
    if (name == "cbx_scaleinfoinclusive") return &o.scaleinfoinclusive;
    if (name == "cbx_pveventinclusive") return &o.pveventinclusive;
    return &o.ctrleventinclusive;
}

QRadioButton* option(const QString& name, int index, const QString& text, QWidget* parent) {
    auto* o = new QRadioButton(text, parent);
    o->setObjectName(QString("%1(%2)").arg(name).arg(index));
    return o;
}

QWidget* row_of(QWidget* parent, std::initializer_list<QWidget*> widgets) {
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* w : widgets) layout->addWidget(w, qobject_cast<QLineEdit*>(w) ? 1 : 0);
    return row;
}

void paint(QLineEdit* box, bool red) {
    QPalette p = box->palette();
    p.setColor(QPalette::Base,
               red ? QColor(255, 0, 0) : box->style()->standardPalette().color(QPalette::Base));
    box->setPalette(p);
}

}  // namespace

SettingsPage::SettingsPage(Program& ctx, QWidget* parent) : Page(parent), ctx_(ctx) {
    setObjectName("frm_mdic_settings");
    frames_ = new QStackedWidget(this);
    frames_->addWidget(files_frame());
    frames_->addWidget(report_frame());
    frames_->addWidget(options_frame());
    frames_->addWidget(printing_frame());
    auto* save = named_button("cmd_save", "Save", this);
    auto* cancel = named_button("cmd_cancel", "Undo changes", this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frames_, 1);
    layout->addWidget(row_of(this, {save, cancel}));
    connect(save, &QPushButton::clicked, this, &SettingsPage::sub_optionSave);
    connect(cancel, &QPushButton::clicked, this, &SettingsPage::sub_optioncancel);
    connect(targetformat_, &QComboBox::currentIndexChanged, this,
            &SettingsPage::targetformat_changed);
    connect(checks_["cbx_excelsourcefileAlarm"], &QCheckBox::toggled, this,
            [this] { targetformat_changed(targetformat_->currentIndex()); });

    // Every edit by the user is a change of the page.
    for (QLineEdit* box : boxes_)
        connect(box, &QLineEdit::textChanged, this, &SettingsPage::changed);
    for (QCheckBox* c : checks_) connect(c, &QCheckBox::toggled, this, &SettingsPage::changed);
    for (QComboBox* c : findChildren<QComboBox*>()) {
        connect(c, &QComboBox::currentIndexChanged, this, &SettingsPage::changed);
        if (c->isEditable())  // a printer name typed in
            connect(c, &QComboBox::editTextChanged, this, &SettingsPage::changed);
    }
    for (QRadioButton* o : findChildren<QRadioButton*>())
        connect(o, &QRadioButton::toggled, this, &SettingsPage::changed);

    // The character filters, at the cursor on every change.
    for (const char* name : {"txt_row", "txt_col"})
        connect(boxes_[name], &QLineEdit::textChanged, this, [this, name] {
            guarded(ctx_, QString(name) + "_Change",
                    [&] { filter_at_cursor(boxes_[name], is_not_digit, true); });
        });
    for (const char* name : {"txt_almlsuffix", "txt_targetname"})
        connect(boxes_[name], &QLineEdit::textChanged, this, [this, name] {
            guarded(ctx_, QString(name) + "_Change()",
                    [&] { filter_at_cursor(boxes_[name], is_name_forbidden, false); });
        });

    translate_widget(ctx_, this);
    load_to_screen();
}

QLineEdit* SettingsPage::line(const QString& name, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    boxes_.insert(name, box);
    return box;
}

QCheckBox* SettingsPage::check(const QString& name, const QString& text, QWidget* parent) {
    auto* c = new QCheckBox(text, parent);
    c->setObjectName(name);
    checks_.insert(name, c);
    return c;
}

QPushButton* SettingsPage::browse(const QString& name, QLineEdit* box, bool folder,
                                  const QString& filter) {
    auto* b = named_button(name, "...", box->parentWidget());
    connect(b, &QPushButton::clicked, this, [this, box, folder, filter] {
        const QString chosen =
            folder ? QFileDialog::getExistingDirectory(this, QString(), box->text())
                   : QFileDialog::getOpenFileName(this, QString(), box->text(), filter);
        if (!chosen.isEmpty()) box->setText(chosen);  // a cancelled dialog changes nothing
    });
    return b;
}

QPushButton* SettingsPage::elements(const QString& name, QLineEdit* box) {
    auto* b = named_button(name, "$", box->parentWidget());
    auto* menu = new QMenu(this);
    menu->setObjectName(name + "_menu");
    for (const Element& e : kElements) {
        QAction* a = menu->addAction(e.caption);
        a->setObjectName(e.name);
        connect(a, &QAction::triggered, this, [box, token = QString(e.token)] {
            box->insert(token);  // at the cursor, over a selection
            box->setFocus();
        });
    }
    elementMenus_.insert(box->objectName(), menu);
    connect(b, &QPushButton::clicked, this,
            [b, menu] { menu->popup(b->mapToGlobal(QPoint(0, b->height()))); });
    return b;
}

QWidget* SettingsPage::files_frame() {
    auto* f = new QWidget(frames_);
    f->setObjectName("fra_optionfile");
    auto* form = new QFormLayout(f);
    QLineEdit* source = line("txt_sourcepath", f);
    form->addRow(named_label("lbl_sourcepath", "Source folder", f),
                 row_of(f, {source, browse("cmd_sourcepath", source, true, {})}));
    QLineEdit* target = line("txt_targetpath", f);
    form->addRow(named_label("lbl_targetpath", "Report folder", f),
                 row_of(f, {target, browse("cmd_targetpath", target, true, {}),
                            elements("cmd_targetpathelements", target)}));
    QLineEdit* moved = line("txt_targetpathsourcefile", f);
    form->addRow(named_label("lbl_targetpathsourcefile", "Folder of converted source files", f),
                 row_of(f, {moved, browse("cmd_targetpathsourcefile", moved, true, {}),
                            elements("cmd_targetpathsourcefileelements", moved)}));
    auto* disposal = new QGroupBox("After the conversion", f);
    disposal->setObjectName("fra_binfilemodus");
    auto* d = new QVBoxLayout(disposal);
    const char* modes[] = {"Move the source file", "Delete the source file",
                           "Keep the source file and enter it in the register"};
    for (int i = 0; i < 3; ++i)
        d->addWidget(binfilemodus_[i] = option("opt_binfilemodus", i, modes[i], disposal));
    form->addRow(disposal);
    auto* conversion = new QGroupBox("Report", f);
    conversion->setObjectName("fra_noconversion");
    auto* c = new QVBoxLayout(conversion);
    c->addWidget(noconversion_[0] = option("opt_noconversion", 0, "Write a report", conversion));
    c->addWidget(noconversion_[1] = option("opt_noconversion", 1,
                                           "No report: only move, delete or register", conversion));
    form->addRow(conversion);
    return f;
}

QWidget* SettingsPage::report_frame() {
    auto* f = new QWidget(frames_);
    f->setObjectName("fra_properties");
    auto* form = new QFormLayout(f);
    targetformat_ = new QComboBox(f);
    targetformat_->setObjectName("cmb_targetformat");
    targetformat_->addItems({"CSV", "XLS", "Excel template", "Customer text"});
    form->addRow(named_label("lbl_targetformat", "Report format", f), targetformat_);
    const QString excelFilter = "Excel File (*.xlt* *.xls*)";
    QLineEdit* templ = line("txt_excelsourcefile", f);
    form->addRow(named_label("lbl_excelsourcefile", "Template", f),
                 row_of(f, {templ, browse("cmd_excelsourcefile", templ, false, excelFilter)}));
    form->addRow(check("cbx_runexcelmakro", "Run the macro Qumbrel of the template", f));
    form->addRow(check("cbx_excelsourcefileAlarm", "Alarms and messages in a second workbook", f));
    QLineEdit* alarm = line("txt_excelsourcefilealarm", f);
    form->addRow(named_label("lbl_excelsourcefilealarm", "Template of the second workbook", f),
                 row_of(f, {alarm, browse("cmd_excelsourcefilealarm", alarm, false, excelFilter)}));
    form->addRow(named_label("lbl_almlsuffix", "Name suffix of the second workbook", f),
                 line("txt_almlsuffix", f));
    targetname_ = new QComboBox(f);
    targetname_->setObjectName("cmb_targetname");
    targetname_->addItems({"Name of the source file", "Name from elements"});
    form->addRow(named_label("lbl_targetname", "Report name", f), targetname_);
    QLineEdit* name = line("txt_targetname", f);
    form->addRow(named_label("lbl_targetnameformat", "Elements of the name", f),
                 row_of(f, {name, elements("cmd_targetnamemenu", name)}));
    form->addRow(
        check("cbx_sourcenamesametarget", "A moved source file takes the report's name", f));
    form->addRow(named_label("lbl_fileextension", "Extension of CSV reports", f),
                 line("txt_fileextension", f));
    form->addRow(named_label("lbl_rowcol", "First cell: row and column", f),
                 row_of(f, {line("txt_row", f), line("txt_col", f)}));
    // A recorder file's information beside the name elements it gives.
    auto* sample = named_button("cmd_samplefile", "Sample file...", f);
    sample_ = new QListWidget(f);
    sample_->setObjectName("lst_samplefile");
    connect(sample, &QPushButton::clicked, this, [this] {
        const QString file = QFileDialog::getOpenFileName(
            this, QString(), QString::fromStdString(ctx_.opt.sourcepath),
            "Files (*.ose *.osd *.oge *.ogd *.oad *.oae *.obd *.obe *.hnd *.hns *.kle *.kld)");
        if (!file.isEmpty()) sample_file(file);
    });
    form->addRow(sample);
    form->addRow(sample_);
    return f;
}

QWidget* SettingsPage::options_frame() {
    auto* f = new QWidget(frames_);
    f->setObjectName("fra_option");
    auto* form = new QFormLayout(f);
    const char* captions[] = {"Measured values", "Alarms",        "Messages",
                              "Operation log",   "Signatures",    "Scale information",
                              "PV events",       "Control events"};
    for (int i = 0; i < 8; ++i) form->addRow(check(kInclusions[i], captions[i], f));
    for (int i = 1; i <= 4; ++i)
        form->addRow(named_label(QString("lbl_userdef%1").arg(i), QString("Own text %1").arg(i), f),
                     line(QString("txt_userdef%1").arg(i), f));
    form->addRow(check("cbx_timeselect", "Only samples between", f));
    form->addRow(named_label("lbl_timestart", "Start", f), line("txt_timestart", f));
    form->addRow(named_label("lbl_timestop", "End", f), line("txt_timestop", f));
    QLineEdit* channels = line("txt_channels", f);
    QList<QWidget*> row{channels};
    for (int k = 0; k < 4; ++k) {
        const ChannelRange& r = kChannelRanges[k];
        auto* b = named_button(QString("cmd_channels%1").arg(k + 1),
                               QString("%1-%2").arg(r.first).arg(r.last), f);
        auto* menu = new QMenu(this);
        menu->setObjectName(r.menu);
        QAction* all = menu->addAction("All of them");
        all->setObjectName(QString(r.menu) + "All");
        connect(all, &QAction::triggered, this, [channels, r] {
            QString t = channels->text();
            for (int c = r.first; c <= r.last; ++c) t += QString::number(c) + "|";
            channels->setText(t);
        });
        QAction* everyone = menu->addAction("All channels");
        everyone->setObjectName(QString(r.menu) + "Every");
        connect(everyone, &QAction::triggered, this, [channels] { channels->setText("ALL|"); });
        menu->addSeparator();
        for (int c = r.first; c <= r.last; ++c)
            connect(menu->addAction(QString::number(c)), &QAction::triggered, this, [channels, c] {
                channels->setText(channels->text() + QString::number(c) + "|");
            });
        connect(b, &QPushButton::clicked, this,
                [b, menu] { menu->popup(b->mapToGlobal(QPoint(0, b->height()))); });
        channelMenus_.insert(k + 1, menu);
        row << b;
    }
    auto* channelRow = new QWidget(f);
    auto* h = new QHBoxLayout(channelRow);
    h->setContentsMargins(0, 0, 0, 0);
    for (QWidget* w : row) h->addWidget(w, w == channels ? 1 : 0);
    form->addRow(named_label("lbl_channels", "Channels", f), channelRow);
    return f;
}

QWidget* SettingsPage::printing_frame() {
    auto* f = new QWidget(frames_);
    f->setObjectName("fra_more");
    auto* form = new QFormLayout(f);
    for (int i = 0; i < 2; ++i) {
        printer_[i] = new QComboBox(f);
        printer_[i]->setObjectName(QString("cmb_printer(%1)").arg(i));
        printer_[i]->setEditable(true);  // a printer not connected now can still be named
    }
    if (auto& system = ctx_.state<PrintState>().system) {
        try {
            for (const std::string& p : system->printers())
                for (QComboBox* c : printer_) c->addItem(QString::fromStdString(p));
        } catch (...) {
            report_trapped(ctx_, "cmb_printer", 0);  // the list stays empty; names can be typed
        }
    }
    form->addRow(check("cbx_printfile", "Print on", f), printer_[0]);
    form->addRow(check("cbx_printfile2", "Print also on", f), printer_[1]);
    orientation_[0] = option("opt_printerorientation", 0, "Portrait", f);
    orientation_[1] = option("opt_printerorientation", 1, "Landscape", f);
    form->addRow(named_label("lbl_printerorientation", "Orientation", f),
                 row_of(f, {orientation_[0], orientation_[1]}));
    QLineEdit* pages = line("txt_printpage", f);
    auto* pipe = named_button("cmd_printpageaddpipe", "|", f);
    connect(pipe, &QPushButton::clicked, this, [pages] {
        pages->setText(pages->text() + "|");
        pages->setFocus();
    });
    form->addRow(named_label("lbl_printpage", "Sheets to print", f), row_of(f, {pages, pipe}));
    form->addRow(check("cbx_delreportfile", "Delete the report after printing", f));
    return f;
}

void SettingsPage::ShowFrame(const QString& frame) {
    if (auto* f = frames_->findChild<QWidget*>(frame, Qt::FindDirectChildrenOnly))
        frames_->setCurrentWidget(f);
}

void SettingsPage::sample_file(const QString& file) {
    show_file_info(ctx_, sample_, file);
}

void SettingsPage::changed() {
    if (!loading_) bOptionsChanged = true;
}

void SettingsPage::targetformat_changed(int index) {
    const bool tabular = index != 2;  // CSV, XLS and the customer text
    const bool templ = index == 2;
    const auto set = [this](std::initializer_list<const char*> names, bool on) {
        for (const char* n : names)
            if (auto* w = findChild<QWidget*>(n)) w->setEnabled(on);
    };
    set({"txt_channels", "cmd_channels1", "cmd_channels2", "cmd_channels3", "cmd_channels4",
         "lbl_channels"},
        tabular);
    set({"txt_excelsourcefile", "cmd_excelsourcefile", "lbl_excelsourcefile",
         "cbx_excelsourcefileAlarm", "cbx_runexcelmakro"},
        templ);
    const bool alarmBook = templ && checks_["cbx_excelsourcefileAlarm"]->isChecked();
    set({"txt_excelsourcefilealarm", "cmd_excelsourcefilealarm", "lbl_excelsourcefilealarm"},
        alarmBook);
    set({"txt_row", "txt_col", "lbl_rowcol"}, tabular);
    set({"txt_fileextension", "lbl_fileextension"}, index == 0 || index == 3);
    set({"lbl_printerorientation"}, index == 0 || index == 3);
    QCheckBox* print = checks_["cbx_printfile"];
    print->setEnabled(index != 1);
    if (index == 1) print->setChecked(false);  // an XLS report is never printed
    sub_checkallpath();
}

void SettingsPage::sub_checkallpath() {
    for (const char* n : {"txt_targetpath", "txt_sourcepath", "txt_targetpathsourcefile",
                          "txt_excelsourcefile", "txt_excelsourcefilealarm"})
        paint(boxes_[n], false);
    for (const char* n : {"txt_targetpath", "txt_targetpathsourcefile"}) {
        const QString t = boxes_[n]->text();
        if (!t.contains('$') && !PathFileExists(t.toStdString())) paint(boxes_[n], true);
    }
    if (!PathFileExists(boxes_["txt_sourcepath"]->text().toStdString()))
        paint(boxes_["txt_sourcepath"], true);
    for (const char* n : {"txt_excelsourcefile", "txt_excelsourcefilealarm"})
        if (boxes_[n]->isEnabled() && !PathFileExists(boxes_[n]->text().toStdString()))
            paint(boxes_[n], true);
}

void SettingsPage::load_to_screen() {
    loading_ = true;
    const Options& o = ctx_.opt;
    const auto text = [this](const char* n, const std::string& v) {
        boxes_[n]->setText(QString::fromStdString(v));
    };
    // set_editbox
    text("txt_sourcepath", o.sourcepath);
    text("txt_targetpath", o.targetpathRaw);
    text("txt_targetpathsourcefile", o.targetpathsourcefileRaw);
    text("txt_excelsourcefile", o.excelsourcefile);
    text("txt_excelsourcefilealarm", o.excelsourcefilealarm);
    text("txt_almlsuffix", o.almlsuffix);
    text("txt_targetname", o.targetnameformat);
    text("txt_fileextension", o.fileextension);
    text("txt_row", o.row);
    text("txt_col", o.col);
    text("txt_userdef1", o.userdef1);
    text("txt_userdef2", o.userdef2);
    text("txt_userdef3", o.userdef3);
    text("txt_userdef4", o.userdef4);
    text("txt_timestart", o.TimeStart);
    text("txt_timestop", o.TimeStop);
    binfilemodus_[std::clamp(o.binfilemodus, 0, 2)]->setChecked(true);
    noconversion_[o.noconversion != 0 ? 1 : 0]->setChecked(true);
    targetname_->setCurrentIndex(o.targetname != 0 ? 1 : 0);
    checks_["cbx_runexcelmakro"]->setChecked(o.runexcelmakro != 0);
    checks_["cbx_excelsourcefileAlarm"]->setChecked(o.excelsourcefilealarmseparate == "1");
    checks_["cbx_sourcenamesametarget"]->setChecked(o.sourcenamesametarget == "1");
    Options copy = o;
    for (const char* n : kInclusions) checks_[n]->setChecked(is_set(*inclusion(copy, n)));
    checks_["cbx_timeselect"]->setChecked(vb::Val(o.TimeSelect) != 0);
    // set_channelbox
    text("txt_channels", o.Channels);
    // set_printpage
    text("txt_printpage", o.printpage);
    printer_[0]->setCurrentText(QString::fromStdString(o.printer));
    printer_[1]->setCurrentText(QString::fromStdString(o.printer2));
    checks_["cbx_printfile"]->setChecked(is_set(o.printfile));
    checks_["cbx_printfile2"]->setChecked(is_set(o.printfile2));
    checks_["cbx_delreportfile"]->setChecked(is_set(o.delreportfile));
    orientation_[o.printerorientationland != 0 ? 1 : 0]->setChecked(true);
    targetformat_->setCurrentIndex(std::clamp(o.targetformat, 0, 3));
    targetformat_changed(targetformat_->currentIndex());
    loading_ = false;
    bOptionsChanged = false;
}

Options SettingsPage::from_screen() const {
    Options v = ctx_.opt;
    const auto text = [this](const char* n) { return boxes_[n]->text().toStdString(); };
    const auto ticked = [this](const char* n) { return checks_[n]->isChecked(); };
    v.sourcepath = text("txt_sourcepath");
    v.targetpathRaw = text("txt_targetpath");
    v.targetpathsourcefileRaw = text("txt_targetpathsourcefile");
    for (int i = 0; i < 3; ++i)
        if (binfilemodus_[i]->isChecked()) v.binfilemodus = i;
    v.noconversion = noconversion_[1]->isChecked() ? 1 : 0;
    v.targetformat = targetformat_->currentIndex();
    v.excelsourcefile = text("txt_excelsourcefile");
    v.runexcelmakro = ticked("cbx_runexcelmakro") ? 1 : 0;
    v.excelsourcefilealarmseparate = ticked("cbx_excelsourcefileAlarm") ? "1" : "0";
    v.excelsourcefilealarm = text("txt_excelsourcefilealarm");
    v.almlsuffix = text("txt_almlsuffix");
    v.targetname = targetname_->currentIndex();
    v.targetnameformat = text("txt_targetname");
    v.sourcenamesametarget = ticked("cbx_sourcenamesametarget") ? "1" : "0";
    v.fileextension = text("txt_fileextension");
    v.row = text("txt_row");
    v.col = text("txt_col");
    v.userdef1 = text("txt_userdef1");
    v.userdef2 = text("txt_userdef2");
    v.userdef3 = text("txt_userdef3");
    v.userdef4 = text("txt_userdef4");
    for (const char* n : kInclusions) *inclusion(v, n) = to_flag(ticked(n));
    v.printer = printer_[0]->currentText().toStdString();
    v.printer2 = printer_[1]->currentText().toStdString();
    v.printfile = to_flag(ticked("cbx_printfile"));
    v.printfile2 = to_flag(ticked("cbx_printfile2"));
    v.printpage = text("txt_printpage");
    v.delreportfile = to_flag(ticked("cbx_delreportfile"));
    v.printerorientationland = orientation_[1]->isChecked() ? 1 : 0;
    v.TimeSelect = ticked("cbx_timeselect") ? "1" : "0";
    v.TimeStart = text("txt_timestart");
    v.TimeStop = text("txt_timestop");
    v.Channels = text("txt_channels");
    return v;
}

void SettingsPage::say(const QString& line) {
    if (statusbar) statusbar(line);
}

bool SettingsPage::sub_optionSave() {
    say("save data...");
    const bool saved = fkt_saveoption_settings(ctx_, from_screen());
    say("reload data...");
    fkt_loadoptionfile(ctx_);
    say("check path settings...");
    sub_checkallpath();
    say("load to screen...");
    load_to_screen();
    say("");
    return saved;
}

void SettingsPage::sub_optioncancel() {
    load_to_screen();
}

}  // namespace qumbrel
