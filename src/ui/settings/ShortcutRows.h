#pragma once

#include "app/QuickEntrySetup.h"
#include "ui/kit/theme/Theme.h"

#include <QObject>

#include <array>
#include <optional>
#include <vector>

class QPushButton;

namespace korvex::ui {

class SettingsGroup;
class SettingsLabel;
class SettingsRow;
class ShortcutRecorder;

/// The rows in which the shortcut of Quick Entry is recorded, or those that say what the desktop
/// has for it. Main thread; all that they are made with outlives them.
class ShortcutRows final : public QObject {
    Q_OBJECT

public:
    ShortcutRows(SettingsGroup& group, app::QuickEntrySetup& setup,
                 app::AppPreferences& preferences, const Theme& theme, QObject* parent);

    /// Shows it as it is now.
    void follow();
    /// Asks anew for what was refused, where that asks nobody but the system.
    void tryAgain();

private:
    /// How many free shortcuts are offered.
    static constexpr std::size_t kOffered = 3;

    void addRecorder(SettingsGroup& group, const Theme& theme);
    void addDesktops(SettingsGroup& group, const Theme& theme);
    void record(const app::QuickEntryShortcut& shortcut);
    /// One that cannot be had takes no working one's place.
    void setShortcut(const app::QuickEntryShortcut& shortcut);
    void followRecorder();
    void followOffers();
    void followDesktop();

    app::QuickEntrySetup& m_setup;
    app::AppPreferences& m_preferences;
    ShortcutRecorder* m_recorder = nullptr;
    QPushButton* m_reset = nullptr;
    SettingsRow* m_recorderRow = nullptr;
    std::array<QPushButton*, kOffered> m_offers{};
    std::vector<app::QuickEntryShortcut> m_offered;
    /// What they were looked for instead of; looking asks the system for each, so it is done once.
    /// Absent where it is to be done anew.
    std::optional<app::QuickEntryShortcut> m_offeredBeside;
    SettingsRow* m_offersRow = nullptr;
    SettingsLabel* m_trigger = nullptr;
    SettingsRow* m_triggerRow = nullptr;
    SettingsRow* m_changeRow = nullptr;
    SettingsRow* m_againRow = nullptr;
    QPushButton* m_copy = nullptr;
    SettingsRow* m_commandRow = nullptr;
    SettingsLabel* m_command = nullptr;
    /// Why what was recorded last was not taken.
    QString m_refusal;
    base::Subscription m_layouts;
    base::Subscription m_outcomes;
};

} // namespace korvex::ui
