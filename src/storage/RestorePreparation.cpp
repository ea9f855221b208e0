#include "storage/BackupService.h"

#include "app/StoreLocation.h"
#include "app/UserFolders.h"
#include "base/FileReplacement.h"

#include <algorithm>
#include <map>
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

using Words = std::map<base::Uuid, const BackupDocument::EntryRecord*>;

/// Whether two documents have the same entries with the same words, whatever a repair has made of
/// the rest.
bool haveSameWords(const BackupDocument& left, const BackupDocument& right) {
    const auto wordsOf = [](const BackupDocument& document) {
        Words words;
        for (const auto& entry : document.entries) {
            words.emplace(entry.id, &entry);
        }
        return words;
    };
    const auto leftWords = wordsOf(left);
    const auto rightWords = wordsOf(right);
    return std::equal(leftWords.begin(), leftWords.end(), rightWords.begin(), rightWords.end(),
                      [](const auto& one, const auto& other) {
                          return one.first == other.first &&
                                 one.second->content == other.second->content &&
                                 one.second->richTextData == other.second->richTextData;
                      });
}

/// A program was killed while it took a restore back. Where it had done so and was only to move the
/// new snapshot into its place, that is done now: the store is not what that snapshot has any more,
/// but what was to come back.
void settleUndo(store::ModelContainer& container, const fs::path& recoveryFile, Work& work) {
    const auto pending = pendingFile(recoveryFile);
    std::error_code error;
    if (!fs::exists(pending, error)) {
        return;
    }
    try {
        const auto undone = readBackup(pending, work);
        auto current = createBackup(container, undone.exportedAt, work).document;
        current.appVersion = undone.appVersion;
        if (current == undone || !haveSameWords(current, recoveredDocument(recoveryFile, work))) {
            return;
        }
    } catch (const backup::BackupError&) {
        return; // not written to its end, or no store that could have been replaced
    }
    if (const auto failure = base::moveFile(pending, recoveryFile)) {
        throw FileError(recoveryFile.string() + " could not be written: " + failure.message() +
                        ".");
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
