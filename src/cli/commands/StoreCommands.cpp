#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/output/Json.h"
#include "cli/session/Session.h"

#include "model/Board.h"
#include "model/Entry.h"

#include <algorithm>
#include <map>

namespace korvex::cli {

namespace {

struct NoOptions {};

ExitStatus path(Session& session, const NoOptions&) {
    const auto file = session.storeFile().string();
    if (session.wantsJson()) {
        Json json(session.output());
        json.beginObject();
        json.key("path");
        json.text(file);
        json.endObject();
    } else {
        session.output().write(file + "\n");
    }
    return ExitStatus::done;
}

/// Boards whose entries are not numbered from 0 without gaps: every record may be sound, and still
/// they would not stand in one order for every program. One sentence each.
std::vector<std::string> orderProblems(store::ModelContext& context) {
    const store::LockedStep step(context);
    std::map<base::Uuid, std::vector<std::int64_t>> orderOfBoards;
    for (const auto* entry : context.fetch<model::Entry>()) {
        if (const auto board = entry->boardID()) {
            orderOfBoards[*board].push_back(entry->sortOrder());
        }
    }
    std::vector<std::string> problems;
    for (auto& [board, order] : orderOfBoards) {
        std::sort(order.begin(), order.end());
        std::int64_t place = 0;
        for (const auto found : order) {
            if (found != place) {
                problems.push_back("The entries of Board " + board.text() +
                                   " are not numbered from 0 without gaps: place " +
                                   std::to_string(place) + " holds " + std::to_string(found) + ".");
                break;
            }
            ++place;
        }
    }
    return problems;
}

ExitStatus check(Session& session, const NoOptions&) {
    auto& container = session.openExisting();
    auto report = container.check();
    store::ModelContext context(container);
    // What cannot be read has no order to speak of.
    if (report.problems.empty()) {
        report.problems = orderProblems(context);
    }
    // What was noticed while opening is known only now: the next to open the store goes on from
    // what is there.
    report.problems.insert(report.problems.begin(), container.notices().begin(),
                           container.notices().end());
    if (session.wantsJson()) {
        Json json(session.output());
        json.beginObject();
        json.key("recordCount");
        json.integer(static_cast<std::int64_t>(report.recordCount));
        json.key("problems");
        json.beginArray();
        for (const auto& problem : report.problems) {
            json.text(problem);
        }
        json.endArray();
        json.endObject();
    } else if (report.problems.empty()) {
        session.output().write("The store is sound: " + std::to_string(report.recordCount) +
                               " records.\n");
    } else {
        for (const auto& problem : report.problems) {
            session.output().write(problem + "\n");
        }
    }
    return report.problems.empty() ? ExitStatus::done : ExitStatus::refused;
}

} // namespace

void addStoreCommands(CLI::App& program, Action& chosen) {
    auto& group = *program.add_subcommand("store", "Says where the store lies and checks it");
    group.fallthrough()->require_subcommand(1);
    addCommand(group, "path", "Prints the path of the store file", chosen, path);
    addCommand(group, "check", "Reads the whole store and reports what is wrong with it", chosen,
               check)
        .parser.footer("Ends with 0 when the store is sound and with 1 when it is not.");
}

} // namespace korvex::cli
