// Stop signals read through the signalfd: a signal raised while blocked waits for the
// loop, ends the timer loop without a handler, and is not delivered after the stop.
#include "automation/stop_signals.h"

#include <gtest/gtest.h>
#include <signal.h>

#include "automation/automatic_run.h"
#include "automation/systray.h"
#include "tests/support/test_support.h"

using namespace qumbrel;
using qumbrel::testing::TestProgram;

TEST(StopSignals, RaisedSignalWaitsForTheLoopAndIsTakenThere) {
    {
        StopSignals signals;
        ASSERT_TRUE(signals.valid());
        EXPECT_FALSE(signals.pending());
        EXPECT_FALSE(signals.wait(20));  // nothing came: the wait times out
        ASSERT_EQ(raise(SIGTERM), 0);    // blocked: the process lives on
        EXPECT_TRUE(signals.pending());
        EXPECT_EQ(signals.signal_number(), SIGTERM);
        EXPECT_TRUE(signals.wait(-1));  // stays seen
        ASSERT_EQ(raise(SIGINT), 0);    // a second one, still queued at the end
    }
    // Both were taken before the mask was restored; reaching this line is the check.
    sigset_t blocked;
    ASSERT_EQ(sigprocmask(SIG_BLOCK, nullptr, &blocked), 0);
    EXPECT_FALSE(sigismember(&blocked, SIGTERM));
    EXPECT_FALSE(sigismember(&blocked, SIGINT));
}

TEST(StopSignals, TimerLoopEndsOnASignalAndWhenNoTimerRuns) {
    TestProgram p;
    p->opt.sourcepath = p->program_file("");
    frm_systray form(*p);
    ASSERT_TRUE(form.form_load());
    {
        StopSignals signals;
        ASSERT_EQ(raise(SIGINT), 0);
        EXPECT_TRUE(run_timer_loop(*p, form, signals));
    }
    form.stop_timers();
    StopSignals quiet;
    EXPECT_FALSE(run_timer_loop(*p, form, quiet));  // no timer left: nothing to wait for
    EXPECT_EQ(form.totals().cycles, 0);
}
