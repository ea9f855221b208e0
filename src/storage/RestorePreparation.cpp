#include "storage/RestorePreparation.h"

#include "app/StoreLocation.h"
#include "app/UserFolders.h"
#include "backup/BackupFileIO.h"
#include "storage/BackupService.h"
#include "storage/RestoreError.h"

#include <algorithm>
#include <utility>

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;
using backup::BackupDocument;
using Kind = PreparedRestore::Kind;

constexpr const char* kRecoveryFolder = "Recovery";
/// In the folder that has the one of the user's own store.
constexpr const char* kRecoveryFolderInShared = "Recovery of Primary.store";
constexpr const char* kSnapshotName = "BeforeRestore.korvexbackup";
/// At a snapshot that is being moved.
constexpr int kLooks = 3;

/// `room` says where it is to be written, once there is something to write.
template <typename Room>
RecoverySnapshot writeSnapshot(store::ModelContainer& container, RecoveryFolder& folder, Room room,
                               base::Instant now, base::LogSink& log, Work& work) {
    const auto stored = createValidBackup(container, now, log, work);
    RecoverySnapshot snapshot{.file = room(), .revision = stored.revision, .exportedAt = now};
    folder.beginWriting();
    writeBackup(stored.document, snapshot.file, work,
                {.missing = MissingFolders::userOnly, .proven = [&](const auto bytes) {
                     snapshot.identity = RecoveryFolder::identity(bytes);
                 }});
    return snapshot;
}

/// Another program may replace the store meanwhile, and what is looked for by then is another one.
std::optional<RecoveryFolder::Kept> find(store::ModelContainer& container,
                                         const fs::path& recoveryFile, Work& work) {
    while (true) {
        const auto named = container.replacementNote();
        auto kept = RecoveryFolder::find(recoveryFile, named, work);
        if (kept || container.replacementNote() == named) {
            return kept;
        }
    }
}

/// Why there is none: throws unless there is nothing to take back.
void requireNone(store::ModelContainer& container, const fs::path& recoveryFile) {
    std::error_code error;
    if (container.replacementNote() && fs::exists(fs::symlink_status(recoveryFile, error))) {
        throw RestoreError(RestoreErrorCase::snapshotIsGone);
    }
}

/// As the file stands in its folder now; absent where it does not. Throws FileError.
std::optional<ListedBackup> listedAs(const fs::path& file) {
    auto all = backupsIn(file.parent_path()).backups;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.file == file; });
    return found == all.end() ? std::nullopt : std::optional(std::move(*found));
}

bool isStillThere(const ListedBackup& file) {
    try {
        return listedAs(file.file) == file;
    } catch (const FileError&) {
        return false; // nor is its folder, or who looks anew says why
    }
}

} // namespace

ValidBackup::ValidBackup(BackupDocument document, base::LogSink& log)
    : m_document(std::move(document)) {
    backup::validate(m_document, log);
}

PreparedRestore prepareRestore(ValidBackup backup, store::ModelContainer& container,
                               const fs::path& recoveryFile, base::Instant now, base::LogSink& log,
                               Work& work) {
    auto folder = std::make_unique<RecoveryFolder>(recoveryFile, RecoveryFolder::Missing::make);
    const auto named = container.replacementNote();
    folder->settle(named, work);
    auto snapshot = writeSnapshot(
        container, *folder, [&] { return folder->makeRoom(named, work); }, now, log, work);
    return {.kind = Kind::import,
            .backup = std::move(backup),
            .snapshot = std::move(snapshot),
            .folder = std::move(folder)};
}

PreparedRestore prepareUndo(store::ModelContainer& container, const fs::path& recoveryFile,
                            const std::optional<AskedSnapshot>& asked, base::Instant now,
                            base::LogSink& log, Work& work) {
    auto folder = std::make_unique<RecoveryFolder>(recoveryFile, RecoveryFolder::Missing::refuse);
    const auto named = container.replacementNote();
    folder->settle(named, work);
    ValidBackup backup(recoveredDocument(container, recoveryFile, work), log);
    const AskedSnapshot found{.exportedAt = backup.document().exportedAt,
                              .entries = backup.document().entries.size()};
    if (asked && *asked != found) {
        throw RestoreError(RestoreErrorCase::notAsAsked);
    }
    auto snapshot = writeSnapshot(
        container, *folder, [&] { return folder->makeRoomBeside(); }, now, log, work);
    return {.kind = Kind::undo,
            .backup = std::move(backup),
            .snapshot = std::move(snapshot),
            .folder = std::move(folder)};
}

void followRevision(PreparedRestore& prepared, store::ModelContainer& container, Work& work) {
    const auto stored = createBackup(container, prepared.snapshot.exportedAt, work);
    if (!holdsBackup(prepared.snapshot.file, stored.document, work)) {
        refuseChanged(prepared.kind);
    }
    prepared.snapshot.revision = stored.revision;
}

void refuseChanged(Kind kind) {
    if (kind == Kind::undo) {
        throw RestoreError(RestoreErrorCase::storeChanged);
    }
    throw backup::BackupError(backup::BackupErrorCase::storeChanged);
}

BackupDocument recoveredDocument(store::ModelContainer& container, const fs::path& recoveryFile,
                                 Work& work) {
    const auto kept = find(container, recoveryFile, work);
    if (!kept) {
        requireNone(container, recoveryFile);
        throw RestoreError(RestoreErrorCase::nothingToTakeBack);
    }
    return backup::BackupFileIO::decode(kept->contents,
                                        [&work](std::size_t bytes) { work.advance(bytes); });
}

std::optional<ListedBackup> recoveredFile(store::ModelContainer& container,
                                          const fs::path& recoveryFile, Work& work) {
    auto wasFound = false;
    // Another program may just be moving it into its place.
    for (int look = 0; look < kLooks; ++look) {
        const auto kept = find(container, recoveryFile, work);
        wasFound = kept.has_value();
        if (!kept) {
            continue;
        }
        if (auto listed = listedAs(kept->file)) {
            return listed;
        }
    }
    if (!wasFound) {
        requireNone(container, recoveryFile);
    }
    return std::nullopt;
}

std::optional<ListedBackup> KnownRecoveredFile::look(store::ModelContainer& container,
                                                     const fs::path& recoveryFile, Work& work) {
    const auto named = container.replacementNote();
    auto known = [&]() -> std::optional<ListedBackup> {
        const std::lock_guard lock(m_mutex);
        return named && m_named == named ? std::optional(m_file) : std::nullopt;
    }();
    if (known && isStillThere(*known)) {
        return known;
    }
    auto found = recoveredFile(container, recoveryFile, work);
    if (found && container.replacementNote() == named) {
        const std::lock_guard lock(m_mutex);
        m_named = named;
        m_file = *found;
    }
    return found;
}

fs::path recoveryFile(const fs::path& dataDirectory) {
    const auto shared = app::userFolder("XDG_DATA_HOME", ".local/share") / "Korvex";
    if (app::isUsersOwn(dataDirectory)) {
        return shared / kRecoveryFolder / kSnapshotName;
    }
    const auto isShared = app::dataDirectory(dataDirectory) == app::dataDirectory(shared);
    return dataDirectory / (isShared ? kRecoveryFolderInShared : kRecoveryFolder) / kSnapshotName;
}

std::string descriptionOf(RestoreErrorCase which) {
    switch (which) {
    case RestoreErrorCase::nothingToTakeBack:
        return "There is nothing to take back, or its recovery backup is gone.";
    case RestoreErrorCase::snapshotIsGone:
        return "The recovery backup is not the one that the last replacement has left. Nothing "
               "was replaced; it can be imported like any other.";
    case RestoreErrorCase::notAsAsked:
        return "Something else would come back by now than you were asked about. Nothing was "
               "replaced; try again.";
    case RestoreErrorCase::storeChanged:
        return "Your data changed while the recovery backup was being saved. Nothing was replaced. "
               "Try again.";
    case RestoreErrorCase::running:
        return "Another program is replacing all boards right now. Nothing was replaced; try "
               "again.";
    case RestoreErrorCase::ofStore:
        return "This place belongs to the store itself. Nothing was written; choose another one "
               "for the backup.";
    }
    return {};
}

std::string domainOf(RestoreErrorCase) {
    return "Korvex.Restore";
}

} // namespace korvex::storage
