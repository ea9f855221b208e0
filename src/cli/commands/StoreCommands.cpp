#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/output/Json.h"
#include "cli/session/Session.h"
#include "cli/terminal/LongWork.h"

#include "model/Board.h"
#include "model/Entry.h"
#include "storage/StoreRepair.h"

#include <algorithm>
#include <map>

namespace korvex::cli {

namespace {

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
    // What was noticed while opening is a problem too.
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

/// "3 entries", "1 board".
std::string counted(std::size_t count, const store::RecordType& type) {
    const auto isEntry = &type == &model::Entry::recordType();
    const auto* const noun =
        isEntry ? (count == 1 ? " entry" : " entries") : (count == 1 ? " board" : " boards");
    return std::to_string(count) + noun;
}

/// What is lost of one board.
void printLoss(Session& session, const store::SalvageReport::Loss& loss,
               const std::string& boardName) {
    const auto where = loss.type == &model::Board::recordType() ? std::string()
                       : boardName.empty() ? std::string("On a board that is not known: ")
                                           : "On " + boardName + ": ";
    const auto print = [&](const std::string& text) { session.output().write(where + text); };
    if (loss.missing > 0) {
        print(counted(loss.missing, *loss.type) + " missing.\n");
    }
    if (loss.altered > 0) {
        print(counted(loss.altered, *loss.type) + " altered, kept as can be read.\n");
    }
    if (loss.withoutBytes > 0) {
        print("attachments of at most " + counted(loss.withoutBytes, *loss.type) + " missing.\n");
    }
}

void printRepair(Session& session, const storage::StoreRepairReport& report) {
    auto& output = session.output();
    if (report.wasSound()) {
        output.write("The store is sound: nothing was repaired.\n");
        return;
    }
    if (report.salvage) {
        output.write("The store was damaged. What could be read was saved: " +
                     std::to_string(report.salvage->saved) + " records.\n");
        for (std::size_t i = 0; i < report.salvage->losses.size(); ++i) {
            printLoss(session, report.salvage->losses[i], report.boardNames[i]);
        }
        if (report.salvage->mayMissMore) {
            output.write("More may be missing than can be told.\n");
        }
        output.write("The damaged store is kept as " + report.salvage->kept.string() + "\n");
    }
    for (const auto& [kind, count] : report.metadata.repaired) {
        output.write(std::string(storage::titleOf(kind)) + ": " + std::to_string(count) + "\n");
    }
}

void writeRepairJson(Session& session, const storage::StoreRepairReport& report) {
    Json json(session.output());
    const auto count = [&](std::string_view name, std::size_t value) {
        json.member(name, static_cast<std::int64_t>(value));
    };
    json.beginObject();
    json.flag("wasDamaged", report.salvage.has_value());
    if (const auto& salvage = report.salvage) {
        count("savedRecordCount", salvage->saved);
        json.flag("mayMissMore", salvage->mayMissMore);
        json.member("damagedFile", std::string_view(salvage->kept.native()));
        json.key("losses");
        json.beginArray();
        for (std::size_t i = 0; i < salvage->losses.size(); ++i) {
            const auto& loss = salvage->losses[i];
            json.beginObject();
            json.member("type", loss.type->name);
            if (loss.owner) {
                json.member("boardID", std::string_view(loss.owner->text()));
            }
            if (!report.boardNames[i].empty()) {
                json.member("boardName", std::string_view(report.boardNames[i]));
            }
            count("missing", loss.missing);
            count("altered", loss.altered);
            count("withoutAttachments", loss.withoutBytes);
            json.endObject();
        }
        json.endArray();
    }
    json.key("repaired");
    json.beginObject();
    for (const auto& [kind, number] : report.metadata.repaired) {
        count(storage::rawValue(kind), number);
    }
    json.endObject();
    json.endObject();
}

ExitStatus repair(Session& session, const NoOptions&) {
    const auto report = [&] {
        LongWork longWork(session.environment().errorDescriptor);
        return storage::repairStore(session.storeFile(), session.now(), session.environment().log,
                                    longWork.work());
    }();
    session.remapBoards(report.mergedBoards);
    if (!report.wasSound()) {
        session.noteChange();
    }
    if (session.wantsJson()) {
        writeRepairJson(session, report);
    } else {
        printRepair(session, report);
    }
    return ExitStatus::done;
}

} // namespace

void addStoreCommands(CLI::App& program, Action& chosen) {
    auto& group =
        *program.add_subcommand("store", "Says where the store lies, checks and repairs it");
    group.fallthrough()->require_subcommand(1);
    addCommand(group, "path", "Prints the path of the store file", chosen, path);
    addCommand(group, "check", "Reads the whole store and reports what is wrong with it", chosen,
               check)
        .parser.footer("Ends with 0 when the store is sound and with 1 when it is not.");
    addCommand(group, "repair", "Brings the store into order and saves what can be read", chosen,
               repair)
        .parser.footer("No text is changed. Where the store is damaged, what can be read becomes "
                       "a new store, and the\ndamaged one is kept beside it. Close the other "
                       "programs on the store first.");
}

} // namespace korvex::cli
