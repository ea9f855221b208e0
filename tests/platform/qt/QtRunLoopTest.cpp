#include "platform/qt/QtRunLoop.h"

#include "base/FileDescriptor.h"

#include <QTest>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

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

TEST(QtRunLoop, AWatchFollowsWhatIsOfInterestAndMayEndItself) {
    using Interest = base::RunLoop::Interest;
    QtRunLoop loop;
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const base::FileDescriptor reading(ends[0]);
    const base::FileDescriptor writing(ends[1]);
    int calls = 0;
    auto watch = loop.watch(reading.get(), Interest::reading, [&] { ++calls; });
    QTest::qWait(10);
    EXPECT_EQ(calls, 0) << "there is nothing to read";
    ASSERT_EQ(::write(writing.get(), "x", 1), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return calls > 1; })) << "again until it was read";
    watch->setInterest(Interest::nothing);
    const auto before = calls;
    QTest::qWait(10);
    EXPECT_EQ(calls, before);
    watch = loop.watch(writing.get(), Interest::both, [&] {
        watch.reset();
        ++calls;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return calls > before; }));
    QTest::qWait(10);
    EXPECT_EQ(calls, before + 1);
}

} // namespace
} // namespace korvex::platform::qt
