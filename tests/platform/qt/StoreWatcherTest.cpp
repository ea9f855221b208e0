#include "platform/qt/StoreWatcher.h"

#include "ui/WindowFixture.h"

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

} // namespace
} // namespace korvex::platform::qt
