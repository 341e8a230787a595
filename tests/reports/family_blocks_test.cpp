// The reports of the VU, VQ, KL and HN families read in blocks of any size are the report
// read in one: block edges around the sample count, display and event files, a time
// window across blocks, times rebuilt within one second (VU, HN), as CSV and as a sheet.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "reclib/writer.h"
#include "recorder/sample_cursor.h"
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Family;
using reclib::Kind;
using test::Keys;

struct FamilySetup {
    const char* what;
    Family family;
    Kind kind;
    Keys file, user;
    bool oneSecond = false;  // every sample in the same second
};

std::string report(const FamilySetup& s, std::size_t block) {
    test::VtReportFixture f("en-US");
    f.generator = test::generator_of(s.family);
    f.options(s.file, s.user);
    f.p->state<SampleBlockSetting>().samples = block;
    auto o = test::vt_sim(s.kind, 3, 12);
    o.family = s.family;
    o.alarms = o.messages = 2;
    auto file = reclib::simulate(o);
    if (s.oneSecond) {
        file.seconds.assign(file.seconds.size(), file.seconds.front());
        file.ticks.assign(file.ticks.size(), 0);
    }
    const std::string src =
        f.p.dir.file("a" + std::string(reclib::default_extension(s.family, s.kind)));
    std::string error;
    EXPECT_TRUE(reclib::write_file(file, src, {}, &error)) << error;
    const std::string bytes = f.convert(src, "r");
    EXPECT_EQ(f.errors, 0);
    return bytes;
}

}  // namespace

TEST(FamilyReportBlocks, EveryBlockSizeGivesTheReportOfOneBlock) {
    const Keys window{{"TimeSelect", "1"}, {"TimeStart", "10:00:03"}, {"TimeStop", "10:00:05"}};
    const Keys sheet{{"targetformat", "1"}};
    const std::vector<FamilySetup> setups{
        {"VU event", Family::VU, Kind::Event, {}, {}},
        {"VU display as a sheet", Family::VU, Kind::Display, sheet, {}},
        {"VU times in one second", Family::VU, Kind::Event, {}, {}, true},
        {"VQ display", Family::VQ, Kind::Display, {}, {}},
        {"VQ event, time window", Family::VQ, Kind::Event, {}, window},
        {"KL event", Family::KL, Kind::Event, {}, {}},
        {"KL display as a sheet", Family::KL, Kind::Display, sheet, {}},
        {"HN", Family::HN, Kind::Event, {}, {}},
        {"HN times in one second", Family::HN, Kind::Event, {}, {}, true},
    };
    for (const FamilySetup& s : setups) {
        SCOPED_TRACE(s.what);
        const std::string whole = report(s, 1000);
        ASSERT_FALSE(whole.empty());
        for (std::size_t block : {1u, 2u, 11u, 12u, 13u, 14u}) {
            SCOPED_TRACE(block);
            EXPECT_TRUE(report(s, block) == whole);
        }
    }
}

}  // namespace qumbrel
