#pragma once

#include "ui/settings/BoardChoice.h"
#include "ui/settings/SettingsPane.h"
#include "ui/workspace/Workspace.h"

namespace korvex::ui {

class SegmentedChoice;
class ShortcutRows;
class Switch;

/// The shortcut of Quick Entry, where its captures go, and whether the program is there for it.
/// Main thread.
class QuickEntryPane final : public SettingsPane {
    Q_OBJECT

public:
    QuickEntryPane(const Workspace& workspace, const Theme& theme);

protected:
    void follow() override;
    void showEvent(QShowEvent* event) override;

private:
    void addShortcut(const Theme& theme);
    void addDestination(const Theme& theme);
    void addBackground(const Theme& theme);
    void followBackground();
    void setAutostart(bool isOn);

    const Workspace& m_workspace;
    app::AppPreferences& m_preferences;
    /// Null where it is not set up in this window, as are the switches.
    ShortcutRows* m_shortcut = nullptr;
    BoardChoice* m_board = nullptr;
    SettingsRow* m_boardRow = nullptr;
    SegmentedChoice* m_type = nullptr;
    Switch* m_stays = nullptr;
    SettingsRow* m_staysRow = nullptr;
    Switch* m_autostart = nullptr;
    SettingsRow* m_autostartRow = nullptr;
    base::Subscription m_settings;
    base::Subscription m_boards;
    base::Subscription m_hotkey;
};

} // namespace korvex::ui
