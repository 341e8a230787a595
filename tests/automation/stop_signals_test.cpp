// Stop signals read through the signalfd: a signal raised while blocked waits for the
// loop and is not delivered after the stop (the automatic e2e test ends a run by SIGTERM).
#include "automation/stop_signals.h"

#include <gtest/gtest.h>
#include <signal.h>

using namespace qumbrel;

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
