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
const auto kAppearance = QStringLiteral("org.freedesktop.appearance");
const auto kColorScheme = QStringLiteral("color-scheme");
const auto kContrast = QStringLiteral("contrast");
const auto kReducedMotion = QStringLiteral("reduced-motion");
/// Desktops whose portal does not know the key for less motion have it here, the other way round.
const auto kInterfaceSettings = QStringLiteral("org.gnome.desktop.interface");
const auto kAnimations = QStringLiteral("enable-animations");

} // namespace

SystemAppearanceWatcher::SystemAppearanceWatcher() {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    ask(kAppearance, kColorScheme);
    ask(kAppearance, kContrast);
    ask(kAppearance, kReducedMotion);
    ask(kInterfaceSettings, kAnimations);
}

void SystemAppearanceWatcher::ask(const QString& group, const QString& key) {
    auto read = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
    read << group << key;
    auto* const call =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(read), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, group, key] {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (!reply.isError()) {
            take(group, key, reply.value().variant());
        }
        call->deleteLater();
    });
}

void SystemAppearanceWatcher::settingChanged(const QString& group, const QString& key,
                                             const QDBusVariant& value) {
    take(group, key, value.variant());
}

void SystemAppearanceWatcher::take(const QString& group, const QString& key,
                                   const QVariant& value) {
    // The reply to `Read` wraps the value twice.
    const auto plain =
        value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
    if (group == kAppearance && key == kColorScheme) {
        const auto scheme = plain.toUInt();
        m_appearance.scheme = scheme == 1   ? ColorScheme::dark
                              : scheme == 2 ? ColorScheme::light
                                            : ColorScheme::noPreference;
    } else if (group == kAppearance && key == kContrast) {
        m_appearance.contrast = plain.toUInt() == 1 ? Contrast::high : Contrast::usual;
    } else if (group == kAppearance && key == kReducedMotion) {
        m_prefersLessMotion = plain.toUInt() == 1;
    } else if (group == kInterfaceSettings && key == kAnimations) {
        m_isWithoutAnimations = !plain.toBool();
    } else {
        return;
    }
    m_appearance.motion =
        m_prefersLessMotion || m_isWithoutAnimations ? Motion::reduced : Motion::usual;
    m_changed.emit(m_appearance);
}

} // namespace korvex::platform::qt
