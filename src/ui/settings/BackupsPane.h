#pragma once

#include "ui/settings/BackupOperations.h"
#include "ui/settings/SettingsPane.h"

namespace korvex::ui {

class AutomaticBackupRows;
class BackupFileRows;
class BackupHistoryRows;

/// Exports and imports, automatic backups, and those that are kept. Main thread.
class BackupsPane final : public SettingsPane {
    Q_OBJECT

public:
    BackupsPane(const Workspace& workspace, EditingWindows windows, const Theme& theme);

    QString loss() const override { return m_operations.loss(); }
    /// Waits also for a slow disk: what is written there is to be gone.
    void cancelWork() override { m_operations.cancel(storage::kLongestSilence); }

protected:
    void follow() override;
    void showEvent(QShowEvent* event) override;
    /// What happened to the folder meanwhile is seen when the user comes back.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    BackupOperations m_operations;
    BackupFileRows* m_file;
    AutomaticBackupRows* m_automatic;
    BackupHistoryRows* m_history;
};

} // namespace korvex::ui
