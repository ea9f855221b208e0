#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/Json.h"
#include "cli/output/ListText.h"
#include "cli/output/RichTextJson.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "richtext/stored/EntryText.h"
#include "services/EntryOrder.h"

namespace korvex::cli {

namespace {

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
        if (boards.empty() && options.archived && session.terminal().isPresent) {
            session.remark("No board is archived.");
        }
    }
    return ExitStatus::done;
}

/// Only what is not completed is read from the store; a completed text entry, which only a damaged
/// store has, still is an active entry.
std::vector<model::Entry*> activeEntries(Session& session, const model::Board& board) {
    const auto stored = session.context().fetch<model::Entry>(
        {.condition = model::Entry::onBoard(board.id()) && !model::Entry::completedTodos()});
    return services::activeEntries(stored, board.id());
}

ExitStatus list(Session& session, const ListOptions& options) {
    const auto& board = findBoardOrInbox(session, options.board);
    const auto entries =
        options.completed ? services::completedTodos(board) : activeEntries(session, board);
    if (session.wantsJson()) {
        DueLabels labels(session);
        Json(session.output()).entries(entries, labels);
        return ExitStatus::done;
    }
    printEntries(session, entries, options.completed ? ListDate::completed : ListDate::due);
    if (entries.empty() && session.terminal().isPresent) {
        session.remark(options.completed ? "No completed todos yet."
                                         : "Nothing here yet. Add a todo with korvex add.");
    }
    return ExitStatus::done;
}

enum class Form { all, text, rtf, json };

Form readForm(const Session& session, const std::optional<std::string>& typed) {
    if (!typed) {
        return session.wantsJson() ? Form::json : Form::all;
    }
    if (*typed == "json") {
        return Form::json;
    }
    if (*typed != "text" && *typed != "rtf") {
        throw wrongUsage("--as takes text, rtf or json.");
    }
    if (session.wantsJson()) {
        throw wrongUsage("--json and --as " + *typed + " do not go together.");
    }
    return *typed == "rtf" ? Form::rtf : Form::text;
}

/// Into a file or a pipe exactly this; a terminal gets no control characters.
void writeText(Session& session, std::string_view text) {
    if (session.terminal().isPresent) {
        session.output().write(inLines(text));
    } else {
        session.output().write(text);
    }
}

/// The stored bytes of a text, or what they would be.
void printRtf(Session& session, const model::Entry& entry) {
    const auto& stored = entry.richTextData();
    const auto rtf = !entry.isTodo() && stored && !stored->empty()
                         ? *stored
                         : session.serializer().encode(
                               richtext::RichTextSerializer::plainRichText(entry.content()));
    writeText(session, {reinterpret_cast<const char*>(rtf.data()), rtf.size()});
}

void printJson(Session& session, const model::Entry& entry) {
    DueLabels labels(session);
    Json json(session.output());
    json.beginObject();
    json.entryMembers(entry, labels);
    if (!entry.isTodo()) {
        if (const auto text = richtext::wholeRichText(entry, session.serializer())) {
            writeRichText(json, *text);
        }
    }
    json.endObject();
}

ExitStatus show(Session& session, const ShowOptions& options) {
    const auto form = readForm(session, options.form);
    const auto& entry = findEntry(session, options.entry);
    switch (form) {
    case Form::all:
        printEntry(session, entry);
        break;
    case Form::text:
        writeText(session, textOf(session, entry));
        session.output().put('\n');
        break;
    case Form::rtf:
        printRtf(session, entry);
        break;
    case Form::json:
        printJson(session, entry);
        break;
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
    addText(shown.parser, "ID", "ID", shown.options->entry, kEntryHelp)->required();
    addText(shown.parser, "--as", "text|rtf|json", shown.options->form,
            "text: only its text; rtf: its formatted text, as it is stored; json: all its fields, "
            "and of a text entry its runs and paragraphs too");
    shown.parser.footer(
        "A text entry is shown as lines: items of a list begin with their markers, a row of a\n"
        "table is one line with \" | \" between its cells.");
}

void printInbox(Session& session) {
    list(session, {});
}

} // namespace korvex::cli
