#include "platform/qt/StoreWatcher.h"

#include "WindowFixture.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/SingleInstance.h"

namespace korvex::platform::qt {
namespace {

class StoreWatcherTest : public tests::WindowFixture {};

TEST_F(StoreWatcherTest, ACommitOfAnotherProgramIsNoticedWithoutABus) {
    StoreWatcher watcher(folder / "Primary.store");
    const auto refreshing = watcher.changed().connect([this] { own.context.refresh(); });
    tests::StoreClient program(folder / "Primary.store", log);
    program.entries.createTodos(
        {.contents = {"from outside"}, .board = *program.boards.inboxBoard(), .now = kNow});
    EXPECT_TRUE(QTest::qWaitFor([this] { return inbox->entries().size() == 1; }));
}

TEST_F(StoreWatcherTest, ABurstOfCommitsIsAnnouncedTogether) {
    StoreWatcher watcher(folder / "Primary.store");
    int announcements = 0;
    const auto counting = watcher.changed().connect([&] { ++announcements; });
    for (int i = 0; i < 50; ++i) {
        add({"todo " + std::to_string(i)});
    }
    QApplication::processEvents();
    EXPECT_TRUE(QTest::qWaitFor([&] { return announcements > 0; }));
    EXPECT_LT(announcements, 10);
}

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

TEST(SingleInstance, ASecondStartRaisesTheFirstAndAnotherFolderDoesNot) {
    const tests::TemporaryFolder runtime;
    const tests::TemporaryFolder data;
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime.path().string()));
    SingleInstance first(data.path());
    EXPECT_FALSE(first.raiseRunning()) << "nobody runs yet";
    first.listen();
    int raised = 0;
    const auto counting = first.raiseRequested().connect([&] { ++raised; });
    EXPECT_FALSE(SingleInstance(data / "other").raiseRunning());
    EXPECT_TRUE(SingleInstance(data.path()).raiseRunning());
    EXPECT_TRUE(QTest::qWaitFor([&] { return raised == 1; }));
}

} // namespace
} // namespace korvex::platform::qt
