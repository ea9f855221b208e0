#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/DesktopApp.h"
#include "cli/commands/Options.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"

#include "app/Links.h"
#include "app/QuickEntryRequest.h"
#include "app/StoreLocation.h"

namespace korvex::cli {

namespace {

/// Has the desktop app do it: the one that runs, or else this program, which becomes it with these
/// arguments; they mean the same as the launch.
ExitStatus askOrBecome(Session& session, app::Launch launch, std::vector<std::string> arguments) {
    const auto folder = session.storeFile().parent_path();
    if (app::isUsersOwn(folder)) {
        // The app that runs has the name on the bus for its own store only.
        launch.token = app::launchToken();
        switch (session.environment().desktop.ask(launch)) {
        case RunningDesktop::Answer::taken:
            return ExitStatus::done;
        case RunningDesktop::Answer::silent:
            throw refusal("Korvex is running, but does not answer.");
        case RunningDesktop::Answer::notThere:
            break;
        }
    } else {
        arguments.insert(arguments.begin(), {"--data-dir", folder.string()});
    }
    throw refusal(becomeDesktopApp(arguments));
}

struct OpenOptions {
    std::string url;
};

/// Whether the store, which can be read, does not have it. Where it cannot be read, the app says
/// why.
bool isMissing(const base::Uuid& entry, Session& session) {
    try {
        store::ModelContext context(session.openExisting());
        const auto isThere = context.find<model::Entry>(entry) != nullptr;
        session.leaveStore();
        return !isThere;
    } catch (const base::Error&) {
        return false;
    }
}

ExitStatus open(Session& session, const OpenOptions& options) {
    const auto link = app::Link::parse(options.url);
    if (!link) {
        throw wrongUsage("\"" + options.url +
                         "\" is no link of Korvex. They are korvex://board/inbox, "
                         "korvex://board/ID and korvex://entry/ID.");
    }
    if (link->kind == app::Link::Kind::entry && isMissing(link->id, session)) {
        throw refusal("There is no such entry.");
    }
    return askOrBecome(session, {.links = {options.url}}, {"--", options.url});
}

struct QuickEntryOptions {
    std::optional<std::string> board;
    std::optional<std::string> type;
};

ExitStatus quickEntry(Session& session, const QuickEntryOptions& options) {
    app::QuickEntryRequest request;
    if (options.type && !(request.type = app::entryTypeNamed(*options.type))) {
        throw wrongUsage("--type takes todo or text.");
    }
    if (options.board) {
        const auto& board = findBoard(session, *options.board);
        if (board.isArchived()) { // the panel offers the others only
            throw refusal("The board \"" + board.name() + "\" is archived.");
        }
        request.board = board.id();
    }
    std::vector<std::string> arguments{"--quick-entry"};
    if (request.board) {
        arguments.insert(arguments.end(), {"--board", request.board->text()});
    }
    if (request.type) {
        arguments.insert(arguments.end(), {"--type", std::string(rawValue(*request.type))});
    }
    return askOrBecome(session, request.launch(), std::move(arguments));
}

struct WidgetOptions {
    std::optional<std::string> board;
};

ExitStatus widget(Session& session, const WidgetOptions& options) {
    std::vector<std::string> arguments;
    if (options.board) {
        session.existing(); // a widget makes no store either
        const auto& board = findBoard(session, *options.board);
        arguments = {"--board", board.id().text()};
    }
    const auto folder = session.storeFile().parent_path();
    if (!app::isUsersOwn(folder)) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.string()});
    }
    session.leaveStore();
    throw refusal(becomeWidgets(arguments));
}

} // namespace

void addDesktopCommands(CLI::App& program, Action& chosen) {
    const auto opened =
        addCommand(program, "open", "Shows in the desktop app what a link leads to", chosen, open);
    addText(opened.parser, "URL", "URL", opened.options->url,
            "korvex://board/inbox, korvex://board/ID or korvex://entry/ID")
        ->required();
    opened.parser.footer("The app starts where it does not run. korvex URL does the same.");

    const auto captured =
        addCommand(program, "quick-entry", "Opens the panel that captures todos and texts", chosen,
                   quickEntry);
    addText(captured.parser, "--board", "BOARD", captured.options->board,
            "The board that is chosen in it, by name or identifier");
    addText(captured.parser, "--type", "todo|text", captured.options->type,
            "What it captures; as in the settings when it is left out");
    captured.parser.footer(
        "Where the app does not run, the panel comes up alone. A desktop can run this by a key of\n"
        "its own; without options the same key puts the panel away again.");
    const auto shown =
        addCommand(program, "widget", "Shows a board's open todos on the desktop", chosen, widget);
    addText(shown.parser, "--board", "BOARD", shown.options->board,
            "The board, by its name or identifier; its widget is shown again where there is one");
    shown.parser.footer("Without a board: the widgets that were there last; where they are to be "
                        "seen, one more for the Inbox.");
}

} // namespace korvex::cli
