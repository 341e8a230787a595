// Readers whose library cannot be found: zero counts and error log lines, no crash. A
// process of its own, since a library once loaded stays findable by name.
#include <gtest/gtest.h>

#include <cstdlib>

#include "recorder/vt_reader.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

TEST(VtReaderWithoutLibrary, ZeroCountsAndAnErrorLogLine) {
    ::unsetenv("QUMBREL_RECLIB_PATH");
    testing::TestProgram p{"de-DE"};
    const std::string path = p.dir.file("any.oge");
    VTInfo info;
    VTGetInfo(*p, path, info);
    EXPECT_EQ(info.dataCount, 0);
    EXPECT_EQ(info.startTime, "");  // VtGetStartStop failed first
    FileInfoList list;
    fkt_ReadVTFileInfo(*p, list, path);
    ASSERT_FALSE(list.lines.empty());
    EXPECT_EQ(list.lines.front(), "File Type: \t");
    VTMeasData d;
    VTGetMeasData(*p, path, std::vector<std::string>{"1"}, 1, std::vector<std::int32_t>{0}, d,
                  kTrue);
    const std::string log = testing::read_file(p->program_file("error.log"));
    EXPECT_NE(log.find("VTGetInfo() ; Errorsource"), std::string::npos) << log;
    EXPECT_NE(log.find("Errornumber: 53;"), std::string::npos) << log;
    EXPECT_NE(log.find("libDllVTFileAccess32.so"), std::string::npos) << log;
    EXPECT_NE(log.find("VTGetMeasData()"), std::string::npos) << log;
}

}  // namespace
}  // namespace qumbrel
