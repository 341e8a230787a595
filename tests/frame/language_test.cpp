#include "frame/language.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>

#include "frame/ini.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;

namespace {

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
    write_file(p->program_file("english.lng"),
               "[frm_mdic_run]\nLauf=Run\ncmd_start.Caption=Start\n"
               "cmd_start.ToolTipText=Starts now\nopt_kind(1).Caption=Daily\n");
    TranslatableForm form{"frm_mdic_run",
                          "Lauf",
                          {{"cmd_start", std::nullopt, "Starten", "Startet"},
                           {"opt_kind", 0, "Woechentlich", std::nullopt},
                           {"opt_kind", 1, "Taeglich", "tip"}}};
    sub_translateform(*p, form, "english.lng");  // bare name: the program folder
    EXPECT_EQ(form.caption, "Run");
    EXPECT_EQ(form.controls[0].caption, "Start");
    EXPECT_EQ(form.controls[0].toolTip, "Starts now");
    EXPECT_EQ(form.controls[1].caption, "Woechentlich");  // no key: designed text stays
    EXPECT_EQ(form.controls[2].caption, "Daily");
    EXPECT_EQ(clsINI(p->run.strOptionFile).GetKeyValue("file", "language"),
              p->program_file("english.lng"));

    // The caption key is the present text: a second walk finds no key "Run".
    write_file(p->program_file("other.lng"), "[frm_mdic_run]\nLauf=Course\n");
    sub_translateform(*p, form, p->program_file("other.lng"));  // path with a folder
    EXPECT_EQ(form.caption, "Run");
    EXPECT_EQ(p->opt.language, p->program_file("other.lng"));
}

// Every status text the program looks up has a text in both shipped files. The keys are
// taken from the sources, so a new lookup cannot go without its catalogue entry.
TEST(Language, ShippedFilesHaveEveryKeyTheProgramLooksUp) {
    namespace fs = std::filesystem;
    const fs::path root(QUMBREL_SOURCE_DIR);
    const std::regex call(R"re(fkt_translate\(\s*\w+\s*,\s*"([^"]*)"\s*\))re");
    const std::regex anyCall(R"re(fkt_translate\()re");
    const std::sregex_iterator end;
    std::set<std::string> keys;
    for (const char* dir :
         {"app", "automation", "excel", "frame", "pipeline", "recorder", "reports", "ui"}) {
        if (!fs::is_directory(root / dir)) continue;
        for (const auto& e : fs::recursive_directory_iterator(root / dir)) {
            const auto ext = e.path().extension();
            if (ext != ".cpp" && ext != ".h") continue;
            if (e.path().stem() == "language") continue;  // declaration and definition
            const std::string src = qumbrel::testing::read_file(e.path().string());
            std::sregex_iterator m(src.begin(), src.end(), call);
            for (auto it = m; it != end; ++it) keys.insert((*it)[1].str());
            EXPECT_EQ(std::distance(m, end),
                      std::distance(std::sregex_iterator(src.begin(), src.end(), anyCall), end))
                << e.path() << ": a key that is not a literal";
        }
    }
    ASSERT_FALSE(keys.empty());
    for (const char* file : {"deutsch.lng", "english.lng"}) {
        const std::string path = (root / "lang" / file).string();
        for (const auto& key : keys)
            EXPECT_FALSE(fkt_readlanguage(path, "MSG", key, "").empty()) << file << " " << key;
    }
}

}  // namespace
