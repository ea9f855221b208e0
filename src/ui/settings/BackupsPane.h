#pragma once

#include "ui/settings/BackupOperations.h"
#include "ui/settings/SettingsPane.h"

namespace korvex::ui {

class BackupFileRows;
class BackupHistoryRows;

/// Exports and imports, automatic backups, and those that are kept. Main thread.
class BackupsPane final : public SettingsPane {
    Q_OBJECT

public:
    BackupsPane(const Workspace& workspace, EditingWindows windows, const Theme& theme);

protected:
    void follow() override;

private:
    BackupOperations m_operations;
    BackupFileRows* m_file;
    BackupHistoryRows* m_history;
};

} // namespace korvex::ui
