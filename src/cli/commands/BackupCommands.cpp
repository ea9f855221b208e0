#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/LoggedOperation.h"
#include "cli/commands/Options.h"
#include "cli/output/BackupText.h"
#include "cli/output/Json.h"
#include "cli/output/ListText.h"
#include "cli/session/Session.h"
#include "cli/terminal/LongWork.h"

#include "base/ByteSize.h"
#include "base/CountText.h"
#include "model/EntryAttachment.h"
#include "storage/BackupService.h"
#include "storage/RestoreWords.h"

namespace korvex::cli {

namespace {

struct CheckOptions {
    std::vector<std::string> file;
};

struct ExportOptions {
    std::vector<std::string> file;
    bool mayReplace = false;
};

struct ImportOptions {
    std::vector<std::string> file;
    bool isConfirmed = false;
};

struct UndoOptions {
    bool isConfirmed = false;
};

/// What a backup holds.
struct BackupCounts {
    std::size_t boards = 0;
    std::size_t archivedBoards = 0;
    std::size_t entries = 0;
    std::size_t todos = 0;
    std::size_t completedTodos = 0;
    std::size_t texts = 0;
    std::size_t attachments = 0;
    std::size_t attachmentBytes = 0;

    explicit BackupCounts(const backup::BackupDocument& document)
        : boards(document.boards.size()), entries(document.entries.size()) {
        for (const auto& board : document.boards) {
            archivedBoards += board.isArchived.value_or(false) ? 1 : 0;
        }
        for (const auto& entry : document.entries) {
            const auto isTodo = entry.type == model::rawValue(model::EntryType::todo);
            ++(isTodo ? todos : texts);
            completedTodos += entry.isCompleted ? 1 : 0;
            for (const auto& each : model::EntryAttachment::decode(entry.attachmentData)) {
                ++attachments;
                attachmentBytes += each.data.size();
            }
        }
    }
};

void writeJson(Session& session, const backup::BackupDocument& document,
               const BackupCounts& counts) {
    Json json(session.output());
    const auto count = [&](std::string_view name, std::size_t value) {
        json.member(name, static_cast<std::int64_t>(value));
    };
    json.beginObject();
    json.member("schemaVersion", document.schemaVersion);
    json.member("exportedAt", std::string_view(base::isoText(document.exportedAt)));
    json.member("appVersion", std::string_view(document.appVersion));
    count("boardCount", counts.boards);
    count("archivedBoardCount", counts.archivedBoards);
    count("entryCount", counts.entries);
    count("todoCount", counts.todos);
    count("completedTodoCount", counts.completedTodos);
    count("textCount", counts.texts);
    count("attachmentCount", counts.attachments);
    count("attachmentBytes", counts.attachmentBytes);
    json.endObject();
}

/// "3 (1 archived)", without the part when there is none.
std::string countWithPart(std::size_t count, std::size_t part, std::string_view partName) {
    auto text = base::numberText(count);
    if (part > 0) {
        text.append(" (").append(base::numberText(part)).append(" ").append(partName).append(")");
    }
    return text;
}

void print(Session& session, const backup::BackupDocument& document, const BackupCounts& counts) {
    printFact(session, "Version", std::to_string(document.schemaVersion));
    printFact(session, "Exported", session.formats().dayAndShortTime(document.exportedAt));
    printFact(session, "App version", document.appVersion);
    printFact(session, "Boards", countWithPart(counts.boards, counts.archivedBoards, "archived"));
    printFact(session, "Entries", base::numberText(counts.entries));
    printFact(session, "Todos", countWithPart(counts.todos, counts.completedTodos, "completed"));
    printFact(session, "Texts", base::numberText(counts.texts));
    const auto size = counts.attachments == 0 ? "" : ", " + base::sizeText(counts.attachmentBytes);
    printFact(session, "Attachments", base::numberText(counts.attachments) + size);
}

ExitStatus check(Session& session, const CheckOptions& options) {
    LongWork longWork(session.environment().errorDescriptor);
    const auto document = storage::readBackup(options.file.front(), longWork.work());
    backup::validate(document, session.environment().log);
    const BackupCounts counts(document);
    if (session.wantsJson()) {
        writeJson(session, document, counts);
    } else {
        print(session, document, counts);
    }
    return ExitStatus::done;
}

ExitStatus exportTo(Session& session, const ExportOptions& options) {
    using Existing = base::StagedFile::Existing;
    const std::filesystem::path file = options.file.front();
    const auto existing = options.mayReplace ? Existing::replace : Existing::keep;
    storage::requireFile(file);
    std::error_code error;
    if (existing == Existing::keep &&
        std::filesystem::exists(std::filesystem::symlink_status(file, error))) {
        throw refusal(file.string() + " is there already. Add --force to replace it.");
    }
    const auto summary = logged(session, [&] {
        auto& store = session.existing().container();
        LongWork longWork(session.environment().errorDescriptor);
        return storage::exportBackup(store, file, session.now(), session.environment().log,
                                     longWork.work(), existing);
    });
    printBackup(session, "Backup exported.", file, summary);
    return ExitStatus::done;
}

/// The service over the session's store.
class Restoring {
public:
    Restoring(Session& session, store::ModelContext& context)
        : m_session(session),
          m_service(context, session.reminders(), session.widgets(), session.environment().log) {}

    std::filesystem::path recoveryFile() const {
        return storage::recoveryFile(m_session.storeFile().parent_path());
    }
    const storage::BackupService& service() const { return m_service; }
    /// Where what was replaced is kept is told where that is not the usual place. Nothing is read
    /// for it: what is done by now fails no more.
    void printResult(std::string_view text, const storage::Restored& restored) const {
        if (m_session.wantsJson()) {
            Json json(m_session.output());
            json.beginObject();
            json.member("boardCount", static_cast<std::int64_t>(restored.boardCount));
            json.member("entryCount", static_cast<std::int64_t>(restored.entryCount));
            json.member("recoveryFile", std::string_view(restored.snapshot.native()));
            json.endObject();
        } else {
            const auto where = restored.snapshot == recoveryFile()
                                   ? std::string()
                                   : " It is in " + restored.snapshot.string() + ".";
            m_session.output().write(std::string(text) + where + "\n");
        }
    }

private:
    Session& m_session;
    storage::BackupService m_service;
};

std::string entriesText(const backup::BackupDocument& document) {
    return base::countText(document.entries.size(), "entry", "entries");
}

ExitStatus importFrom(Session& session, const ImportOptions& options) {
    LongWork longWork(session.environment().errorDescriptor);
    return logged(session, [&] {
        storage::ValidBackup backup(storage::readBackup(options.file.front(), longWork.work()),
                                    session.environment().log);
        if (!options.isConfirmed) {
            throw refusal("Importing this backup will replace your current boards, text entries "
                          "and todos with " +
                          entriesText(backup.document()) +
                          ". A local recovery backup will be saved first. Add --yes to do it.");
        }
        const Restoring restoring(session, session.context());
        const auto restored = restoring.service().restore(
            std::move(backup), restoring.recoveryFile(), session.now(), longWork.work());
        restoring.printResult(
            "Backup restored. A recovery copy of the previous data is kept locally.", restored);
        return ExitStatus::done;
    });
}

std::string takeBackText(Session& session, std::string_view text,
                         const storage::BackupSummary& backup) {
    return storage::filledIn(text, storage::englishContents(backup),
                             session.formats().dayAndShortTime(backup.exportedAt));
}

ExitStatus undoImport(Session& session, const UndoOptions& options) {
    LongWork longWork(session.environment().errorDescriptor);
    return logged(session, [&] {
        const Restoring restoring(session, session.existing());
        if (!options.isConfirmed) {
            const auto kept = storage::recoveredDocument(session.existing().container(),
                                                         restoring.recoveryFile(), longWork.work());
            throw refusal(takeBackText(session, storage::kTakeBackQuestion,
                                       {.exportedAt = kept.exportedAt,
                                        .boards = kept.boards.size(),
                                        .entries = kept.entries.size()}) +
                          " Add --yes to do it.");
        }
        const auto restored = restoring.service().undoRestore(restoring.recoveryFile(),
                                                              session.now(), longWork.work());
        restoring.printResult(takeBackText(session, storage::kTakenBack,
                                           {.exportedAt = restored.madeAt,
                                            .boards = restored.boardCount,
                                            .entries = restored.entryCount}),
                              restored);
        return ExitStatus::done;
    });
}

} // namespace

void addBackupCommands(CLI::App& program, Action& chosen) {
    auto& group = *program.add_subcommand("backup", "Makes, checks and imports backups");
    group.fallthrough()->require_subcommand(1);

    const auto exported =
        addCommand(group, "export", "Writes all boards and entries to a file", chosen, exportTo);
    addFiles(exported.parser, "FILE", exported.options->file, "The new backup")->expected(1);
    exported.parser.add_flag("--force", exported.options->mayReplace,
                             "Replace a file that is there already");
    exported.parser.footer("The file is read back and compared before the command ends with 0. It "
                           "is private content:\nkeep it in a safe location.");

    const auto imported =
        addCommand(group, "import", "Replaces all boards and entries by those of a backup", chosen,
                   importFrom);
    addFiles(imported.parser, "FILE", imported.options->file, "The backup")->expected(1);
    imported.parser.add_flag("--yes", imported.options->isConfirmed,
                             "Do it; without this the command only says what would be replaced");
    imported.parser.footer("What was there before is kept; korvex backup undo-import brings it "
                           "back.");

    const auto undone = addCommand(group, "undo-import",
                                   "Brings back what the last import replaced", chosen, undoImport);
    undone.parser.add_flag("--yes", undone.options->isConfirmed,
                           "Do it; without this the command only says what would be replaced");
    undone.parser.footer("It can be taken back alike.");

    const auto checked =
        addCommand(group, "check", "Reads a whole backup and says what it holds", chosen, check);
    addFiles(checked.parser, "FILE", checked.options->file, "The backup")->expected(1);
    checked.parser.footer("Ends with 0 for a backup that could be imported and with 1 for what is "
                          "none. The store is\n"
                          "neither read nor changed.");

    addAutomaticBackupCommands(group, chosen);
}

} // namespace korvex::cli
