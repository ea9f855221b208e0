#pragma once

#include "base/Signal.h"
#include "ui/settings/BackupPlaces.h"
#include "ui/workspace/Workspace.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

class QPushButton;

namespace korvex::ui {

class SegmentedChoice;
class SettingsGroup;
class SettingsLabel;
class SettingsRow;
class Switch;
class Theme;
class WorkRow;

/// The rows of settings that steer automatic backups and tell of them. Main thread.
class AutomaticBackupRows final : public QObject {
    Q_OBJECT

public:
    /// Adds its rows to the group. All of it outlives them.
    AutomaticBackupRows(SettingsGroup& group, const Workspace& workspace, const Theme& theme,
                        QObject* parent);

    /// Shows all of it as it is now, and looks whether the folder is there.
    void catchUp();

Q_SIGNALS:
    /// This says what came of what the user has asked for.
    void told(QWidget* row);

private:
    void addSettings(SettingsGroup& group, const Theme& theme);
    void addState(SettingsGroup& group, const Theme& theme);
    void chooseFolder();
    void follow();
    void followSettings();
    void setChoiceFree(bool isFree);
    void followState();
    void followAnswer();
    void followFailure();
    /// What failed before is no answer to what is being done.
    bool isOver() const { return !m_service.isRunning() || m_service.isSilent(); }
    /// Of what was asked for.
    bool isUnderWay() const {
        return m_asked == Asked::folder ? m_service.isChoosing() : !isOver();
    }
    /// Says what came of what was asked for, and brings it into sight.
    void tell();
    /// Shows the state again at that moment.
    void followAt(std::optional<base::Instant> moment, base::Instant now);

    app::AppPreferences& m_preferences;
    storage::AutomaticBackupService& m_service;
    const Workspace& m_workspace;
    BackupPlaces m_places;
    QPushButton* m_choose = nullptr;
    /// Has the keyboard while that cannot be pressed.
    QPointer<QWidget> m_standIn;
    SettingsRow* m_folderRow = nullptr;
    Switch* m_isOn = nullptr;
    SegmentedChoice* m_retention = nullptr;
    SettingsLabel* m_last = nullptr;
    SettingsLabel* m_next = nullptr;
    QPushButton* m_now = nullptr;
    SettingsRow* m_nowRow = nullptr;
    WorkRow* m_work = nullptr;
    SettingsRow* m_answer = nullptr;
    /// What the user has asked for here, and has not been told what came of it.
    enum class Asked { nothing, folder, backup };
    Asked m_asked = Asked::nothing;
    bool m_willTell = false;
    /// The last thing that was asked for was a backup, and it was made.
    bool m_isMade = false;
    std::unique_ptr<base::RunLoop::Timer> m_timer;
    base::Subscription m_settings;
    base::Subscription m_changes;
    base::Subscription m_ticks;
    base::Subscription m_dates;
};

} // namespace korvex::ui
