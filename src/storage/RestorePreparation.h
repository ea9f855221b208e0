#pragma once

#include "backup/BackupDocument.h"
#include "base/Log.h"
#include "storage/BackupHistory.h"
#include "storage/RecoveryFolder.h"
#include "storage/Work.h"
#include "store/ModelContainer.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace korvex::storage {

/// A document that may become a store.
class ValidBackup {
public:
    /// Throws as `backup::validate`.
    ValidBackup(backup::BackupDocument document, base::LogSink& log);

    const backup::BackupDocument& document() const { return m_document; }
    backup::BackupDocument take() && { return std::move(m_document); }

private:
    backup::BackupDocument m_document;
};

/// Where the store was kept as it was before it is replaced.
struct RecoverySnapshot {
    std::filesystem::path file;
    /// What the store is to name it by.
    std::string identity;
    /// The store's revision that it holds.
    std::int64_t revision = 0;
    base::Instant exportedAt;
};

/// What becomes the store, and the snapshot of what that will replace. While it lives nobody else
/// replaces the store. Ends it without having become the store, the snapshot of an import stays;
/// that of an undo goes, since what it would bring back is there.
struct PreparedRestore {
    enum class Kind { import, undo };

    Kind kind;
    /// Absent once it was on its way into the store, which may have failed.
    std::optional<ValidBackup> backup;
    RecoverySnapshot snapshot;
    std::unique_ptr<RecoveryFolder> folder;
};

/// Writes the recovery snapshot, in the place of the one that is there, which is kept beside it
/// until the store is replaced. Throws what `exportBackup` and `RecoveryFolder` throw.
PreparedRestore prepareRestore(ValidBackup backup, store::ModelContainer& container,
                               const std::filesystem::path& recoveryFile, base::Instant now,
                               base::LogSink& log, Work& work);

/// What a user was asked about: a snapshot from this moment with so many entries.
struct AskedSnapshot {
    base::Instant exportedAt;
    std::size_t entries = 0;

    bool operator==(const AskedSnapshot&) const = default;
};
/// The same to take a restore back: what comes back is in the recovery snapshot, which stays until
/// it is back in the store. Throws RestoreError too: `notAsAsked` where that is another snapshot by
/// now.
PreparedRestore prepareUndo(store::ModelContainer& container,
                            const std::filesystem::path& recoveryFile,
                            const std::optional<AskedSnapshot>& asked, base::Instant now,
                            base::LogSink& log, Work& work);

/// Throws that the store has changed since the snapshot, in the words for what was prepared.
[[noreturn]] void refuseChanged(PreparedRestore::Kind kind);
/// Something was saved after the snapshot, which need not have changed anything that a backup has:
/// where it has not, the snapshot is one of that revision too. Else throws that the store changed.
void followRevision(PreparedRestore& prepared, store::ModelContainer& container, Work& work);

/// What taking the last restore back would bring, also while another program replaces the store.
/// Throws RestoreError `nothingToTakeBack` where the store was never replaced, and
/// `snapshotIsGone`; and as `readBackup`.
backup::BackupDocument recoveredDocument(store::ModelContainer& container,
                                         const std::filesystem::path& recoveryFile, Work& work);
/// The file that has it; absent where there is none. Throws RestoreError `snapshotIsGone`,
/// FileError and Cancelled.
std::optional<ListedBackup> recoveredFile(store::ModelContainer& container,
                                          const std::filesystem::path& recoveryFile, Work& work);

/// The same for who looks often. To know the file all of it is read, so it is remembered until the
/// store names another, or it is not as it was. Any thread.
class KnownRecoveredFile {
public:
    std::optional<ListedBackup> look(store::ModelContainer& container,
                                     const std::filesystem::path& recoveryFile, Work& work);

private:
    std::mutex m_mutex;
    std::optional<std::string> m_named;
    ListedBackup m_file;
};

/// The recovery snapshot of the store in this data folder: `Recovery/BeforeRestore.korvexbackup` in
/// the folder, or in `Korvex` beside it where it is the user's own; in `Korvex` itself in a folder
/// of another name. So no two stores share one.
std::filesystem::path recoveryFile(const std::filesystem::path& dataDirectory);

} // namespace korvex::storage
