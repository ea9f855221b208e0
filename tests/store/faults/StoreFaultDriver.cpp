// store_fault_driver perform OPERATION STORE: does one thing to a store, for store_faults_test.py
// to
//   kill or to fail at any system call of it. One line for each thing that happened: "acknowledged"
//   once the operation has returned, "refused …" when it threw; a refused one is tried once more.
// store_fault_driver verify STORE: opens the store as the next start would, says what it holds and
//   what is wrong with it or with the backups beside it, and proves that it can still be written.
//   verify-salvaged allows for what is missing.

#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "base/Error.h"
#include "model/SchemaVersions.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/AttachmentList.h"
#include "services/BoardService.h"
#include "services/EntryOrder.h"
#include "services/EntryService.h"
#include "storage/AutomaticBackup.h"
#include "storage/BackupHistory.h"
#include "storage/BackupService.h"
#include "storage/FolderBookmark.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"
#include "store/StoreError.h"
#include "store/StoreSalvage.h"
#include "store/StoreUpgrade.h"
#include "support/OldStore.h"
#include "support/SilentLog.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using namespace korvex;

constexpr base::Instant kNow{800'000'000};
constexpr base::Instant kLater{800'000'100};
constexpr int kPreparedTodos = 12;
constexpr std::size_t kKeptBackups = 2;

/// writev, which no fault is planned for: the faults are the store's, not the report's.
void say(const std::string& line) {
    std::string text = line + "\n";
    const iovec piece{text.data(), text.size()};
    if (::writev(STDOUT_FILENO, &piece, 1) < 0) {
        ::_exit(9);
    }
}

struct Program {
    std::filesystem::path folder;
    tests::SilentLog log;
    services::NoReminders reminders;
    services::NoWidgets widgets;
    std::unique_ptr<store::ModelContainer> container;
    std::unique_ptr<store::ModelContext> context;

    void open(const std::string& file, store::ModelConfiguration::Missing whenMissing) {
        folder = std::filesystem::path(file).parent_path();
        container =
            store::ModelContainer::open(model::currentSchema(),
                                        {.file = file,
                                         .whenMissing = whenMissing,
                                         .whenOlder = store::ModelConfiguration::Older::upgrade},
                                        log);
        context = std::make_unique<store::ModelContext>(*container);
    }
    services::BoardService boards() { return {*context, reminders, widgets, log}; }
    services::EntryService entries() { return {*context, reminders, widgets, log}; }
    storage::BackupService backups() { return {*context, reminders, widgets, log}; }
    std::filesystem::path importedFile() const { return folder / "other.korvexbackup"; }
    std::filesystem::path exportedFile() const { return folder / "mine.korvexbackup"; }
    std::filesystem::path recoveryFile() const {
        return folder / "Recovery" / "BeforeRestore.korvexbackup";
    }
    model::Board& inbox() { return *boards().inboxBoard(); }
    std::vector<model::Entry*> todos() { return services::activeTodos(inbox()); }
};

/// Everything that a user sees, without what differs from run to run.
std::string state(Program& program) {
    std::ostringstream text;
    for (const model::Board* board : program.boards().boards()) {
        text << '[' << board->name() << ']';
        auto entries = board->entries();
        std::sort(entries.begin(), entries.end(), [](const auto* left, const auto* right) {
            return services::ordered(*left, *right);
        });
        for (const model::Entry* entry : entries) {
            text << ' ' << entry->sortOrder() << (entry->isCompleted() ? '+' : '-')
                 << entry->typeRawValue() << ':' << entry->content() << '/'
                 << entry->richTextData().value_or(base::Bytes()).size() << '&'
                 << entry->attachmentData().value_or(base::Bytes()).size() << '@'
                 << entry->updatedAt().seconds;
        }
    }
    return text.str();
}

richtext::AttributedString plain(std::string_view text) {
    return richtext::RichTextSerializer::plainRichText(text);
}

/// Larger than a page of the store.
model::EntryAttachment attachment(std::string filename) {
    return {.id = base::Uuid::random(),
            .filename = std::move(filename),
            .data = base::Bytes(20'000, std::uint8_t{'x'})};
}

void createStore(Program& program) {
    program.boards().initializeDefaultBoards(kNow);
}

/// What is imported: another Inbox, and a board with a todo and a text.
backup::BackupDocument otherStore() {
    const auto identifier = [](std::uint8_t number) {
        base::Uuid id;
        id.bytes.fill(number);
        return id;
    };
    backup::BackupDocument document{.exportedAt = kNow, .appVersion = "0"};
    for (std::uint8_t number = 0; number < 2; ++number) {
        document.boards.push_back({.id = identifier(number),
                                   .name = number == 0 ? "Inbox" : "Imported",
                                   .createdAt = kNow,
                                   .updatedAt = kNow,
                                   .sortOrder = number,
                                   .isSystem = number == 0});
        document.entries.push_back({.id = identifier(number),
                                    .boardID = identifier(1),
                                    .type = number == 0 ? "todo" : "text",
                                    .content = "imported",
                                    .createdAt = kNow,
                                    .updatedAt = kNow,
                                    .sortOrder = number});
    }
    return document;
}

void prepare(Program& program) {
    createStore(program);
    program.boards().createBoard("Work", kNow);
    std::vector<std::string> contents;
    for (int i = 0; i < kPreparedTodos; ++i) {
        contents.push_back("todo " + std::to_string(i));
    }
    program.entries().createTodos({.contents = contents, .board = program.inbox(), .now = kNow});
    program.entries().completeTodo(*program.todos().at(3), kNow);
    program.entries().attach({attachment("first"), attachment("second")}, *program.todos().back(),
                             kNow);
    program.entries().createText({.rich = plain("a text of two halves"),
                                  .board = program.inbox(),
                                  .before = program.todos().at(1)->id(),
                                  .now = kNow});
    storage::Work work;
    storage::writeBackup(otherStore(), program.importedFile(), work);
}

/// In front, so that every other entry is renumbered.
void create(Program& program) {
    program.entries().createTodos({.contents = {"new", std::string(9000, 'x')},
                                   .board = program.inbox(),
                                   .before = program.todos().front()->id(),
                                   .now = kLater});
}

void complete(Program& program) {
    program.entries().completeTodo(*program.todos().at(1), kLater);
}

void reorder(Program& program) {
    const auto todos = program.todos();
    program.entries().moveEntry(todos.back()->id(), todos.front()->id(),
                                model::EntryPlacement::before, program.inbox());
}

/// One entry changes, one is new, and those behind them are renumbered.
void split(Program& program) {
    model::Entry& text = *services::activeEntries(program.inbox()).at(1);
    program.entries().splitText(text, plain("a text"), plain("of two halves"), kLater);
}

/// A completed todo leaves its place among the others.
void changeType(Program& program) {
    model::Entry& todo = *services::completedTodos(program.inbox()).front();
    program.entries().changeType(todo, model::EntryType::text, kLater);
}

void remove(Program& program) {
    program.entries().deleteEntry(*program.todos().front());
}

void attach(Program& program) {
    program.entries().attach({attachment("a"), attachment("b")}, *program.todos().front(), kLater);
}

/// Two entries change.
void moveAttachment(Program& program) {
    model::Entry& from = *program.todos().back();
    const auto attached = services::attachmentsOf(from).attachments;
    program.entries().moveAttachment(attached.at(0).id, from, *program.todos().front(),
                                     std::nullopt, model::EntryPlacement::after, kLater);
}

/// Two boards are renumbered.
void moveToBoard(Program& program) {
    program.entries().moveEntry(*program.todos().front(), *program.boards().boards().back(), kLater,
                                0);
}

void completeAll(Program& program) {
    program.entries().completeTodos(program.inbox(), kLater);
}

/// As undoing a deletion does.
void restoreDeleted(Program& program) {
    auto record = backup::recordOf(*program.todos().front(), program.inbox().id());
    record.id = base::Uuid::random();
    record.content = "deleted before";
    program.entries().restoreDeletedEntry(record);
}

/// A unit of work by hand: changed, inserted and deleted records in one save, which stay pending
/// until a save succeeds. The services take back what they could not save.
void save(Program& program) {
    store::ModelContext& context = *program.context;
    if (!context.hasChanges()) {
        const auto todos = program.todos();
        todos.front()->setContent("changed");
        auto fresh = std::make_unique<model::Entry>(
            model::EntryFields{.id = base::Uuid::random(),
                               .content = "inserted",
                               .createdAt = kLater,
                               .updatedAt = kLater,
                               .sortOrder = todos.back()->sortOrder()});
        fresh->setBoard(&program.inbox());
        context.insert(std::move(fresh));
        context.remove(*todos.back());
    }
    context.save();
}

void exportBackup(Program& program) {
    storage::Work work;
    storage::exportBackup(*program.container, program.exportedFile(), kLater, program.log, work);
}

void importBackup(Program& program) {
    storage::Work work;
    program.backups().restore(storage::readBackup(program.importedFile(), work),
                              program.recoveryFile(), kLater, work);
}

void undoImport(Program& program) {
    storage::Work work;
    program.backups().undoRestore(program.recoveryFile(), kLater, work);
}

void checkpoint(Program& program) {
    program.container->checkpoint();
}

/// Beside the store lie the settings, and the folder that they name.
fs::path chosenFolder(Program& program) {
    return fs::path(program.container->configuration().file).parent_path() / "chosen";
}

/// As the window does, from choosing the folder on.
void backUp(Program& program) {
    const auto& file = program.container->configuration().file;
    app::FileUserDefaults defaults(file.parent_path() / "settings.json");
    app::AppPreferences preferences(defaults, program.log);
    const auto chosen = chosenFolder(program);
    std::error_code ignored;
    fs::create_directory(chosen, ignored);
    preferences.setAutomaticBackupBookmark(storage::FolderBookmark::make(chosen).bytes());
    auto backup = storage::automaticBackup(preferences, file, kLater);
    backup.keeping = kKeptBackups;
    storage::Work work;
    const auto made = storage::makeAutomaticBackup(backup, defaults, program.log, work);
    if (made.pruningFailure) {
        std::rethrow_exception(made.pruningFailure);
    }
}

/// Opening has done it.
void upgrade(Program&) {}

using Operation = void (*)(Program&);
const std::map<std::string, Operation> kOperations{
    {"prepare", prepare},
    {"create-store", createStore},
    {"create", create},
    {"complete", complete},
    {"reorder", reorder},
    {"split", split},
    {"type", changeType},
    {"delete", remove},
    {"attach", attach},
    {"move-attachment", moveAttachment},
    {"move-board", moveToBoard},
    {"complete-all", completeAll},
    {"restore-deleted", restoreDeleted},
    {"save", save},
    {"checkpoint", checkpoint},
    {"upgrade", upgrade},
    {"automatic-backup", backUp},
    {"export", exportBackup},
    {"import", importBackup},
    {"undo-import", undoImport},
};

/// A store of the oldest version, for the upgrade to start from.
void prepareOld(const std::string& file) {
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    tests::OldStore old(file, tests::OldStore::version("V10"));
    const auto board = base::Uuid::random();
    old.addBoard({{"id", board},
                  {"name", std::string("Inbox")},
                  {"createdAt", 1.0},
                  {"updatedAt", 1.0},
                  {"sortOrder", std::int64_t{0}},
                  {"isSystem", std::int64_t{1}}});
    for (std::int64_t i = 0; i < kPreparedTodos; ++i) {
        old.addEntry({{"id", base::Uuid::random()},
                      {"type", std::string(i % 2 == 0 ? "todo" : "text")},
                      {"content", "old " + std::to_string(i) + std::string(500, 'x')},
                      {"createdAt", 1.0},
                      {"updatedAt", 1.0},
                      {"sortOrder", i},
                      {"isCompleted", std::int64_t{0}},
                      {"board", board}});
    }
}

/// A page of entries is gone.
void prepareDamaged(const std::string& file) {
    Program program;
    program.open(file, store::ModelConfiguration::Missing::create);
    prepare(program);
    std::vector<std::string> contents;
    for (int i = 0; i < kPreparedTodos; ++i) {
        contents.push_back(std::to_string(i) + std::string(900, 'y'));
    }
    program.entries().createTodos({.contents = contents, .board = program.inbox(), .now = kNow});
    program.container->checkpoint();
    const int page = SQLite::Database(file, SQLite::OPEN_READONLY)
                         .execAndGet("SELECT max(pageno) FROM dbstat WHERE name = 'Entry' AND "
                                     "pagetype = 'leaf'");
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(std::streamoff{4096} * (page - 1));
    stream << std::string(4096, '\0');
}

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

int performSalvage(const std::string& file) {
    // As a repair does: what was saved already is not saved again.
    const auto salvage = [&] {
        {
            Program program;
            program.open(file, store::ModelConfiguration::Missing::refuse);
            if (!program.container->check().isDamaged) {
                return;
            }
        }
        tests::SilentLog log;
        store::salvageStore(file, model::currentSchema(), std::chrono::milliseconds(50), log);
    };
    if (!attempt("operation", salvage) && !attempt("operation again", salvage)) {
        return 1;
    }
    say("acknowledged");
    return 0;
}

int perform(const std::string& name, const std::string& file) {
    using Missing = store::ModelConfiguration::Missing;
    Program program;
    const bool creates = name == "create-store" || name == "prepare";
    const auto open = [&] { program.open(file, creates ? Missing::create : Missing::refuse); };
    if (!attempt("open", open) && !attempt("open again", open)) {
        return 1;
    }
    std::string before;
    const Operation operation = kOperations.at(name);
    const auto run = [&] {
        before = state(program);
        operation(program);
    };
    if (!attempt("operation", run)) {
        if (name == "save") {
            say(program.context->hasChanges() ? "kept its changes" : "LOST ITS CHANGES");
        } else if (program.context->hasChanges() || state(program) != before) {
            say("LEFT SOMETHING BEHIND: " + state(program) + " instead of " + before);
        }
        if (!attempt("operation again", [&] { operation(program); })) {
            return 1;
        }
    }
    say("acknowledged");
    return 0;
}

int prepared(void (*make)(const std::string&), const std::string& file) {
    make(file);
    say("acknowledged");
    return 0;
}

/// What has the file to itself.
const std::map<std::string, int (*)(const std::string&)> kFiles{
    {"prepare-old", [](const std::string& file) { return prepared(prepareOld, file); }},
    {"prepare-damaged", [](const std::string& file) { return prepared(prepareDamaged, file); }},
    {"salvage", performSalvage},
};

/// What is missing from a damaged store leaves gaps.
enum class Gaps { wrong, expected };

int verify(const std::string& file, Gaps gaps) {
    Program program;
    try {
        program.open(file, store::ModelConfiguration::Missing::refuse);
        if (!program.container->wasUpgraded()) {
            store::removeFormerStores(file, model::currentSchema());
        }
    } catch (const store::StoreError& error) {
        say(error.which() == store::StoreErrorCase::missing ? "state none"
                                                            : "WRONG " + error.errorDescription());
        return 0;
    }
    say("state " + state(program));
    for (const auto& notice : program.container->notices()) {
        say("WRONG notice: " + notice);
    }
    for (const auto& problem : program.container->check().problems) {
        say("WRONG " + problem);
    }
    const SQLite::Database database(file, SQLite::OPEN_READONLY);
    SQLite::Statement integrity(database, "PRAGMA integrity_check");
    while (integrity.executeStep()) {
        if (const std::string line = integrity.getColumn(0); line != "ok") {
            say("WRONG integrity: " + line);
        }
    }
    for (const model::Board* board : program.boards().boards()) {
        if (gaps == Gaps::expected) {
            break;
        }
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
    if (fs::exists(chosenFolder(program))) {
        const auto backups = storage::backupsIn(chosenFolder(program));
        storage::Work work;
        for (const auto& backup : backups) {
            storage::checkBackup(backup, program.log, work);
        }
        if (backups.size() < kKeptBackups) {
            say("WRONG: a backup was lost");
        }
    }
    for (const auto& backup : {program.exportedFile(), program.recoveryFile()}) {
        if (std::filesystem::exists(backup)) {
            storage::Work work;
            backup::validate(storage::readBackup(backup, work), program.log); // throws
            say("backup " + backup.filename().string());
        }
    }
    program.boards().createBoard("proof that it can be written", kLater);
    say("writable");
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    try {
        if (words.size() == 3 && words[0] == "perform" && kFiles.contains(words[1])) {
            return kFiles.at(words[1])(words[2]);
        }
        if (words.size() == 3 && words[0] == "perform" && kOperations.contains(words[1])) {
            return perform(words[1], words[2]);
        }
        if (words.size() == 2 && words[0] == "verify") {
            return verify(words[1], Gaps::wrong);
        }
        if (words.size() == 2 && words[0] == "verify-salvaged") {
            return verify(words[1], Gaps::expected);
        }
    } catch (const std::exception& error) {
        say(std::string("WRONG exception: ") + error.what());
        return 2;
    }
    std::cerr << "usage: store_fault_driver perform OPERATION STORE | verify STORE\n";
    return 2;
}
