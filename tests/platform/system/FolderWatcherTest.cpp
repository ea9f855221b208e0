#include "platform/system/FolderWatcher.h"

#include "platform/systemd/SdEventRunLoop.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace korvex::platform::system {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

TEST(FolderWatcher, FilesAreNoticedInAFolderThatComesAndGoesAndOthersAreNot) {
    const tests::TemporaryFolder folder;
    const auto watched = folder / "share" / "korvex";
    systemd::SdEventRunLoop loop;
    FolderWatcher watcher(loop, watched, {"store", "store.lock"});
    int changes = 0;
    const auto counting = watcher.changed().connect([&] { ++changes; });
    const auto isNoticed = [&](std::chrono::milliseconds limit = 5s) {
        const auto before = changes;
        return loop.runUntil([&] { return changes > before; }, limit);
    };
    fs::create_directories(watched); // at one go, before anybody can look at the first of them
    std::ofstream(watched / "store") << "new";
    EXPECT_TRUE(isNoticed());
    isNoticed(20ms);

    std::ofstream(watched / "store-wal") << "a journal";
    { const std::fstream opened(watched / "store", std::ios::in | std::ios::out); }
    EXPECT_FALSE(isNoticed(50ms)) << "nobody has written it";
    std::ofstream(watched / "store.lock", std::ios::app) << "a revision";
    EXPECT_TRUE(isNoticed());
    fs::rename(watched / "store", watched / "store.old");
    EXPECT_TRUE(isNoticed());

    fs::rename(watched, folder / "former");
    EXPECT_TRUE(isNoticed());
    std::ofstream(folder / "former" / "store") << "not here any more";
    EXPECT_FALSE(isNoticed(50ms));
    fs::create_directories(watched);
    isNoticed(20ms);
    std::ofstream(watched / "store") << "another";
    EXPECT_TRUE(isNoticed());
    fs::remove_all(folder / "share");
    EXPECT_TRUE(isNoticed());
    fs::create_directories(watched);
    std::ofstream(watched / "store") << "and another";
    EXPECT_TRUE(isNoticed());
}

} // namespace
} // namespace korvex::platform::system
