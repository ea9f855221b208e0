#pragma once

#include "base/Signal.h"
#include "ui/workspace/Workspace.h"

#include <QObject>
#include <QPointer>

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

private:
    void addSettings(SettingsGroup& group, const Theme& theme);
    void addState(SettingsGroup& group, const Theme& theme);
    void chooseFolder();
    void follow();
    void followSettings();
    void setChoiceFree(bool isFree);
    void followState();

    app::AppPreferences& m_preferences;
    storage::AutomaticBackupService& m_service;
    const Workspace& m_workspace;
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
    base::Subscription m_settings;
    base::Subscription m_changes;
};

} // namespace korvex::ui
