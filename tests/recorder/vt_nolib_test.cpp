// The VT reader when its library cannot be found: zero counts and error log lines, no
// crash. A process of its own, since a library once loaded stays findable by name.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

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

}  // namespace
}  // namespace qumbrel
