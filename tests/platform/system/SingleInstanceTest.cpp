#include "platform/system/SingleInstance.h"

#include "platform/systemd/SdEventRunLoop.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

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

    /// What one leaves that is killed.
    void leaveSocket() const {
        const auto killed = ::fork();
        if (killed == 0) {
            SingleInstance instance(m_data.path());
            ::_exit(instance.handOver({}) ? EXIT_FAILURE : EXIT_SUCCESS);
        }
        int status = 0;
        ::waitpid(killed, &status, 0);
        ASSERT_EQ(status, 0);
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

TEST_F(SingleInstanceTest, WhoRunsKeepsThePlaceAlsoWhileItDoesNotAnswer) {
    SingleInstance busy(m_data.path());
    EXPECT_FALSE(busy.handOver({}));
    std::size_t asked = 0;
    while (SingleInstance(m_data.path()).handOver({})) {
        ASSERT_LT(++asked, 10'000U) << "somebody reads it";
    }
    {
        SingleInstance last(m_data.path());
        EXPECT_FALSE(last.handOver({})) << "which opens a window of its own";
        last.listen(m_loop);
    }
    follow(busy);
    EXPECT_TRUE(reaches(asked));
    EXPECT_TRUE(SingleInstance(m_data.path()).handOver({.action = "now"}));
    ASSERT_TRUE(reaches(asked + 1));
    EXPECT_EQ(m_launches.back().action, "now");
    busy.close();
    EXPECT_FALSE(SingleInstance(m_data.path()).handOver({})) << "nobody is there any more";
}

TEST_F(SingleInstanceTest, AnotherUsersSocketInItsPlaceIsGivenNothing) {
    SingleInstance first(m_data.path());
    EXPECT_FALSE(first.handOver({}));
    std::filesystem::path socket;
    for (const auto& each : std::filesystem::directory_iterator(m_runtime.path())) {
        socket = each.is_socket() ? each.path() : socket;
    }
    const auto elsewhere = m_runtime / "elsewhere";
    std::filesystem::rename(socket, elsewhere);
    std::filesystem::create_symlink(elsewhere, socket);
    EXPECT_FALSE(SingleInstance(m_data.path()).handOver({}))
        << "where a link leads, anybody may be";
    std::filesystem::rename(elsewhere, socket);
    EXPECT_TRUE(SingleInstance(m_data.path()).handOver({}));
    if (::geteuid() == 0) { // who else can give it to another user
        ASSERT_EQ(::chown(socket.c_str(), 1, 1), 0);
        EXPECT_FALSE(SingleInstance(m_data.path()).handOver({}));
    }
}

TEST_F(SingleInstanceTest, OfStartsAtTheSameMomentOneIsFirstAlsoWhereOneWasKilled) {
    constexpr std::size_t kStarts = 4;
    for (int round = 0; round < 50; ++round) {
        leaveSocket();
        std::vector<std::unique_ptr<SingleInstance>> starts(kStarts);
        std::atomic<int> first = 0;
        std::barrier together(kStarts);
        {
            std::vector<std::jthread> threads;
            for (auto& start : starts) {
                threads.emplace_back([&] {
                    start = std::make_unique<SingleInstance>(m_data.path());
                    together.arrive_and_wait();
                    first += start->handOver({}) ? 0 : 1;
                });
            }
        }
        EXPECT_EQ(first, 1);
    }
}

} // namespace
} // namespace korvex::platform::system
