#pragma once

#include "storage/BackgroundTask.h"
#include "storage/BackupHistory.h"
#include "ui/workspace/Workspace.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace korvex::ui {

/// Lists backups and reads them in full, one after another in the background: only so can be said
/// what they hold, and that they are whole. What was read is remembered while the file is the same.
/// Main thread.
class BackupReader final : public QObject {
    Q_OBJECT

public:
    /// The workspace outlives it.
    BackupReader(const Workspace& workspace, QObject* parent);

    using List = std::function<storage::BackupList(storage::Work&)>;
    /// Shows what `list` returns or throws; it is called on another thread.
    void read(List list);

    struct Item {
        storage::ListedBackup file;
        /// Absent until it has been read, and where it cannot be.
        std::optional<storage::BackupSummary> summary = std::nullopt;
        /// Why it cannot become a store.
        QString refusal = {};

        bool isRead() const { return summary || !refusal.isEmpty(); }
    };
    const std::vector<Item>& items() const { return m_items; }
    /// What could not be listed, and why; empty where all was.
    const QString& refusal() const { return m_refusal; }
    /// Reads it anew, before others.
    void check(std::size_t index);

Q_SIGNALS:
    /// The items are others.
    void listed();
    /// Something else is known of them.
    void changed();

private:
    void goOn();
    void startListing();
    void startReading(std::size_t index);
    bool areListed(const std::vector<storage::ListedBackup>& files) const;
    void take(std::vector<storage::ListedBackup> files);
    Item* find(const storage::ListedBackup& file);

    const Workspace& m_workspace;
    std::vector<Item> m_items;
    QString m_refusal;
    /// What is to be listed next; null for nothing.
    List m_list;
    std::optional<std::size_t> m_first;
    std::unique_ptr<storage::BackgroundTask> m_task;
};

} // namespace korvex::ui
