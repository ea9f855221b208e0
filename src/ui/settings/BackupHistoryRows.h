#pragma once

#include "base/Signal.h"
#include "ui/settings/BackupReader.h"
#include "ui/workspace/Workspace.h"

#include <QObject>

#include <filesystem>
#include <optional>
#include <vector>

class QPushButton;

namespace korvex::ui {

class BackupOperations;
class SettingsGroup;
class SettingsRow;
class Theme;
class WorkRow;

/// A row of settings for each automatic backup that is kept: when it was made and what it holds,
/// with buttons that check and restore it. Main thread.
class BackupHistoryRows final : public QObject {
    Q_OBJECT

public:
    /// The group is its own; `work` shows what the operations do. All of it outlives the rows.
    BackupHistoryRows(SettingsGroup& group, BackupOperations& operations, WorkRow& work,
                      const Workspace& workspace, const Theme& theme, QObject* parent);

    /// Looks into the folder again.
    void read();

private:
    struct Row {
        std::filesystem::path file;
        SettingsRow* row;
        QPushButton* check;
        QPushButton* restore;
    };

    /// Of what stands in the folder.
    BackupReader::List list() const;
    /// The rows are made anew, and the keyboard stays where it was: at the same backup, or the one
    /// that stands in its place now.
    void showAll();
    void makeRows();
    void takeKeyboard(std::size_t index, QPushButton* Row::*button);
    QString emptyText() const;
    QString foreignText() const;
    void followLast();
    void addRow(std::size_t index);
    void follow();

    SettingsGroup& m_group;
    BackupOperations& m_operations;
    WorkRow& m_work;
    const Workspace& m_workspace;
    const Theme& m_theme;
    BackupReader m_reader;
    /// The folder that is being listed, in the settings' form.
    std::optional<base::Bytes> m_folder;
    std::vector<Row> m_rows;
    /// Says that there are none, which could not be listed, or that there are foreign ones.
    SettingsRow* m_lastRow = nullptr;
    base::Subscription m_changes;
    base::Subscription m_dates;
};

} // namespace korvex::ui
