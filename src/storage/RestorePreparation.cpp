#include "storage/RestorePreparation.h"

#include "app/StoreLocation.h"
#include "app/UserFolders.h"
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
constexpr const char* kSnapshotName = "BeforeRestore.korvexbackup";

/// `room` says where it is to be written, once there is something to write.
template <typename Room>
RecoverySnapshot writeSnapshot(store::ModelContainer& container, RecoveryFolder& folder, Room room,
                               base::Instant now, base::LogSink& log, Work& work) {
    const auto stored = createBackup(container, now, work);
    work.begin(Stage::checking);
    backup::validate(stored.document, log);
    RecoverySnapshot snapshot{.file = room(), .revision = stored.revision, .exportedAt = now};
    folder.beginWriting();
    writeBackup(stored.document, snapshot.file, work,
                {.missing = MissingFolders::userOnly, .proven = [&](const auto bytes) {
                     snapshot.identity = RecoveryFolder::identity(bytes);
                 }});
    return snapshot;
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
    ValidBackup backup(folder->read(named, work), log);
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
    RecoveryFolder folder(recoveryFile, RecoveryFolder::Missing::refuse);
    const auto named = container.replacementNote();
    folder.settle(named, work);
    return folder.read(named, work);
}

std::optional<ListedBackup> recoveredFile(store::ModelContainer& container,
                                          const fs::path& recoveryFile, Work& work) {
    auto file = std::optional(recoveryFile);
    try {
        RecoveryFolder folder(recoveryFile, RecoveryFolder::Missing::refuse,
                              std::chrono::milliseconds::zero());
        const auto named = container.replacementNote();
        folder.settle(named, work);
        file = folder.fileToRead(named, work);
    } catch (const RestoreError& error) {
        if (error.which() != RestoreErrorCase::running) {
            return std::nullopt; // there is no folder
        }
    }
    auto listed = file ? backupsIn(file->parent_path()) : std::vector<ListedBackup>();
    const auto found = std::find_if(listed.begin(), listed.end(),
                                    [&](const ListedBackup& each) { return each.file == *file; });
    return found == listed.end() ? std::nullopt : std::optional(std::move(*found));
}

fs::path recoveryFile(const fs::path& dataDirectory) {
    const auto folder = app::isUsersOwn(dataDirectory)
                            ? app::userFolder("XDG_DATA_HOME", ".local/share") / "Korvex"
                            : dataDirectory;
    return folder / kRecoveryFolder / kSnapshotName;
}

std::string descriptionOf(RestoreErrorCase which) {
    switch (which) {
    case RestoreErrorCase::nothingToTakeBack:
        return "There is no import to take back: no recovery backup is kept.";
    case RestoreErrorCase::snapshotIsGone:
        return "The recovery backup is not the one that the last import has left. Nothing was "
               "replaced; it can be imported like any other.";
    case RestoreErrorCase::notAsAsked:
        return "Something else would come back by now than you were asked about. Nothing was "
               "replaced; try again.";
    case RestoreErrorCase::storeChanged:
        return "Your data changed while the recovery backup was being saved. Nothing was replaced. "
               "Try again.";
    case RestoreErrorCase::running:
        return "Another program is importing a backup or taking an import back right now. Nothing "
               "was replaced; try again.";
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
