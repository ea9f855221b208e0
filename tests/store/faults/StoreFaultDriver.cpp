// store_fault_driver perform OPERATION STORE
//   Does one thing to a store, for a test to kill it or to fail at any of its system calls. A line
//   for each thing that happened: "acknowledged" once the operation has returned, "refused …" when
//   it threw; a refused one is tried once more.
// store_fault_driver interfere OPERATION STEP COMMAND STORE
//   The same without a second try. Says each step of the operation, and at the one of this number,
//   from 1, has a shell run the command.
// store_fault_driver verify STORE, store_fault_driver verify-unsound STORE
//   Opens the store as the next start would, says what it holds and what is wrong with it or with
//   the backups beside it, and proves that it can still be written. The second allows for metadata
//   that a repair has yet to mend.

#include "base/Error.h"
#include "model/SchemaVersions.h"
#include "storage/BackupHistory.h"
#include "store/StoreError.h"
#include "store/StoreUpgrade.h"
#include "store/faults/Operations.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <optional>

namespace {

namespace fs = std::filesystem;
using namespace korvex;
using namespace korvex::faults;
using Missing = store::ModelConfiguration::Missing;

/// Whether it succeeded; a refusal is said.
bool attempt(const char* what, const std::function<void()>& work) {
    try {
        work();
        return true;
    } catch (const base::Error& error) {
        say(std::string("refused ") + what + ": " + error.errorDescription());
        return false;
    }
}

enum class Tries { one, two };

int performOnFile(FileOperation operation, const fs::path& file, Steps& steps) {
    const auto run = [&] { operation(file, steps); };
    if (!attempt("operation", run) && !attempt("operation again", run)) {
        return 1;
    }
    say("acknowledged");
    return 0;
}

int performOnStore(const std::string& name, Operation operation, const fs::path& file, Steps& steps,
                   Tries tries) {
    Program program(steps);
    const bool creates = name == "create-store" || name == "prepare";
    const auto open = [&] { program.open(file, creates ? Missing::create : Missing::refuse); };
    if (!attempt("open", open) && !attempt("open again", open)) {
        return 1;
    }
    std::string before;
    const auto run = [&] {
        before = program.state();
        operation(program);
    };
    if (!attempt("operation", run)) {
        if (name == "save") {
            say(program.context->hasChanges() ? "kept its changes" : "LOST ITS CHANGES");
        } else if (program.context->hasChanges() ||
                   (tries == Tries::two && program.state() != before)) {
            say("LEFT SOMETHING BEHIND: " + program.state() + " instead of " + before);
        }
        if (tries == Tries::one || !attempt("operation again", [&] { operation(program); })) {
            return 1;
        }
    }
    say("acknowledged");
    return 0;
}

/// Absent: there is none of this name.
std::optional<int> perform(const std::string& name, const fs::path& file, Steps& steps,
                           Tries tries = Tries::two) {
    for (const auto* operations : {&startOperations(), &preparations()}) {
        if (const auto found = operations->find(name); found != operations->end()) {
            return performOnFile(found->second, file, steps);
        }
    }
    for (const auto* operations : {&entryOperations(), &backupOperations()}) {
        if (const auto found = operations->find(name); found != operations->end()) {
            return performOnStore(name, found->second, file, steps, tries);
        }
    }
    return std::nullopt;
}

void checkOrders(Program& program) {
    for (const model::Board* board : program.boards().boards()) {
        std::vector<std::int64_t> orders;
        for (const model::Entry* entry : board->entries()) {
            orders.push_back(entry->sortOrder());
        }
        std::sort(orders.begin(), orders.end());
        for (std::size_t i = 0; i < orders.size(); ++i) {
            if (orders[i] != static_cast<std::int64_t>(i)) {
                say("WRONG order in " + board->name());
                break;
            }
        }
    }
}

/// Wherever one has its name, it must be whole. Throws where it is not.
void checkBackups(Program& program) {
    const auto chosen = program.chosenFolder();
    if (fs::exists(chosen) && storage::backupsIn(chosen).backups.size() < kKeptBackups) {
        say("WRONG: a backup was lost");
    }
    for (const auto& each : fs::recursive_directory_iterator(program.folder)) {
        if (each.path().extension() == ".korvexbackup") {
            storage::Work work;
            backup::validate(storage::readBackup(each.path(), work), program.log);
            say("backup " + each.path().filename().string());
        }
    }
}

enum class Metadata { sound, any };

int verify(const fs::path& file, Metadata expected) {
    Steps steps;
    Program program(steps);
    try {
        program.open(file, Missing::refuse);
        if (!program.container->wasUpgraded()) {
            store::removeFormerStores(file, model::currentSchema());
        }
    } catch (const store::StoreError& error) {
        say(error.which() == store::StoreErrorCase::missing ? "state none"
                                                            : "WRONG " + error.errorDescription());
        return 0;
    }
    say("state " + program.state());
    for (const auto& notice : program.container->notices()) {
        say("WRONG notice: " + notice);
    }
    const auto check = program.container->check();
    if (expected == Metadata::sound || check.isDamaged) {
        for (const auto& problem : check.problems) {
            say("WRONG " + problem);
        }
    }
    const SQLite::Database database(file, SQLite::OPEN_READONLY);
    SQLite::Statement integrity(database, "PRAGMA integrity_check");
    while (integrity.executeStep()) {
        if (const std::string line = integrity.getColumn(0); line != "ok") {
            say("WRONG integrity: " + line);
        }
    }
    if (expected == Metadata::sound) {
        checkOrders(program);
    }
    checkBackups(program);
    program.boards().createBoard("proof that it can be written", kLater);
    say("writable");
    return 0;
}

std::optional<int> run(const std::vector<std::string>& words) {
    if (words.size() == 3 && words[0] == "perform") {
        Steps steps;
        return perform(words[1], words[2], steps);
    }
    if (words.size() == 5 && words[0] == "interfere") {
        Steps steps(std::stoi(words[2]), words[3]);
        return perform(words[1], words[4], steps, Tries::one);
    }
    if (words.size() == 2 && words[0] == "verify") {
        return verify(words[1], Metadata::sound);
    }
    if (words.size() == 2 && words[0] == "verify-unsound") {
        return verify(words[1], Metadata::any);
    }
    return std::nullopt;
}

} // namespace

int main(int count, char** arguments) {
    try {
        if (const auto status = run({arguments + 1, arguments + count})) {
            return *status;
        }
    } catch (const std::exception& error) {
        say(std::string("WRONG exception: ") + error.what());
        return 2;
    }
    std::cerr << "usage: see the head of StoreFaultDriver.cpp\n";
    return 2;
}
