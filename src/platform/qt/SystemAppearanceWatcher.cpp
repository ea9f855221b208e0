#include "platform/qt/SystemAppearanceWatcher.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace korvex::platform::qt {

namespace {

const auto kService = QStringLiteral("org.freedesktop.portal.Desktop");
const auto kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const auto kGroup = QStringLiteral("org.freedesktop.appearance");
const auto kKey = QStringLiteral("color-scheme");

} // namespace

SystemAppearanceWatcher::SystemAppearanceWatcher() {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto read = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
    read << kGroup << kKey;
    auto* const call = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &SystemAppearanceWatcher::replied);
}

void SystemAppearanceWatcher::settingChanged(const QString& group, const QString& key,
                                             const QDBusVariant& value) {
    if (group == kGroup && key == kKey) {
        take(value.variant());
    }
}

void SystemAppearanceWatcher::replied(QDBusPendingCallWatcher* call) {
    const QDBusPendingReply<QDBusVariant> reply = *call;
    if (!reply.isError()) {
        take(reply.value().variant());
    }
    call->deleteLater();
}

void SystemAppearanceWatcher::take(const QVariant& value) {
    // The reply to `Read` wraps the value twice.
    const auto plain =
        value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
    const auto scheme = plain.toUInt();
    m_changed.emit(scheme == 1   ? ColorScheme::dark
                   : scheme == 2 ? ColorScheme::light
                                 : ColorScheme::noPreference);
}

} // namespace korvex::platform::qt
