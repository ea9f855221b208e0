#include "platform/system/SystemTimeWatcher.h"

#include "platform/systemd/SdEventRunLoop.h"
#include "support/FakeRunLoop.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace korvex::platform::system {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

TEST(SystemTimeWatcher, AnotherZoneIsNoticedHoweverItIsSetAndOtherFilesAreNot) {
    const tests::TemporaryFolder folder;
    const auto link = folder / "localtime";
    fs::create_symlink("/zone/Berlin", link);
    systemd::SdEventRunLoop loop;
    SystemTimeWatcher watcher(loop, link);
    int changes = 0;
    const auto counting = watcher.changed().connect([&] { ++changes; });
    const auto isNoticed = [&] {
        const auto before = changes;
        return loop.runUntil([&] { return changes > before; }, 5s);
    };
    fs::create_symlink("/zone/Lisbon", folder / "new");
    fs::rename(folder / "new", link);
    EXPECT_TRUE(isNoticed());
    fs::remove(link);
    EXPECT_TRUE(isNoticed());
    std::ofstream(link) << "a zone";
    EXPECT_TRUE(isNoticed());

    const auto before = changes;
    std::ofstream(folder / "hosts") << "other";
    EXPECT_FALSE(loop.runUntil([&] { return changes > before; }, 20ms));
}

TEST(SystemTimeWatcher, AFolderThatIsMissingIsNoReasonToFail) {
    tests::FakeRunLoop loop;
    const SystemTimeWatcher watcher(loop, "/nowhere/localtime");
    EXPECT_EQ(loop.watchCount(), 1U) << "the clock is watched all the same";
}

} // namespace
} // namespace korvex::platform::system
