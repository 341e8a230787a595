#include "frame/language.h"

#include <gtest/gtest.h>

#include "frame/ini.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;

namespace {

const char* const kMsgKeys[] = {
    "CheckSettings", "Pathnotexist",  "SaveChanges",   "TemplateNotExist",    "allreadycompiled",
    "closefile",     "createfile",    "deletefile",    "filenotexist",        "finished",
    "insertalarm",   "insertmessage", "insertoperationlogs", "insertvalue",   "movefile",
    "printfile",     "puzzlefilename", "runmakro",     "startconverting",     "time"};

TEST(Language, TranslateReadsSectionMsgCaseInsensitively) {
    TestProgram p;
    p->opt.language = p->program_file("test.lng");
    write_file(p->opt.language, "[MSG]\nFinished=fertig\n[frm_x]\nfinished=not this\n");
    EXPECT_EQ(fkt_translate(*p, "finished"), "fertig");
    EXPECT_EQ(fkt_translate(*p, "movefile"), "");  // no built-in fallback

    p->opt.language = p->program_file("absent.lng");
    EXPECT_EQ(fkt_translate(*p, "finished"), "");
}

TEST(Language, ReadIsCutTo254Characters) {
    TestProgram p;
    const std::string path = p->program_file("long.lng");
    write_file(path, "[MSG]\nk=" + std::string(1000, 'y') + "\n");
    EXPECT_EQ(fkt_readlanguage(path, "MSG", "k", ""), std::string(254, 'y'));
    write_file(path, "[MSG]\nk=" + std::string(253, 'y') + "\xE4\xF6\n");  // Windows-1252
    EXPECT_EQ(fkt_readlanguage(path, "MSG", "k", ""), std::string(253, 'y') + "\xC3\xA4");
}

TEST(Language, FormWalkKeysAndDefaults) {
    TestProgram p;
    p->run.strOptionFile = p->program_file("qumbrel.ini");
    write_file(p->program_file("english.lng"),
               "[frm_mdic_run]\nLauf=Run\ncmd_start.Caption=Start\n"
               "cmd_start.ToolTipText=Starts now\nopt_kind(1).Caption=Daily\n");
    TranslatableForm form{"frm_mdic_run",
                          "Lauf",
                          {{"cmd_start", std::nullopt, "Starten", "Startet"},
                           {"opt_kind", 0, "Woechentlich", std::nullopt},
                           {"opt_kind", 1, "Taeglich", "tip"},
                           {"pic_logo", std::nullopt, std::nullopt, std::nullopt}}};
    sub_translateform(*p, form, "english.lng");  // bare name: the program folder
    EXPECT_EQ(form.caption, "Run");
    EXPECT_EQ(form.controls[0].caption, "Start");
    EXPECT_EQ(form.controls[0].toolTip, "Starts now");
    EXPECT_EQ(form.controls[1].caption, "Woechentlich");  // no key: designed text stays
    EXPECT_EQ(form.controls[2].caption, "Daily");
    EXPECT_EQ(form.controls[2].toolTip, "tip");
    EXPECT_FALSE(form.controls[3].caption.has_value());
    EXPECT_EQ(p->opt.language, p->program_file("english.lng"));
    EXPECT_EQ(clsINI(p->run.strOptionFile).GetKeyValue("file", "language"),
              p->program_file("english.lng"));

    // The caption key is the present text: a second walk finds no key "Run".
    write_file(p->program_file("other.lng"), "[frm_mdic_run]\nLauf=Course\n");
    sub_translateform(*p, form, p->program_file("other.lng"));  // path with a folder
    EXPECT_EQ(form.caption, "Run");
    EXPECT_EQ(p->opt.language, p->program_file("other.lng"));
}

TEST(Language, ShippedFilesHaveEveryStatusText) {
    for (const char* file : {"deutsch.lng", "english.lng"}) {
        const std::string path = std::string(QUMBREL_SOURCE_DIR) + "/lang/" + file;
        for (const char* key : kMsgKeys)
            EXPECT_FALSE(fkt_readlanguage(path, "MSG", key, "").empty()) << file << " " << key;
    }
}

}  // namespace
