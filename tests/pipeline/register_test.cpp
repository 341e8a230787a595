#include "pipeline/register.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;

namespace {

struct Register : ::testing::Test {
    TestProgram p;
    std::string file = p->run.strRegisterFile;
    bool has(const std::string& text) { return is_set(fkt_CompareStringInFile(*p, file, text)); }
};

TEST_F(Register, LinesAreFoundAsSubstringsWithCaseAndAMissingRegisterIsMade) {
    EXPECT_FALSE(has("a.ogd"));
    EXPECT_TRUE(std::filesystem::exists(file));
    for (const char* line : {"data.ogd    data.ogd\r\n", "b.oge.Error.oge    n.oge.Error.oge\r\n"})
        ASSERT_TRUE(is_set(fkt_AppendStringToFile(*p, file, line)));
    EXPECT_EQ(read_file(file), "data.ogd    data.ogd\r\nb.oge.Error.oge    n.oge.Error.oge\r\n");
    EXPECT_TRUE(has("data.ogd") && has("b.oge.Error.oge"));
    EXPECT_TRUE(has("a.ogd"));  // inside "data.ogd", kept so
    EXPECT_FALSE(has("DATA.OGD"));
}

TEST_F(Register, OnlyTheLastRecordDecides) {
    // Exactly 30000 bytes: one full record, no rest; it decides alone.
    std::string body = "first.ogd" + std::string(30000 - 9 - 8, '.') + "last.ogd";
    ASSERT_EQ(body.size(), 30000u);
    write_file(file, body);
    EXPECT_TRUE(has("first.ogd"));
    EXPECT_TRUE(has("last.ogd"));
    // 30001 bytes: only the record holding the last byte decides.
    write_file(file, body + "x");
    EXPECT_FALSE(has("first.ogd"));
    EXPECT_FALSE(has("last.ogd"));
    EXPECT_TRUE(has("x"));
    // A name cut by a record's edge is not found.
    std::string edge = std::string(29996, '.') + "cut.ogd" + std::string(100, '.');
    write_file(file, edge);
    EXPECT_FALSE(has("cut.ogd"));
}

TEST_F(Register, UnreadableRegisterIsReportedAndCountsAsNotConverted) {
    std::filesystem::create_directory(file);  // a folder where the register should be
    EXPECT_FALSE(has("a.ogd"));
    EXPECT_FALSE(is_set(fkt_AppendStringToFile(*p, file, "a.ogd\r\n")));
    const std::string log = read_file(p->program_file("error.log"));
    EXPECT_NE(
        log.find("fkt_CompareStringInFile of Modul mod_comparestring ; Errorsource: qumbrel;"),
        std::string::npos)
        << log;
    // The search fails at its first step (opening); the append has no steps.
    const auto second = log.find("\r\n");
    ASSERT_NE(second, std::string::npos);
    EXPECT_NE(log.substr(0, second).find("; Errorline: 1;"), std::string::npos) << log;
    EXPECT_NE(log.substr(second).find("; Errorline: 0;"), std::string::npos) << log;
    EXPECT_EQ(p.host.alerts.size(), 2u);
}

}  // namespace
