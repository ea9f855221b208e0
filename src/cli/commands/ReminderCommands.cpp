#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/output/Json.h"
#include "cli/output/ListText.h"
#include "cli/output/StyledText.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "app/AgentStart.h"
#include "app/StoreLocation.h"
#include "base/Calendar.h"
#include "base/Error.h"
#include "schedule/NotificationScheduling.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex::cli {

namespace {

using app::AgentReminder;
using State = AgentReminder::State;

/// Seconds after which whoever shows notifications has had the time to take one that is due.
constexpr double kLate = 10;

/// There is one agent for a user, and it looks after the user's own store.
void requireOwnStore(const Session& session) {
    if (!app::isUsersOwn(session.storeFile().parent_path())) {
        throw refusal("Nobody reminds of the todos of this store: the agent looks after the one in "
                      "the user's own folder.");
    }
}

/// A reminder, and what the store says of its todo.
struct Line {
    AgentReminder reminder;
    bool isDeleted = false;
    /// It came due some time ago, and nobody has shown it.
    bool isLate = false;

    std::string_view state() const { return isLate ? "not shown" : nameOf(reminder.state); }
};

std::vector<Line> linesOf(const Session& session, std::vector<AgentReminder> reminders) {
    std::vector<Line> lines;
    for (auto& each : reminders) {
        const auto isLate = each.state == State::pending && each.date + kLate <= session.now();
        lines.push_back({.reminder = std::move(each), .isLate = isLate});
    }
    return lines;
}

/// The agent knows the words of when it has planned last, and forgets those of what was closed.
void takeTextsFromStore(Session& session, std::vector<Line>& lines) {
    if (lines.empty()) {
        return;
    }
    try {
        store::ModelContext context(session.openExisting());
        for (auto& each : lines) {
            const auto* const entry = context.find<model::Entry>(each.reminder.entryID);
            each.isDeleted = !entry;
            if (entry) {
                each.reminder.body = entry->content();
            }
        }
    } catch (const base::Error&) {
        // The agent has answered, also where the store is gone or somebody is alone with it.
    }
}

void print(Session& session, const std::vector<Line>& lines) {
    std::vector<base::Uuid> ids;
    std::vector<std::string> dates;
    std::size_t dateWidth = 0;
    std::size_t stateWidth = 0;
    for (const auto& each : lines) {
        ids.push_back(each.reminder.entryID);
        dates.push_back(session.formats().dayAndShortTime(each.reminder.date));
        dateWidth = std::max(dateWidth, displayWidth(dates.back()));
        stateWidth = std::max(stateWidth, each.state().size());
    }
    const auto idWidth = ids.empty() ? 0 : shortIdentifierLength(ids);
    auto& output = session.output();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto& line = lines[i];
        const auto isPending = line.reminder.state == State::pending;
        printStyled(session, kDim, line.reminder.entryID.text().substr(0, idWidth));
        output.write(kGap);
        output.write(dates[i]);
        output.spaces(dateWidth - displayWidth(dates[i]));
        output.write(kGap);
        printStyled(session, isPending ? std::string_view() : kDim, line.state());
        output.spaces(stateWidth - line.state().size());
        output.write(kGap);
        if (line.isDeleted) {
            const auto known =
                line.reminder.body.empty() ? "" : " " + onOneLine(line.reminder.body);
            printStyled(session, kDim, "(deleted)" + known);
        } else {
            output.write(onOneLine(line.reminder.body));
        }
        output.put('\n');
    }
}

void write(Session& session, const std::vector<Line>& lines) {
    Json json(session.output());
    json.beginArray();
    for (const auto& line : lines) {
        const auto& each = line.reminder;
        json.beginObject();
        json.member("id", std::string_view(each.entryID.text()));
        json.member("reminderDate", std::string_view(base::isoText(each.date)));
        json.member("state", nameOf(each.state));
        json.member("content", std::string_view(each.body));
        json.flag("isLate", line.isLate);
        json.flag("isDeleted", line.isDeleted);
        json.endObject();
    }
    json.endArray();
}

ExitStatus reminders(Session& session, const NoOptions&) {
    requireOwnStore(session);
    auto answer = session.environment().agent.agentReminders(session.storeFile());
    if (!answer.said) {
        throw refusal("The agent, which reminds of todos, cannot be reached. " + answer.reason);
    }
    auto& [listed, more] = *answer.said;
    auto lines = linesOf(session, std::move(listed));
    takeTextsFromStore(session, lines);
    if (session.wantsJson()) {
        write(session, lines);
    } else {
        print(session, lines);
    }
    if (more > 0) {
        session.remark(std::to_string(more) + (more == 1 ? " more is" : " more are") +
                       " not listed.");
    }
    return ExitStatus::done;
}

/// What is true of notifications though they may be shown, or why none is.
std::string reasonOf(const schedule::ReminderCenter::Status& status) {
    using schedule::AuthorizationStatus;
    if (status.authorization == AuthorizationStatus::denied) {
        return std::string(schedule::NotificationTexts::kDisabledInSettings);
    }
    if (!status.reason.empty() || !schedule::showsNotifications(status.authorization)) {
        return status.reason;
    }
    return status.isQuieted ? "You are not to be disturbed now, by your desktop's settings."
           : status.canAct  ? ""
                            : "What shows notifications here has no buttons.";
}

void print(Session& session, const RunningAgent::Answer<app::AgentStatus>& answer) {
    printFact(session, "Agent", answer.said ? "running" : "cannot be reached");
    if (!app::startsAtLogin()) {
        printFact(session, "At login",
                  "not started; the settings can start Korvex then, under Quick Entry");
    }
    if (!answer.said) {
        printFact(session, "Reason", answer.reason);
        return;
    }
    const auto& [reminders, version, process, daemon, nextDue, isNextDueKnown] = *answer.said;
    printFact(session, "Version", version);
    printFact(session, "Process", std::to_string(process));
    printFact(session, "Reminders", schedule::statusLabel(reminders.authorization));
    printFact(session, "Reason", reasonOf(reminders));
    printFact(session, "Problem", reminders.permissionErrorMessage.value_or(""));
    printFact(session, "Problem", reminders.schedulingErrorMessage.value_or(""));
    printFact(session, "Shown by", daemon);
    printFact(session, "Next",
              nextDue          ? session.formats().dayAndShortTime(*nextDue)
              : isNextDueKnown ? ""
                               : "cannot be read");
}

void write(Session& session, const RunningAgent::Answer<app::AgentStatus>& answer) {
    Json json(session.output());
    json.beginObject();
    json.flag("isRunning", answer.said.has_value());
    json.flag("startsAtLogin", app::startsAtLogin());
    const auto text = [&json](std::string_view name, const std::string& value) {
        if (!value.empty()) {
            json.member(name, std::string_view(value));
        }
    };
    if (!answer.said) {
        text("reason", answer.reason);
    } else {
        const auto& [reminders, version, process, daemon, nextDue, isNextDueKnown] = *answer.said;
        text("version", version);
        json.member("process", std::int64_t{process});
        json.member("authorization", schedule::statusLabel(reminders.authorization));
        text("reason", reasonOf(reminders));
        json.flag("canAct", reminders.canAct);
        json.flag("isQuieted", reminders.isQuieted);
        text("permissionError", reminders.permissionErrorMessage.value_or(""));
        text("schedulingError", reminders.schedulingErrorMessage.value_or(""));
        text("daemon", daemon);
        json.flag("isNextDueKnown", isNextDueKnown);
        if (nextDue) {
            json.member("nextDue", std::string_view(base::isoText(*nextDue)));
        }
    }
    json.endObject();
}

ExitStatus status(Session& session, const NoOptions&) {
    requireOwnStore(session);
    const auto answer = session.environment().agent.agentStatus(session.storeFile());
    if (session.wantsJson()) {
        write(session, answer);
    } else {
        print(session, answer);
    }
    return ExitStatus::done;
}

} // namespace

void addReminderCommands(CLI::App& program, Action& chosen) {
    addCommand(program, "reminders",
               "Lists the reminders that are to come and those that were shown", chosen, reminders)
        .parser.footer(
            "The agent keeps them. It starts where it does not run. What came due and could "
            "not be\nshown is \"not shown\": it is shown as soon as that is possible.");
    auto& agent = *program.add_subcommand("agent", "Says how the agent is, which reminds of todos");
    agent.require_subcommand(1)->fallthrough();
    addCommand(agent, "status",
               "Says whether it runs, whether it may show notifications, and what is due next",
               chosen, status);
}

} // namespace korvex::cli
