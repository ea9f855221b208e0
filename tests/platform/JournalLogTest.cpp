#include "platform/systemd/JournalLog.h"

#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace korvex::platform::systemd {
namespace {

using base::LogLevel;

TEST(JournalLog, FallsBackWhereThereIsNoJournal) {
    const tests::TemporaryFolder folder;
    tests::RecordingLog fallback;
    JournalLog log(fallback, folder / "socket");
    log.write(LogLevel::notice, "store", "opened");
    const auto lines = fallback.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines.front().level, LogLevel::notice);
    EXPECT_EQ(lines.front().category, "store");
    EXPECT_EQ(lines.front().message, "opened");

    base::StandardErrorLog choosy(LogLevel::error);
    EXPECT_FALSE(JournalLog(choosy, folder / "socket").accepts(LogLevel::warning));
    EXPECT_TRUE(JournalLog(choosy, folder / "socket").accepts(LogLevel::error));
}

TEST(JournalLog, LeavesEverythingToTheJournalWhereThereIsOne) {
    const tests::TemporaryFolder folder;
    std::ofstream(folder / "socket").flush();
    tests::RecordingLog fallback;
    JournalLog log(fallback, folder / "socket");
    log.write(LogLevel::debug, "test", "The journal takes lines with %s and\nbreaks as they are");
    EXPECT_TRUE(fallback.lines().empty());
    EXPECT_TRUE(log.accepts(LogLevel::debug));
}

} // namespace
} // namespace korvex::platform::systemd
