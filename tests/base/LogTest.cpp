#include "base/Log.h"

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

} // namespace
} // namespace korvex::base
