// Readers whose library cannot be found: zero counts and error log lines, no crash. A
// process of its own, since a library once loaded stays findable by name.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "recorder/time_text.h"
#include "recorder/vt_reader.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

using testing::TestProgram;

TEST(VtReaderWithoutLibrary, ZeroCountsAndAnErrorLogLine) {
    ::unsetenv("QUMBREL_RECLIB_PATH");
    TestProgram p{"de-DE"};
    VTInfo info;
    VTGetInfo(*p, p.dir.file("any.oge"), info);
    EXPECT_EQ(info.dataCount, 0);
    EXPECT_EQ(info.startTime, "");  // VtGetStartStop failed first
    FileInfoList list;
    fkt_ReadVTFileInfo(*p, list, p.dir.file("any.oge"));
    ASSERT_FALSE(list.lines.empty());
    EXPECT_EQ(list.lines.front(), "File Type: \t");
    EXPECT_EQ(list.backColor, kInfoColorNormal);
    VTMeasData d;
    const std::vector<std::string> channels = {"1"};
    const std::vector<std::int32_t> decimals = {0};
    VTGetMeasData(*p, p.dir.file("any.oge"), channels, 1, decimals, d, kTrue);
    const std::string log = testing::read_file(p->program_file("error.log"));
    EXPECT_NE(log.find("VTGetInfo() ; Errorsource"), std::string::npos) << log;
    EXPECT_NE(log.find("Errornumber: 53;"), std::string::npos) << log;
    EXPECT_NE(log.find("libDllVTFileAccess32.so"), std::string::npos) << log;
    EXPECT_NE(log.find("VTGetMeasData()"), std::string::npos) << log;
}

// VQ splits its seconds with the VU library's function (kept so): with only the VU library
// at hand, VQ times work and VT times do not.
TEST(VqTimes, NeedOnlyTheVuLibrary) {
    TestProgram p{"de-DE"};
    const auto only = p.dir.path() / "only-vu";
    std::filesystem::create_directory(only);
    std::filesystem::create_symlink(
        std::filesystem::path(QUMBREL_BIN_DIR) / "libDllVUFileAccess.so",
        only / "libDllVUFileAccess.so");
    ::setenv("QUMBREL_RECLIB_PATH", only.c_str(), 1);
    DateTimeTexts t;
    VQGetDateTime(*p, 1173441903, 1, t);
    EXPECT_EQ(t.dateTime, "09.03.2007 12:05:03.125");
    try {
        VTGetDateTime(*p, 1173441903, 1, t);
        ADD_FAILURE() << "the VT library is not there";
    } catch (const VbError& e) {
        EXPECT_EQ(e.number(), 53);
    }
    ::unsetenv("QUMBREL_RECLIB_PATH");
}

}  // namespace
}  // namespace qumbrel
