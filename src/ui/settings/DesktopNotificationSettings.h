#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace korvex::ui {

/// The program in which the user of this desktop says who may show notifications.
struct DesktopNotificationSettings {
    QString program;
    QStringList arguments;

    /// Where a program stands; empty where it is not installed.
    using Find = std::function<QString(const QString& name)>;
    /// `desktops` is XDG_CURRENT_DESKTOP: names between colons, the most particular one first.
    /// Absent where no such program is known or installed.
    static std::optional<DesktopNotificationSettings> of(const QString& desktops, const Find& find);
    /// Of the desktop that this program runs on.
    static std::optional<DesktopNotificationSettings> current();

    /// False where it could not be started.
    bool open() const;
};

} // namespace korvex::ui
