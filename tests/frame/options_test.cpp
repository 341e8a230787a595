#include <gtest/gtest.h>

#include <algorithm>

#include "frame/ini.h"
#include "frame/options_io.h"
#include "frame/registry.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;

namespace {

// What the pages write for the given options: a mechanism to compare whole option sets.
std::string saved(TestProgram& p, Options o, const std::string& file) {
    const std::string keep = p->run.strOptionFile;
    p->run.strOptionFile = p->program_file(file);
    o.language = "/same.lng";
    EXPECT_TRUE(fkt_saveoption_run(*p, o));
    EXPECT_TRUE(fkt_saveoption_settings(*p, o));
    p->run.strOptionFile = keep;
    return read_file(p->program_file(file));
}

const Options& load(TestProgram& p, const std::string& optionFile) {
    write_file(p->run.strOptionFile, optionFile);
    fkt_loadoptionfile(*p);
    return p->opt;
}

std::string savetoggle(TestProgram& p, const char* key = "savetoggle") {
    return clsINI(p->run.strOptionFile).GetKeyValue("file", key);
}

TEST(Options, MissingFileReadsAsDefaultsAndResetsSavetoggle) {
    for (const char* region : {"de-DE", "en-US"}) {
        SCOPED_TRACE(region);
        TestProgram p(region);
        fkt_loadoptionfile(*p);
        const Options& o = p->opt;
        EXPECT_EQ(saved(p, o, "a.ini"), saved(p, Options{}, "b.ini"));
        EXPECT_EQ(o.language, p->program_file("deutsch.lng"));
        // Separators default to the regional values.
        const bool de = std::string(region) == "de-DE";
        EXPECT_EQ(o.listseparator, de ? ";" : ",");
        EXPECT_EQ(o.decseparator, de ? "," : ".");
        EXPECT_EQ(o.dateseparator, de ? "." : "/");
        EXPECT_EQ(savetoggle(p), "0");  // the load writes it, which creates the file
    }
}

TEST(Options, ValuesAreReadWithTheirTypesCutsAndOverrides) {
    TestProgram p;
    const Options& o =
        load(p,
             "[start]\nalleventmsg=1\nsheduler=3abc\nday=x\n[file]\nalleventmsg=0\n"
             "targetnameformat=>  $O_$S\nalarminclusive=-5\nmessageinclusive=abc\n"
             "printer=lp\nprintfile=1\nprintfile2=1\n[userdefined]\nChannels=1|3||ALL\n");
    EXPECT_EQ(o.alleventmsg, kFalse);  // [file] is read later and wins
    EXPECT_EQ(o.sheduler, 3);
    EXPECT_EQ(o.day, 0);
    EXPECT_EQ(o.targetnameformat, "  $O_$S");
    EXPECT_EQ(o.alarminclusive, kTrue);  // any non-zero number
    EXPECT_EQ(o.messageinclusive, kFalse);
    EXPECT_EQ(o.printfile, kTrue);
    EXPECT_EQ(o.printfile2, kFalse);  // empty printer2 clears its flag
    EXPECT_EQ(o.vChannelList, (std::vector<std::string>{"1", "3", "", "ALL"}));

    // A hand-edited name format loses its first character; a reload leaves nothing standing.
    EXPECT_EQ(load(p, "[file]\ntargetnameformat=$O\n").targetnameformat, "O");
    EXPECT_TRUE(o.vChannelList.empty());

    // Channels are cut by the read buffer.
    std::string channels;
    for (int i = 0; i < 400; ++i) channels += std::to_string(i % 10) + "|";
    load(p, "[userdefined]\nChannels=" + channels + "\n");
    EXPECT_EQ(o.Channels.size(), 699u);
    EXPECT_EQ(o.vChannelList.size(), 350u);

    // FDA mode overrides the format, printing and deletion.
    p->run.bFda = kTrue;
    load(p, "[file]\ntargetformat=1\nprintfile=0\nprinter=\n");
    EXPECT_EQ(o.targetformat, 2);
    EXPECT_EQ(o.printfile, kTrue);
    EXPECT_EQ(o.delreportfile, kTrue);
}

TEST(Options, OverflowEndsTheLoadWithWhatWasReadStanding) {
    TestProgram p;
    const Options& o =
        load(p, "[start]\nsheduler=4\nday=99999999999\nhour=9\n[file]\nfileextension=txt\n");
    EXPECT_EQ(o.sheduler, 4);
    EXPECT_EQ(o.hour, "1");  // never reached
    EXPECT_EQ(o.fileextension, "csv");
    const std::string log = read_file(p->program_file("error.log"));
    EXPECT_NE(
        log.find("fkt_loadoptionfile() ; Errorsource: qumbrel; Errornumber: 6; Errorline: 3;"),
        std::string::npos)
        << log;
    ASSERT_EQ(p.host.alerts.size(), 1u);
}

TEST(Options, HugeOptionFileIsReportedAndGivesDefaults) {
    TestProgram p;
    EXPECT_EQ(load(p, "[file]\nfileextension=txt\n" + std::string(5 << 20, ';')).fileextension,
              "csv");
    EXPECT_NE(read_file(p->program_file("error.log")).find("Option file larger than"),
              std::string::npos);
}

// Every key a page saves is read back under the same name into the same option, and
// the pages write nothing beyond their own keys. The name format keeps a leading blank
// behind its guard; savetoggle tells of a new save.
TEST(Options, EachPageWritesExactlyItsKeysAndTheyReadBack) {
    TestProgram p;
    // The composed paths are never written; the separators are written by no page.
    // clang-format off
    Options v{.alleventmsg = kTrue, .sheduler = 7, .day = 5, .hour = "13", .minute = "45",
        .autostart = 1, .filetyp = 3, .filetypuserdef = "*.kle", .sourcepath = "/src",
        .targetpath = "/t/2024", .targetpathRaw = "/t/$YYYY", .targetpathsourcefile = "/moved/01",
        .targetpathsourcefileRaw = "/moved/$MM", .binfilemodus = 2, .noconversion = 1,
        .targetformat = 3, .excelsourcefile = "/tpl/a.xltx", .runexcelmakro = 1, .targetname = 1,
        .targetnameformat = " $S_$O", .fileextension = "txt", .sourcenamesametarget = "1",
        .row = "4", .col = "2", .userdef1 = "u1", .userdef2 = "u2", .userdef3 = "u3",
        .userdef4 = "u4", .measurementsinclusive = kFalse, .alarminclusive = kTrue,
        .messageinclusive = kTrue, .ctrleventinclusive = kTrue, .pveventinclusive = kTrue,
        .operatinloginclusive = kTrue, .signatureinclusive = kTrue, .scaleinfoinclusive = kTrue,
        .almlsuffix = "_alm", .excelsourcefilealarmseparate = "1",
        .excelsourcefilealarm = "/tpl/b.xltx", .language = "/l/english.lng", .printfile = kTrue,
        .printfile2 = kTrue, .printer = "p1", .printer2 = "p2", .printerorientationland = 1,
        .delreportfile = kTrue, .printpage = "1|2", .Channels = "3|5", .vChannelList = {},
        .TimeSelect = "1", .TimeStart = "08:00", .TimeStop = "09:00", .listseparator = "#",
        .decseparator = {}, .thousseparator = {}, .dateseparator = {}, .timeseparator = {},
        .strProtectionPassword = {}};
    // clang-format on
    const std::string first = saved(p, v, "first.ini");
    ASSERT_TRUE(fkt_saveoption_run(*p, v));
    ASSERT_TRUE(fkt_saveoption_settings(*p, v));

    clsINI ini(p->run.strOptionFile);
    using Keys = std::vector<std::string>;
    EXPECT_EQ(ini.GetKeysInSection("start"), (Keys{"sheduler", "day", "hour", "minute", "autostart",
                                                   "filetyp", "filetypuserdef"}));
    EXPECT_EQ(ini.GetKeysInSection("userdefined"),
              (Keys{"Channels", "TimeSelect", "TimeStart", "TimeStop"}));
    const Keys fileKeys = ini.GetKeysInSection("file");
    EXPECT_EQ(fileKeys.size(), 40u);                 // the section's table
    EXPECT_EQ(savetoggle(p, "savetogglesvc"), "1");  // the service is told as well
    EXPECT_EQ(ini.GetKeyValue("file", "targetnameformat"), "> $S_$O");
    EXPECT_EQ(savetoggle(p), "1");

    ASSERT_TRUE(ini.CreateKeyValue("userdefined", "timeseparator", "."));
    EXPECT_TRUE(fkt_reloadoptions(*p));
    EXPECT_FALSE(fkt_reloadoptions(*p));  // the load reset savetoggle
    const Options& o = p->opt;
    EXPECT_EQ(saved(p, o, "second.ini"), first);  // every saved option came back
    EXPECT_EQ(o.targetnameformat, " $S_$O");
    EXPECT_EQ(o.targetpath, "/t/$YYYY");
    EXPECT_EQ(o.language, "/l/english.lng");
    EXPECT_EQ(o.timeseparator, ".");

    v.language = "/y/deutsch.lng";
    ASSERT_TRUE(fkt_saveoption_prgsettings(*p, v));
    EXPECT_TRUE(fkt_reloadoptions(*p));
    EXPECT_EQ(o.language, "/y/deutsch.lng");
    ASSERT_TRUE(fkt_setsavetoggle(*p));  // also tells the service
    EXPECT_EQ(savetoggle(p), "1");
    EXPECT_EQ(savetoggle(p, "savetogglesvc"), "1");
}

TEST(Options, UnwritableOptionFileIsReportedBySave) {
    TestProgram p;
    p->run.strOptionFile = p->program_file("no/such/folder/qumbrel.ini");
    EXPECT_FALSE(fkt_saveoption_prgsettings(*p, Options{}));
    EXPECT_NE(read_file(p->program_file("error.log")).find("fkt_saveoption()"), std::string::npos);
}

TEST(Options, ProtectionValue) {
    // Read from the registry store: seconds "07", "geheimnis" as hex pairs, then "001".
    TestProgram p;
    RegistryStore reg(p->program_file("registry.ini"));
    ASSERT_EQ(reg.SetRegString(kProtectionKey, kProtectionValue, "0767656865696d6e6973001"), "");
    fkt_loadoptionfile(*p);
    EXPECT_EQ(p->opt.bLoggedIn, kFalse);
    EXPECT_EQ(p->opt.strProtectionPassword, "geheimnis");
    // Shorter than 20 characters counts as the default, even with a last "1".
    apply_protection_value(p->opt, "42616263001");
    EXPECT_EQ(p->opt.bLoggedIn, kTrue);
}

}  // namespace
