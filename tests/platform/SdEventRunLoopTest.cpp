#include "platform/systemd/SdEventRunLoop.h"

#include "base/FileDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace korvex::platform::systemd {
namespace {

using namespace std::chrono_literals;
using Interest = base::RunLoop::Interest;

struct Pipe {
    Pipe() {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        reading = base::FileDescriptor(ends[0]);
        writing = base::FileDescriptor(ends[1]);
    }
    base::FileDescriptor reading;
    base::FileDescriptor writing;
};

TEST(SdEventRunLoop, WorkOfAnyThreadAndTimersRunInOrderUntilItQuits) {
    SdEventRunLoop loop;
    std::vector<std::string> ran;
    auto cancelled = loop.callAfter(1ms, [&] { ran.emplace_back("no"); });
    const auto last = loop.callAfter(30ms, [&] {
        ran.emplace_back("late");
        loop.quit();
    });
    std::unique_ptr<base::RunLoop::Timer> early;
    early = loop.callAfter(5ms, [&] {
        early.reset();
        ran.emplace_back("early");
    });
    std::jthread other([&] { loop.post([&] { ran.emplace_back("posted"); }); });
    other.join();
    cancelled.reset();
    EXPECT_TRUE(ran.empty()) << "not at once";
    loop.run();
    EXPECT_EQ(ran, (std::vector<std::string>{"posted", "early", "late"}));
}

TEST(SdEventRunLoop, AWatchFollowsWhatIsOfInterestAndMayEndItself) {
    SdEventRunLoop loop;
    const Pipe pipe;
    int calls = 0;
    std::unique_ptr<base::RunLoop::Watch> watch;
    watch = loop.watch(pipe.reading.get(), Interest::reading, [&] { ++calls; });
    EXPECT_FALSE(loop.runUntil([&] { return calls > 0; }, 20ms)) << "there is nothing to read";
    ASSERT_EQ(::write(pipe.writing.get(), "x", 1), 1);
    EXPECT_TRUE(loop.runUntil([&] { return calls > 1; }, 5s)) << "again until it was read";
    watch->setInterest(Interest::nothing);
    const auto before = calls;
    EXPECT_FALSE(loop.runUntil([&] { return calls > before; }, 20ms));

    watch = loop.watch(pipe.writing.get(), Interest::writing, [&] {
        watch.reset();
        ++calls;
    });
    EXPECT_TRUE(loop.runUntil([&] { return calls > before; }, 5s));
    EXPECT_FALSE(loop.runUntil([&] { return calls > before + 1; }, 20ms));
}

TEST(SdEventRunLoop, WhatWorkThrowsIsThrownByTheRunAndTheRestGoesOn) {
    SdEventRunLoop loop;
    bool isLater = false;
    loop.post([] { throw std::runtime_error("broken"); });
    loop.post([&] { isLater = true; });
    EXPECT_THROW(loop.run(), std::runtime_error);
    EXPECT_TRUE(loop.runUntil([&] { return isLater; }, 5s));
}

} // namespace
} // namespace korvex::platform::systemd
