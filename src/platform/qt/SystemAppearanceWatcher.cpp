#include "platform/qt/SystemAppearanceWatcher.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

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

SystemAppearanceWatcher::SystemAppearanceWatcher(QDBusConnection bus) : m_bus(std::move(bus)) {
    if (!m_bus.isConnected()) {
        return;
    }
    // QtDBus finds the slot by the names of its types, and calls none whose types nobody has used.
    qRegisterMetaType<QDBusVariant>();
    m_bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    ask(kAppearance, kColorScheme);
    ask(kAppearance, kContrast);
    ask(kAppearance, kReducedMotion);
    ask(kInterfaceSettings, kAnimations);
}

void SystemAppearanceWatcher::ask(const QString& group, const QString& key) {
    auto read = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
    read << group << key;
    auto* const call = new QDBusPendingCallWatcher(m_bus.asyncCall(read), this);
    ++m_awaited;
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, group, key] {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (!reply.isError()) {
            take(group, key, reply.value().variant());
        }
        call->deleteLater();
        --m_awaited;
        tell();
    });
}

void SystemAppearanceWatcher::settingChanged(const QString& group, const QString& key,
                                             const QDBusVariant& value) {
    take(group, key, value.variant());
    tell();
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
    }
    m_appearance.motion =
        m_prefersLessMotion || m_isWithoutAnimations ? Motion::reduced : Motion::usual;
}

void SystemAppearanceWatcher::tell() {
    if (m_awaited == 0 && m_appearance != m_told) {
        m_told = m_appearance;
        m_changed.emit(m_told);
    }
}

} // namespace korvex::platform::qt
