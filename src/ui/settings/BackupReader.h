#pragma once

#include "storage/BackgroundTask.h"
#include "storage/BackupHistory.h"
#include "ui/workspace/Workspace.h"

#include <QObject>

#include <filesystem>
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
    /// Shows none, and waits no longer for what is being read: for who reads elsewhere from now on.
    void forget();

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
    /// Whether others than these may be listed; false before the first list.
    bool isListed() const { return m_isListed; }
    /// Whether there are backups of other histories too.
    bool hasForeign() const { return m_hasForeign; }
    /// Reads it anew, before others and as `list` finds it: another file may stand there by now.
    void check(const std::filesystem::path& file, List list);

Q_SIGNALS:
    /// The items are others.
    void listed();
    /// Something else is known of them.
    void changed();

private:
    void goOn();
    void startListing();
    void showListed(storage::BackupList list, const QString& refusal);
    /// The one to be read next, null for none.
    const Item* next();
    void startReading(const storage::ListedBackup& listed);
    bool areListed(const std::vector<storage::ListedBackup>& files) const;
    void take(std::vector<storage::ListedBackup> files);
    Item* find(const storage::ListedBackup& file);

    const Workspace& m_workspace;
    std::vector<Item> m_items;
    QString m_refusal;
    bool m_isListed = false;
    bool m_hasForeign = false;
    /// What is to be listed next; null for nothing.
    List m_list;
    /// What is to be read next, if it is still listed.
    std::optional<std::filesystem::path> m_first;
    std::unique_ptr<storage::BackgroundTask> m_task;
};

} // namespace korvex::ui
