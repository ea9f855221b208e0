#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/Json.h"
#include "cli/session/Input.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"

#include "model/BoardIcon.h"

#include <array>

namespace korvex::cli {

namespace {

constexpr const char* kBoardHelp = "The board, by its name or identifier";

struct AddOptions {
    std::string name;
    std::optional<std::string> icon;
    std::optional<std::string> color;
};

struct BoardOptions {
    std::string board;
};

/// A board and a new name, icon or colour for it.
struct ValueOptions {
    std::string board;
    std::optional<std::string> value;
};

struct DeleteOptions {
    std::string board;
    bool isConfirmed = false;
};

struct MoveOptions {
    std::string board;
    std::optional<std::string> before;
    std::optional<std::string> after;
};

struct SortOptions {
    bool descending = false;
};

void printRecord(Session& session, const model::Board& board) {
    if (session.wantsJson()) {
        Json(session.output()).board(board);
    }
}

ExitStatus add(Session& session, const AddOptions& options) {
    const auto& board = session.boards().createBoard(
        oneLine(options.name), session.now(), {.icon = options.icon, .color = options.color});
    if (session.wantsJson()) {
        Json(session.output()).board(board);
    } else {
        session.output().write(board.id().text() + "\n");
    }
    return ExitStatus::done;
}

ExitStatus rename(Session& session, const ValueOptions& options) {
    auto& board = findBoard(session, options.board);
    session.boards().renameBoard(board, oneLine(options.value.value_or("")), session.now());
    printRecord(session, board);
    return ExitStatus::done;
}

ExitStatus setIcon(Session& session, const ValueOptions& options) {
    auto& board = findBoard(session, options.board);
    session.boards().setIcon(options.value, board, session.now());
    printRecord(session, board);
    return ExitStatus::done;
}

ExitStatus setColor(Session& session, const ValueOptions& options) {
    auto& board = findBoard(session, options.board);
    session.boards().setIconColor(options.value, board, session.now());
    printRecord(session, board);
    return ExitStatus::done;
}

ExitStatus archive(Session& session, const BoardOptions& options) {
    auto& board = findBoard(session, options.board);
    session.boards().setArchived(true, board, session.now());
    printRecord(session, board);
    return ExitStatus::done;
}

ExitStatus unarchive(Session& session, const BoardOptions& options) {
    auto& board = findBoard(session, options.board);
    session.boards().setArchived(false, board, session.now());
    printRecord(session, board);
    return ExitStatus::done;
}

ExitStatus remove(Session& session, const DeleteOptions& options) {
    auto& board = findBoard(session, options.board);
    if (!options.isConfirmed) {
        throw refusal(board.deletionMessage() + " Add --yes to delete it.");
    }
    printRecord(session, board);
    session.boards().deleteBoard(board);
    return ExitStatus::done;
}

ExitStatus move(Session& session, const MoveOptions& options) {
    if (options.before.has_value() == options.after.has_value()) {
        throw wrongUsage("Say where to: --before BOARD or --after BOARD.");
    }
    auto& board = findBoard(session, options.board);
    const auto& target = findBoard(session, options.before ? *options.before : *options.after);
    session.boards().moveBoard(board.id(), target.id(),
                               options.before ? model::EntryPlacement::before
                                              : model::EntryPlacement::after,
                               session.now());
    printRecord(session, board);
    return ExitStatus::done;
}

ExitStatus sort(Session& session, const SortOptions& options) {
    using Direction = services::BoardService::Direction;
    session.boards().sortBoardsByName(options.descending ? Direction::descending
                                                         : Direction::ascending,
                                      base::NameOrder(), session.now());
    if (session.wantsJson()) {
        Json(session.output()).boards(session.boards().boards());
    }
    return ExitStatus::done;
}

/// "The icons:" and the raw values of all cases, wrapped by the line.
template <typename Cases>
std::string choices(const std::string& title, const Cases& cases) {
    constexpr std::size_t kLineWidth = 88;
    auto text = title;
    std::string line;
    for (const auto each : cases) {
        const auto name = model::rawValue(each);
        if (line.empty() || line.size() + name.size() + 1 > kLineWidth) {
            text += line + "\n ";
            line.clear();
        }
        line.append(" ").append(name);
    }
    return text + line;
}

std::string iconChoices() {
    return choices("The icons:", model::allBoardIcons());
}
std::string colorChoices() {
    return choices("The colors:", model::allBoardIconColors());
}

} // namespace

void addBoardCommands(CLI::App& program, Action& chosen) {
    auto& group = *program.add_subcommand("board", "Adds, changes, moves and deletes boards");
    group.fallthrough()->require_subcommand(1);

    const auto added = addCommand(group, "add",
                                  "Adds a board at the end of the sidebar and prints "
                                  "its identifier",
                                  chosen, add);
    addText(added.parser, "NAME", "NAME", added.options->name, "Its name")->required();
    addText(added.parser, "--icon", "ICON", added.options->icon, "One of the icons below");
    addText(added.parser, "--color", "COLOR", added.options->color,
            "The icon's color, one of those below");
    added.parser.footer(iconChoices() + "\n\n" + colorChoices());

    const auto renamed = addCommand(group, "rename", "Gives a board another name", chosen, rename);
    addText(renamed.parser, "BOARD", "BOARD", renamed.options->board, kBoardHelp)->required();
    addText(renamed.parser, "NAME", "NAME", renamed.options->value, "Its new name")->required();

    const auto iconed = addCommand(group, "icon", "Gives a board another icon", chosen, setIcon);
    addText(iconed.parser, "BOARD", "BOARD", iconed.options->board, kBoardHelp)->required();
    addText(iconed.parser, "ICON", "ICON", iconed.options->value,
            "One of the icons below; the default one when it is left out");
    iconed.parser.footer(iconChoices());

    const auto colored =
        addCommand(group, "color", "Gives a board's icon another color", chosen, setColor);
    addText(colored.parser, "BOARD", "BOARD", colored.options->board, kBoardHelp)->required();
    addText(colored.parser, "COLOR", "COLOR", colored.options->value,
            "One of the colors below; the default one when it is left out");
    colored.parser.footer(colorChoices());

    const auto archived = addCommand(group, "archive",
                                     "Takes a board out of the sidebar; its "
                                     "entries stay",
                                     chosen, archive);
    addText(archived.parser, "BOARD", "BOARD", archived.options->board, kBoardHelp)->required();

    const auto unarchived =
        addCommand(group, "unarchive", "Brings an archived board back", chosen, unarchive);
    addText(unarchived.parser, "BOARD", "BOARD", unarchived.options->board, kBoardHelp)->required();

    const auto deleted = addCommand(
        group, "delete", "Deletes a board with all its entries, for good", chosen, remove);
    addText(deleted.parser, "BOARD", "BOARD", deleted.options->board, kBoardHelp)->required();
    deleted.parser.add_flag("--yes", deleted.options->isConfirmed,
                            "Delete it; without this the command only says what would be lost");

    const auto moved = addCommand(group, "move", "Moves a board in the sidebar", chosen, move);
    addText(moved.parser, "BOARD", "BOARD", moved.options->board, kBoardHelp)->required();
    auto* before = addText(moved.parser, "--before", "BOARD", moved.options->before,
                           "Directly before this board");
    addText(moved.parser, "--after", "BOARD", moved.options->after, "Directly after this board")
        ->excludes(before);

    const auto sorted = addCommand(group, "sort", "Sorts all boards by name", chosen, sort);
    sorted.parser.add_flag("--descending", sorted.options->descending, "Z first");
}

} // namespace korvex::cli
