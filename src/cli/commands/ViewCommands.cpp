#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/DueLabels.h"
#include "cli/output/GroupText.h"
#include "cli/output/Json.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"

#include "base/TextFolding.h"
#include "schedule/CompletedFilter.h"
#include "schedule/UpcomingGroup.h"

#include <array>
#include <utility>

namespace korvex::cli {

namespace {

using schedule::CompletedFilter;

struct UpcomingOptions {};

struct CompletedOptions {
    std::string query;
    std::optional<std::string> board;
    std::optional<std::string> period;
    std::optional<std::string> due;
    std::optional<std::string> status;
};

/// What may be typed for a criterion, and what it means.
template <typename Criterion, std::size_t Count>
using Words = std::array<std::pair<std::string_view, Criterion>, Count>;

constexpr Words<CompletedFilter::Period, 4> kPeriods{{
    {"any", CompletedFilter::Period::any},
    {"today", CompletedFilter::Period::today},
    {"week", CompletedFilter::Period::week},
    {"month", CompletedFilter::Period::month},
}};
constexpr Words<CompletedFilter::Schedule, 4> kSchedules{{
    {"any", CompletedFilter::Schedule::any},
    {"had", CompletedFilter::Schedule::hadDueDate},
    {"none", CompletedFilter::Schedule::noDueDate},
    {"late", CompletedFilter::Schedule::late},
}};
constexpr Words<CompletedFilter::BoardStatus, 3> kStatuses{{
    {"any", CompletedFilter::BoardStatus::any},
    {"active", CompletedFilter::BoardStatus::active},
    {"archived", CompletedFilter::BoardStatus::archived},
}};
constexpr std::string_view kBetweenDays = "..";

template <typename Table>
auto find(const Table& words, std::string_view typed) {
    const auto* const found = std::find_if(words.begin(), words.end(),
                                           [&](const auto& each) { return each.first == typed; });
    return found != words.end() ? std::optional(found->second) : std::nullopt;
}

template <typename Table>
auto read(const Table& words, const std::optional<std::string>& typed, const std::string& option,
          const std::string& allowed) {
    const auto meant = find(words, typed.value_or("any"));
    if (!meant) {
        throw wrongUsage(option + " takes " + allowed + ", not \"" + *typed + "\".");
    }
    return *meant;
}

/// Two days of the calendar, "2025-03-01..2025-03-31".
bool readDays(std::string_view typed, Session& session, CompletedFilter& filter) {
    const auto between = typed.find(kBetweenDays);
    if (between == std::string_view::npos) {
        return false;
    }
    const auto noonOf = [&](std::string_view text) {
        const auto day = base::dayFromIsoText(text);
        return day ? session.calendar().noon(*day) : std::nullopt;
    };
    const auto start = noonOf(typed.substr(0, between));
    const auto end = noonOf(typed.substr(between + kBetweenDays.size()));
    if (!start || !end) {
        return false;
    }
    filter.period = CompletedFilter::Period::custom;
    filter.startDate = *start;
    filter.endDate = *end;
    return true;
}

CompletedFilter readFilter(Session& session, const CompletedOptions& options) {
    CompletedFilter filter{.query = options.query};
    if (!options.period || !readDays(*options.period, session, filter)) {
        filter.period = read(kPeriods, options.period, "--period",
                             "any, today, week, month or two days such as 2025-03-01..2025-03-31");
    }
    filter.schedule = read(kSchedules, options.due, "--due", "any, had, none or late");
    filter.boardStatus = read(kStatuses, options.status, "--status", "any, active or archived");
    // Everything typed is understood before the store is opened.
    if (options.board) {
        filter.boardID = findBoard(session, *options.board).id();
    }
    return filter;
}

/// What the store can tell to be of use; the boards first and together, since each entry has one.
std::vector<model::Entry*> fetch(Session& session, store::Condition condition) {
    session.context().fetch<model::Board>();
    return session.context().fetch<model::Entry>({.condition = std::move(condition)});
}

/// Each with its entries behind what `describe` writes of it.
template <typename Groups, typename Describe>
void writeGroups(Session& session, const Groups& groups, Describe describe) {
    DueLabels labels(session);
    Json json(session.output());
    json.beginArray();
    for (const auto& group : groups) {
        json.beginObject();
        describe(json, group);
        json.key("entries");
        json.entries(group.entries, labels);
        json.endObject();
    }
    json.endArray();
}

ExitStatus upcoming(Session& session, const UpcomingOptions&) {
    using schedule::UpcomingGroup;
    const auto groups = UpcomingGroup::groups(fetch(session, UpcomingGroup::condition()),
                                              session.now(), session.calendar().timeZone());
    if (session.wantsJson()) {
        writeGroups(session, groups, [](Json& json, const UpcomingGroup& group) {
            json.member("section", schedule::name(group.section));
            json.member("title", schedule::title(group.section));
        });
        return ExitStatus::done;
    }
    std::vector<TitledEntries> titled;
    titled.reserve(groups.size());
    for (const auto& group : groups) {
        titled.push_back({std::string(schedule::title(group.section)), group.entries});
    }
    printGroups(session, titled, ListDate::due);
    if (groups.empty() && session.terminal().isPresent) {
        session.remark("No upcoming todos.");
    }
    return ExitStatus::done;
}

ExitStatus completed(Session& session, const CompletedOptions& options) {
    using schedule::CompletedTodoGroup;
    const auto filter = readFilter(session, options);
    const auto& calendar = session.calendar();
    const base::TextFolding folding;
    services::FoldedTexts texts(session.context(), folding);
    const auto todos = filter.apply(fetch(session, filter.condition(session.now(), calendar)),
                                    session.now(), calendar, texts);
    const auto groups = CompletedTodoGroup::groups(todos, calendar);
    if (session.wantsJson()) {
        writeGroups(session, groups, [](Json& json, const CompletedTodoGroup& group) {
            json.member("date", std::string_view(base::isoText(group.date)));
        });
        return ExitStatus::done;
    }
    std::vector<TitledEntries> titled;
    titled.reserve(groups.size());
    for (const auto& group : groups) {
        titled.push_back({group.title(session.now(), session.formats()), group.entries});
    }
    printGroups(session, titled, ListDate::completed);
    if (groups.empty() && session.terminal().isPresent) {
        const auto hasAny =
            session.context().count<model::Entry>(model::Entry::completedTodos()) > 0;
        session.remark(hasAny ? "No matching completed todos" : "No completed todos yet.");
    }
    return ExitStatus::done;
}

} // namespace

void addViewCommands(CLI::App& program, Action& chosen) {
    addCommand(program, "upcoming",
               "Lists the open todos of all active boards by when they are due", chosen, upcoming);

    const auto shown = addCommand(
        program, "completed", "Lists completed todos by day, the latest first", chosen, completed);
    addText(shown.parser, "--query", "Q", shown.options->query,
            "Words, or parts of words, that the todo has");
    addText(shown.parser, "--board", "B", shown.options->board,
            "Only of this board, by name or identifier");
    addText(shown.parser, "--period", "any|today|week|month|DAY..DAY", shown.options->period,
            "When it was completed; both days are included");
    addText(shown.parser, "--due", "any|had|none|late", shown.options->due,
            "had: it had a due date; none: it had none; late: it was completed after it");
    addText(shown.parser, "--status", "any|active|archived", shown.options->status,
            "Of boards that are active, or archived");
}

} // namespace korvex::cli
