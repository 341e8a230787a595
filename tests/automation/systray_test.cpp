// The automatic form driven through its timers with a manual clock, with stand-in family
// functions in place of the recorder readers.
#include "automation/systray.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "pipeline/family_table.h"
#include "recorder/file_elements.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::read_file;
using qumbrel::testing::TestProgram;
using qumbrel::testing::write_file;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

namespace {

struct Tray : ::testing::Test {
    TestProgram p;
    std::string in = p->program_file("in"), out = p->program_file("out"),
                done = p->program_file("done");
    Lines converted;  // sources the generator was called for, in order

    void SetUp() override {
        for (const auto& d : {in, out}) fs::create_directories(d);
        p->opt.sourcepath = in;
        p->opt.targetpath = p->opt.targetpathRaw = out;
        p->opt.targetpathsourcefile = p->opt.targetpathsourcefileRaw = done;
        auto& vt = family_table(*p).vt;
        vt.typeCheck = nullptr;  // the stand-in sources are no VT files
        vt.fileElements = [](Program&, const std::string&) {};
        // Like a reader, the stand-in fails on a source that is gone.
        vt.convertCSVXLS = [this](Program&, const std::string& src, const std::string& base, Flag) {
            converted.push_back(src);
            if (!fs::exists(src)) return 1;
            write_file(base + ".tmp", "report of " + src);
            return 0;
        };
    }
    void source(const std::string& rel) {
        fs::create_directories(fs::path(in + "/" + rel).parent_path());
        write_file(in + "/" + rel, "recorder bytes");
    }
    void at(int hour, int minute, std::int64_t steadyMs, frm_systray* form = nullptr) {
        p.clock.set({2024, 1, 8, hour, minute, 30});
        p.clock.advance_ms(steadyMs - p.clock.steady_ms());
        if (form) form->tick();
    }
    std::string error_log() { return read_file(p->program_file("error.log")); }
};

}  // namespace

TEST_F(Tray, MissingSourceFolderStopsTheLoad) {
    p->opt.sourcepath = p->program_file("nowhere");
    p->opt.language = "english.lng";
    frm_systray form(*p);
    EXPECT_FALSE(form.form_load());
    // The catalogue comes first: a bare language file name lies in the program folder.
    EXPECT_EQ(p->opt.language, p->program_file("english.lng"));
    EXPECT_NE(error_log().find("abgebrochen!!\r\nBitte \xC3\x84ndern Sie"), std::string::npos)
        << error_log();
    EXPECT_EQ(form.next_due_ms(), std::numeric_limits<std::int64_t>::max());
}

TEST_F(Tray, FiveSecondKindFirstFiresAfterFiveSeconds) {
    source("a.ogd");
    p->opt.sheduler = 6;
    frm_systray form(*p);
    ASSERT_TRUE(form.form_load());
    EXPECT_EQ(form.next_due_ms(), 5000);
    at(10, 0, 4999, &form);
    EXPECT_EQ(form.totals().cycles, 0);
    at(10, 0, 5000, &form);
    EXPECT_EQ(form.totals().cycles, 1);
    EXPECT_TRUE(fs::exists(out + "/a.csv") && fs::exists(done + "/a.ogd"));
    EXPECT_EQ(form.next_due_ms(), 10000);
}

TEST_F(Tray, BothTimersInTheFiringMinuteRunTwoCycles) {
    source("x/b.ogd");
    source("a.ogd");
    p->opt.sheduler = 1;
    p->opt.hour = "10";
    p->opt.minute = "30";
    at(10, 29, 0);
    frm_systray form(*p);
    ASSERT_TRUE(form.form_load());
    at(10, 29, 60000, &form);  // a minute that does not fire
    EXPECT_EQ(form.totals().cycles, 0);
    at(10, 30, 120000, &form);
    EXPECT_EQ(form.totals().cycles, 2);
    // The first cycle converted both, deepest first, into the same subfolders; the second
    // found nothing left.
    EXPECT_EQ(converted, (Lines{in + "/x/b.ogd", in + "/a.ogd"}));
    EXPECT_TRUE(fs::exists(out + "/x/b.csv") && fs::exists(done + "/x/b.ogd"));
    EXPECT_EQ(form.totals().failures, 0);
    // Scan lines in the event log only in a service run.
    EXPECT_TRUE(p.events.entries.empty());
    at(10, 31, 180000, &form);
    EXPECT_EQ(form.totals().cycles, 2);
}

TEST_F(Tray, AFileListedTwiceIsGoneForTheSecondConversion) {
    source("a.ogd");
    frm_systray form(*p);
    form.scan = [](Program& ctx, Lines& list) {
        list.clear();
        fkt_readSubfolder(ctx, "*.OGD", list);
        fkt_readSubfolder(ctx, "A", list);
        return !list.empty();
    };
    form.run_cycle();
    // Gone by the second entry: skipped, not failed.
    EXPECT_EQ(converted, (Lines{in + "/a.ogd"}));
    EXPECT_EQ(form.totals().conversions, 2);
    EXPECT_EQ(form.totals().failures, 0);
    EXPECT_EQ(read_file(out + "/a.csv"), "report of " + in + "/a.ogd");
    EXPECT_EQ(read_file(done + "/a.ogd"), "recorder bytes");
}

TEST_F(Tray, LoadErrorIsReportedAndLeavesThePlatformTimerOff) {
    p->opt.sheduler = 1;
    p->opt.hour = "ten";
    frm_systray form(*p);
    ASSERT_TRUE(form.form_load());
    EXPECT_FALSE(form.platform_timer_running());
    EXPECT_EQ(form.next_due_ms(), 60000);  // tm_scanminute still runs
    EXPECT_NE(error_log().find("sub_formLoad of Formular frm_systray"), std::string::npos);
}
