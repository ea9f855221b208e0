#pragma once

#include "base/Signal.h"

#include <QDBusConnection>
#include <QObject>

class QDBusVariant;

namespace korvex::platform::qt {

/// Asks the desktop's settings portal whether the user prefers dark windows, more contrast and less
/// motion, and follows changes. Says what differs from what it said before, and from no preference
/// at first; without a portal never anything. Main thread.
class SystemAppearanceWatcher final : public QObject {
    Q_OBJECT

public:
    /// What the user prefers, as the portal numbers it.
    enum class ColorScheme { noPreference = 0, dark = 1, light = 2 };

    enum class Contrast { usual, high };
    enum class Motion { usual, reduced };
    struct Appearance {
        ColorScheme scheme = ColorScheme::noPreference;
        Contrast contrast = Contrast::usual;
        Motion motion = Motion::usual;
        bool operator==(const Appearance&) const = default;
    };

    /// The portal is asked on this bus.
    explicit SystemAppearanceWatcher(QDBusConnection bus = QDBusConnection::sessionBus());

    base::Signal<Appearance>& changed() { return m_changed; }

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask(const QString& group, const QString& key);
    void take(const QString& group, const QString& key, const QVariant& value);
    void tell();

    QDBusConnection m_bus;
    base::Signal<Appearance> m_changed;
    Appearance m_appearance;
    Appearance m_told;
    /// The windows are drawn anew for all the answers at once.
    int m_awaited = 0;
    bool m_prefersLessMotion = false;
    bool m_isWithoutAnimations = false;
};

} // namespace korvex::platform::qt
