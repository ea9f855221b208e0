#include "app/Launch.h"

#include <gtest/gtest.h>

namespace korvex::app {
namespace {

TEST(Launch, WhatIsNoLaunchIsLeftAside) {
    for (const auto* message : {"raise", "l", "lkorvex://x"}) {
        EXPECT_FALSE(Launch::decode(message)) << message;
    }
    EXPECT_FALSE(Launch::decode(std::string_view("\0l", 2)));
    const auto later = Launch::decode(std::string_view("znew\0aquick\0", 12));
    EXPECT_EQ(later, (Launch{.action = "quick"}));
    const Launch huge{.action = "quick", .token = std::string(kLongestToken + 1, 'x')};
    EXPECT_EQ(Launch::decode(huge.encoded()), later) << "no desktop gives such a token";
}

} // namespace
} // namespace korvex::app
