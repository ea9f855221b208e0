#include "ui/settings/DesktopNotificationSettings.h"

#include <QProcess>
#include <QStandardPaths>

#include <array>

namespace korvex::ui {

namespace {

struct Known {
    const char* desktop;
    const char* program;
    const char* argument;
};

/// Of several for a desktop the first that is installed.
constexpr std::array kKnown{
    Known{"GNOME", "gnome-control-center", "notifications"},
    Known{"KDE", "systemsettings", "kcm_notifications"},
    Known{"KDE", "systemsettings5", "kcm_notifications"},
    Known{"KDE", "kcmshell5", "kcm_notifications"},
    Known{"XFCE", "xfce4-notifyd-config", ""},
    Known{"X-Cinnamon", "cinnamon-settings", "notifications"},
    Known{"MATE", "mate-notification-properties", ""},
};

} // namespace

std::optional<DesktopNotificationSettings> DesktopNotificationSettings::of(const QString& desktops,
                                                                           const Find& find) {
    for (const auto& desktop : desktops.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        for (const auto& known : kKnown) {
            if (desktop.compare(QLatin1String(known.desktop), Qt::CaseInsensitive) != 0) {
                continue;
            }
            const auto program = find(QLatin1String(known.program));
            if (!program.isEmpty()) {
                const auto argument = QString::fromLatin1(known.argument);
                return DesktopNotificationSettings{
                    program, argument.isEmpty() ? QStringList() : QStringList(argument)};
            }
        }
    }
    return std::nullopt;
}

std::optional<DesktopNotificationSettings> DesktopNotificationSettings::current() {
    return of(qEnvironmentVariable("XDG_CURRENT_DESKTOP"),
              [](const QString& name) { return QStandardPaths::findExecutable(name); });
}

bool DesktopNotificationSettings::open() const {
    return QProcess::startDetached(program, arguments);
}

} // namespace korvex::ui
