#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/output/Json.h"
#include "cli/output/ListText.h"
#include "cli/output/StyledText.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "app/StoreLocation.h"
#include "base/Calendar.h"
#include "base/Error.h"
#include "schedule/NotificationScheduling.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::cli {

namespace {

using app::AgentReminder;
using State = AgentReminder::State;

/// There is one agent for a user, and it looks after the user's own store.
void requireOwnStore(const Session& session) {
    if (!app::isUsersOwn(session.storeFile().parent_path())) {
        throw refusal("Nobody reminds of the todos of this store: the agent looks after the one in "
                      "the user's own folder.");
    }
}

/// The agent forgets what was shown once it is closed; the todo may still be there.
void fillInTexts(Session& session, std::vector<AgentReminder>& reminders) {
    if (std::all_of(reminders.begin(), reminders.end(),
                    [](const auto& each) { return !each.body.empty(); })) {
        return;
    }
    try {
        store::ModelContext context(session.openExisting());
        for (auto& each : reminders) {
            if (const auto* const entry =
                    each.body.empty() ? context.find<model::Entry>(each.entryID) : nullptr) {
                each.body = entry->content();
            }
        }
    } catch (const base::Error&) {
        // The agent has answered, also where the store is gone or somebody is alone with it.
    }
}

void print(Session& session, const std::vector<AgentReminder>& reminders) {
    std::vector<base::Uuid> ids;
    std::vector<std::string> dates;
    std::size_t dateWidth = 0;
    std::size_t stateWidth = 0;
    for (const auto& each : reminders) {
        ids.push_back(each.entryID);
        dates.push_back(session.formats().dayAndShortTime(each.date));
        dateWidth = std::max(dateWidth, displayWidth(dates.back()));
        stateWidth = std::max(stateWidth, nameOf(each.state).size());
    }
    const auto idWidth = ids.empty() ? 0 : shortIdentifierLength(ids);
    auto& output = session.output();
    for (std::size_t i = 0; i < reminders.size(); ++i) {
        const auto& [id, date, body, state] = reminders[i];
        printStyled(session, kDim, id.text().substr(0, idWidth));
        output.write(kGap);
        output.write(dates[i]);
        output.spaces(dateWidth - displayWidth(dates[i]));
        output.write(kGap);
        printStyled(session, state == State::pending ? std::string_view() : kDim, nameOf(state));
        output.spaces(stateWidth - nameOf(state).size());
        output.write(kGap);
        output.write(onOneLine(body));
        output.put('\n');
    }
}

void write(Session& session, const std::vector<AgentReminder>& reminders) {
    Json json(session.output());
    json.beginArray();
    for (const auto& each : reminders) {
        json.beginObject();
        json.member("id", std::string_view(each.entryID.text()));
        json.member("reminderDate", std::string_view(base::isoText(each.date)));
        json.member("state", nameOf(each.state));
        json.member("content", std::string_view(each.body));
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
    fillInTexts(session, listed);
    if (session.wantsJson()) {
        write(session, listed);
    } else {
        print(session, listed);
    }
    if (more > 0) {
        session.remark(std::to_string(more) + (more == 1 ? " more is" : " more are") +
                       " not listed.");
    }
    return ExitStatus::done;
}

void print(Session& session, const RunningAgent::Answer<app::AgentStatus>& answer) {
    printFact(session, "Agent", answer.said ? "running" : "cannot be reached");
    if (!answer.said) {
        printFact(session, "Reason", answer.reason);
        return;
    }
    const auto& [reminders, version, process, daemon, nextDue] = *answer.said;
    printFact(session, "Version", version);
    printFact(session, "Process", std::to_string(process));
    printFact(session, "Reminders", schedule::statusLabel(reminders.authorization));
    printFact(session, "Reason", reminders.reason);
    printFact(session, "Problem", reminders.permissionErrorMessage.value_or(""));
    printFact(session, "Problem", reminders.schedulingErrorMessage.value_or(""));
    printFact(session, "Shown by", daemon);
    printFact(session, "Next", nextDue ? session.formats().dayAndShortTime(*nextDue) : "");
}

void write(Session& session, const RunningAgent::Answer<app::AgentStatus>& answer) {
    Json json(session.output());
    json.beginObject();
    json.flag("isRunning", answer.said.has_value());
    const auto text = [&json](std::string_view name, const std::string& value) {
        if (!value.empty()) {
            json.member(name, std::string_view(value));
        }
    };
    if (!answer.said) {
        text("reason", answer.reason);
    } else {
        const auto& [reminders, version, process, daemon, nextDue] = *answer.said;
        text("version", version);
        json.member("process", std::int64_t{process});
        json.member("authorization", schedule::statusLabel(reminders.authorization));
        text("reason", reminders.reason);
        text("permissionError", reminders.permissionErrorMessage.value_or(""));
        text("schedulingError", reminders.schedulingErrorMessage.value_or(""));
        text("daemon", daemon);
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
        .parser.footer("The agent keeps them. It starts where it does not run.");
    auto& agent = *program.add_subcommand("agent", "Says how the agent is, which reminds of todos");
    agent.require_subcommand(1)->fallthrough();
    addCommand(agent, "status",
               "Says whether it runs, whether it may show notifications, and what is due next",
               chosen, status);
}

} // namespace korvex::cli
