#include "platform/qt/SystemTimeWatcher.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSocketNotifier>

#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <limits>

namespace korvex::platform::qt {

namespace {

/// The zone is a link that is replaced, which only its folder tells of.
constexpr const char* kZoneFolder = "/etc";
constexpr const char* kZoneLink = "/etc/localtime";

QString zoneState() {
    const QFileInfo link(QString::fromLatin1(kZoneLink));
    return link.symLinkTarget() + link.lastModified().toString(Qt::ISODateWithMs);
}

} // namespace

SystemTimeWatcher::SystemTimeWatcher() : m_zone(zoneState()) {
    m_timer = ::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (m_timer >= 0) {
        m_notifier = std::make_unique<QSocketNotifier>(m_timer, QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
            std::uint64_t expirations = 0;
            // Fails with ECANCELED, which is what it is read for.
            [[maybe_unused]] const auto size = ::read(m_timer, &expirations, sizeof expirations);
            armTimer();
            m_changed.emit();
        });
        armTimer();
    }
    m_files.addPath(QString::fromLatin1(kZoneFolder));
    connect(&m_files, &QFileSystemWatcher::directoryChanged, this, [this] {
        if (auto zone = zoneState(); zone != m_zone) {
            m_zone = std::move(zone);
            m_changed.emit();
        }
    });
}

SystemTimeWatcher::~SystemTimeWatcher() {
    m_notifier.reset();
    if (m_timer >= 0) {
        ::close(m_timer);
    }
}

void SystemTimeWatcher::armTimer() {
    // It never fires by itself: a change of the clock, or waking from sleep, cancels it, and that
    // wakes the notifier.
    itimerspec never{};
    never.it_value.tv_sec = std::numeric_limits<std::time_t>::max();
    ::timerfd_settime(m_timer, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr);
}

} // namespace korvex::platform::qt
