// The main window, its pages and the login box under the offscreen platform, driven as a
// user would: links, toolbar menus, the unload question's three answers, the login right
// and wrong and by Enter, a drop of mixed files, a manual conversion of two VT files, the
// schedule inputs, and the texts of every form from both language files.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPointer>
#include <QTest>
#include <QToolButton>
#include <QUrl>
#include <cstdlib>
#include <filesystem>

#include <QCheckBox>
#include <QClipboard>
#include <QFileDialog>
#include <QFileInfo>
#include <QImage>
#include <QMenu>
#include <QTimer>
#include "automation/autostart.h"
#include "frame/clock.h"
#include "frame/ini.h"
#include "frame/language.h"
#include "frame/options_io.h"
#include "pipeline/convertmain.h"
#include "tests/support/test_support.h"
#include "ui/login_dialog.h"
#include "ui/main_window.h"
#include "ui/oneshot_form.h"
#include "ui/pages.h"
#include "ui/qt_host.h"
#include "ui/settings_page.h"
#include "ui/splash.h"
#include "ui/tray_form.h"

#include "tests/ui/windows_fixture.h"

namespace qumbrel {
namespace {

TEST_F(Windows, LinksMenusAndToolbarBringThePages) {
    MainWindow w(*ctx, host);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    EXPECT_EQ(w.current_page()->objectName(), "frm_mdic_home");
    EXPECT_TRUE(w.windowTitle().size() > 0);
    EXPECT_EQ(find<QLabel>(&w, "lbl_statusbar")->text(), "Version 1.0  Build: 0");

    QTest::mouseClick(find<QAbstractButton>(&w, "cmd_explorerbar_auto"), Qt::LeftButton);
    EXPECT_EQ(w.current_page()->objectName(), "frm_mdic_run");
    auto* frames = w.run_page()->findChild<QWidget*>("fra_auto");
    ASSERT_NE(frames, nullptr);
    EXPECT_TRUE(frames->isVisible());
    trigger(w, "mnu_exportItems(0)");
    EXPECT_TRUE(w.run_page()->findChild<QWidget*>("fra_manu")->isVisible());
    trigger(w, "mnu_helpItems(1)");
    EXPECT_EQ(w.current_page()->objectName(), "frm_mdic_info");
    trigger(w, "mnu_optionItem(3)");
    EXPECT_EQ(w.current_page()->objectName(), "frm_mdic_settings");
    QTest::mouseClick(find<QAbstractButton>(&w, "cmd_explorerbar_home"), Qt::LeftButton);
    EXPECT_EQ(w.current_page()->objectName(), "frm_mdic_home");
    // The run page is made once and stays loaded.
    RunPage* run = w.run_page();
    w.ShowForm("frm_mdic_run fra_auto");
    EXPECT_EQ(w.run_page(), run);
    // Five drop-down buttons, each with its menu.
    for (const char* b : {"mnu_file_button", "mnu_export_button", "mnu_option_button",
                          "mnu_prgoption_button", "mnu_help_button"})
        EXPECT_NE(find<QToolButton>(&w, b)->menu(), nullptr) << b;
}

TEST_F(Windows, TheUnloadQuestionsThreeAnswers) {
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_run fra_auto");
    QComboBox* kind = find<QComboBox>(&w, "cmb_optionautosheduler");
    kind->setCurrentIndex(6);  // a change of the run page
    ASSERT_TRUE(w.run_page()->runOptionsChanged);

    w.testAnswer = MainWindow::Answer::Cancel;
    EXPECT_FALSE(w.close());
    EXPECT_FALSE(w.ended());
    w.testAnswer = MainWindow::Answer::Yes;
    EXPECT_TRUE(w.close());
    EXPECT_TRUE(w.ended());
    EXPECT_EQ(clsINI(ctx->run.strOptionFile).GetKeyValue("start", "sheduler", {}, std::string()),
              "6");

    MainWindow again(*ctx, host);
    again.show();
    again.ShowForm("frm_mdic_run fra_auto");
    find<QComboBox>(&again, "cmb_optionautosheduler")->setCurrentIndex(2);
    again.testAnswer = MainWindow::Answer::No;
    EXPECT_TRUE(again.close());
    EXPECT_EQ(clsINI(ctx->run.strOptionFile).GetKeyValue("start", "sheduler", {}, std::string()),
              "6");  // thrown away
}

TEST_F(Windows, LoginRightWrongAndByEnter) {
    ctx->opt.strProtectionPassword = "geheim";
    ctx->opt.bLoggedIn = kFalse;
    MainWindow w(*ctx, host);
    w.show();
    EXPECT_FALSE(w.close());  // the close button is off while nobody is logged in

    LoginDialog box(*ctx);
    box.show();
    QLineEdit* password = find<QLineEdit>(&box, "txt_password");
    QTest::keyClicks(password, "wrong");
    QTest::mouseClick(find<QAbstractButton>(&box, "cmd_login"), Qt::LeftButton);
    EXPECT_TRUE(find<QLabel>(&box, "lbl_status")->isVisible());
    EXPECT_EQ(find<QLabel>(&box, "lbl_status")->text(), "Wrong password");
    EXPECT_FALSE(is_set(ctx->opt.bLoggedIn));
    EXPECT_TRUE(box.isVisible());
    password->clear();
    QTest::keyClicks(password, "geheim");
    QTest::keyClick(password, Qt::Key_Return);
    EXPECT_TRUE(is_set(ctx->opt.bLoggedIn));
    EXPECT_EQ(box.result(), QDialog::Accepted);
    EXPECT_TRUE(w.close());
}

TEST_F(Windows, ADropStopsAtTheFirstForeignFile) {
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_run fra_manu");
    RunPage* run = w.run_page();
    auto* data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile("/in/a.oge"), QUrl::fromLocalFile("/in/a.oge"),
                   QUrl::fromLocalFile("/in/b.ose"), QUrl::fromLocalFile("/in/notes.txt"),
                   QUrl::fromLocalFile("/in/c.oge")});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(run, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(run, &drop);
    ASSERT_EQ(run->files()->count(), 2);
    EXPECT_EQ(run->files()->item(0)->text(), "/in/a.oge");
    EXPECT_EQ(run->files()->item(1)->text(), "/in/b.ose");
    EXPECT_TRUE(find<QAbstractButton>(run, "cmd_manuconvertstart")->isEnabled());
    delete data;
}

TEST_F(Windows, AManualConversionOfTwoFiles) {
    const std::string a = make_vt("a.oge"), b = make_vt("b.oge");
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_run fra_manu");
    RunPage* run = w.run_page();
    run->add_files({QString::fromStdString(a), QString::fromStdString(b)});
    run->files()->setCurrentRow(0);
    EXPECT_GT(run->info()->count(), 5);  // the file information of the selected file
    QTest::mouseClick(find<QAbstractButton>(run, "cmd_manuconvertstart"), Qt::LeftButton);
    EXPECT_TRUE(fs::exists(dir.file("out/a.csv")));
    EXPECT_TRUE(fs::exists(dir.file("out/b.csv")));
    QStringList lines;
    for (int i = 0; i < run->status()->count(); ++i) lines << run->status()->item(i)->text();
    EXPECT_EQ(lines.front(), "Start");
    EXPECT_GE(lines.filter("Finished.").size(), 2) << lines.join("\n").toStdString();
    EXPECT_EQ(run->files()->count(), 0);
    EXPECT_FALSE(find<QAbstractButton>(run, "cmd_manuconvertstart")->isEnabled());
}

// The status list's menu: its lines copied to the clipboard, and saved as "status.txt"
// through the save dialog.
TEST_F(Windows, TheStatusListIsCopiedAndSaved) {
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_run fra_manu");
    RunPage* run = w.run_page();
    run->status()->addItems({"Start", "a.oge", "Finished."});
    QString suggested;
    // Chooses `entry` in the menu once it is up, and answers a save dialog with `file`.
    const auto choose = [&](const QString& entry, const QString& file) {
        auto* poll = new QTimer(&w);
        QObject::connect(poll, &QTimer::timeout, [&, poll, entry, file] {
            for (QWidget* top : QApplication::topLevelWidgets()) {
                if (auto* d = qobject_cast<QFileDialog*>(top); d && d->isVisible()) {
                    suggested = d->selectedFiles().value(0);
                    d->setDirectory(QFileInfo(file).absolutePath());
                    d->findChild<QLineEdit*>("fileNameEdit")->setText(QFileInfo(file).fileName());
                    poll->stop();
                    poll->deleteLater();
                    static_cast<QDialog*>(d)->accept();
                    return;
                }
            }
            for (QWidget* top : QApplication::topLevelWidgets()) {
                auto* menu = qobject_cast<QMenu*>(top);
                if (!menu || !menu->isVisible()) continue;
                for (QAction* a : menu->actions())
                    if (a->text() == entry) {
                        if (file.isEmpty()) {
                            poll->stop();
                            poll->deleteLater();
                        }
                        // Chosen from an event of its own, so this poll can answer the
                        // dialog the entry opens.
                        QTimer::singleShot(0, menu, [menu, a] {
                            menu->setActiveAction(a);
                            QTest::keyClick(menu, Qt::Key_Return);
                        });
                        return;
                    }
            }
        });
        poll->start(10);
    };
    choose("Copy", {});
    emit run->status()->customContextMenuRequested(QPoint(5, 5));
    EXPECT_EQ(QApplication::clipboard()->text(), "Start\na.oge\nFinished.");

    const QString saved = QString::fromStdString(dir.file("saved.txt"));
    choose("Save...", saved);
    emit run->status()->customContextMenuRequested(QPoint(5, 5));
    EXPECT_TRUE(suggested.endsWith("status.txt")) << suggested.toStdString();
    EXPECT_EQ(testing::read_file(saved.toStdString()), "Start\na.oge\nFinished.\n");
}

// Changed data options are asked about before a manual conversion: Cancel converts
// nothing, Yes saves them and the conversion follows them.
TEST_F(Windows, AManualConversionAsksAboutChangedOptionsFirst) {
    const std::string a = make_vt("a.oge");
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_settings fra_properties");
    QLineEdit* extension = find<QLineEdit>(&w, "txt_fileextension");
    extension->selectAll();
    QTest::keyClicks(extension, "txt");
    w.ShowForm("frm_mdic_run fra_manu");
    RunPage* run = w.run_page();
    run->add_files({QString::fromStdString(a)});
    w.testAnswer = MainWindow::Answer::Cancel;
    QTest::mouseClick(find<QAbstractButton>(run, "cmd_manuconvertstart"), Qt::LeftButton);
    EXPECT_EQ(run->files()->count(), 1);
    EXPECT_TRUE(fs::is_empty(dir.file("out")));
    w.testAnswer = MainWindow::Answer::Yes;
    QTest::mouseClick(find<QAbstractButton>(run, "cmd_manuconvertstart"), Qt::LeftButton);
    EXPECT_EQ(
        clsINI(ctx->run.strOptionFile).GetKeyValue("file", "fileextension", {}, std::string()),
        "txt");
    EXPECT_TRUE(fs::exists(dir.file("out/a.txt")));
    EXPECT_FALSE(w.settings_page()->bOptionsChanged);
}

// The files the automatic mode looks for, and the desktop autostart entry, saved with the
// run page; the pattern box only for the user's pattern.
TEST_F(Windows, FileKindsAndAutostartOfTheAutomaticMode) {
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_run fra_auto");
    auto* kind = find<QComboBox>(&w, "cmb_filetyp");
    QLineEdit* pattern = find<QLineEdit>(&w, "txt_filetypuserdef");
    EXPECT_FALSE(pattern->isEnabled());
    kind->setCurrentIndex(3);
    EXPECT_TRUE(pattern->isEnabled());
    pattern->selectAll();
    QTest::keyClicks(pattern, "*.kle");
    find<QAbstractButton>(&w, "cbx_autostartwindows")->click();
    EXPECT_TRUE(w.run_page()->runOptionsChanged);
    w.run_page()->sub_optionSave();
    clsINI ini(ctx->run.strOptionFile);
    EXPECT_EQ(ini.GetKeyValue("start", "filetyp", {}, std::string()), "3");
    EXPECT_EQ(ini.GetKeyValue("start", "filetypuserdef", {}, std::string()), "*.kle");
    EXPECT_TRUE(fs::exists(autostart_entry_path(*ctx)));

    MainWindow again(*ctx, host);
    again.ShowForm("frm_mdic_run fra_auto");
    EXPECT_EQ(find<QComboBox>(&again, "cmb_filetyp")->currentIndex(), 3);
    EXPECT_TRUE(find<QCheckBox>(&again, "cbx_autostartwindows")->isChecked());
    EXPECT_FALSE(again.run_page()->runOptionsChanged);
}

TEST_F(Windows, ScheduleInputsByKindAndDigitsOnly) {
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_run fra_auto");
    auto* kind = find<QComboBox>(&w, "cmb_optionautosheduler");
    auto* day = find<QComboBox>(&w, "cmb_optionautoshedulerday");
    auto* hour = find<QLineEdit>(&w, "txt_optionautoshedulerhour");
    auto* minute = find<QLineEdit>(&w, "txt_optionautoshedulerminute");
    // day: kind 0; hour: kinds 0, 1, 3, 4, 5; minute: all but 6.
    const bool days[] = {true, false, false, false, false, false, false, false};
    const bool hours[] = {true, true, false, true, true, true, false, false};
    const bool minutes[] = {true, true, true, true, true, true, false, true};
    for (int k = 0; k < 8; ++k) {
        kind->setCurrentIndex(k);
        EXPECT_EQ(day->isEnabled(), days[k]) << k;
        EXPECT_EQ(hour->isEnabled(), hours[k]) << k;
        EXPECT_EQ(minute->isEnabled(), minutes[k]) << k;
    }
    kind->setCurrentIndex(0);
    hour->clear();
    QTest::keyClicks(hour, "1a2");
    EXPECT_EQ(hour->text(), "12");
    minute->setText("0");
    kind->setCurrentIndex(7);
    EXPECT_EQ(minute->text(), "1");
}

// The automatic mode from the run page: the window hides and the tray form runs the
// cycle; offscreen there is no tray, so it runs without its icon. A missing source folder
// starts nothing.
TEST_F(Windows, TheAutomaticModeRunsWithoutATray) {
    const std::string src = dir.file("in/a.ogd");
    ASSERT_EQ(std::system((QUMBREL_BIN_DIR "/recsim --family VT --kind display --channels 2 "
                                           "--samples 5 --out '" +
                           src + "' >/dev/null")
                              .c_str()),
              0);
    options("english.lng", "", "sheduler=6\n");  // every five seconds
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_run fra_auto");
    QTest::mouseClick(find<QAbstractButton>(&w, "cmd_startauto"), Qt::LeftButton);
    ASSERT_NE(w.tray(), nullptr);
    EXPECT_TRUE(w.isHidden());
    EXPECT_FALSE(w.tray()->has_icon());
    EXPECT_EQ(w.tray()->form().next_due_ms(), 5000);
    clock.advance_ms(5000);
    w.tray()->poll();
    EXPECT_EQ(w.tray()->form().totals().cycles, 1);
    EXPECT_TRUE(fs::exists(dir.file("out/a.csv")));
    EXPECT_TRUE(w.tray()->open_window());  // the menu entry: back to the window
    QCoreApplication::processEvents();
    EXPECT_TRUE(w.isVisible());

    options("english.lng", "");
    ctx->opt.sourcepath = dir.file("nowhere");
    MainWindow none(*ctx, host);
    none.testAnswer = MainWindow::Answer::No;  // no box in the test
    none.show();
    none.start_automatic();
    EXPECT_EQ(none.tray(), nullptr);
    EXPECT_TRUE(none.isVisible());
}

// The alert window: its text on its colour, closed after its seconds.
TEST_F(Windows, TheAlertShowsItsTextAndCloses) {
    AlertRequest alert;
    alert.text = "already converted\r\na.oge";
    alert.seconds = 1;
    alert.red = 0xFF;
    alert.green = 0xFF;
    alert.blue = 0xC0;
    host.show_alert(alert);
    QWidget* shown = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == "frm_alert" && w->isVisible()) shown = w;
    ASSERT_NE(shown, nullptr);
    auto* label = qobject_cast<QLabel*>(shown);
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text().toStdString(), alert.text);
    EXPECT_EQ(label->palette().color(QPalette::Window), QColor(0xFF, 0xFF, 0xC0));
    QPointer<QWidget> alive(shown);
    EXPECT_TRUE(QTest::qWaitFor([&] { return alive.isNull(); }, 3000));
}

// The open dialog of the run page: its filters, the source folder first and the folder of
// the last choice after; the chosen files are listed. The template dialog of the options.
TEST_F(Windows, TheFileDialogsFiltersAndFolders) {
    const std::string a = make_vt("a.oge");
    fs::create_directories(dir.file("elsewhere"));
    const std::string b = dir.file("elsewhere/b.ose");
    fs::copy_file(a, b);
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_run fra_manu");
    QStringList filters;
    QString folder;
    // Answers the dialog once it is up: its filters and folder noted, a file chosen.
    const auto answer = [&](const std::string& choose) {
        auto* poll = new QTimer(&w);
        QObject::connect(poll, &QTimer::timeout, [&, poll, choose] {
            for (QWidget* top : QApplication::topLevelWidgets()) {
                auto* d = qobject_cast<QFileDialog*>(top);
                if (!d || !d->isVisible()) continue;
                const QString file = QString::fromStdString(choose);
                if (filters.isEmpty()) {  // first look: note it, pick the file
                    filters = d->nameFilters();
                    folder = d->directory().absolutePath();
                    d->selectNameFilter(filters.size() > 2 ? filters[2] : filters[0]);
                    d->setDirectory(QFileInfo(file).absolutePath());
                }
                // Open once the dialog's listing knows the file, as a user would.
                if (d->selectedFiles() == QStringList{file}) {
                    poll->stop();
                    poll->deleteLater();
                    static_cast<QDialog*>(d)->accept();
                } else if (auto* name = d->findChild<QLineEdit*>("fileNameEdit")) {
                    name->setText(QFileInfo(file).fileName());  // typed into the name box
                }
                return;
            }
        });
        poll->start(10);
    };
    answer(b);
    QTest::mouseClick(find<QAbstractButton>(&w, "cmd_manuopen"), Qt::LeftButton);
    EXPECT_EQ(folder.toStdString(), dir.file("in"));
    ASSERT_EQ(filters.size(), 5);
    EXPECT_EQ(filters[0], "Display Data File (*.osd *.ogd *.oad *.obd *.hnd *.kld)");
    EXPECT_EQ(filters[4], "Userdef. (*.hnd)");
    filters.clear();
    answer(a);
    QTest::mouseClick(find<QAbstractButton>(&w, "cmd_manuopen"), Qt::LeftButton);
    EXPECT_EQ(folder.toStdString(), dir.file("elsewhere"));  // the folder chosen last
    ASSERT_EQ(w.run_page()->files()->count(), 2);
    EXPECT_EQ(w.run_page()->files()->item(0)->text().toStdString(), b);

    w.ShowForm("frm_mdic_settings fra_properties");
    find<QComboBox>(&w, "cmb_targetformat")->setCurrentIndex(2);
    testing::write_file(dir.file("in/t.xltx"), "PK");
    filters.clear();
    answer(dir.file("in/t.xltx"));
    QTest::mouseClick(find<QAbstractButton>(&w, "cmd_excelsourcefile"), Qt::LeftButton);
    EXPECT_EQ(filters, QStringList{"Excel File (*.xlt* *.xls*)"});
    EXPECT_EQ(find<QLineEdit>(&w, "txt_excelsourcefile")->text().toStdString(),
              dir.file("in/t.xltx"));
}

// The splash and the logo: the program folder's pictures (found by content, whatever its name
// says), the program's name without one or with a file that is no picture; closed by itself.
TEST_F(Windows, TheSplashShowsItsPictureAndClosesByItself) {
    QImage picture(40, 20, QImage::Format_RGB32);
    picture.fill(Qt::darkBlue);
    ASSERT_TRUE(picture.save(QString::fromStdString(ctx->program_file("splash.t")), "PNG"));
    Splash shown(*ctx, 30);
    EXPECT_TRUE(shown.has_picture());
    fs::copy_file(ctx->program_file("splash.t"), ctx->program_file("logo.t"));
    MainWindow withLogo(*ctx, host);
    EXPECT_FALSE(find<QLabel>(&withLogo, "img_logo")->pixmap().isNull());
    EXPECT_EQ(shown.exec(), QDialog::Accepted);

    testing::write_file(ctx->program_file("splash.t"), "no picture at all");
    fs::copy_file(ctx->program_file("splash.t"), ctx->program_file("logo.t"),
                  fs::copy_options::overwrite_existing);
    MainWindow w(*ctx, host);  // the same picture as the logo: none
    EXPECT_TRUE(find<QLabel>(&w, "img_logo")->isHidden());
    Splash plain(*ctx, 30);
    EXPECT_FALSE(plain.has_picture());
    EXPECT_EQ(find<QLabel>(&plain, "img_splash")->text().toStdString(), ctx->info.program_name());
    EXPECT_EQ(plain.exec(), QDialog::Accepted);
}

// The one-shot form: the file converted (offscreen: no tray, so no icon and no wait), and
// the window asked for during the conversion.
TEST_F(Windows, TheOneShotFormConvertsAndHandsOverToTheWindow) {
    const std::string a = make_vt("a.oge"), b = make_vt("b.oge");
    const auto convert = [](const std::string& file) {
        return
            [file](Program& p) { return fkt_convertmain(p, file, "", "", kTrue).failed() ? 1 : 0; };
    };
    OneShotForm once(*ctx, convert(a));
    EXPECT_EQ(once.run(), 0);
    EXPECT_FALSE(once.has_icon());
    EXPECT_TRUE(fs::exists(dir.file("out/a.csv")));

    bool windowShown = false;
    OneShotForm* form = nullptr;
    OneShotForm handing(*ctx, [&, c = convert(b)](Program& p) {
        form->open_window();  // the tray menu while the file is converted
        return c(p);
    });
    form = &handing;
    QObject::connect(&handing, &OneShotForm::windowWanted, [&] { windowShown = true; });
    EXPECT_EQ(handing.run(), 0);
    EXPECT_TRUE(windowShown);

    // An alert of the conversion is waited for: it is gone when the form ends.
    AlertRequest alert;
    alert.text = "This file has already been converted";
    alert.seconds = 1;
    OneShotForm alerting(*ctx, [&](Program&) {
        host.show_alert(alert);
        return 0;
    });
    EXPECT_EQ(alerting.run(), 0);
    for (QWidget* top : QApplication::topLevelWidgets())
        EXPECT_FALSE(top->objectName() == "frm_alert" && top->isVisible());
    EXPECT_TRUE(handing.window_wanted());
    EXPECT_TRUE(fs::exists(dir.file("out/b.csv")));
}

// qumbrel with a display and a file: the one-shot form converts it, its status lines go
// to standard output, and the program ends.
TEST_F(Windows, AFileOnTheCommandLineWithADisplay) {
    const std::string a = make_vt("a.oge");
    const std::string out = dir.file("stdout.txt");
    const std::string command = "QT_QPA_PLATFORM=offscreen " QUMBREL_BIN_DIR "/qumbrel --home '" +
                                dir.path().string() + "' '" + a + "' >'" + out + "' 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_TRUE(fs::exists(dir.file("out/a.csv")));
    EXPECT_NE(testing::read_file(out).find("Finished."), std::string::npos)
        << testing::read_file(out);
}

// Every named control of every form takes its text from both language files.
TEST_F(Windows, EveryFormIsTranslatedInBothLanguages) {
    for (const char* language : {"deutsch.lng", "english.lng"}) {
        SCOPED_TRACE(language);
        options(language);
        MainWindow w(*ctx, host);
        LoginDialog login(*ctx);
        std::vector<QWidget*> forms{&w, &login};
        for (const char* t :
             {"frm_mdic_run fra_manu", "frm_mdic_info fra_help", "frm_mdic_settings fra_option",
              "frm_mdic_prgsettings fra_settings", "frm_mdic_home fra_home"}) {
            w.ShowForm(t);
            forms.push_back(w.current_page());
        }
        const std::string file = std::string(QUMBREL_BIN_DIR) + "/" + language;
        for (QWidget* form : forms) {
            const std::string section = form->objectName().toStdString();
            for (QObject* o : form->findChildren<QObject*>()) {
                const std::string name = o->objectName().toStdString();
                if (name.empty() || name.starts_with("qt_") || name == "lbl_version" ||
                    name.starts_with("img_") || name == "lbl_statusbar")
                    continue;  // Qt's own, and texts made at run time
                bool nested = false;
                for (QObject* p = o->parent(); p && p != form; p = p->parent())
                    nested = nested || p->objectName().startsWith("frm_");
                if (nested) continue;
                if (auto* box = qobject_cast<QComboBox*>(o); box && !box->isEditable()) {
                    for (int i = 0; i < box->count(); ++i)
                        EXPECT_NE(
                            fkt_readlanguage(file, section,
                                             name + ".List(" + std::to_string(i) + ")", "\x01"),
                            "\x01")
                            << section << " " << name << " " << i;
                }
                if (!qobject_cast<QAbstractButton*>(o) && !qobject_cast<QLabel*>(o) &&
                    !qobject_cast<QAction*>(o))
                    continue;
                EXPECT_NE(fkt_readlanguage(file, section, name + ".Caption", "\x01"), "\x01")
                    << section << " " << name;
            }
        }
        if (std::string(language) == "deutsch.lng") {
            EXPECT_EQ(find<QAbstractButton>(&w, "cmd_explorerbar_home")->text(), "Start");
            EXPECT_EQ(find<QLabel>(&login, "lbl_status")->text(), "Falsches Passwort");
            EXPECT_EQ(find<QComboBox>(&w, "cmb_targetformat")->itemText(2), "Excel-Vorlage");
        }
    }
}

}  // namespace
}  // namespace qumbrel

// The application lives in main, so it ends before Qt's own statics do.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
