#pragma once

#include "base/FileDescriptor.h"
#include "base/Signal.h"

#include <QObject>

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <utility>

class QSocketNotifier;

namespace korvex::platform::qt {

/// One desktop app per data folder: the first one listens, a later one asks it to come forward and
/// ends. A plain socket does that; what Qt knows of networks would load a dozen libraries at each
/// start. Main thread; only `listen` needs the application.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    explicit SingleInstance(const std::filesystem::path& dataDirectory);
    ~SingleInstance() override;

    /// Tells a running app of this folder to show itself; false when there is none.
    bool raiseRunning() const;
    /// From now on later starts are told of this one.
    void listen();
    /// Later starts are not told any more: each is a first one.
    void close();

    base::Signal<>& raiseRequested() { return m_raiseRequested; }

private:
    void takeRequests();
    /// The file that has the name now, whoever made it.
    std::pair<dev_t, ino_t> fileThere() const;

    std::filesystem::path m_file;
    /// The one that this object listens at.
    std::pair<dev_t, ino_t> m_own;
    base::FileDescriptor m_socket;
    /// Null until it listens.
    std::unique_ptr<QSocketNotifier> m_notifier;
    base::Signal<> m_raiseRequested;
};

} // namespace korvex::platform::qt
