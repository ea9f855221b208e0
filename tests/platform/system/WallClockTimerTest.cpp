#include "platform/system/WallClockTimer.h"

#include "base/Clock.h"
#include "platform/systemd/SdEventRunLoop.h"

#include <gtest/gtest.h>

namespace korvex::platform::system {
namespace {

using namespace std::chrono_literals;

TEST(WallClockTimer, FiresOnceAtItsMomentAndNeverBefore) {
    const base::SystemClock clock;
    systemd::SdEventRunLoop loop;
    int fired = 0;
    base::Instant at;
    WallClockTimer timer(loop, [&] {
        ++fired;
        at = clock.now();
    });
    const auto moment = clock.now() + 0.1;
    timer.set(clock.now() + 3600);
    timer.set(moment);
    EXPECT_TRUE(loop.runUntil([&] { return fired > 0; }, 5s));
    EXPECT_GE(at, moment);
    EXPECT_FALSE(loop.runUntil([&] { return fired > 1; }, 50ms));

    timer.set(base::Instant::distantPast());
    EXPECT_TRUE(loop.runUntil([&] { return fired == 2; }, 5s)) << "what has passed is now";
    timer.set(clock.now() + 0.05);
    timer.set(std::nullopt);
    timer.set(base::Instant::distantFuture());
    EXPECT_FALSE(loop.runUntil([&] { return fired > 2; }, 100ms));
}

} // namespace
} // namespace korvex::platform::system
