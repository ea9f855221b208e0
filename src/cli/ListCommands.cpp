#include "cli/Commands.h"

#include "cli/CommandDefinition.h"
#include "cli/DisplayText.h"
#include "cli/Json.h"
#include "cli/ListText.h"
#include "cli/Lookup.h"
#include "cli/Options.h"
#include "cli/Session.h"

namespace korvex::cli {

namespace {

using store::FieldReference;

struct BoardsOptions {
    bool archived = false;
    bool all = false;
};

struct ListOptions {
    std::optional<std::string> board;
    bool completed = false;
};

struct ShowOptions {
    std::string entry;
    std::optional<std::string> form;
};

ExitStatus boards(Session& session, const BoardsOptions& options) {
    auto boards = session.boards().boards();
    if (!options.all) {
        std::erase_if(boards,
                      [&](const auto* board) { return board->isArchived() != options.archived; });
    }
    if (session.wantsJson()) {
        Json(session.output()).boards(boards);
    } else {
        printBoards(session, boards);
    }
    return ExitStatus::done;
}

/// Only what is not completed is read from the store; a completed text entry, which only a damaged
/// store has, still is an active entry.
std::vector<model::Entry*> activeEntries(Session& session, const model::Board& board) {
    const auto stored = session.context().fetch<model::Entry>(
        {.condition =
             FieldReference{model::Entry::boardField} == store::Value(board.id()) &&
             (FieldReference{model::Entry::isCompletedField} == store::Value(std::int64_t{0}) ||
              FieldReference{model::Entry::typeRawValueField} !=
                  store::Value(std::string(model::rawValue(model::EntryType::todo))))});
    return services::EntryService::activeEntries(stored, board.id());
}

ExitStatus list(Session& session, const ListOptions& options) {
    const auto& board = findBoardOrInbox(session, options.board);
    const auto entries = options.completed ? services::EntryService::completedTodos(board)
                                           : activeEntries(session, board);
    if (session.wantsJson()) {
        DueLabels labels(session);
        Json(session.output()).entries(entries, labels);
        return ExitStatus::done;
    }
    printEntries(session, entries, options.completed ? ListDate::completed : ListDate::due);
    if (entries.empty() && session.terminal().isPresent) {
        session.remark(options.completed ? "Nothing is completed on " + board.name() + "."
                                         : "Nothing is open on " + board.name() +
                                               ". Add a todo with korvex add.");
    }
    return ExitStatus::done;
}

ExitStatus show(Session& session, const ShowOptions& options) {
    const auto asText = options.form == "text";
    const auto asJson = options.form == "json" || (!options.form && session.wantsJson());
    if (options.form && !asText && !asJson) {
        throw wrongUsage("--as takes text or json.");
    }
    if (asText && session.wantsJson()) {
        throw wrongUsage("--json and --as text do not go together.");
    }
    const auto& entry = findEntry(session, options.entry);
    if (asJson) {
        DueLabels labels(session);
        Json(session.output()).entry(entry, labels);
    } else if (asText) {
        // Into a file or a pipe exactly what is stored; a terminal gets no control characters.
        session.output().write(session.terminal().isPresent ? inLines(entry.content())
                                                            : entry.content());
        session.output().put('\n');
    } else {
        printEntry(session, entry);
    }
    return ExitStatus::done;
}

} // namespace

void addListCommands(CLI::App& program, Action& chosen) {
    const auto boardList =
        addCommand(program, "boards", "Lists the boards in sidebar order", chosen, boards);
    auto* archived = boardList.parser.add_flag("--archived", boardList.options->archived,
                                               "Only the archived boards");
    boardList.parser
        .add_flag("--all", boardList.options->all, "All boards, archived ones among them")
        ->excludes(archived);

    const auto entryList =
        addCommand(program, "list", "Lists the open entries of a board in order", chosen, list);
    addText(entryList.parser, "BOARD", "BOARD", entryList.options->board,
            "The board, by name or identifier; the Inbox when it is left out");
    entryList.parser.add_flag("--completed", entryList.options->completed,
                              "The completed todos instead, the latest first");

    const auto shown = addCommand(program, "show", "Shows all about one entry", chosen, show);
    addText(shown.parser, "ID", "ID", shown.options->entry,
            "The entry, by its identifier or the first 4 or more characters of it")
        ->required();
    addText(shown.parser, "--as", "FORM", shown.options->form,
            "text: only its text, as it is stored; json: all its fields");
}

void printInbox(Session& session) {
    list(session, {});
}

} // namespace korvex::cli
