#pragma once

#include "base/Signal.h"
#include "storage/RestorePreparation.h"
#include "ui/settings/BackupPlaces.h"
#include "ui/settings/BackupReader.h"
#include "ui/workspace/Workspace.h"

#include <QObject>

#include <memory>

class QPushButton;

namespace korvex::ui {

class BackupOperations;
class SettingsGroup;
class SettingsRow;
class Theme;
class WorkRow;

/// The rows of settings by which the store is exported to a file, replaced by one, and brought back
/// as it was before. Main thread.
class BackupFileRows final : public QObject {
    Q_OBJECT

public:
    /// Adds its rows to the group. All of it outlives them.
    BackupFileRows(SettingsGroup& group, BackupOperations& operations, const Workspace& workspace,
                   const Theme& theme, QObject* parent);

    /// Reads what is kept of the store before the last import.
    void readKept();
    /// What is under way of all that is done with backups here.
    WorkRow& work() const { return *m_work; }

Q_SIGNALS:
    /// This says something new of what the user has asked for, wherever that was.
    void told(QWidget* row);

private:
    void addRows(SettingsGroup& group, const Theme& theme);
    void connectOperations(const Theme& theme);
    void chooseExport();
    void chooseImport();
    void takeBack();
    void follow();
    void showKept();

    BackupOperations& m_operations;
    const Workspace& m_workspace;
    BackupPlaces m_places;
    BackupReader m_kept;
    /// A look may outlive this.
    std::shared_ptr<storage::KnownRecoveredFile> m_keptFile;
    QPushButton* m_export = nullptr;
    QPushButton* m_import = nullptr;
    QPushButton* m_takeBack = nullptr;
    SettingsRow* m_takeBackRow = nullptr;
    WorkRow* m_work = nullptr;
    SettingsRow* m_answer = nullptr;
    base::Subscription m_replacements;
    /// What was in sight of them last.
    QWidget* m_told = nullptr;
    base::Subscription m_dates;
};

} // namespace korvex::ui
