#pragma once

#include "base/Signal.h"

#include <QObject>

class QDBusVariant;

namespace korvex::platform::qt {

/// Asks the desktop's settings portal whether the user prefers dark windows, more contrast and less
/// motion, and follows changes. Without a portal it never says anything. Main thread.
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
    };

    SystemAppearanceWatcher();

    base::Signal<Appearance>& changed() { return m_changed; }

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask(const QString& group, const QString& key);
    void take(const QString& group, const QString& key, const QVariant& value);

    base::Signal<Appearance> m_changed;
    Appearance m_appearance;
    bool m_prefersLessMotion = false;
    bool m_isWithoutAnimations = false;
};

} // namespace korvex::platform::qt
