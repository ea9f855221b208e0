#pragma once

#include "backup/BackupDocument.h"
#include "base/Log.h"
#include "model/Board.h"
#include "services/Collaborators.h"
#include "services/UndoManager.h"
#include "storage/BackupFile.h"
#include "storage/Work.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace korvex::storage {

// What takes long works on a container, which belongs to one thread: on a thread of its own it gets
// one of its own from `openForReading`. None of these functions changes the store.

/// The store of a file opened beside whoever works on it, for reading only. Throws StoreError. Any
/// thread.
std::unique_ptr<store::ModelContainer> openForReading(const std::filesystem::path& storeFile,
                                                      base::LogSink& log);

/// All boards and entries as the store holds them at one moment, which `revision` then names;
/// `exportedAt` becomes `at`. Equal stores give equal documents. Bytes that are no UTF-8 become the
/// replacement character, as the file will have it. Throws BackupError `incompleteRelationships`
/// where the board of an entry is missing, StoreError and Cancelled.
struct StoreSnapshot {
    backup::BackupDocument document;
    std::int64_t revision = 0;
};
StoreSnapshot createBackup(store::ModelContainer& container, base::Instant at, Work& work);

/// Writes all that the store holds to a file, proven: see `writeBackup`. Throws what
/// `createBackup`, `backup::validate` and `writeBackup` throw; the file is then as it was.
BackupSummary exportBackup(store::ModelContainer& container, const std::filesystem::path& file,
                           base::Instant now, base::LogSink& log, Work& work);

/// Where the store was kept as it was before it was replaced.
struct RecoverySnapshot {
    std::filesystem::path file;
    /// The store's revision that it holds.
    std::int64_t revision = 0;
    base::Instant exportedAt;
    /// What the file takes the place of once the store is replaced.
    std::optional<std::filesystem::path> becomes = std::nullopt;
};

/// A document that may become the store, and the snapshot of what it will replace.
struct PreparedRestore {
    backup::BackupDocument document;
    RecoverySnapshot snapshot;
};
/// Validates the document, then writes the recovery snapshot, over the one that is there. Throws
/// what `backup::validate` and `exportBackup` throw.
PreparedRestore prepareRestore(backup::BackupDocument document, store::ModelContainer& container,
                               const std::filesystem::path& recoveryFile, base::Instant now,
                               base::LogSink& log, Work& work);
/// What taking a restore back would bring. Throws what `readBackup` throws, and FileError where no
/// snapshot is kept.
backup::BackupDocument recoveredDocument(const std::filesystem::path& recoveryFile, Work& work);
/// The same as `prepareRestore` to take a restore back: what comes back is in the recovery
/// snapshot, which stays until it is back in the store. Throws what `recoveredDocument` throws too.
PreparedRestore prepareUndo(store::ModelContainer& container,
                            const std::filesystem::path& recoveryFile, base::Instant now,
                            base::LogSink& log, Work& work);

/// The recovery snapshot of the store in this data folder: `Recovery/BeforeRestore.korvexbackup` in
/// the folder, or in `Korvex` beside it where it is the user's own.
std::filesystem::path recoveryFile(const std::filesystem::path& dataDirectory);

/// Run at their points of a restore; what they throw ends it like any other failure.
struct RestoreHooks {
    std::function<void()> beforeReplace = {};
    std::function<void()> beforeSave = {};
};

/// Replaces what a store holds by a backup. A value over the main context and its collaborators,
/// which must outlive it. Main thread.
class BackupService {
public:
    /// The reminders are planned anew and the undo stack ends after a restore.
    BackupService(store::ModelContext& context, services::ReminderReconciling& reminders,
                  services::WidgetReloading& widgets, base::LogSink& log,
                  services::UndoManager* undo = nullptr);

    /// Whether a store is replicated, so that it must not be replaced.
    static bool isCloudBacked(const store::ModelContainer& container);
    /// Whether the store could be replaced now. Throws BackupError `cloudRestoreUnsupported` and
    /// `pendingChanges`, EntryServiceError `readOnlyStore`. To be asked before anything is
    /// prepared.
    void validateReplacement() const;

    /// What was prepared becomes the store, in one save, if it has not changed since the snapshot:
    /// else throws BackupError `storeChanged`. Whatever fails, the store is as it was and the
    /// snapshot stays. The boards then, in order.
    std::vector<model::Board*> finish(PreparedRestore prepared, base::Instant now, Work& work,
                                      const RestoreHooks& hooks = {}) const;

    /// All of a restore at once, for who can wait.
    std::vector<model::Board*> restore(backup::BackupDocument document,
                                       const std::filesystem::path& recoveryFile, base::Instant now,
                                       Work& work, const RestoreHooks& hooks = {}) const;
    /// Brings back what the last restore replaced; what that brought can be brought back alike.
    std::vector<model::Board*> undoRestore(const std::filesystem::path& recoveryFile,
                                           base::Instant now, Work& work) const;

private:
    store::ModelContext* m_context;
    services::ReminderReconciling* m_reminders;
    services::WidgetReloading* m_widgets;
    services::UndoManager* m_undo;
    base::LogSink* m_sink;
    base::Logger m_log;
};

} // namespace korvex::storage
