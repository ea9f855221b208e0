#pragma once

#include "ui/settings/BoardChoice.h"
#include "ui/settings/SettingsPane.h"
#include "ui/workspace/Workspace.h"

#include <functional>

namespace korvex::ui {

class ListChoice;
class SegmentedChoice;
class TimeField;

/// What the window begins with, the default board, reminders, the distance of rows. Main thread.
class GeneralPane final : public SettingsPane {
    Q_OBJECT

public:
    GeneralPane(const Workspace& workspace, const Theme& theme);

protected:
    void follow() override;

private:
    void addStart(const Theme& theme);
    void addDefaults(const Theme& theme);
    BoardChoice* makeBoardChoice(const BoardChoice::Fallback& fallback, const Theme& theme,
                                 const std::function<void(const base::Uuid& board)>& set);
    void showBoards();

    const Workspace& m_workspace;
    app::AppPreferences& m_preferences;
    ListChoice* m_destination = nullptr;
    SettingsRow* m_destinationRow = nullptr;
    BoardChoice* m_launchBoard = nullptr;
    SettingsRow* m_launchBoardRow = nullptr;
    BoardChoice* m_defaultBoard = nullptr;
    SettingsRow* m_defaultBoardRow = nullptr;
    TimeField* m_reminder = nullptr;
    SettingsRow* m_reminderRow = nullptr;
    SegmentedChoice* m_spacing = nullptr;
    base::Subscription m_settings;
    base::Subscription m_boards;
    base::Subscription m_dates;
};

} // namespace korvex::ui
