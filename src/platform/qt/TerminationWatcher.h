#pragma once

#include "base/FileDescriptor.h"
#include "base/Signal.h"

#include <QObject>

#include <memory>

class QSocketNotifier;

namespace korvex::platform::qt {

/// Notices that the program is asked to end from outside: SIGTERM, SIGINT and SIGHUP, as a log-out,
/// a shutdown or a terminal that closes send them. What it says is said in the event loop, where
/// there is time to store what was typed. It is said once: who asks again, as a session that ends
/// does with several signals at a time, waits for what is being stored; only SIGKILL does not. At
/// most one of them at a time. Main thread.
class TerminationWatcher final : public QObject {
    Q_OBJECT

public:
    TerminationWatcher();
    ~TerminationWatcher() override;

    base::Signal<>& requested() { return m_requested; }

private:
    base::FileDescriptor m_reading;
    base::FileDescriptor m_writing;
    std::unique_ptr<QSocketNotifier> m_notifier;
    base::Signal<> m_requested;
};

} // namespace korvex::platform::qt
