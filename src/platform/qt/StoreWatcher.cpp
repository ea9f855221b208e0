#include "platform/qt/StoreWatcher.h"

namespace korvex::platform::qt {

namespace {

using namespace std::chrono_literals;

/// Short enough that nobody sees it, long enough to take a burst of commits as one.
constexpr auto kCoalescing = 15ms;
/// A change must show within a second even where no notification works.
constexpr auto kSafetyInterval = 800ms;

} // namespace

StoreWatcher::StoreWatcher(const std::filesystem::path& storeFile)
    : m_lockFile(QString::fromStdString(storeFile.string() + ".lock")) {
    m_announcement.setSingleShot(true);
    m_announcement.setInterval(kCoalescing);
    connect(&m_announcement, &QTimer::timeout, this, [this] { m_changed.emit(); });

    connect(&m_files, &QFileSystemWatcher::fileChanged, this, [this] {
        // Someone may have replaced the file: then it is no longer watched.
        watchLockFile();
        announceSoon();
    });
    watchLockFile();

    m_safety.setTimerType(Qt::CoarseTimer);
    m_safety.setInterval(kSafetyInterval);
    connect(&m_safety, &QTimer::timeout, this, [this] {
        watchLockFile();
        m_changed.emit();
    });
    m_safety.start();
}

void StoreWatcher::watchLockFile() {
    if (m_files.files().isEmpty()) {
        m_files.addPath(m_lockFile);
    }
}

void StoreWatcher::announceSoon() {
    if (!m_announcement.isActive()) {
        m_announcement.start();
    }
}

} // namespace korvex::platform::qt
