#include "platform/qt/FileWatcher.h"

namespace korvex::platform::qt {

namespace {

using namespace std::chrono_literals;

/// A file that is replaced is written beside its place first, locked and renamed.
constexpr auto kCoalescing = 50ms;

} // namespace

FileWatcher::FileWatcher(const std::filesystem::path& file)
    : m_file(QString::fromStdString(file.string())) {
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
    m_files.addPath(QString::fromStdString(file.parent_path().string()));
    watch();
}

void FileWatcher::watch() {
    // The file that was replaced is not watched any more. The folder does not tell of one that is
    // written in place, nor of what a symbolic link leads to.
    if (m_files.files().isEmpty()) {
        m_files.addPath(m_file);
    }
}

} // namespace korvex::platform::qt
