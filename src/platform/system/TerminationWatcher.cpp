#include "platform/system/TerminationWatcher.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>

namespace korvex::platform::system {

namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

/// All that the handler knows. A pipe rather than a signalfd: that needs the signals blocked, and
/// programs that are started from here would inherit that.
std::atomic<int> signalPipe = -1;

void tell(int) {
    const int before = errno;
    const char any = 0;
    [[maybe_unused]] const auto written = ::write(signalPipe.load(), &any, 1);
    errno = before;
}

void handle(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : kSignals) {
        struct sigaction before {};
        // Who starts a program with a signal ignored (nohup) wants it so.
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
            ::sigaction(signal, &action, nullptr);
        }
    }
}

} // namespace

TerminationWatcher::TerminationWatcher(base::RunLoop& runLoop) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    m_reading = base::FileDescriptor(ends[0]);
    m_writing = base::FileDescriptor(ends[1]);
    m_watch = runLoop.watch(m_reading.get(), base::RunLoop::Interest::reading, [this] {
        m_watch->setInterest(base::RunLoop::Interest::nothing);
        m_requested.emit();
    });
    signalPipe = m_writing.get();
    handle(tell);
}

TerminationWatcher::~TerminationWatcher() {
    if (m_watch) {
        handle(SIG_DFL);
        signalPipe = -1;
    }
}

} // namespace korvex::platform::system
