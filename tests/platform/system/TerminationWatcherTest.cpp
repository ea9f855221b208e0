#include "platform/system/TerminationWatcher.h"

#include "platform/systemd/SdEventRunLoop.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>

namespace korvex::platform::system {
namespace {

using namespace std::chrono_literals;

TEST(TerminationWatcher, SignalsAreToldOnceInTheEventLoop) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(signal);
        systemd::SdEventRunLoop loop;
        TerminationWatcher watcher(loop);
        int count = 0;
        const auto requests = watcher.requested().connect([&] { ++count; });
        ::raise(signal);
        ::raise(signal);
        ::raise(SIGTERM);
        EXPECT_EQ(count, 0) << "not within the handler";
        EXPECT_TRUE(loop.runUntil([&] { return count == 1; }, 5s));
        ::raise(SIGTERM);
        EXPECT_FALSE(loop.runUntil([&] { return count > 1; }, 10ms))
            << "what is being stored is stored once";
    }
}

TEST(TerminationWatcher, ASignalAfterItsEndEndsTheProgram) {
    const auto child = ::fork();
    if (child == 0) {
        systemd::SdEventRunLoop loop;
        std::optional<TerminationWatcher> watcher(std::in_place, loop);
        watcher.reset();
        ::raise(SIGTERM);
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
}

TEST(TerminationWatcher, WhoIsStartedWithASignalIgnoredKeepsIgnoringIt) {
    ::signal(SIGHUP, SIG_IGN);
    {
        systemd::SdEventRunLoop loop;
        const TerminationWatcher watcher(loop);
        ::raise(SIGHUP);
    }
    EXPECT_EQ(::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

} // namespace
} // namespace korvex::platform::system
