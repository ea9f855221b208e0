#include "platform/qt/FileWatcher.h"

#include <QFile>
#include <QFileInfo>

namespace korvex::platform::qt {

namespace {

using namespace std::chrono_literals;

/// A file that is replaced is written beside its place first, locked and renamed.
constexpr auto kCoalescing = 50ms;

} // namespace

FileWatcher::FileWatcher(const std::filesystem::path& file)
    : m_file(QFile::decodeName(file.c_str())) {
    m_announcement.setSingleShot(true);
    m_announcement.setInterval(kCoalescing);
    connect(&m_announcement, &QTimer::timeout, this, [this] {
        watch();
        m_changed.emit();
    });
    const auto announceSoon = [this] {
        if (!m_announcement.isActive()) {
            m_announcement.start();
        }
    };
    connect(&m_files, &QFileSystemWatcher::fileChanged, this, announceSoon);
    connect(&m_files, &QFileSystemWatcher::directoryChanged, this, announceSoon);
    watch();
}

void FileWatcher::watch() {
    // The file that was replaced is not watched any more. The folder does not tell of one that is
    // written in place, nor of what a symbolic link leads to.
    if (m_files.files().isEmpty()) {
        m_files.addPath(m_file);
    }
    // Nor is a folder that was removed: until it is made anew, its nearest one above tells of that.
    auto folder = QFileInfo(m_file).path();
    while (!QFileInfo::exists(folder) && !QFileInfo(folder).isRoot()) {
        folder = QFileInfo(folder).path();
    }
    if (const auto watched = m_files.directories(); watched != QStringList(folder)) {
        if (!watched.isEmpty()) {
            m_files.removePaths(watched);
        }
        m_files.addPath(folder);
    }
}

} // namespace korvex::platform::qt
