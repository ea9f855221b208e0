#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/Json.h"
#include "cli/output/ListText.h"
#include "cli/session/Session.h"

#include "backup/BackupFileIO.h"
#include "base/ByteSize.h"
#include "model/EntryAttachment.h"

namespace korvex::cli {

namespace {

struct CheckOptions {
    std::vector<std::string> file;
};

backup::BackupDocument readBackup(const std::string& file) {
    try {
        return backup::BackupFileIO::decode(backup::BackupFileIO::readFile(file));
    } catch (const std::filesystem::filesystem_error& error) {
        throw refusal(file + " could not be read: " + error.code().message() + ".");
    }
}

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
std::string countText(std::size_t count, std::size_t part, std::string_view partName) {
    auto text = std::to_string(count);
    if (part > 0) {
        text.append(" (").append(std::to_string(part)).append(" ").append(partName).append(")");
    }
    return text;
}

void print(Session& session, const backup::BackupDocument& document, const BackupCounts& counts) {
    printFact(session, "Version", std::to_string(document.schemaVersion));
    printFact(session, "Exported", session.formats().dayAndShortTime(document.exportedAt));
    printFact(session, "App version", document.appVersion);
    printFact(session, "Boards", countText(counts.boards, counts.archivedBoards, "archived"));
    printFact(session, "Entries", std::to_string(counts.entries));
    printFact(session, "Todos", countText(counts.todos, counts.completedTodos, "completed"));
    printFact(session, "Texts", std::to_string(counts.texts));
    const auto size = counts.attachments == 0 ? "" : ", " + base::sizeText(counts.attachmentBytes);
    printFact(session, "Attachments", std::to_string(counts.attachments) + size);
}

ExitStatus check(Session& session, const CheckOptions& options) {
    const auto document = readBackup(options.file.front());
    backup::validate(document, session.environment().log);
    const BackupCounts counts(document);
    if (session.wantsJson()) {
        writeJson(session, document, counts);
    } else {
        print(session, document, counts);
    }
    return ExitStatus::done;
}

} // namespace

void addBackupCommands(CLI::App& program, Action& chosen) {
    auto& group = *program.add_subcommand("backup", "Checks backups");
    group.fallthrough()->require_subcommand(1);

    const auto checked =
        addCommand(group, "check", "Reads a whole backup and says what it holds", chosen, check);
    addFiles(checked.parser, "FILE", checked.options->file, "The backup")->expected(1);
    checked.parser.footer("Ends with 0 for a backup that could be imported and with 1 for what is "
                          "none. The store is\n"
                          "neither read nor changed.");
}

} // namespace korvex::cli
