#include "platform/qt/QtRunLoop.h"

#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace korvex::platform::qt {
namespace {

TEST(QtRunLoop, WorkRunsOnTheMainThreadAndATimerCanBeCancelled) {
    QtRunLoop loop;
    std::vector<std::string> ran;
    loop.post([&] { ran.emplace_back("posted"); });
    auto cancelled = loop.callAfter(std::chrono::milliseconds(1), [&] { ran.emplace_back("no"); });
    const auto kept =
        loop.callAfter(std::chrono::milliseconds(5), [&] { ran.emplace_back("timer"); });
    EXPECT_TRUE(ran.empty()) << "not at once";
    cancelled.reset();
    EXPECT_TRUE(QTest::qWaitFor([&] { return ran.size() >= 2; }));
    EXPECT_EQ(ran, (std::vector<std::string>{"posted", "timer"}));
}

TEST(QtRunLoop, ATimerMayBeDestroyedByItsOwnWork) {
    QtRunLoop loop;
    std::unique_ptr<base::RunLoop::Timer> timer;
    bool ran = false;
    timer = loop.callAfter(std::chrono::milliseconds(1), [&] {
        timer.reset();
        ran = true;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return ran; }));
}

} // namespace
} // namespace korvex::platform::qt
