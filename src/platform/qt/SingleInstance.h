#pragma once

#include "base/FileDescriptor.h"
#include "base/FileLock.h"
#include "base/Signal.h"

#include <QObject>

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

class QSocketNotifier;

namespace korvex::platform::qt {

/// One desktop app per data folder: the first one takes the folder's name, a later one asks it to
/// come forward and ends. A plain socket does that; what Qt knows of networks would load a dozen
/// libraries at each start. Whose the name is says a lock beside it, which the system ends with the
/// program: a socket that a killed one has left is known by that. Main thread; only `listen` needs
/// the application.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    explicit SingleInstance(const std::filesystem::path& dataDirectory);
    ~SingleInstance() override;

    /// Tells a running app of this folder to show itself. Where there is none, false: this is the
    /// first one, of several that start at the same moment too, and what later ones ask waits until
    /// it listens. False as well where one runs that does not answer; it keeps the name.
    bool raiseRunning();
    /// Tells of what was asked and will be.
    void listen();
    /// Later starts are not told any more: one of them is the first one.
    void close();

    base::Signal<>& raiseRequested() { return m_raiseRequested; }

private:
    enum class Answer { given, none, nobodyThere };
    Answer askRunning() const;
    /// False where somebody else has it.
    bool takeName();
    void takeRequests();
    /// The file that has the name now, whoever made it.
    std::pair<dev_t, ino_t> fileThere() const;

    std::filesystem::path m_file;
    /// Held by whoever has the name; absent where that is not this one.
    std::optional<base::FileLock> m_lock;
    /// The one that this object listens at.
    std::pair<dev_t, ino_t> m_own;
    base::FileDescriptor m_socket;
    /// Null until it listens.
    std::unique_ptr<QSocketNotifier> m_notifier;
    base::Signal<> m_raiseRequested;
};

} // namespace korvex::platform::qt
