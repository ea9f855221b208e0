#include "store/faults/Operations.h"

#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "model/EntryAttachment.h"
#include "storage/AutomaticBackup.h"
#include "storage/FolderBookmark.h"

#include <array>

namespace korvex::faults {

namespace {

/// What is imported: another Inbox, and a board with a todo and a text.
backup::BackupDocument otherStore() {
    const auto identifier = [](std::uint8_t number) {
        base::Uuid id;
        id.bytes.fill(number);
        return id;
    };
    backup::BackupDocument document{.exportedAt = kNow, .appVersion = "0"};
    for (std::uint8_t number = 0; number < 2; ++number) {
        document.boards.push_back({.id = identifier(number),
                                   .name = number == 0 ? "Inbox" : "Imported",
                                   .createdAt = kNow,
                                   .updatedAt = kNow,
                                   .sortOrder = number,
                                   .isSystem = number == 0});
        document.entries.push_back({.id = identifier(number),
                                    .boardID = identifier(1),
                                    .type = number == 0 ? "todo" : "text",
                                    .content = "imported",
                                    .createdAt = kNow,
                                    .updatedAt = kNow,
                                    .sortOrder = number});
    }
    return document;
}

void writeImported(Program& program) {
    storage::Work work;
    storage::writeBackup(otherStore(), program.importedFile(), work);
}

/// More than is kept in memory until a save ends.
void writeLargeImported(Program& program) {
    auto document = otherStore();
    const std::array attached{model::EntryAttachment{
        .id = base::Uuid::random(), .filename = "large", .data = base::Bytes(4 << 20, 'x')}};
    document.entries.back().attachmentData = model::EntryAttachment::encode(attached);
    storage::Work work;
    storage::writeBackup(document, program.importedFile(), work);
}

void exportBackup(Program& program) {
    auto work = program.steps.work();
    storage::exportBackup(*program.container, program.exportedFile(), kLater, program.log, work);
}

/// Under another name, as on the next day.
void exportNext(Program& program) {
    storage::Work work;
    storage::exportBackup(*program.container,
                          program.exportedFile().parent_path() / "next.korvexbackup", kLater,
                          program.log, work);
}

void importBackup(Program& program) {
    auto work = program.steps.work();
    program.backups().restore(storage::readBackup(program.importedFile(), work),
                              program.recoveryFile(), kLater, work,
                              {.beforeReplace = [&] { program.steps.reached("before replacing"); },
                               .beforeSave = [&] { program.steps.reached("before saving"); }});
}

void undoImport(Program& program) {
    auto work = program.steps.work();
    program.backups().undoRestore(program.recoveryFile(), kLater, work);
}

/// As the window does: prepared on a container of its own for reading, which a thread has there.
void finishInWindow(Program& program, storage::PreparedRestore prepared, storage::Work& work) {
    program.steps.reached("before replacing");
    const auto service = program.backups();
    for (int followed = 0; !service.finish(prepared, kLater, work); ++followed) {
        if (followed == storage::BackupService::kFollowedRevisions) {
            storage::refuseChanged(prepared.kind);
        }
        const auto reader = storage::openForReading(program.file, program.log);
        storage::followRevision(prepared, *reader, work);
    }
}

void importInWindow(Program& program) {
    auto work = program.steps.work();
    storage::ValidBackup backup(storage::readBackup(program.importedFile(), work), program.log);
    program.backups().validateReplacement();
    const auto reader = storage::openForReading(program.file, program.log);
    finishInWindow(program,
                   storage::prepareRestore(std::move(backup), *reader, program.recoveryFile(),
                                           kLater, program.log, work),
                   work);
}

void undoInWindow(Program& program) {
    auto work = program.steps.work();
    program.backups().validateReplacement();
    const auto reader = storage::openForReading(program.file, program.log);
    finishInWindow(program,
                   storage::prepareUndo(*reader, program.recoveryFile(), std::nullopt, kLater,
                                        program.log, work),
                   work);
}

/// As the window does.
void backUp(Program& program, app::UserDefaults& defaults, const app::AppPreferences& preferences) {
    auto backup = storage::automaticBackup(preferences, program.file, kLater);
    backup.keeping = kKeptBackups;
    auto work = program.steps.work();
    const auto made = storage::makeAutomaticBackup(backup, defaults, program.log, work);
    if (made.pruningFailure) {
        std::rethrow_exception(made.pruningFailure);
    }
}

/// Into the folder that was chosen before.
void backUpAgain(Program& program) {
    app::FileUserDefaults defaults(program.folder / "settings.json");
    app::AppPreferences preferences(defaults, program.log);
    backUp(program, defaults, preferences);
}

/// From choosing the folder on.
void chooseAndBackUp(Program& program) {
    app::FileUserDefaults defaults(program.folder / "settings.json");
    app::AppPreferences preferences(defaults, program.log);
    std::error_code ignored;
    std::filesystem::create_directory(program.chosenFolder(), ignored);
    preferences.setAutomaticBackupBookmark(
        storage::FolderBookmark::make(program.chosenFolder()).bytes());
    backUp(program, defaults, preferences);
}

} // namespace

const Operations& backupOperations() {
    static const Operations all{
        {"write-imported", writeImported}, {"write-large", writeLargeImported},
        {"export", exportBackup},          {"export-next", exportNext},
        {"import", importBackup},          {"import-in-window", importInWindow},
        {"undo-import", undoImport},       {"undo-in-window", undoInWindow},
        {"back-up", backUpAgain},          {"automatic-backup", chooseAndBackUp},
    };
    return all;
}

} // namespace korvex::faults
