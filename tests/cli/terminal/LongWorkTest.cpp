#include "cli/terminal/LongWork.h"

#include <gtest/gtest.h>

#include <csignal>

namespace korvex::cli {
namespace {

TEST(LongWork, ASignalToEndStopsItAtTheNextGoodPlaceUnlessItIsTooLate) {
    ::signal(SIGHUP, SIG_IGN); // as under nohup
    for (const auto signal : {SIGINT, SIGTERM, SIGHUP}) {
        LongWork longWork(-1);
        auto& work = longWork.work();
        work.begin(storage::Stage::writing, 100);
        ::raise(signal);
        const auto goOn = [&] {
            for (int i = 0; i < 3; ++i) {
                work.advance(1);
            }
        };
        if (signal == SIGHUP) {
            EXPECT_NO_THROW(goOn());
        } else {
            EXPECT_THROW(goOn(), storage::Cancelled) << signal;
        }
    }
    {
        LongWork longWork(-1);
        longWork.work().beginForGood(storage::Stage::replacing, 100);
        ::raise(SIGINT);
        EXPECT_NO_THROW(longWork.work().advance(100));
        EXPECT_NO_THROW(longWork.work().begin(storage::Stage::checking));
    }
    EXPECT_EQ(::signal(SIGHUP, SIG_DFL), SIG_IGN);
    EXPECT_EQ(::signal(SIGINT, SIG_DFL), SIG_DFL);
}

} // namespace
} // namespace korvex::cli
