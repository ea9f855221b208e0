#pragma once

#include "base/Signal.h"

#include <QFileSystemWatcher>
#include <QObject>

#include <memory>

class QSocketNotifier;

namespace korvex::platform::qt {

/// Notices that the system's clock was set or its time zone changed. Main thread.
class SystemTimeWatcher final : public QObject {
    Q_OBJECT

public:
    SystemTimeWatcher();
    ~SystemTimeWatcher() override;

    base::Signal<>& changed() { return m_changed; }

private:
    void armTimer();

    int m_timer = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QFileSystemWatcher m_files;
    /// Which zone the machine's link names, and since when.
    QString m_zone;
    base::Signal<> m_changed;
};

} // namespace korvex::platform::qt
