#include "ui/settings/BackupsPane.h"

#include "ui/settings/AutomaticBackupRows.h"
#include "ui/settings/BackupFileRows.h"
#include "ui/settings/BackupHistoryRows.h"

#include <QEvent>

#include <utility>

namespace korvex::ui {

BackupsPane::BackupsPane(const Workspace& workspace, EditingWindows windows, const Theme& theme)
    : SettingsPane(tr("Backups"), theme), m_operations(workspace, std::move(windows), this) {
    connect(&m_operations, &BackupOperations::ended, this, &BackupsPane::workEnded);
    m_file = new BackupFileRows(addGroup(tr("Backup files")), m_operations, workspace, theme, this);
    connect(m_file, &BackupFileRows::told, this, [this](QWidget* row) { bringIntoSight(*row); });
    m_automatic = new AutomaticBackupRows(
        addGroup(tr("Automatic backups"),
                 tr("Choose a folder, then enable daily backups. Saved entries are backed up while "
                    "Korvex is running; missed backups run when you reopen it. History is kept in "
                    "a separate subfolder for this installation. Manual exports are kept "
                    "separately.")),
        workspace, theme, this);
    connect(m_automatic, &AutomaticBackupRows::told, this,
            [this](QWidget* row) { bringIntoSight(*row); });
    m_history = new BackupHistoryRows(addGroup(tr("History")), m_operations, m_file->work(),
                                      workspace, theme, this);
}

void BackupsPane::follow() {
    m_file->readKept();
    m_automatic->catchUp();
    m_history->read();
}

void BackupsPane::showEvent(QShowEvent* event) {
    SettingsPane::showEvent(event);
    window()->installEventFilter(this);
}

bool BackupsPane::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::WindowActivate && watched == window()) {
        followSoon();
    }
    return SettingsPane::eventFilter(watched, event);
}

} // namespace korvex::ui
