#pragma once

#include "base/Signal.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <filesystem>

namespace korvex::platform::qt {

/// Notices that a store may have changed, whoever changed it, by the store's lock file, which every
/// commit rewrites. What it says is a hint: who gets it refreshes its context. Main thread.
class StoreWatcher final : public QObject {
    Q_OBJECT

public:
    explicit StoreWatcher(const std::filesystem::path& storeFile);

    /// Somebody else says the same: it is announced together with what is noticed here.
    void hint() { announceSoon(); }

    /// Emitted once for changes that come close together, some milliseconds after the first.
    base::Signal<>& changed() { return m_changed; }

private:
    void watchLockFile();
    void announceSoon();

    QString m_lockFile;
    QFileSystemWatcher m_files;
    QTimer m_announcement;
    /// For file systems that tell nobody of changes, such as network shares.
    QTimer m_safety;
    base::Signal<> m_changed;
};

} // namespace korvex::platform::qt
