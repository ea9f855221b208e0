#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/EntryOutput.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/session/When.h"
#include "schedule/TodoReminderPreset.h"
#include "services/EntryOrder.h"

#include <algorithm>
#include <unordered_set>

namespace korvex::cli {

namespace {

struct RescheduleOptions {
    std::string entry;
    ScheduleOptions schedule;
    bool clear = false;
};

struct RemindOptions {
    std::string entry;
    std::optional<std::string> when;
    bool clear = false;
};

struct CompleteOptions {
    std::vector<std::string> entries;
    std::optional<std::string> allOf;
};

struct RestoreOptions {
    std::string entry;
    std::optional<std::int64_t> position;
};

struct DeleteOptions {
    std::vector<std::string> entries;
    std::optional<std::string> allOf;
    bool isConfirmed = false;
};

struct MoveOptions {
    std::string entry;
    std::optional<std::string> board;
    std::optional<std::int64_t> position;
    std::optional<std::string> before;
    std::optional<std::string> after;
    std::optional<std::int64_t> by;
};

ExitStatus reschedule(Session& session, const RescheduleOptions& options) {
    if (options.clear != options.schedule.isEmpty()) {
        throw wrongUsage("Say when, with --due, --from or --remind, or --clear.");
    }
    const auto schedule = readSchedule(options.schedule, session);
    auto& entry = findEntry(session, options.entry);
    session.entries().updateSchedule(entry, schedule, session.now());
    printRecord(session, entry);
    return ExitStatus::done;
}

ExitStatus remind(Session& session, const RemindOptions& options) {
    if (options.clear == options.when.has_value()) {
        throw wrongUsage("Say when to remind of it, WHEN or a preset, or --clear.");
    }
    const store::LockedStep step(session.context());
    auto& entry = findEntry(session, options.entry);
    if (!entry.isTodo()) {
        throw refusal("Only todos have reminders, and this entry is a text.");
    }
    if (options.when && entry.isCompleted()) {
        throw refusal("This todo is completed, and nothing reminds of it. Open it again with "
                      "korvex restore.");
    }
    auto schedule = entry.schedule();
    if (options.when && schedule::reminderPreset(*options.when) && !schedule.hasDue()) {
        throw refusal("This todo has no due date, and " + *options.when +
                      " counts back from one. Say a day or a time, or give it a due date with "
                      "korvex schedule.");
    }
    schedule.reminderDate =
        options.when ? std::optional(readReminder(*options.when, schedule, session)) : std::nullopt;
    session.entries().updateSchedule(entry, schedule, session.now());
    printRecord(session, entry);
    return ExitStatus::done;
}

/// Each of them once.
std::vector<model::Entry*> findEntries(Session& session, const std::vector<std::string>& typed) {
    std::vector<model::Entry*> entries;
    std::unordered_set<const model::Entry*> known;
    for (const auto& each : typed) {
        auto* entry = &findEntry(session, each);
        if (known.insert(entry).second) {
            entries.push_back(entry);
        }
    }
    return entries;
}

ExitStatus complete(Session& session, const CompleteOptions& options) {
    if (options.allOf.has_value() != options.entries.empty()) {
        throw wrongUsage("Say what to complete: ID… or --all BOARD.");
    }
    const store::LockedStep step(session.context());
    if (options.allOf) {
        auto& board = findBoard(session, *options.allOf);
        const auto todos = services::activeTodos(board);
        session.entries().completeTodos(board, session.now());
        printRecords(session, todos);
        return ExitStatus::done;
    }
    const auto entries = findEntries(session, options.entries);
    session.entries().completeTodos(entries, session.now());
    printRecords(session, entries);
    return ExitStatus::done;
}

ExitStatus restore(Session& session, const RestoreOptions& options) {
    auto& entry = findEntry(session, options.entry);
    session.entries().restoreTodo(entry, session.now(), options.position);
    printRecord(session, entry);
    return ExitStatus::done;
}

ExitStatus move(Session& session, const MoveOptions& options) {
    if (options.board.has_value() + options.before.has_value() + options.after.has_value() +
            options.by.has_value() !=
        1) {
        throw wrongUsage("Say where to: --to BOARD, --before ID, --after ID or --by N.");
    }
    const store::LockedStep step(session.context());
    auto& entry = findEntry(session, options.entry);
    if (options.board) {
        session.entries().moveEntry(entry, findBoard(session, *options.board), session.now(),
                                    options.position);
        printRecord(session, entry);
        return ExitStatus::done;
    }
    auto* board = entry.board();
    if (!board) {
        throw model::EntryServiceError(model::EntryServiceErrorCase::entryUnavailable);
    }
    if (options.by) {
        session.entries().moveEntry(entry.id(), *options.by, *board);
    } else {
        const auto target = findTarget(session, options.before ? *options.before : *options.after);
        session.entries().moveEntry(
            entry.id(), target,
            options.before ? model::EntryPlacement::before : model::EntryPlacement::after, *board);
    }
    printRecord(session, entry);
    return ExitStatus::done;
}

void removeAllOf(Session& session, const DeleteOptions& options) {
    auto& board = findBoard(session, *options.allOf);
    const auto entries = board.entries();
    if (!options.isConfirmed) {
        const auto completed = std::count_if(entries.begin(), entries.end(), [](const auto* entry) {
            return entry->isCompletedTodo();
        });
        throw refusal("This permanently deletes all " + std::to_string(entries.size()) +
                      " entries of " + board.name() +
                      ". Completed todos to delete: " + std::to_string(completed) +
                      ". This can’t be undone. Add --yes to delete them.");
    }
    session.entries().deleteEntries(board);
    printRecords(session, entries);
}

ExitStatus remove(Session& session, const DeleteOptions& options) {
    if (options.allOf.has_value() != options.entries.empty()) {
        throw wrongUsage("Say what to delete: ID… or --all BOARD.");
    }
    const store::LockedStep step(session.context());
    if (options.allOf) {
        removeAllOf(session, options);
        return ExitStatus::done;
    }
    const auto entries = findEntries(session, options.entries);
    session.entries().deleteEntries(entries);
    // They are shown as they were before.
    printRecords(session, entries);
    return ExitStatus::done;
}

} // namespace

void addEntryCommands(CLI::App& program, Action& chosen) {
    const auto scheduled = addCommand(
        program, "schedule", "Replaces a todo's due date and reminder", chosen, reschedule);
    addText(scheduled.parser, "ID", "ID", scheduled.options->entry, kTodoHelp)->required();
    const auto options = addScheduleOptions(scheduled.parser, scheduled.options->schedule);
    scheduled.parser
        .add_flag("--clear", scheduled.options->clear, "Neither due nor to be reminded of")
        ->excludes(options.due)
        ->excludes(options.from)
        ->excludes(options.remind);

    const auto reminded = addCommand(
        program, "remind", "Sets when to remind of a todo, or that nothing does", chosen, remind);
    addText(reminded.parser, "ID", "ID", reminded.options->entry, kTodoHelp)->required();
    auto* when = addText(reminded.parser, "WHEN", "WHEN", reminded.options->when,
                         "When to remind of it: a time, a day, or one of the presets below");
    reminded.parser.add_flag("--clear", reminded.options->clear, "Nothing reminds of it any more")
        ->excludes(when);
    addWhenHelp(reminded.parser, "the todo's due date, or the end of its window");
    reminded.parser.footer(reminded.parser.get_footer() +
                           "\nA todo on an archived board is reminded of as well.");

    const auto completed = addCommand(program, "complete", "Completes todos", chosen, complete);
    addTexts(completed.parser, "ID", completed.options->entries, kTodoHelp)->required(false);
    addText(completed.parser, "--all", "BOARD", completed.options->allOf,
            "All open todos of this board");

    const auto restored =
        addCommand(program, "restore", "Makes a completed todo open again", chosen, restore);
    addText(restored.parser, "ID", "ID", restored.options->entry, kTodoHelp)->required();
    restored.parser
        .add_option("--position", restored.options->position,
                    "Its place among the board's entries, from 0; the end when it is left out")
        ->type_name("N");

    const auto moved =
        addCommand(program, "move", "Moves an entry, on its board or to another", chosen, move);
    addText(moved.parser, "ID", "ID", moved.options->entry, kEntryHelp)->required();
    auto* movedTo = addText(moved.parser, "--to", "BOARD", moved.options->board,
                            "To this board, by name or identifier");
    moved.parser
        .add_option("--position", moved.options->position,
                    "With --to: its place among that board's entries, from 0; the end when it is "
                    "left out")
        ->type_name("N")
        ->needs(movedTo);
    auto* movedBefore = addText(moved.parser, "--before", "ID", moved.options->before,
                                "Directly before this entry");
    auto* movedAfter =
        addText(moved.parser, "--after", "ID", moved.options->after, "Directly after this entry");
    movedAfter->excludes(movedBefore);
    moved.parser
        .add_option("--by", moved.options->by, "By this many places; upwards when negative")
        ->type_name("N")
        ->excludes(movedBefore)
        ->excludes(movedAfter);

    const auto removed = addCommand(program, "delete", "Deletes entries, for good", chosen, remove);
    addTexts(removed.parser, "ID", removed.options->entries, kEntryHelp)->required(false);
    addText(removed.parser, "--all", "BOARD", removed.options->allOf,
            "All entries of this board, completed todos too");
    removed.parser.add_flag("--yes", removed.options->isConfirmed,
                            "With --all: delete them; without this the command only says what "
                            "would be lost");
}

} // namespace korvex::cli
