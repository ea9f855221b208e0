#include "storage/BackupService.h"

#include "app/StoreLocation.h"
#include "app/UserFolders.h"
#include "base/FileReplacement.h"

#include <utility>

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;
using backup::BackupDocument;

constexpr const char* kRecoveryFolder = "Recovery";
constexpr const char* kSnapshotName = "BeforeRestore.korvexbackup";
/// The snapshot of a restore that is being taken back: until that is done, the other one must stay.
constexpr const char* kPendingName = "BeforeUndo.korvexbackup";

fs::path pendingFile(const fs::path& recoveryFile) {
    return recoveryFile.parent_path() / kPendingName;
}

RecoverySnapshot writeSnapshot(store::ModelContainer& container, const fs::path& file,
                               base::Instant now, base::LogSink& log, Work& work) {
    const auto snapshot = createBackup(container, now, work);
    work.begin(Stage::checking);
    backup::validate(snapshot.document, log);
    writeBackup(snapshot.document, file, work, MissingFolders::userOnly);
    return {.file = file, .revision = snapshot.revision, .exportedAt = now};
}

/// A program was killed while it took a restore back. Where it had done so and was only to move the
/// new snapshot into its place, that is done now.
void settleUndo(store::ModelContainer& container, const fs::path& recoveryFile, Work& work) {
    const auto pending = pendingFile(recoveryFile);
    std::error_code error;
    if (!fs::exists(pending, error)) {
        return;
    }
    const auto restored = recoveredDocument(recoveryFile, work);
    auto current = createBackup(container, restored.exportedAt, work).document;
    current.appVersion = restored.appVersion;
    if (current == restored) {
        if (const auto failure = base::moveFile(pending, recoveryFile)) {
            throw FileError(recoveryFile.string() + " could not be written: " + failure.message() +
                            ".");
        }
    }
}

} // namespace

PreparedRestore prepareRestore(BackupDocument document, store::ModelContainer& container,
                               const fs::path& recoveryFile, base::Instant now, base::LogSink& log,
                               Work& work) {
    work.begin(Stage::checking);
    backup::validate(document, log);
    auto snapshot = writeSnapshot(container, recoveryFile, now, log, work);
    std::error_code ignored;
    fs::remove(pendingFile(recoveryFile), ignored);
    return {.document = std::move(document), .snapshot = std::move(snapshot)};
}

BackupDocument recoveredDocument(const fs::path& recoveryFile, Work& work) {
    std::error_code error;
    if (!fs::exists(recoveryFile, error)) {
        throw FileError("There is no import to take back: no recovery backup is kept.");
    }
    return readBackup(recoveryFile, work);
}

PreparedRestore prepareUndo(store::ModelContainer& container, const fs::path& recoveryFile,
                            base::Instant now, base::LogSink& log, Work& work) {
    settleUndo(container, recoveryFile, work);
    auto document = recoveredDocument(recoveryFile, work);
    backup::validate(document, log);
    auto snapshot = writeSnapshot(container, pendingFile(recoveryFile), now, log, work);
    snapshot.becomes = recoveryFile;
    return {.document = std::move(document), .snapshot = std::move(snapshot)};
}

fs::path recoveryFile(const fs::path& dataDirectory) {
    const auto folder = app::isUsersOwn(dataDirectory)
                            ? app::userFolder("XDG_DATA_HOME", ".local/share") / "Korvex"
                            : dataDirectory;
    return folder / kRecoveryFolder / kSnapshotName;
}

} // namespace korvex::storage
