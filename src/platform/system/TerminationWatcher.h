#pragma once

#include "base/FileDescriptor.h"
#include "base/RunLoop.h"
#include "base/Signal.h"

#include <memory>

namespace korvex::platform::system {

/// Notices that the program is asked to end from outside: SIGTERM, SIGINT and SIGHUP, as a log-out,
/// a shutdown or a terminal that closes send them. What it says is said in the run loop, where
/// there is time to store what was typed. It is said once: who asks again, as a session that ends
/// does with several signals at a time, waits for what is being stored; only SIGKILL does not. At
/// most one of them at a time. Main thread.
class TerminationWatcher final {
public:
    explicit TerminationWatcher(base::RunLoop& runLoop);
    ~TerminationWatcher();
    TerminationWatcher(const TerminationWatcher&) = delete;
    TerminationWatcher& operator=(const TerminationWatcher&) = delete;

    base::Signal<>& requested() { return m_requested; }

private:
    base::FileDescriptor m_reading;
    base::FileDescriptor m_writing;
    std::unique_ptr<base::RunLoop::Watch> m_watch;
    base::Signal<> m_requested;
};

} // namespace korvex::platform::system
