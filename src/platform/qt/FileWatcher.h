#pragma once

#include "base/Signal.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <filesystem>

namespace korvex::platform::qt {

/// Notices that a small file may have been written, made, replaced or removed, whoever did. What it
/// says is a hint: who gets it reads the file again. The file's folder may be missing, and come and
/// go. Main thread.
class FileWatcher final : public QObject {
    Q_OBJECT

public:
    explicit FileWatcher(const std::filesystem::path& file);

    /// Emitted once for changes that come close together, some milliseconds after the first.
    base::Signal<>& changed() { return m_changed; }

private:
    void watch();

    QString m_file;
    QFileSystemWatcher m_files;
    QTimer m_announcement;
    base::Signal<> m_changed;
};

} // namespace korvex::platform::qt
