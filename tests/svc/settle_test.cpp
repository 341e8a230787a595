// The settle rule of qumbrel-svc: a file is ready once unchanged for the settle time and
// complete, or unchanged five times as long; a change starts it again, also after its
// conversion.
#include <gtest/gtest.h>

#include "tools/svc/settle.h"

namespace qumbrel {
namespace {

using namespace std::chrono_literals;
using Clock = SettleTracker::Clock;

TEST(Settle, ReadyWhenQuietAndCompleteOrQuietLonger) {
    SettleTracker t(100ms);
    const Clock::time_point t0{};
    bool whole = false;
    const auto complete = [&](const std::string&) { return whole; };
    t.observe("/in/a.oge", 10, 1, t0);
    t.observe("/in/b.oge", 10, 1, t0 + 20ms);
    EXPECT_TRUE(t.ready(t0 + 90ms, complete).empty());
    EXPECT_TRUE(t.ready(t0 + 200ms, complete).empty());  // quiet, but not whole yet
    t.observe("/in/a.oge", 20, 2, t0 + 300ms);           // it grows: the wait starts again
    EXPECT_EQ(t.ready(t0 + 520ms, complete), std::vector<std::string>{"/in/b.oge"});
    whole = true;
    EXPECT_EQ(t.ready(t0 + 420ms, complete),
              (std::vector<std::string>{"/in/b.oge", "/in/a.oge"}));  // oldest first
}

TEST(Settle, ConvertedOnceUnlessItChanges) {
    SettleTracker t(10ms);
    const Clock::time_point t0{};
    const auto whole = [](const std::string&) { return true; };
    t.observe("/in/a.oge", 10, 1, t0);
    ASSERT_EQ(t.ready(t0 + 20ms, whole).size(), 1u);
    t.done("/in/a.oge");
    t.observe("/in/a.oge", 10, 1, t0 + 30ms);  // kept where it was, unchanged
    EXPECT_TRUE(t.ready(t0 + 100ms, whole).empty());
    t.observe("/in/a.oge", 11, 3, t0 + 110ms);  // written again
    EXPECT_EQ(t.ready(t0 + 130ms, whole).size(), 1u);
    t.forget("/in/a.oge");
    EXPECT_EQ(t.watched(), 0u);
}

}  // namespace
}  // namespace qumbrel
