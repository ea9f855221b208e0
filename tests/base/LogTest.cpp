#include "base/Log.h"

#include "support/RecordingLog.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace korvex::base {
namespace {

TEST(StandardErrorLog, WritesWholeLinesFromItsLevelOn) {
    StandardErrorLog sink(LogLevel::warning);
    const Logger log(sink, "entries");
    ::testing::internal::CaptureStderr();
    log.info("too fine");
    log.warning("kept");
    log.error("kept too");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "korvex [entries] kept\nkorvex [entries] kept too\n");
    EXPECT_FALSE(log.accepts(LogLevel::notice));
    EXPECT_TRUE(log.accepts(LogLevel::error));
}

TEST(RecordingLog, FailsATestForErrorsThatItDidNotExpect) {
    EXPECT_NONFATAL_FAILURE(
        {
            tests::RecordingLog log;
            log.expectError("disk full");
            Logger(log, "store").error("disk full: 0 bytes left");
            Logger(log, "store").error("disk failed");
        },
        "disk failed");
    EXPECT_NONFATAL_FAILURE(
        {
            tests::RecordingLog log;
            log.expectError("disk full");
            Logger(log, "store").warning("disk full");
        },
        "missing error in the log: disk full");
}

} // namespace
} // namespace korvex::base
