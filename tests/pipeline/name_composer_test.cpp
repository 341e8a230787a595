#include "pipeline/name_composer.h"

#include <gtest/gtest.h>

#include "pipeline/family_table.h"
#include "recorder/file_elements.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::TestProgram;

namespace {

struct Composer : ::testing::Test {
    TestProgram p;
    FileElements& e = p->state<FileElements>();
    void SetUp() override {
        p->opt.targetname = 1;
        e.ti_O = "VT000123";
        e.ti_C = "3";
        e.ti_YYYY = "2007";
        e.ti_YY = "07";
        e.ti_MM = "03";
        e.ti_DD = "09";
        e.ti_HH = "12";
        e.ti_mm = "05";
        e.ti_SS = "03";
        e.ti_S = "S4711";
        e.ti_B = "Batch";
        e.ti_L = "7";
        e.ti_LL = "07";
        e.ti_C1 = "first";
        e.group(1) = "Ofen";
    }
    std::string name(const std::string& f) { return fkt_FormatName(*p, f, kFalse); }
    std::string path(const std::string& f) { return fkt_FormatName(*p, f, kTrue); }
};

TEST_F(Composer, ExpandsElementsByTheAllowanceTable) {
    EXPECT_EQ(name("$YYYY$MM$DD"), "20070309");
    EXPECT_EQ(name("$YY$"), "07$");
    EXPECT_EQ(name("$CC"), "");
    EXPECT_EQ(name("$C"), "3");
    EXPECT_EQ(name("$C1-$1"), "first-Ofen");
    EXPECT_EQ(name("$Y"), "$Y");
    EXPECT_EQ(name("$YYY"), "Y07");
    EXPECT_EQ(name("$LL"), "7L");  // L takes no further character
    EXPECT_EQ(name("$5x"), "$5x");
    EXPECT_EQ(name("$HH$mm$SS_$S"), "120503_S4711");
    EXPECT_EQ(name("$D$M$H$m$D1$Y20"), "");  // keys with no element vanish
    EXPECT_EQ(name("$12"), "Ofen2");
    EXPECT_EQ(name("$O_$B"), "VT000123_Batch");
    EXPECT_EQ(name(""), "");
    EXPECT_EQ(name("$"), "$");
}

TEST_F(Composer, TargetnameZeroGivesElementOWhateverTheFormat) {
    p->opt.targetname = 0;
    EXPECT_EQ(name("$YYYY"), "VT000123");
    EXPECT_EQ(path("/data/$YYYY"), "VT000123");
}

TEST_F(Composer, IllegalCharactersByMode) {
    EXPECT_EQ(fkt_filterillegal("a:b/c", kFalse), "a_b_c");
    EXPECT_EQ(fkt_filterillegal("a:b/c", kTrue), "a_b/c");
    EXPECT_EQ(fkt_filterillegal("D:", kTrue), "D_");
    EXPECT_EQ(fkt_filterillegal("D:/x:y", kTrue), "D:/x_y");
    EXPECT_EQ(fkt_filterillegal("a\\b*?\"<>|", kTrue), "a_b______");
    EXPECT_EQ(name("$YYYY:$MM"), "2007_03");
    EXPECT_EQ(path("/out/$YYYY/$MM"), "/out/2007/03");
}

TEST_F(Composer, ConvertFilenameSetsOAndCAndKeepsOthersForKl) {
    int calls = 0;
    family_table(*p).vt.fileElements = [&](Program& ctx, const std::string&) {
        ++calls;
        fkt_ClearFileElements(ctx);
        ctx.state<FileElements>().ti_YYYY = "2024";
    };
    fkt_convertfilename(*p, "/in/abc7.ogd");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(e.ti_O, "abc7");
    EXPECT_EQ(e.ti_C, "7");
    EXPECT_EQ(e.ti_YYYY, "2024");
    EXPECT_EQ(p.host.lines.size(), 1u);

    // KL has no elements function: the previous file's date stands.
    fkt_convertfilename(*p, "/in/kl01.KLE");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(e.ti_O, "kl01");
    EXPECT_EQ(e.ti_YYYY, "2024");
    fkt_convertfilename(*p, "/in/notes.txt");
    EXPECT_EQ(e.ti_O, "notes");
    EXPECT_EQ(e.ti_YYYY, "2024");
}

}  // namespace
