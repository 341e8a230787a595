#include <gtest/gtest.h>

#include "frame/ini.h"
#include "frame/options_io.h"
#include "frame/registry.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;

namespace {

TEST(Options, MissingFileReadsAsDefaultsAndResetsSavetoggle) {
    TestProgram p("de-DE");
    fkt_loadoptionfile(*p);
    const Options& o = p->opt;
    EXPECT_EQ(o.targetnameformat, "$O");
    EXPECT_EQ(o.fileextension, "csv");
    EXPECT_EQ(o.hour, "1");
    EXPECT_EQ(o.filetypuserdef, "*.hnd");
    EXPECT_EQ(o.measurementsinclusive, kTrue);
    EXPECT_EQ(o.alarminclusive, kFalse);
    EXPECT_EQ(o.row, "1");
    EXPECT_EQ(o.TimeSelect, "0");
    EXPECT_EQ(o.language, p->program_file("deutsch.lng"));
    // Separators default to the regional values.
    EXPECT_EQ(o.listseparator, ";");
    EXPECT_EQ(o.decseparator, ",");
    EXPECT_EQ(o.thousseparator, ".");
    EXPECT_EQ(o.dateseparator, ".");
    EXPECT_EQ(o.timeseparator, ":");
    EXPECT_TRUE(o.vChannelList.empty());
    EXPECT_EQ(o.bLoggedIn, kTrue);
    // The load writes savetoggle=0, which creates the file.
    EXPECT_EQ(clsINI(p->run.strOptionFile).GetKeyValue("file", "savetoggle"), "0");
}

TEST(Options, EnUsSeparatorDefaults) {
    TestProgram p("en-US");
    fkt_loadoptionfile(*p);
    EXPECT_EQ(p->opt.listseparator, ",");
    EXPECT_EQ(p->opt.decseparator, ".");
    EXPECT_EQ(p->opt.dateseparator, "/");
}

TEST(Options, ValuesAreReadWithTheirTypes) {
    TestProgram p;
    write_file(p->run.strOptionFile,
               "[start]\nalleventmsg=1\nsheduler=3abc\nday=x\nhour=07\n"
               "[file]\nalleventmsg=0\ntargetpath=/out/$YYYY\nbinfilemodus=2\n"
               "targetnameformat=>  $O_$S\nmeasurementsinclusive=0\nalarminclusive=-5\n"
               "messageinclusive=abc\nprinter=lp\nprintfile=1\nprintfile2=1\nsavetoggle=1\n"
               "[userdefined]\nChannels=1|3||ALL\ndecseparator=.\n");
    fkt_loadoptionfile(*p);
    const Options& o = p->opt;
    EXPECT_EQ(o.alleventmsg, kFalse);  // [file] is read later and wins
    EXPECT_EQ(o.sheduler, 3);
    EXPECT_EQ(o.day, 0);
    EXPECT_EQ(o.hour, "07");
    EXPECT_EQ(o.targetpathRaw, "/out/$YYYY");
    EXPECT_EQ(o.targetpath, "/out/$YYYY");
    EXPECT_EQ(o.binfilemodus, 2);
    EXPECT_EQ(o.targetnameformat, "  $O_$S");
    EXPECT_EQ(o.measurementsinclusive, kFalse);
    EXPECT_EQ(o.alarminclusive, kTrue);  // any non-zero number
    EXPECT_EQ(o.messageinclusive, kFalse);
    EXPECT_EQ(o.printfile, kTrue);
    EXPECT_EQ(o.printfile2, kFalse);  // empty printer2 clears its flag
    EXPECT_EQ(o.vChannelList, (std::vector<std::string>{"1", "3", "", "ALL"}));
    EXPECT_EQ(o.decseparator, ".");
    EXPECT_EQ(clsINI(p->run.strOptionFile).GetKeyValue("file", "savetoggle"), "0");
}

TEST(Options, HandEditedFormatLosesItsFirstCharacter) {
    TestProgram p;
    write_file(p->run.strOptionFile, "[file]\ntargetnameformat=$O\n");
    fkt_loadoptionfile(*p);
    EXPECT_EQ(p->opt.targetnameformat, "O");
}

TEST(Options, ChannelsAreCutByTheReadBuffer) {
    TestProgram p;
    std::string channels;
    for (int i = 0; i < 400; ++i) channels += std::to_string(i % 10) + "|";
    write_file(p->run.strOptionFile, "[userdefined]\nChannels=" + channels + "\n");
    fkt_loadoptionfile(*p);
    EXPECT_EQ(p->opt.Channels.size(), 699u);
    EXPECT_EQ(p->opt.vChannelList.size(), 350u);
}

TEST(Options, FdaModeOverridesFormatPrintAndDelete) {
    TestProgram p;
    p->run.bFda = kTrue;
    write_file(p->run.strOptionFile, "[file]\ntargetformat=1\nprintfile=0\nprinter=\n");
    fkt_loadoptionfile(*p);
    EXPECT_EQ(p->opt.targetformat, 2);
    EXPECT_EQ(p->opt.printfile, kTrue);
    EXPECT_EQ(p->opt.delreportfile, kTrue);
}

TEST(Options, OverflowEndsTheLoadWithWhatWasReadStanding) {
    TestProgram p;
    write_file(p->run.strOptionFile,
               "[start]\nsheduler=4\nday=99999999999\nhour=9\n[file]\nfileextension=txt\n");
    fkt_loadoptionfile(*p);
    EXPECT_EQ(p->opt.sheduler, 4);
    EXPECT_EQ(p->opt.hour, "1");  // never reached
    EXPECT_EQ(p->opt.fileextension, "csv");
    const std::string log = read_file(p->program_file("error.log"));
    EXPECT_NE(log.find("fkt_loadoptionfile() ; Errorsource: qumbrel; Errornumber: 6; Errorline: 3;"),
              std::string::npos)
        << log;
    ASSERT_EQ(p.host.alerts.size(), 1u);
}

TEST(Options, HugeOptionFileIsReportedAndGivesDefaults) {
    TestProgram p;
    write_file(p->run.strOptionFile, "[file]\nfileextension=txt\n" + std::string(5 << 20, ';'));
    fkt_loadoptionfile(*p);
    EXPECT_EQ(p->opt.fileextension, "csv");
    EXPECT_NE(read_file(p->program_file("error.log")).find("Option file larger than"),
              std::string::npos);
}

TEST(Options, SaveFunctionsWriteTheirKeysAndRoundTrip) {
    TestProgram p;
    Options v;
    v.sheduler = 6;
    v.minute = "15";
    v.targetnameformat = " $O";
    v.targetpathRaw = "/r/$MM";
    v.alarminclusive = kTrue;
    v.printer = "queueA";
    v.printfile = kTrue;
    v.Channels = "2|4";
    v.language = "/x/english.lng";
    ASSERT_TRUE(fkt_saveoption_run(*p, v));
    ASSERT_TRUE(fkt_saveoption_settings(*p, v));
    clsINI ini(p->run.strOptionFile);
    EXPECT_EQ(ini.GetKeyValue("file", "targetnameformat"), "> $O");  // the guard keeps the blank
    EXPECT_EQ(ini.GetKeyValue("file", "savetoggle"), "1");
    EXPECT_EQ(ini.GetKeyValue("file", "alarminclusive"), "1");
    EXPECT_TRUE(fkt_reloadoptions(*p));
    EXPECT_EQ(p->opt.sheduler, 6);
    EXPECT_EQ(p->opt.minute, "15");
    EXPECT_EQ(p->opt.targetnameformat, " $O");
    EXPECT_EQ(p->opt.targetpathRaw, "/r/$MM");
    EXPECT_EQ(p->opt.alarminclusive, kTrue);
    EXPECT_EQ(p->opt.printfile, kTrue);
    EXPECT_EQ(p->opt.vChannelList, (std::vector<std::string>{"2", "4"}));
    EXPECT_EQ(p->opt.language, "/x/english.lng");
    EXPECT_FALSE(fkt_reloadoptions(*p));  // the load reset savetoggle

    v.language = "/y/deutsch.lng";
    ASSERT_TRUE(fkt_saveoption_prgsettings(*p, v));
    EXPECT_TRUE(fkt_reloadoptions(*p));
    EXPECT_EQ(p->opt.language, "/y/deutsch.lng");
}

TEST(Options, SetSavetoggleTellsTheService) {
    TestProgram p;
    ASSERT_TRUE(fkt_setsavetoggle(*p));
    clsINI ini(p->run.strOptionFile);
    EXPECT_EQ(ini.GetKeyValue("file", "savetoggle"), "1");
    EXPECT_EQ(ini.GetKeyValue("file", "savetogglesvc"), "1");
}

TEST(Options, UnwritableOptionFileIsReportedBySave) {
    TestProgram p;
    p->run.strOptionFile = p->program_file("no/such/folder/qumbrel.ini");
    EXPECT_FALSE(fkt_saveoption_prgsettings(*p, Options{}));
    EXPECT_NE(read_file(p->program_file("error.log")).find("fkt_saveoption()"), std::string::npos);
}

TEST(Options, ProtectionValue) {
    Options o;
    apply_protection_value(o, "");  // absent: the default, protection off
    EXPECT_EQ(o.bLoggedIn, kTrue);
    // seconds "42", "geheimnis" as hex pairs, then "001".
    apply_protection_value(o, "42" "67656865696d6e6973" "001");
    EXPECT_EQ(o.bLoggedIn, kFalse);
    EXPECT_EQ(o.strProtectionPassword, "geheimnis");
    apply_protection_value(o, "42" "67656865696d6e6973" "000");
    EXPECT_EQ(o.bLoggedIn, kTrue);
    EXPECT_EQ(o.strProtectionPassword, "");
    // Shorter than 20 characters counts as the default, even with a last "1".
    apply_protection_value(o, "42" "616263" "001");
    EXPECT_EQ(o.bLoggedIn, kTrue);

    TestProgram p;
    RegistryStore reg(p->program_file("registry.ini"));
    ASSERT_EQ(reg.SetRegString(kProtectionKey, kProtectionValue, "07" "67656865696d6e6973" "001"),
              "");
    fkt_loadoptionfile(*p);
    EXPECT_EQ(p->opt.bLoggedIn, kFalse);
    EXPECT_EQ(p->opt.strProtectionPassword, "geheimnis");
}

}  // namespace
