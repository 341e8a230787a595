#include "pipeline/name_composer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

#include "pipeline/family_table.h"
#include "recorder/file_elements.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;

namespace {

struct Composer : ::testing::Test {
    TestProgram p;
    FileElements& e = p->state<FileElements>();
    void SetUp() override {
        p->opt.targetname = 1;
        using F = FileElements;
        const std::vector<std::pair<std::string F::*, const char*>> values{
            // clang-format off
            {&F::ti_O, "VT000123"}, {&F::ti_C, "3"}, {&F::ti_YYYY, "2007"}, {&F::ti_YY, "07"},
            {&F::ti_MM, "03"}, {&F::ti_DD, "09"}, {&F::ti_HH, "12"}, {&F::ti_mm, "05"},
            {&F::ti_SS, "03"}, {&F::ti_S, "S4711"}, {&F::ti_B, "Batch"}, {&F::ti_L, "7"},
            {&F::ti_LL, "07"}, {&F::ti_C1, "first"}};
        // clang-format on
        for (const auto& [field, value] : values) e.*field = value;
        e.group(1) = "Ofen";
    }
    std::string name(const std::string& f) { return fkt_FormatName(*p, f, kFalse); }
    std::string path(const std::string& f) { return fkt_FormatName(*p, f, kTrue); }
};

TEST_F(Composer, ExpandsElementsAndFiltersIllegalCharacters) {
    // clang-format off
    const std::vector<std::pair<std::string, std::string>> names{
        {"$YYYY$MM$DD", "20070309"}, {"$YY$", "07$"}, {"$CC", ""}, {"$C", "3"},
        {"$C1-$1", "first-Ofen"}, {"$Y", "$Y"}, {"$YYY", "Y07"},
        {"$LL", "7L"} /* L takes no further character */, {"$5x", "$5x"},
        {"$HH$mm$SS_$S", "120503_S4711"}, {"$D$M$H$m$D1$Y20", ""} /* no element: vanish */,
        {"$12", "Ofen2"}, {"$O_$B", "VT000123_Batch"}, {"", ""}, {"$", "$"},
        {"$YYYY:$MM", "2007_03"}};
    // clang-format on
    for (const auto& [format, expected] : names) EXPECT_EQ(name(format), expected) << format;
    EXPECT_EQ(path("/out/$YYYY/$MM"), "/out/2007/03");
    const std::vector<std::tuple<std::string, Flag, std::string>> filtered{
        {"a:b/c", kFalse, "a_b_c"},  {"a:b/c", kTrue, "a_b/c"},           {"D:", kTrue, "D_"},
        {"D:/x:y", kTrue, "D:/x_y"}, {"a\\b*?\"<>|", kTrue, "a_b______"},
    };
    for (const auto& [text, isPath, expected] : filtered)
        EXPECT_EQ(fkt_filterillegal(text, isPath), expected) << text;
    // targetname 0 gives element O whatever the format.
    p->opt.targetname = 0;
    EXPECT_EQ(name("$YYYY"), "VT000123");
    EXPECT_EQ(path("/data/$YYYY"), "VT000123");
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
    EXPECT_EQ(std::tie(e.ti_O, e.ti_C, e.ti_YYYY), std::tuple("abc7", "7", "2024"));
    EXPECT_EQ(p.host.lines.size(), 1u);
    // KL has no elements function: the previous file's date stands.
    fkt_convertfilename(*p, "/in/kl01.KLE");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(std::tie(e.ti_O, e.ti_YYYY), std::tuple("kl01", "2024"));
    fkt_convertfilename(*p, "/in/notes.txt");
    EXPECT_EQ(std::tie(e.ti_O, e.ti_YYYY), std::tuple("notes", "2024"));
    // A failing family function ends the function at its third step: O and C stay.
    family_table(*p).vt.fileElements = [](Program&, const std::string&) {
        throw std::runtime_error("unreadable");
    };
    fkt_convertfilename(*p, "/in/xyz9.oge");
    EXPECT_EQ(e.ti_O, "notes");
    const std::string log = read_file(p->program_file("error.log"));
    EXPECT_NE(log.find("fkt_convertfilename() ; "), std::string::npos) << log;
    EXPECT_NE(log.find("; Errorline: 3;"), std::string::npos) << log;
}

}  // namespace
