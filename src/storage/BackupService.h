#pragma once

#include "backup/BackupDocument.h"
#include "base/Log.h"
#include "model/Board.h"
#include "services/Collaborators.h"
#include "storage/BackupFile.h"
#include "storage/RestorePreparation.h"
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

/// The same of what may become a store again. Throws as `backup::validate` too; where it is the
/// store that contradicts itself the error says what mends it.
StoreSnapshot createValidBackup(store::ModelContainer& container, base::Instant at,
                                base::LogSink& log, Work& work);

/// Writes all that the store holds to a file, proven: see `writeBackup`. What killed programs left
/// of other backups in that folder is removed. Throws what `createValidBackup` and `writeBackup`
/// throw, and RestoreError `ofStore` for a place that belongs to the store, whatever it is called
/// there; the file is then as it was.
BackupSummary
exportBackup(store::ModelContainer& container, const std::filesystem::path& file, base::Instant now,
             base::LogSink& log, Work& work,
             base::StagedFile::Existing existing = base::StagedFile::Existing::replace);

/// Run at their points of a restore; what they throw ends it like any other failure.
struct RestoreHooks {
    std::function<void()> beforeReplace = {};
    std::function<void()> beforeSave = {};
};

/// What a restore has left.
struct Restored {
    /// In their order; none where they could not be read just then.
    std::vector<model::Board*> boards;
    /// When the backup was made that is the store's contents now.
    base::Instant madeAt = {};
    /// What that has, as its user was told before.
    std::size_t boardCount = 0;
    std::size_t entryCount = 0;
    /// Where what was replaced is kept.
    std::filesystem::path snapshot;
};

/// Replaces what a store holds by a backup. A value over the main context and its collaborators,
/// which must outlive it. Main thread.
class BackupService {
public:
    /// The reminders are planned anew after a restore.
    BackupService(store::ModelContext& context, services::ReminderReconciling& reminders,
                  services::WidgetReloading& widgets, base::LogSink& log);

    /// Whether a store is replicated, so that it must not be replaced. A container has one
    /// configuration, and that is all that says so.
    static bool isCloudBacked(const store::ModelContainer& container);
    /// Whether the store could be replaced now. Throws BackupError `cloudRestoreUnsupported` and
    /// `pendingChanges`, EntryServiceError `readOnlyStore`. To be asked before anything is
    /// prepared.
    void validateReplacement() const;

    /// What was prepared becomes the store, in one save, if nothing was saved since the snapshot:
    /// else nothing is done and the result absent, and `followRevision` says whether it can be
    /// tried again; so it can be as long as the backup stays prepared. Whatever fails, the store is
    /// as it was, and the snapshot of an import stays; nothing fails any more after the save.
    std::optional<Restored> finish(PreparedRestore& prepared, base::Instant now, Work& work,
                                   const std::function<void()>& beforeSave = {}) const;
    /// How often it is tried again. To compare takes long and keeps nobody from saving: a store
    /// that is saved each time meanwhile counts as changed, whatever was saved.
    static constexpr int kFollowedRevisions = 3;

    /// All of a restore at once, for who can wait.
    Restored restore(ValidBackup backup, const std::filesystem::path& recoveryFile,
                     base::Instant now, Work& work, const RestoreHooks& hooks = {}) const;
    Restored restore(backup::BackupDocument document, const std::filesystem::path& recoveryFile,
                     base::Instant now, Work& work, const RestoreHooks& hooks = {}) const;
    /// Brings back what the last restore replaced; what that brought can be brought back alike.
    Restored undoRestore(const std::filesystem::path& recoveryFile, base::Instant now, Work& work,
                         const RestoreHooks& hooks = {}) const;

private:
    Restored finishAfter(PreparedRestore prepared, base::Instant now, Work& work,
                         const RestoreHooks& hooks) const;

    store::ModelContext* m_context;
    services::ReminderReconciling* m_reminders;
    services::WidgetReloading* m_widgets;
    base::LogSink* m_sink;
    base::Logger m_log;
};

} // namespace korvex::storage
