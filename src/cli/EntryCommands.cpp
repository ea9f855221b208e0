#include "cli/Commands.h"

#include "cli/CommandDefinition.h"
#include "cli/Json.h"
#include "cli/Lookup.h"
#include "cli/Options.h"
#include "cli/Session.h"
#include "cli/StandardInput.h"

#include "base/Text.h"

#include <algorithm>
#include <unordered_set>

namespace korvex::cli {

namespace {

constexpr const char* kEntryHelp =
    "The todo, by its identifier or the first 4 or more characters of it";

struct AddOptions {
    std::vector<std::string> texts;
    std::optional<std::string> board;
    std::optional<std::string> after;
    std::optional<std::string> before;
    ScheduleOptions schedule;
};

struct EditOptions {
    std::string entry;
    std::string text;
};

struct RescheduleOptions {
    std::string entry;
    ScheduleOptions schedule;
    bool clear = false;
};

struct CompleteOptions {
    std::vector<std::string> entries;
};

struct RestoreOptions {
    std::string entry;
    std::optional<std::int64_t> position;
};

struct MoveOptions {
    std::string entry;
    std::optional<std::string> before;
    std::optional<std::string> after;
    std::optional<std::int64_t> by;
};

void printRecord(Session& session, const model::Entry& entry) {
    if (session.wantsJson()) {
        DueLabels labels(session);
        Json(session.output()).entry(entry, labels);
    }
}

void printRecords(Session& session, std::span<model::Entry* const> entries) {
    if (session.wantsJson()) {
        DueLabels labels(session);
        Json(session.output()).entries(entries, labels);
    }
}

void appendInputLines(Session& session, std::vector<std::string>& contents) {
    const auto input = readAll(session.environment().inputDescriptor);
    std::size_t number = 0;
    base::forEachLine(input, [&](std::string_view line) {
        ++number;
        if (!base::isValidUtf8(line)) {
            throw refusal("Line " + std::to_string(number) +
                          " of standard input is not valid UTF-8 text. Nothing was added.");
        }
        if (!base::trimmed(line).empty()) {
            contents.emplace_back(line);
        }
    });
}

ExitStatus add(Session& session, const AddOptions& options) {
    // Everything typed is understood before the store is opened: opening may create it.
    const auto schedule = readSchedule(options.schedule, session);
    std::vector<std::string> contents;
    for (const auto& text : options.texts) {
        if (text == "-") {
            appendInputLines(session, contents);
        } else {
            contents.push_back(text);
        }
    }
    const auto target = [&](const std::optional<std::string>& typed) {
        return typed ? std::optional(findTarget(session, *typed)) : std::nullopt;
    };
    const auto after = target(options.after);
    const auto before = target(options.before);
    // Beside another entry means on its board, unless a board was named.
    model::Board* board = nullptr;
    if (const auto& beside = before ? before : after; beside && !options.board) {
        const auto* entry = session.context().find<model::Entry>(*beside);
        board = entry != nullptr ? entry->board() : nullptr;
    }
    const auto todos = session.entries().createTodos({
        .contents = std::move(contents),
        .board = board != nullptr ? *board : findBoardOrInbox(session, options.board),
        .after = after,
        .before = before,
        .now = session.now(),
        .schedule = schedule,
    });
    printRecords(session, todos);
    if (!session.wantsJson()) {
        for (const auto* todo : todos) {
            session.output().write(todo->id().text());
            session.output().put('\n');
        }
    }
    return ExitStatus::done;
}

ExitStatus edit(Session& session, const EditOptions& options) {
    auto& entry = findEntry(session, options.entry);
    session.entries().updateTodo(entry, options.text, session.now());
    printRecord(session, entry);
    return ExitStatus::done;
}

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

/// Completes all or none but for a failing disk: one step of the store, everything checked before.
/// Only the last todo of each board closes the gaps, since that renumbers the board.
void completeAll(Session& session, std::span<model::Entry* const> entries) {
    const auto isTodo = [](const auto* entry) { return entry->isTodo(); };
    if (!std::all_of(entries.begin(), entries.end(), isTodo)) {
        throw services::EntryServiceError(services::EntryServiceErrorCase::entryUnavailable);
    }
    std::unordered_set<const model::Entry*> lastOfBoard;
    std::unordered_set<const model::Board*> seen;
    for (auto each = entries.rbegin(); each != entries.rend(); ++each) {
        if (!(*each)->isCompleted() && seen.insert((*each)->board()).second) {
            lastOfBoard.insert(*each);
        }
    }
    for (auto* entry : entries) {
        session.entries().completeTodo(*entry, session.now(), std::nullopt,
                                       lastOfBoard.contains(entry) ? services::CompactOrder::yes
                                                                   : services::CompactOrder::no);
    }
}

ExitStatus complete(Session& session, const CompleteOptions& options) {
    const store::LockedStep step(session.context());
    std::vector<model::Entry*> entries;
    for (const auto& typed : options.entries) {
        auto* entry = &findEntry(session, typed);
        if (std::find(entries.begin(), entries.end(), entry) == entries.end()) {
            entries.push_back(entry);
        }
    }
    completeAll(session, entries);
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
    if (options.before.has_value() + options.after.has_value() + options.by.has_value() != 1) {
        throw wrongUsage("Say where to: --before ID, --after ID or --by N.");
    }
    auto& entry = findEntry(session, options.entry);
    auto* board = entry.board();
    if (board == nullptr) {
        throw services::EntryServiceError(services::EntryServiceErrorCase::entryUnavailable);
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

} // namespace

void addEntryCommands(CLI::App& program, Action& chosen) {
    const auto added =
        addCommand(program, "add", "Adds todos and prints their identifiers", chosen, add);
    addTexts(added.parser, "TEXT", added.options->texts,
             "A todo's text; - stands for standard input, one todo a line");
    addText(added.parser, "--board", "BOARD", added.options->board,
            "The board that gets them, by name or identifier; the Inbox when it is left out");
    addScheduleOptions(added.parser, added.options->schedule);
    auto* after = addText(added.parser, "--after", "ID", added.options->after,
                          "Directly after this entry, instead of at the end");
    addText(added.parser, "--before", "ID", added.options->before, "Directly before this entry")
        ->excludes(after);

    const auto edited = addCommand(program, "edit", "Gives a todo another text", chosen, edit);
    addText(edited.parser, "ID", "ID", edited.options->entry, kEntryHelp)->required();
    addText(edited.parser, "TEXT", "TEXT", edited.options->text, "Its new text")->required();

    const auto scheduled = addCommand(
        program, "schedule", "Replaces a todo's due date and reminder", chosen, reschedule);
    addText(scheduled.parser, "ID", "ID", scheduled.options->entry, kEntryHelp)->required();
    const auto options = addScheduleOptions(scheduled.parser, scheduled.options->schedule);
    scheduled.parser
        .add_flag("--clear", scheduled.options->clear, "Neither due nor to be reminded of")
        ->excludes(options.due)
        ->excludes(options.from)
        ->excludes(options.remind);

    const auto completed = addCommand(program, "complete", "Completes todos", chosen, complete);
    addTexts(completed.parser, "ID", completed.options->entries, kEntryHelp);

    const auto restored =
        addCommand(program, "restore", "Makes a completed todo open again", chosen, restore);
    addText(restored.parser, "ID", "ID", restored.options->entry, kEntryHelp)->required();
    restored.parser
        .add_option("--position", restored.options->position,
                    "Its place among the board's entries, from 0; the end when it is left out")
        ->type_name("N");

    const auto moved = addCommand(program, "move", "Moves an entry on its board", chosen, move);
    addText(moved.parser, "ID", "ID", moved.options->entry, kEntryHelp)->required();
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
}

} // namespace korvex::cli
