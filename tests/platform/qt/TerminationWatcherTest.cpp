#include "platform/qt/TerminationWatcher.h"

#include <QTest>

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>

namespace korvex::platform::qt {
namespace {

TEST(TerminationWatcher, SignalsAreToldOnceInTheEventLoop) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(signal);
        TerminationWatcher watcher;
        int count = 0;
        const auto requests = watcher.requested().connect([&] { ++count; });
        ::raise(signal);
        ::raise(signal);
        ::raise(SIGTERM);
        EXPECT_EQ(count, 0) << "not within the handler";
        EXPECT_TRUE(QTest::qWaitFor([&] { return count == 1; }));
        ::raise(SIGTERM);
        QCoreApplication::processEvents();
        EXPECT_EQ(count, 1) << "what is being stored is stored once";
    }
}

TEST(TerminationWatcher, ASignalAfterItsEndEndsTheProgram) {
    const auto child = ::fork();
    if (child == 0) {
        std::optional<TerminationWatcher> watcher(std::in_place);
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
        const TerminationWatcher watcher;
        ::raise(SIGHUP);
    }
    EXPECT_EQ(::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

} // namespace
} // namespace korvex::platform::qt
