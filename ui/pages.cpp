#include "ui/pages.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QMenu>
#include <QMimeData>
#include <QRegularExpressionValidator>
#include <QTextStream>
#include <QUrl>
#include <QVBoxLayout>
#include <filesystem>

#include "automation/autostart.h"
#include "frame/apifile.h"
#include "frame/options_io.h"
#include "pipeline/convertmain.h"
#include "pipeline/family_table.h"
#include "recorder/families.h"
#include "ui/qt_host.h"
#include "ui/translate.h"
#include "ui/widgets.h"

namespace qumbrel {
namespace {

QLabel* wrapped_label(const QString& name, const QString& text, QWidget* parent) {
    QLabel* l = named_label(name, text, parent);
    l->setWordWrap(true);
    return l;
}

}  // namespace

void show_file_info(Program& ctx, QListWidget* list, const QString& file) {
    list->clear();
    if (file.isEmpty()) return;
    const std::string path = file.toStdString();
    const auto family = family_of_extension(Cls_APIFile::GetFileExtension(path, true));
    if (!family) return;
    const FamilyFunctions& f = family_table(ctx).of(family->family);
    if (!f.fileInfo) return;
    FileInfoList lines;
    f.fileInfo(ctx, lines, path);
    for (const std::string& line : lines.lines) list->addItem(QString::fromStdString(line));
}

HomePage::HomePage(Program& ctx, QWidget* parent) : Page(parent), ctx_(ctx) {
    setObjectName("frm_mdic_home");
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        wrapped_label("lbl_version", QString::fromStdString(ctx.info.program_name()), this));
    layout->addWidget(wrapped_label(
        "lbl_description", "Reports from the data files of paperless chart recorders.", this));
    pathErrors_ =
        wrapped_label("lbl_patherrors",
                      "A folder or file of the options does not exist: check the settings.", this);
    layout->addWidget(pathErrors_);
    layout->addStretch();
    translate_widget(ctx_, this);
    sub_checkallpath();
}

void HomePage::sub_checkallpath() {
    const Options& o = ctx_.opt;
    bool missing = false;
    if (o.targetpathRaw.find('$') == std::string::npos && !PathFileExists(o.targetpath))
        missing = true;
    if (o.targetpathsourcefileRaw.find('$') == std::string::npos &&
        !PathFileExists(o.targetpathsourcefile))
        missing = true;
    if (!PathFileExists(o.sourcepath)) missing = true;
    if (o.targetformat == 2 && !PathFileExists(o.excelsourcefile)) missing = true;
    if (o.excelsourcefilealarmseparate == "1" && !PathFileExists(o.excelsourcefilealarm))
        missing = true;
    pathErrors_->setVisible(missing);
}

InfoPage::InfoPage(Program& ctx, QWidget* parent) : Page(parent) {
    setObjectName("frm_mdic_info");
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        wrapped_label("lbl_version", QString::fromStdString(ctx.info.program_name()), this));
    auto* errors = named_button("cmd_viewerrorfile", "Show the error log", this);
    auto* manual = named_button("cmd_helpfile", "Open the manual", this);
    layout->addWidget(errors);
    layout->addWidget(manual);
    layout->addStretch();
    const QString errorLog = QString::fromStdString(ctx.program_file("error.log"));
    const QString manualFile = QString::fromStdString(ctx.program_file(ctx.info.baseName + ".pdf"));
    connect(errors, &QPushButton::clicked,
            [errorLog] { QDesktopServices::openUrl(QUrl::fromLocalFile(errorLog)); });
    connect(manual, &QPushButton::clicked,
            [manualFile] { QDesktopServices::openUrl(QUrl::fromLocalFile(manualFile)); });
    translate_widget(ctx, this);
}

RunPage::RunPage(Program& ctx, QtHost& host, QWidget* parent)
    : Page(parent), ctx_(ctx), host_(host) {
    setObjectName("frm_mdic_run");
    setAcceptDrops(true);
    frames_ = new QStackedWidget(this);

    auto* manu = new QWidget(frames_);
    manu->setObjectName("fra_manu");
    files_ = new QListWidget(manu);
    files_->setObjectName("lst_manuopen");
    inHand_ = new QLineEdit(manu);
    inHand_->setObjectName("txt_manuopen");
    inHand_->setReadOnly(true);
    auto* open = named_button("cmd_manuopen", "Open files...", manu);
    start_ = named_button("cmd_manuconvertstart", "Convert", manu);
    start_->setEnabled(false);
    info_ = new QListWidget(manu);
    info_->setObjectName("lst_fileinfo");
    info_->setContextMenuPolicy(Qt::CustomContextMenu);
    auto* manuLayout = new QVBoxLayout(manu);
    auto* row = new QHBoxLayout;
    row->addWidget(open);
    row->addWidget(start_);
    manuLayout->addLayout(row);
    manuLayout->addWidget(files_);
    manuLayout->addWidget(inHand_);
    manuLayout->addWidget(info_);
    frames_->addWidget(manu);

    auto* autoFrame = new QWidget(frames_);
    autoFrame->setObjectName("fra_auto");
    scheduler_ = new QComboBox(autoFrame);
    scheduler_->setObjectName("cmb_optionautosheduler");
    for (const char* k : {"Weekly", "Daily", "Hourly", "Every 3 hours", "Every 6 hours",
                          "Every 12 hours", "Every 5 seconds", "Every n minutes"})
        scheduler_->addItem(k);
    day_ = new QComboBox(autoFrame);
    day_->setObjectName("cmb_optionautoshedulerday");
    for (const char* d :
         {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"})
        day_->addItem(d);
    hour_ = new QLineEdit(autoFrame);
    hour_->setObjectName("txt_optionautoshedulerhour");
    minute_ = new QLineEdit(autoFrame);
    minute_->setObjectName("txt_optionautoshedulerminute");
    for (QLineEdit* e : {hour_, minute_})
        e->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]*"), e));
    filetyp_ = new QComboBox(autoFrame);
    filetyp_->setObjectName("cmb_filetyp");
    for (const char* k :
         {"Display data files", "Event files", "All recorder files", "Files of the pattern below"})
        filetyp_->addItem(k);
    filetypuserdef_ = new QLineEdit(autoFrame);
    filetypuserdef_->setObjectName("txt_filetypuserdef");
    autostart_ = new QCheckBox("Start with the desktop", autoFrame);
    autostart_->setObjectName("cbx_autostartwindows");
    auto* startAuto = named_button("cmd_startauto", "Start the automatic mode", autoFrame);
    // The caption a missing source folder is told with; never shown itself.
    auto* noSource = wrapped_label(
        "lbl_nosourcepath", "The source folder does not exist: the automatic mode cannot start.",
        autoFrame);
    noSource->setVisible(false);
    auto* form = new QFormLayout(autoFrame);
    form->addRow(wrapped_label("lbl_sheduler", "Schedule", autoFrame), scheduler_);
    form->addRow(wrapped_label("lbl_day", "Day", autoFrame), day_);
    form->addRow(wrapped_label("lbl_hour", "Hour", autoFrame), hour_);
    form->addRow(wrapped_label("lbl_minute", "Minute", autoFrame), minute_);
    form->addRow(wrapped_label("lbl_filetyp", "Files to convert", autoFrame), filetyp_);
    form->addRow(wrapped_label("lbl_filetypuserdef", "Pattern", autoFrame), filetypuserdef_);
    form->addRow(autostart_);
    form->addRow(startAuto);
    frames_->addWidget(autoFrame);

    status_ = new QListWidget(this);
    status_->setObjectName("lst_status");
    status_->setContextMenuPolicy(Qt::CustomContextMenu);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frames_, 2);
    layout->addWidget(status_, 1);
    host_.set_status_list(status_);

    scheduler_->setCurrentIndex(std::clamp(ctx_.opt.sheduler, 0, 7));
    day_->setCurrentIndex(std::clamp(ctx_.opt.day, 0, 6));
    hour_->setText(QString::fromStdString(ctx_.opt.hour));
    minute_->setText(QString::fromStdString(ctx_.opt.minute));
    scheduler_changed(scheduler_->currentIndex());
    // A value no list entry stands for stays as it is until the user picks one.
    filetyp_->setCurrentIndex(ctx_.opt.filetyp >= 0 && ctx_.opt.filetyp <= 3 ? ctx_.opt.filetyp
                                                                             : -1);
    filetypuserdef_->setText(QString::fromStdString(ctx_.opt.filetypuserdef));
    filetypuserdef_->setEnabled(ctx_.opt.filetyp == 3);
    autostart_->setChecked(PathFileExists(autostart_entry_path(ctx_)));

    connect(open, &QPushButton::clicked, this, &RunPage::open_files);
    connect(start_, &QPushButton::clicked, this, &RunPage::convert_all);
    connect(startAuto, &QPushButton::clicked, this, &RunPage::automaticWanted);
    connect(files_, &QListWidget::currentTextChanged, this, &RunPage::show_info);
    connect(scheduler_, &QComboBox::currentIndexChanged, this, [this](int k) {
        scheduler_changed(k);
        runOptionsChanged = true;
    });
    for (QLineEdit* e : {hour_, minute_, filetypuserdef_})
        connect(e, &QLineEdit::textEdited, this, [this] { runOptionsChanged = true; });
    connect(filetyp_, &QComboBox::currentIndexChanged, this, [this](int k) {
        filetypuserdef_->setEnabled(k == 3);
        runOptionsChanged = true;
    });
    connect(autostart_, &QCheckBox::toggled, this, [this] { runOptionsChanged = true; });
    // mnu_statuslistbox (copy, save) and mnu_lisbox (copy) of the two lists.
    statusMenu_ = new QMenu(this);
    statusMenu_->setObjectName("mnu_statuslistbox");
    infoMenu_ = new QMenu(this);
    infoMenu_->setObjectName("mnu_lisbox");
    const auto copy = [this] {
        QApplication::clipboard()->setText(lines_of(menuList_).join("\n"));
    };
    QAction* copyStatus = statusMenu_->addAction("Copy", copy);
    copyStatus->setObjectName("mnu_statuslistbox_copy");
    QAction* save = statusMenu_->addAction("Save...", this, &RunPage::save_list);
    save->setObjectName("mnu_statuslistbox_save");
    QAction* copyInfo = infoMenu_->addAction("Copy", copy);
    copyInfo->setObjectName("mnu_lisbox_copy");
    connect(status_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { list_menu(statusMenu_, status_, at); });
    connect(info_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { list_menu(infoMenu_, info_, at); });
    translate_widget(ctx_, this);
}

void RunPage::ShowFrame(const QString& frame) {
    if (auto* f = frames_->findChild<QWidget*>(frame, Qt::FindDirectChildrenOnly))
        frames_->setCurrentWidget(f);
}

void RunPage::scheduler_changed(int kind) {
    day_->setEnabled(kind == 0);
    hour_->setEnabled(kind == 0 || kind == 1 || (kind >= 3 && kind <= 5));
    minute_->setEnabled(kind != 6);
    if (kind == 7 && minute_->text() == "0") minute_->setText("1");
}

void RunPage::sub_optionSave() {
    if (statusbar) statusbar("save data...");
    Options v = ctx_.opt;
    v.sheduler = scheduler_->currentIndex();
    v.day = day_->currentIndex();
    v.hour = hour_->text().toStdString();
    v.minute = minute_->text().toStdString();
    if (filetyp_->currentIndex() >= 0) v.filetyp = filetyp_->currentIndex();
    v.filetypuserdef = filetypuserdef_->text().toStdString();
    if (statusbar) statusbar("save option data...");
    fkt_saveoption_run(ctx_, v);
    ctx_.opt = v;
    fkt_reg_autostart(ctx_, autostart_->isChecked());
    runOptionsChanged = false;
    if (statusbar) statusbar("");
}

void RunPage::open_files() {
    std::error_code ec;
    QString folder = lastFolder_;
    if (folder.isEmpty() || !std::filesystem::is_directory(folder.toStdString(), ec))
        folder = QString::fromStdString(ctx_.opt.sourcepath);
    const QStringList filters{
        "Display Data File (*.osd *.ogd *.oad *.obd *.hnd *.kld)",
        "Display Event (*.ose *.oge *.oae *.obe *.kle)",
        "Files (*.ose *.osd *.oge *.ogd *.oad *.oae *.obd *.obe *.hnd *.hns *.kle *.kld)",
        "Sync. Files (*.hns)",
        "Userdef. (" + QString::fromStdString(ctx_.opt.filetypuserdef) + ")"};
    const QStringList chosen =
        QFileDialog::getOpenFileNames(this, QString(), folder, filters.join(";;"));
    if (chosen.isEmpty()) return;  // a cancelled dialog changes nothing
    lastFolder_ = QFileInfo(chosen.front()).absolutePath();
    for (const QString& f : chosen)
        if (files_->findItems(f, Qt::MatchExactly).isEmpty()) files_->addItem(f);
    start_->setEnabled(files_->count() > 0);
}

void RunPage::add_files(const QStringList& dropped) {
    for (const QString& f : dropped) {
        if (!is_set(fkt_isfamilyfile(f.toStdString()))) break;
        if (!files_->findItems(f, Qt::MatchExactly).isEmpty()) continue;
        files_->addItem(f);
        start_->setEnabled(true);
    }
}

void RunPage::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void RunPage::dropEvent(QDropEvent* event) {
    QStringList paths;
    for (const QUrl& u : event->mimeData()->urls())
        if (u.isLocalFile()) paths << u.toLocalFile();
    add_files(paths);
    event->acceptProposedAction();
}

void RunPage::show_info(const QString& file) {
    show_file_info(ctx_, info_, file);
}

void RunPage::convert_all() {
    // Changed data options first: saved, thrown away, or no conversion.
    if (settleOptions && !settleOptions()) return;
    host_.set_status_list(status_);
    host_.set_status_list_up(true);
    status_->clear();
    host_.add_status_line("Start");
    for (int i = 0; i < files_->count(); ++i) {
        const std::string entry = files_->item(i)->text().toStdString();
        inHand_->setText(files_->item(i)->text());
        fkt_convertmain(ctx_, entry, "", "", kTrue);
    }
    inHand_->clear();
    files_->clear();
    info_->clear();
    start_->setEnabled(false);
}

void RunPage::list_menu(QMenu* menu, QListWidget* list, const QPoint& at) {
    menuList_ = list;
    menu->exec(list->mapToGlobal(at));
}

QStringList RunPage::lines_of(const QListWidget* list) {
    QStringList lines;
    for (int i = 0; list && i < list->count(); ++i) lines << list->item(i)->text();
    return lines;
}

void RunPage::save_list() {
    const QString file = QFileDialog::getSaveFileName(this, QString(), "status.txt",
                                                      "Text File (*.txt);;all Files (*.*)");
    if (file.isEmpty()) return;
    QFile out(file);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) return;
    QTextStream(&out) << lines_of(menuList_).join("\n") << "\n";
}

}  // namespace qumbrel
