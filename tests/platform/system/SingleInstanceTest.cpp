#include "platform/system/SingleInstance.h"

#include "platform/systemd/SdEventRunLoop.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

namespace korvex::platform::system {
namespace {

using namespace std::chrono_literals;

class SingleInstanceTest : public ::testing::Test {
protected:
    void follow(SingleInstance& instance) {
        m_following = instance.launched().connect(
            [this](const app::Launch& launch) { m_launches.push_back(launch); });
        instance.listen(m_loop);
    }
    bool reaches(std::size_t count) {
        return m_loop.runUntil([&] { return m_launches.size() >= count; }, 5s);
    }

    tests::TemporaryFolder m_runtime;
    tests::TemporaryFolder m_data;
    tests::ScopedEnvironment m_folder{"XDG_RUNTIME_DIR", m_runtime.path()};
    systemd::SdEventRunLoop m_loop;
    std::vector<app::Launch> m_launches;
    base::Subscription m_following;
};

TEST_F(SingleInstanceTest, LaterStartsHandOverWhatTheyWereStartedFor) {
    SingleInstance first(m_data.path());
    EXPECT_FALSE(first.handOver({})) << "nobody runs yet";
    const std::vector<app::Launch> launches{
        {}, {.links = {"korvex://board/inbox", "ö\n"}, .token = "x_TIME1"}, {.action = "a"}};
    for (const auto& launch : launches) {
        EXPECT_TRUE(SingleInstance(m_data.path()).handOver(launch)) << "also before it listens";
    }
    SingleInstance other(m_data / "other");
    EXPECT_FALSE(other.handOver({})) << "of another folder";
    follow(first);
    ASSERT_TRUE(reaches(launches.size()));
    EXPECT_EQ(m_launches, launches);
    const app::Launch huge{.links = std::vector<std::string>(1000, std::string(100, 'x'))};
    EXPECT_TRUE(SingleInstance(m_data.path()).handOver(huge));
    ASSERT_TRUE(reaches(4));
    EXPECT_EQ(m_launches.back(), app::Launch()) << "it comes forward at least";
}

TEST_F(SingleInstanceTest, ThePlaceIsTakenFromAKilledOneAndStaysWithWhoTookItLast) {
    const auto child = ::fork();
    if (child == 0) {
        SingleInstance killed(m_data.path());
        killed.handOver({});
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
    std::optional<SingleInstance> slow(std::in_place, m_data.path());
    EXPECT_FALSE(slow->handOver({}));
    // Nothing takes what waits there: after some starts it counts as one that hangs.
    std::optional<SingleInstance> last;
    for (int i = 0; i < 2000; ++i) {
        last.emplace(m_data.path());
        if (!last->handOver({})) {
            break;
        }
    }
    slow.reset();
    follow(*last);
    EXPECT_TRUE(SingleInstance(m_data.path()).handOver({.action = "now"}));
    ASSERT_TRUE(reaches(1));
    EXPECT_EQ(m_launches.front().action, "now");
}

TEST_F(SingleInstanceTest, OfManyStartsAtATimeOneIsFirst) {
    std::vector<std::unique_ptr<SingleInstance>> starts;
    for (int i = 0; i < 8; ++i) {
        starts.push_back(std::make_unique<SingleInstance>(m_data.path()));
    }
    std::atomic<int> first = 0;
    {
        std::vector<std::jthread> threads;
        for (auto& start : starts) {
            threads.emplace_back([&] { first += start->handOver({}) ? 0 : 1; });
        }
    }
    EXPECT_EQ(first, 1);
}

TEST_F(SingleInstanceTest, WhatIsNoLaunchIsLeftAside) {
    for (const auto* message : {"raise", "l", "lkorvex://x"}) {
        EXPECT_FALSE(app::Launch::decode(message)) << message;
    }
    EXPECT_FALSE(app::Launch::decode(std::string_view("\0l", 2)));
    const auto later = app::Launch::decode(std::string_view("znew\0aquick\0", 12));
    EXPECT_EQ(later, (app::Launch{.action = "quick"}));
}

} // namespace
} // namespace korvex::platform::system
