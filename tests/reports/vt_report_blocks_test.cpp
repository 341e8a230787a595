// The VT report read in blocks of any size is the report read in one: block edges one
// before, at and one after the sample count, a time window that opens in one block and
// closes in the next, the open line of an event file with one channel, a damaged file and
// a file cut short.
#include <gtest/gtest.h>

#include <filesystem>

#include "recorder/sample_cursor.h"
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Kind;
using test::Keys;

struct BlockCase {
    const char* what;
    Kind kind;
    Keys file, user;
    bool damaged = false;
    std::size_t cutBytes = 0;  // bytes taken off the end of the file
    Flag interactive = kFalse;
};

// The report of `s` converted in a fresh run with the given block size.
std::string report(const BlockCase& s, std::size_t block, int& errors) {
    test::VtReportFixture f("en-US");
    f.options(s.file, s.user);
    f.p->state<SampleBlockSetting>().samples = block;
    const std::string src = f.make(test::vt_sim(s.kind, 3, 12), "a.oge", s.damaged);
    if (s.cutBytes > 0)
        std::filesystem::resize_file(src, std::filesystem::file_size(src) - s.cutBytes);
    const std::string bytes = f.convert(src, "r", s.interactive);
    errors = f.errors;
    return bytes;
}

}  // namespace

TEST(VtReportBlocks, EveryBlockSizeGivesTheReportOfOneBlock) {
    const Keys window{{"TimeSelect", "1"}, {"TimeStart", "10:00:03"}, {"TimeStop", "10:00:05"}};
    const std::vector<BlockCase> setups{
        {"event file, all channels", Kind::Event, {}, {}},
        {"event file, one channel: lines stay open", Kind::Event, {}, {{"Channels", "3"}}},
        {"display file", Kind::Display, {}, {}},
        {"display file as a sheet", Kind::Display, {{"targetformat", "1"}}, {}},
        {"time window across blocks", Kind::Event, {}, window},
        {"damaged, asked interactively", Kind::Event, {}, {}, true, 0, kTrue},
        {"file cut inside its samples", Kind::Event, {}, {}, false, 40, kTrue},
    };
    for (const BlockCase& s : setups) {
        SCOPED_TRACE(s.what);
        int wholeErrors = 0;
        const std::string whole = report(s, 1000, wholeErrors);
        ASSERT_FALSE(whole.empty());
        // 12 samples and the zero row: 13 rows in all.
        for (std::size_t block : {1u, 2u, 4u, 11u, 12u, 13u, 14u}) {
            SCOPED_TRACE(block);
            int errors = 0;
            EXPECT_EQ(report(s, block, errors), whole);
            EXPECT_EQ(errors, wholeErrors);
        }
    }
}

}  // namespace qumbrel

namespace qumbrel {

// A value the reader cannot place behind its decimals (30 of them): the reader's own error,
// under its name and step, ends the report as failed, in blocks as in one read.
TEST(VtReportBlocks, AValueTheReaderCannotConvertFailsTheReportUnderTheReadersName) {
    for (std::size_t block : {3u, 1000u}) {
        SCOPED_TRACE(block);
        test::VtReportFixture f("en-US");
        f.options();
        f.p->state<SampleBlockSetting>().samples = block;
        auto file = reclib::simulate(test::vt_sim(reclib::Kind::Event, 3, 12));
        file.channels[1].info.set("decimals", 30);
        const std::string src = f.p.dir.file("d30.oge");
        std::string error;
        ASSERT_TRUE(reclib::write_file(file, src, {}, &error)) << error;
        f.convert(src, "r");
        EXPECT_EQ(f.errors, 1);
        const std::string log = f.error_log();
        EXPECT_NE(log.find("VTGetMeasData()"), std::string::npos) << log;
        EXPECT_EQ(log.find("Subscript out of range: samples"), std::string::npos) << log;
    }
}

}  // namespace qumbrel
