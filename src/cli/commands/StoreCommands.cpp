#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/output/Json.h"
#include "cli/session/Session.h"
#include "cli/terminal/LongWork.h"

#include "app/StoreLocation.h"
#include "base/CountText.h"
#include "storage/DataIntegrityService.h"
#include "storage/SalvageSentences.h"
#include "storage/StoreAdvice.h"
#include "storage/StoreRepair.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

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

void writeTexts(Json& json, std::string_view name, std::span<const std::string> texts) {
    json.key(name);
    json.beginArray();
    for (const auto& text : texts) {
        json.text(text);
    }
    json.endArray();
}

ExitStatus check(Session& session, const NoOptions&) {
    auto& container = session.openExisting();
    auto report = container.check();
    auto isMendable = false;
    // Of what cannot be read there is no order to speak of.
    if (!report.isDamaged) {
        store::ModelContext context(container);
        const auto metadata = storage::DataIntegrityService(context, session.environment().log)
                                  .inspect({.now = session.now()});
        for (const auto& [kind, count] : metadata.repaired) {
            report.problems.push_back(std::string(storage::findingOf(kind)) + ": " +
                                      base::numberText(count));
        }
        isMendable = !metadata.isEmpty();
    }
    // What was noticed while opening is a problem too.
    report.problems.insert(report.problems.begin(), container.notices().begin(),
                           container.notices().end());
    if (session.wantsJson()) {
        Json json(session.output());
        json.beginObject();
        json.key("recordCount");
        json.integer(static_cast<std::int64_t>(report.recordCount));
        writeTexts(json, "problems", report.problems);
        json.endObject();
    } else if (report.problems.empty()) {
        session.output().write("The store is sound: " +
                               base::countText(report.recordCount, "record", "records") + ".\n");
    } else {
        for (const auto& problem : report.problems) {
            session.output().write(problem + "\n");
        }
        if (isMendable || report.isDamaged) {
            session.output().write(std::string(report.isDamaged ? "This saves what can be read: "
                                                                : "This mends it: ") +
                                   storage::repairCommand(session.storeFile()) + "\n");
        }
    }
    return report.problems.empty() ? ExitStatus::done : ExitStatus::refused;
}

void printRepair(Session& session, const storage::StoreRepairReport& report) {
    auto& output = session.output();
    if (report.wasSound()) {
        output.write("The store is sound: nothing was repaired.\n");
        return;
    }
    const auto print = [&](const std::vector<std::string>& sentences) {
        for (const auto& sentence : sentences) {
            output.write(sentence + "\n");
        }
    };
    print(report.notices);
    if (report.salvage) {
        output.write("The store was damaged. What could be read was saved: " +
                     base::countText(report.salvage->saved, "record", "records") + ".\n");
        print(storage::lossSentences(*report.salvage, report.boardNames));
        output.write("The damaged store is kept as " + report.salvage->kept.string() + "\n");
        for (const auto& former : report.salvage->formerStores) {
            output.write("What is missing may still be in the store as it was before its upgrade, "
                         "kept as " +
                         former.string() + "\n");
        }
        if (report.salvage->saved == 0) {
            output.write(storage::adviceOnBackups(session.storeFile()) + "\n");
        }
    }
    for (const auto& [kind, count] : report.metadata.repaired) {
        output.write(std::string(storage::titleOf(kind)) + ": " + base::numberText(count) + "\n");
    }
}

void writeRepairJson(Session& session, const storage::StoreRepairReport& report) {
    Json json(session.output());
    const auto count = [&](std::string_view name, std::size_t value) {
        json.member(name, static_cast<std::int64_t>(value));
    };
    json.beginObject();
    json.flag("wasDamaged", report.salvage.has_value());
    writeTexts(json, "notices", report.notices);
    if (const auto& salvage = report.salvage) {
        count("savedRecordCount", salvage->saved);
        json.flag("mayMissMore", salvage->mayMissMore);
        json.member("damagedFile", std::string_view(salvage->kept.native()));
        std::vector<std::string> formerStores;
        for (const auto& former : salvage->formerStores) {
            formerStores.push_back(former.string());
        }
        writeTexts(json, "formerStores", formerStores);
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
    session.noteRepair();
    const auto report = [&] {
        LongWork longWork(session.environment().errorDescriptor);
        return storage::repairStore(
            {.storeFile = session.storeFile(),
             .legacyFile = app::legacyStoreFile(session.storeFile().parent_path()),
             .now = session.now()},
            session.environment().log, longWork.work());
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
                       "a new store, and the\ndamaged one is kept beside it. So does what can be "
                       "read of a store that an older Korvex has left, while\nthere is no other. "
                       "Close Korvex's windows first, also where it runs in the background.");
}

} // namespace korvex::cli
