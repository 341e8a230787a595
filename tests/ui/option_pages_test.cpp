// The option pages under the offscreen platform: every control of the data options
// round-trips its option through save and load, the enabled states of the four target
// formats, the character filters and element menus at the cursor, the path check, the
// protection of program control with its edge cases, the language menu, the time-out box,
// and the service buttons in every state of a fake systemctl.
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTest>
#include <deque>

#include "frame/ini.h"
#include "frame/registry.h"
#include "platform/cups/cups_printers.h"
#include "tests/support/fake_systemctl.h"
#include "tests/ui/windows_fixture.h"
#include "ui/login_dialog.h"
#include "ui/prgsettings_page.h"
#include "ui/settings_page.h"

namespace qumbrel {
namespace {

class OptionPages : public Windows {
  protected:
    OptionPages() {
        svc.unitFolder = dir.file("units");
        svc.binary = "/opt/qumbrel/qumbrel-svc";
        svc.home = dir.path();
        svc.runner = fake;
    }
    std::string key(const char* section, const char* name) {
        return clsINI(ctx->run.strOptionFile).GetKeyValue(section, name, {}, std::string("<none>"));
    }
    std::string protection_value() {
        std::string v;
        RegistryStore(ctx->program_file("registry.ini"))
            .ReadRegValue(kProtectionKey, kProtectionValue, v);
        return v;
    }
    // frm_login answered with the next password of `typed`, through the real box; an
    // exhausted list closes the box.
    PrgSettingsPage::LoginRunner typing(std::deque<std::string>& typed) {
        return [this, &typed](const QString& prompt) {
            prompts << prompt;
            LoginDialog box(*ctx);
            box.set_prompt(prompt);
            box.show();
            if (typed.empty()) return false;
            // Set rather than typed: a control character is a password character too.
            box.findChild<QLineEdit*>("txt_password")
                ->setText(QString::fromStdString(typed.front()));
            typed.pop_front();
            QTest::mouseClick(box.findChild<QAbstractButton*>("cmd_login"), Qt::LeftButton);
            return box.result() == QDialog::Accepted;
        };
    }
    QStringList prompts;
    std::shared_ptr<testing::FakeSystemctl> fake =
        std::make_shared<testing::FakeSystemctl>(dir.file("units") + "/" + kServiceUnit);
    ServiceControl svc;
};

TEST_F(OptionPages, EveryControlRoundTripsItsOption) {
    fs::create_directories(dir.file("moved"));
    SettingsPage page(*ctx);
    EXPECT_FALSE(page.bOptionsChanged);
    const auto set = [&](const char* name, const QString& text) {
        QLineEdit* box = find<QLineEdit>(&page, name);
        box->selectAll();
        QTest::keyClicks(box, text);
    };
    const auto tick = [&](const char* name) { find<QAbstractButton>(&page, name)->click(); };
    find<QComboBox>(&page, "cmb_printer(1)")->setEditText("office");
    EXPECT_TRUE(page.bOptionsChanged);  // a printer's name typed in is a change
    find<QComboBox>(&page, "cmb_targetformat")->setCurrentIndex(2);
    set("txt_sourcepath", QString::fromStdString(dir.file("in2")));
    set("txt_targetpath", "/r/$YYYY");
    set("txt_targetpathsourcefile", QString::fromStdString(dir.file("moved")));
    tick("opt_binfilemodus(1)");
    tick("opt_noconversion(1)");
    set("txt_excelsourcefile", "/t/a.xltx");
    tick("cbx_runexcelmakro");
    tick("cbx_excelsourcefileAlarm");
    set("txt_excelsourcefilealarm", "/t/al.xltx");
    set("txt_almlsuffix", "_AL");
    find<QComboBox>(&page, "cmb_targetname")->setCurrentIndex(1);
    set("txt_targetname", "$S_$YYYY");
    tick("cbx_sourcenamesametarget");
    for (int i = 1; i <= 4; ++i)
        set(QString("txt_userdef%1").arg(i).toUtf8().constData(), QString("u%1").arg(i));
    for (const char* c :
         {"cbx_measurementsinclusive", "cbx_alarminclusive", "cbx_messageinclusive",
          "cbx_operatinloginclusive", "cbx_signatureinclusive", "cbx_scaleinfoinclusive",
          "cbx_pveventinclusive", "cbx_ctrleventinclusive", "cbx_printfile", "cbx_printfile2",
          "cbx_delreportfile", "cbx_timeselect"})
        tick(c);
    find<QComboBox>(&page, "cmb_printer(0)")->setEditText("lab");
    find<QComboBox>(&page, "cmb_printer(1)")->setEditText("office");
    tick("opt_printerorientation(1)");
    set("txt_printpage", "1");
    tick("cmd_printpageaddpipe");
    QTest::keyClicks(find<QLineEdit>(&page, "txt_printpage"), "Lists");
    set("txt_timestart", "2026-01-01 10:00:00");
    set("txt_timestop", "2026-01-01 11:00:00");
    find<QComboBox>(&page, "cmb_targetformat")->setCurrentIndex(0);  // channels editable again
    set("txt_channels", "5|3|");
    set("txt_fileextension", "txt");
    set("txt_row", "3");
    set("txt_col", "4");

    tick("cmd_save");
    EXPECT_FALSE(page.bOptionsChanged);
    const std::vector<std::pair<const char*, const char*>> file{
        {"binfilemodus", "1"},
        {"noconversion", "1"},
        {"targetformat", "0"},
        {"excelsourcefile", "/t/a.xltx"},
        {"runexcelmakro", "1"},
        {"excelsourcefilealarmseparate", "1"},
        {"excelsourcefilealarm", "/t/al.xltx"},
        {"almlsuffix", "_AL"},
        {"targetname", "1"},
        {"targetnameformat", ">$S_$YYYY"},
        {"sourcenamesametarget", "1"},
        {"fileextension", "txt"},
        {"row", "3"},
        {"col", "4"},
        {"userdef1", "u1"},
        {"userdef4", "u4"},
        {"measurementsinclusive", "0"},
        {"alarminclusive", "1"},
        {"messageinclusive", "1"},
        {"operatinloginclusive", "1"},
        {"signatureinclusive", "1"},
        {"scaleinfoinclusive", "1"},
        {"pveventinclusive", "1"},
        {"ctrleventinclusive", "1"},
        {"printfile", "1"},
        {"printfile2", "1"},
        {"printer", "lab"},
        {"printer2", "office"},
        {"printerorientationland", "1"},
        {"delreportfile", "1"},
        {"printpage", "1|Lists"},
        {"targetpath", "/r/$YYYY"},
        {"savetoggle", "0"},  // set by the save, reset by the read-back's load
        {"savetogglesvc", "1"}};
    for (const auto& [k, v] : file) EXPECT_EQ(key("file", k), v) << k;
    EXPECT_EQ(key("file", "sourcepath"), dir.file("in2"));
    EXPECT_EQ(key("userdefined", "Channels"), "5|3|");
    EXPECT_EQ(key("userdefined", "TimeSelect"), "1");
    EXPECT_EQ(key("userdefined", "TimeStart"), "2026-01-01 10:00:00");
    // Read back: the options in memory and a page loaded anew show the same.
    EXPECT_EQ(ctx->opt.targetnameformat, "$S_$YYYY");
    EXPECT_EQ(ctx->opt.vChannelList.size(), 3u);
    SettingsPage again(*ctx);
    EXPECT_EQ(find<QLineEdit>(&again, "txt_targetname")->text(), "$S_$YYYY");
    EXPECT_EQ(find<QLineEdit>(&again, "txt_printpage")->text(), "1|Lists");
    EXPECT_TRUE(find<QRadioButton>(&again, "opt_binfilemodus(1)")->isChecked());
    EXPECT_TRUE(find<QRadioButton>(&again, "opt_printerorientation(1)")->isChecked());
    EXPECT_FALSE(find<QCheckBox>(&again, "cbx_measurementsinclusive")->isChecked());
    EXPECT_TRUE(find<QCheckBox>(&again, "cbx_ctrleventinclusive")->isChecked());
    EXPECT_EQ(find<QComboBox>(&again, "cmb_printer(1)")->currentText(), "office");
    EXPECT_EQ(find<QComboBox>(&again, "cmb_targetname")->currentIndex(), 1);
    EXPECT_FALSE(again.bOptionsChanged);
}

// The printer lists come from the print service: the private CUPS server of the tests.
TEST_F(OptionPages, ThePrinterListsComeFromCups) {
    const char* server = std::getenv("CUPS_SERVER");
    if (!server || !*server || !std::getenv("QUMBREL_CUPS_OUT"))
        GTEST_SKIP() << "no private CUPS server (scripts/test.d/cups.sh starts one)";
    use_cups_printers(*ctx);
    SettingsPage page(*ctx);
    for (const char* list : {"cmb_printer(0)", "cmb_printer(1)"}) {
        auto* box = find<QComboBox>(&page, list);
        EXPECT_GE(box->findText("qumbrel_test_a"), 0) << list;
        EXPECT_GE(box->findText("qumbrel_test_b"), 0) << list;
    }
    EXPECT_FALSE(page.bOptionsChanged);
}

TEST_F(OptionPages, EnabledStatesOfTheFourTargetFormats) {
    SettingsPage page(*ctx);
    auto* format = find<QComboBox>(&page, "cmb_targetformat");
    auto* print = find<QCheckBox>(&page, "cbx_printfile");
    struct Row {
        const char* control;
        bool on[4];
    };
    const Row rows[] = {{"txt_channels", {true, true, false, true}},
                        {"cmd_channels3", {true, true, false, true}},
                        {"txt_excelsourcefile", {false, false, true, false}},
                        {"cmd_excelsourcefile", {false, false, true, false}},
                        {"cbx_excelsourcefileAlarm", {false, false, true, false}},
                        {"cbx_runexcelmakro", {false, false, true, false}},
                        {"txt_row", {true, true, false, true}},
                        {"txt_col", {true, true, false, true}},
                        {"txt_fileextension", {true, false, false, true}},
                        {"lbl_printerorientation", {true, false, false, true}},
                        {"lbl_channels", {true, true, false, true}}};
    for (int index : {2, 0, 3, 1}) {
        print->setChecked(true);
        format->setCurrentIndex(index);
        for (const Row& r : rows)
            EXPECT_EQ(find<QWidget>(&page, r.control)->isEnabled(), r.on[index])
                << r.control << " under " << index;
        EXPECT_EQ(print->isEnabled(), index != 1);
        EXPECT_EQ(print->isChecked(), index != 1) << index;  // XLS clears it
    }
}

TEST_F(OptionPages, CharacterFiltersAtTheCursor) {
    SettingsPage page(*ctx);
    const auto type_at = [&](const char* name, const QString& text, int at, const QString& ch) {
        QLineEdit* box = find<QLineEdit>(&page, name);
        box->setText(text);
        box->setCursorPosition(at);
        QTest::keyClicks(box, ch);
        return std::pair{box->text(), box->cursorPosition()};
    };
    EXPECT_EQ(type_at("txt_row", "12", 1, "x"), (std::pair{QString("12"), 1}));
    EXPECT_EQ(type_at("txt_col", "12", 1, "7"), (std::pair{QString("172"), 2}));
    EXPECT_EQ(type_at("txt_targetname", "$O_$S", 2, ":"), (std::pair{QString("$O_$S"), 2}));
    EXPECT_EQ(type_at("txt_targetname", "ab", 1, "/"), (std::pair{QString("ab"), 1}));
    EXPECT_EQ(type_at("txt_almlsuffix", "_AL", 1, "\""), (std::pair{QString("_AL"), 1}));
    EXPECT_EQ(type_at("txt_almlsuffix", "_AL", 1, "-"), (std::pair{QString("_-AL"), 2}));
    // A value below 1 becomes 1, an emptied box too.
    QLineEdit* row = find<QLineEdit>(&page, "txt_row");
    row->setText("0");
    EXPECT_EQ(row->text(), "1");
    row->selectAll();
    QTest::keyClick(row, Qt::Key_Delete);
    EXPECT_EQ(row->text(), "1");
    // "$" elements are welcome in the path boxes.
    EXPECT_EQ(type_at("txt_targetpath", "/r/", 3, "$"), (std::pair{QString("/r/$"), 4}));
}

TEST_F(OptionPages, MenusPutTheirTokensAtTheCursor) {
    SettingsPage page(*ctx);
    QLineEdit* name = find<QLineEdit>(&page, "txt_targetname");
    name->setText("AB");
    name->setCursorPosition(1);
    ASSERT_NE(page.element_menu("txt_targetname"), nullptr);
    page.element_menu("txt_targetname")->findChild<QAction*>("mnu_elem_year4")->trigger();
    EXPECT_EQ(name->text(), "A$YYYYB");
    page.element_menu("txt_targetname")->findChild<QAction*>("mnu_elem_losno3")->trigger();
    EXPECT_EQ(name->text(), "A$YYYY$LLLB");

    QLineEdit* moved = find<QLineEdit>(&page, "txt_targetpathsourcefile");
    moved->setText("/x/");
    moved->setCursorPosition(3);
    page.element_menu("txt_targetpathsourcefile")
        ->findChild<QAction*>("mnu_elem_serialno")
        ->trigger();
    EXPECT_EQ(moved->text(), "/x/$S");
    EXPECT_EQ(name->text(), "A$YYYY$LLLB");  // only the box that opened the menu

    // The sample file's information list.
    page.sample_file(QString::fromStdString(make_vt("s.oge")));
    EXPECT_GT(find<QListWidget>(&page, "lst_samplefile")->count(), 5);

    QLineEdit* channels = find<QLineEdit>(&page, "txt_channels");
    channels->clear();
    page.channel_menu(2)->findChild<QAction*>("mnu_channel30All")->trigger();
    EXPECT_TRUE(channels->text().startsWith("31|32|"));
    EXPECT_TRUE(channels->text().endsWith("|60|"));
    page.channel_menu(1)->findChild<QAction*>("mnu_channel1Every")->trigger();
    EXPECT_EQ(channels->text(), "ALL|");
}

TEST_F(OptionPages, MissingPathsTurnRedButSaveAnyway) {
    options("english.lng", "targetpathsourcefile=/nowhere/$YYYY\ntargetformat=2\nexcelsourcefile=" +
                               dir.file("none.xltx") + "\n");
    SettingsPage page(*ctx);
    const auto red = [&](const char* n) {
        return find<QLineEdit>(&page, n)->palette().color(QPalette::Base) == QColor(255, 0, 0);
    };
    EXPECT_FALSE(red("txt_sourcepath"));
    EXPECT_FALSE(red("txt_targetpath"));
    EXPECT_FALSE(red("txt_targetpathsourcefile"));  // holds "$": not checked
    EXPECT_TRUE(red("txt_excelsourcefile"));
    find<QLineEdit>(&page, "txt_sourcepath")->setText(QString::fromStdString(dir.file("gone")));
    page.sub_checkallpath();
    EXPECT_TRUE(red("txt_sourcepath"));
    find<QComboBox>(&page, "cmb_targetformat")->setCurrentIndex(0);
    EXPECT_FALSE(red("txt_excelsourcefile"));  // disabled: not checked
    EXPECT_TRUE(page.sub_optionSave());
    EXPECT_EQ(key("file", "sourcepath"), dir.file("gone"));
    EXPECT_TRUE(red("txt_sourcepath"));
}

TEST_F(OptionPages, UnsavedChangesAreAskedAboutOnClose) {
    MainWindow w(*ctx, host);
    w.show();
    w.ShowForm("frm_mdic_settings fra_properties");
    QTest::keyClicks(find<QLineEdit>(&w, "txt_almlsuffix"), "_x");
    ASSERT_TRUE(w.settings_page()->bOptionsChanged);
    w.testAnswer = MainWindow::Answer::Yes;
    QStringList said;
    w.settings_page()->statusbar = [&](const QString& s) { said << s; };
    EXPECT_TRUE(w.close());
    EXPECT_EQ(key("file", "almlsuffix"), "_x");
    EXPECT_EQ(said.mid(0, 4), (QStringList{"save data...", "reload data...",
                                           "check path settings...", "load to screen..."}));
}

TEST_F(OptionPages, ProtectionOnWithAOneDigitCharacterAndOffAgain) {
    std::deque<std::string> typed{"\x07"};
    PrgSettingsPage page(*ctx, svc);
    page.login = typing(typed);
    bool closeButton = true;
    QObject::connect(&page, &PrgSettingsPage::closeButtonWanted,
                     [&](bool on) { closeButton = on; });
    EXPECT_FALSE(find<QAbstractButton>(&page, "cmd_saveprotection")->isEnabled());
    find<QAbstractButton>(&page, "cbx_protection")->click();
    EXPECT_TRUE(find<QLineEdit>(&page, "txt_password")->isEnabled());
    find<QLineEdit>(&page, "txt_password")->setText("\x07");
    find<QAbstractButton>(&page, "cmd_saveprotection")->click();
    EXPECT_EQ(ctx->opt.strProtectionPassword, "\x07");
    EXPECT_FALSE(closeButton);
    // Code 7 gives one digit: the value is shorter than the reader's pairs expect.
    EXPECT_TRUE(QRegularExpression("^\\d\\d7001$")
                    .match(QString::fromStdString(protection_value()))
                    .hasMatch())
        << protection_value();
    EXPECT_EQ(prompts, QStringList{"New password"});

    // Off: the present password, then the value ends "000" and the close button is back.
    typed = {"\x07"};
    find<QAbstractButton>(&page, "cbx_protection")->click();
    EXPECT_TRUE(ctx->opt.strProtectionPassword.empty());
    EXPECT_TRUE(find<QLineEdit>(&page, "txt_password")->text().isEmpty());
    EXPECT_TRUE(closeButton);
    EXPECT_TRUE(protection_value().ends_with("000"));
    EXPECT_EQ(protection_value().size(), 5u);
}

TEST_F(OptionPages, AWrongOldPasswordOrRepetitionWritesNothing) {
    RegistryStore(ctx->program_file("registry.ini"))
        .SetRegString(kProtectionKey, kProtectionValue,
                      build_protection_value(12, "alt-geheim", true));
    fkt_loadoptionfile(*ctx);
    ASSERT_EQ(ctx->opt.strProtectionPassword, "alt-geheim");
    ASSERT_FALSE(is_set(ctx->opt.bLoggedIn));
    const std::string before = protection_value();

    std::deque<std::string> typed{"falsch"};
    PrgSettingsPage page(*ctx, svc);
    page.login = typing(typed);
    EXPECT_TRUE(find<QCheckBox>(&page, "cbx_protection")->isChecked());  // nobody logged in
    QTest::keyClicks(find<QLineEdit>(&page, "txt_password"), "neu-geheim");
    find<QAbstractButton>(&page, "cmd_saveprotection")->click();
    EXPECT_EQ(prompts.front(), "Present password");
    EXPECT_EQ(ctx->opt.strProtectionPassword, "alt-geheim");
    EXPECT_EQ(find<QLineEdit>(&page, "txt_password")->text(), "neu-geheim");
    EXPECT_EQ(protection_value(), before);

    // The present password right, the repetition wrong: nothing written, the old one holds.
    typed = {"alt-geheim", "neu-geheimX"};
    find<QAbstractButton>(&page, "cmd_saveprotection")->click();
    EXPECT_EQ(ctx->opt.strProtectionPassword, "alt-geheim");
    EXPECT_EQ(protection_value(), before);
    // Both right: the new password is stored.
    typed = {"alt-geheim", "neu-geheim"};
    find<QAbstractButton>(&page, "cmd_saveprotection")->click();
    EXPECT_EQ(ctx->opt.strProtectionPassword, "neu-geheim");
    Options read;
    apply_protection_value(read, protection_value());
    EXPECT_EQ(read.strProtectionPassword, "neu-geheim");

    // Switching off with a wrong password ticks the box again.
    typed = {"falsch"};
    find<QAbstractButton>(&page, "cbx_protection")->click();
    EXPECT_TRUE(find<QCheckBox>(&page, "cbx_protection")->isChecked());
    EXPECT_EQ(ctx->opt.strProtectionPassword, "neu-geheim");
}

TEST_F(OptionPages, ProtectionOnWithAWrongRepetitionOrNoRightToTheStore) {
    std::deque<std::string> typed{"other"};
    PrgSettingsPage page(*ctx, svc);
    page.login = typing(typed);
    find<QAbstractButton>(&page, "cbx_protection")->click();
    QTest::keyClicks(find<QLineEdit>(&page, "txt_password"), "geheim");
    find<QAbstractButton>(&page, "cmd_saveprotection")->click();
    EXPECT_FALSE(fs::exists(ctx->program_file("registry.ini")));
    EXPECT_FALSE(find<QCheckBox>(&page, "cbx_protection")->isChecked());
    EXPECT_TRUE(ctx->opt.strProtectionPassword.empty());

    // The store cannot be written: the error is reported, the password holds for this run.
    fs::create_directories(ctx->program_file("registry.ini"));
    typed = {"geheim"};
    find<QAbstractButton>(&page, "cbx_protection")->click();
    find<QAbstractButton>(&page, "cmd_saveprotection")->click();
    EXPECT_EQ(ctx->opt.strProtectionPassword, "geheim");
    EXPECT_NE(testing::read_file(ctx->program_file("error.log"))
                  .find("cmd_saveprotection_Click of Formular frm_mdic_prgsettings"),
              std::string::npos);
}

TEST_F(OptionPages, ServiceButtonsInEveryState) {
    PrgSettingsPage page(*ctx, svc);
    page.serviceWaitMs = 0;
    auto* install = find<QAbstractButton>(&page, "cmd_serviceInstall");
    auto* start = find<QAbstractButton>(&page, "cmd_serviceStart");
    const auto state = [&] {
        return install->text() + (install->isEnabled() ? "+" : "-") + " / " + start->text() +
               (start->isEnabled() ? "+" : "-");
    };
    EXPECT_EQ(state(), "Install Service+ / Start Service-");
    install->click();
    EXPECT_TRUE(fs::exists(svc.unitFolder + "/" + kServiceUnit));
    EXPECT_EQ(state(), "Uninstall Service+ / Start Service+");
    start->click();
    EXPECT_TRUE(fake->running);
    EXPECT_EQ(state(), "Uninstall Service- / Stop Service+");
    start->click();
    EXPECT_FALSE(fake->running);
    EXPECT_EQ(state(), "Uninstall Service+ / Start Service+");
    install->click();
    EXPECT_FALSE(fs::exists(svc.unitFolder + "/" + kServiceUnit));
    EXPECT_EQ(state(), "Install Service+ / Start Service-");
}

TEST_F(OptionPages, TimeOutAndLanguage) {
    for (const char* l : {"english.lng", "deutsch.lng"})
        fs::copy_file(std::string(QUMBREL_BIN_DIR) + "/" + l, dir.file(l));
    MainWindow w(*ctx, host);
    w.service = svc;
    w.show();
    w.ShowForm("frm_mdic_prgsettings fra_settings");
    auto* page = qobject_cast<PrgSettingsPage*>(w.current_page());
    ASSERT_NE(page, nullptr);
    QLineEdit* timeout = find<QLineEdit>(page, "txt_timeoutcountsec");
    timeout->setFocus();
    QTest::keyClicks(timeout, "9x0");
    EXPECT_EQ(timeout->text(), "90");
    QFocusEvent leave(QEvent::FocusOut);  // the box loses the focus
    QApplication::sendEvent(timeout, &leave);
    EXPECT_EQ(key("service", "timeoutcountsec"), "90");
    EXPECT_EQ(key("file", "savetogglesvc"), "1");

    QStringList entries;
    for (QAction* a : page->language_menu()->actions()) entries << a->text();
    EXPECT_TRUE(entries.contains("deutsch.lng"));
    EXPECT_TRUE(entries.contains("english.lng"));
    page->choose_language("deutsch.lng");
    EXPECT_EQ(find<QAbstractButton>(page, "cbx_protection")->text(), "Programmbedienung schützen");
    EXPECT_EQ(key("file", "language"), dir.file("deutsch.lng"));
    EXPECT_EQ(key("file", "savetoggle"), "1");
    QString hint;
    page->inform = [&](const QString& t) { hint = t; };
    page->language_menu()->findChild<QAction*>("MNtranslateOther")->trigger();
    EXPECT_TRUE(
        hint.startsWith("Translate this file " + QString::fromStdString(dir.file("deutsch.lng"))));
    EXPECT_TRUE(hint.endsWith("It will apear in the translate menu"));
}

}  // namespace
}  // namespace qumbrel
