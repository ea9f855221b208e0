#include "ui/settings/SettingsPanes.h"

#include "ui/settings/AppearancePane.h"
#include "ui/settings/BackupsPane.h"
#include "ui/settings/GeneralPane.h"
#include "ui/settings/NotificationsPane.h"
#include "ui/settings/QuickEntryPane.h"

#include <utility>

namespace korvex::ui {

std::vector<SettingsPaneMaker> settingsPanes(const Workspace& workspace, EditingWindows windows,
                                             const Theme& theme) {
    return {{.name = "general",
             .title = GeneralPane::tr("General"),
             .icon = QStringLiteral("gear"),
             .make = [&] { return new GeneralPane(workspace, theme); }},
            {.name = "appearance",
             .title = AppearancePane::tr("Appearance"),
             .icon = QStringLiteral("palette"),
             .make = [&] { return new AppearancePane(workspace.preferences, theme); }},
            {.name = "quick-entry",
             .title = QuickEntryPane::tr("Quick Entry"),
             .icon = QStringLiteral("lightning"),
             .make = [&] { return new QuickEntryPane(workspace, theme); }},
            {.name = "notifications",
             .title = NotificationsPane::tr("Notifications"),
             .icon = QStringLiteral("bell"),
             .make = [&] { return new NotificationsPane(workspace, theme); }},
            {.name = "backups",
             .title = BackupsPane::tr("Backups"),
             .icon = QStringLiteral("archive"),
             .make = [&workspace, &theme, windows = std::move(windows)] {
                 return new BackupsPane(workspace, windows, theme);
             }}};
}

} // namespace korvex::ui
