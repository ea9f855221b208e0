#pragma once

#include "base/Signal.h"

#include <QObject>

class QDBusVariant;
class QDBusPendingCallWatcher;

namespace korvex::platform::qt {

/// Asks the desktop's settings portal whether the user prefers dark windows, and follows changes.
/// Without a portal it never says anything. Main thread.
class SystemAppearanceWatcher final : public QObject {
    Q_OBJECT

public:
    /// What the user prefers, as the portal numbers it.
    enum class ColorScheme { noPreference = 0, dark = 1, light = 2 };

    SystemAppearanceWatcher();

    base::Signal<ColorScheme>& changed() { return m_changed; }

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void replied(QDBusPendingCallWatcher* call);
    void take(const QVariant& value);

    base::Signal<ColorScheme> m_changed;
};

} // namespace korvex::platform::qt
