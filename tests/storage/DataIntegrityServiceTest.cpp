#include "storage/DataIntegrityService.h"

#include "model/BoardIcon.h"
#include "model/EntryAttachment.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/ServiceFixture.h"
#include "storage/BackupService.h"
#include "storage/SoundValues.h"
#include "storage/StoreRepair.h"
#include "store/StoreConnection.h"
#include "store/StoreError.h"
#include "support/FolderNames.h"

#include <limits>
#include <map>
#include <random>
#include <set>
#include <tuple>

namespace korvex::storage {
namespace {

using model::Board;
using model::BoardFields;
using model::Entry;
using Reports = std::map<RepairKind, std::size_t>;

constexpr base::Instant kDay{1000};
constexpr base::Instant kLater{2000};
const auto kNever = base::Instant::distantFuture() + 1;

base::Uuid id(std::uint8_t number) {
    base::Uuid id;
    id.bytes.back() = number;
    return id;
}

TEST(SoundValues, AnEntryKeepsWhatMakesSense) {
    const EntryValues todo{.type = "todo", .createdAt = kDay, .updatedAt = kLater};
    const EntryValues text{.type = "text", .createdAt = kDay, .updatedAt = kLater};
    const auto with = [](EntryValues values, const auto& change) {
        change(values);
        return values;
    };
    struct {
        EntryValues values;
        EntryValues sound;
        Reports report;
    } const cases[]{
        {todo, todo, {}},
        {with(todo, [](auto& it) { it.type = "Todo"; }), text, {{RepairKind::entryTypes, 1}}},
        {with(todo,
              [](auto& it) {
                  it.type = "";
                  it.isCompleted = true;
                  it.completedAt = kDay;
              }),
         text,
         {{RepairKind::entryTypes, 1}, {RepairKind::completion, 2}}},
        {with(todo, [](auto& it) { it.isCompleted = true; }),
         with(todo,
              [](auto& it) {
                  it.isCompleted = true;
                  it.completedAt = kLater;
              }),
         {{RepairKind::completion, 1}}},
        {with(todo, [](auto& it) { it.completedAt = kDay; }), todo, {{RepairKind::completion, 1}}},
        {with(text, [](auto& it) { it.createdAt = kNever; }),
         with(text, [](auto& it) { it.createdAt = kLater; }),
         {{RepairKind::dates, 1}}},
        {with(text, [](auto& it) { it.createdAt = it.updatedAt = kNever; }),
         with(text, [](auto& it) { it.createdAt = it.updatedAt = base::Instant{}; }),
         {{RepairKind::dates, 2}}},
        {with(todo, [](auto& it) { it.schedule = {.dueDay = 20250231, .dueDate = kDay}; }),
         with(todo, [](auto& it) { it.schedule = {.dueDate = kDay}; }),
         {{RepairKind::schedules, 1}}},
        {with(todo,
              [](auto& it) {
                  it.schedule = {.dueDay = 20250310,
                                 .dueDate = kLater,
                                 .dueStartDate = kDay,
                                 .reminderDate = kDay};
              }),
         with(todo, [](auto& it) { it.schedule = {.dueDay = 20250310, .reminderDate = kDay}; }),
         {{RepairKind::schedules, 1}}},
        {with(todo,
              [](auto& it) {
                  it.schedule = {.dueDate = kDay, .dueStartDate = kDay, .reminderDate = kNever};
              }),
         with(todo, [](auto& it) { it.schedule = {.dueDate = kDay}; }),
         {{RepairKind::schedules, 1}}},
        // A text sleeps on any schedule that can be written.
        {with(text, [](auto& it) { it.schedule = {.dueDay = 7, .dueDate = kNever}; }),
         with(text, [](auto& it) { it.schedule = {.dueDay = 7, .dueDate = kNever}; }),
         {}},
        {with(text,
              [](auto& it) {
                  it.schedule.dueDate = base::Instant{std::numeric_limits<double>::infinity()};
              }),
         text,
         {{RepairKind::schedules, 1}}},
    };
    for (const auto& each : cases) {
        auto values = each.values;
        RepairReport report;
        makeSound(values, report);
        EXPECT_EQ(values, each.sound) << &each - cases;
        EXPECT_EQ(report.repaired, each.report) << &each - cases;
    }
}

class DataIntegrityServiceTest : public tests::ServiceFixture {
protected:
    using Request = DataIntegrityService::Request;

    void SetUp() override {
        ServiceFixture::SetUp();
        boards->initializeDefaultBoards(kNow);
        boards->reorderBoards(std::vector{boards->inboxBoard(), board}, kNow);
    }
    RepairReport repair(Request request = {.now = kNow}) {
        return DataIntegrityService(*context, log).repair(request);
    }
    Board& addBoard(BoardFields fields) {
        return context->insert(std::make_unique<Board>(std::move(fields)));
    }
    Entry& addEntry(model::EntryFields fields, Board* on) {
        fields.id = base::Uuid::random();
        auto entry = std::make_unique<Entry>(std::move(fields));
        entry->setBoard(on);
        return context->insert(std::move(entry));
    }
    backup::BackupDocument stored() {
        Work work;
        return createBackup(*container, kNow, work).document;
    }
};

TEST_F(DataIntegrityServiceTest, DoubledSystemBoardsBecomeOneAndLoseNoEntry) {
    auto* const inbox = boards->inboxBoard();
    add({"elsewhere"});
    const auto board_ = [](std::uint8_t number, const char* name) {
        return BoardFields{.id = id(number), .name = name, .createdAt = kDay, .updatedAt = kDay};
    };
    auto legacy = board_(1, "Today");
    legacy.isSystem = true; // without an identifier
    legacy.sortOrder = 7;
    auto second = board_(2, "Mine");
    second.systemIdentifier = "inbox"; // not marked as system, and archived
    second.isArchived = true;
    second.sortOrder = 9;
    auto lost = board_(3, "Lost");
    lost.mergedIntoBoardID = id(99);
    lost.sortOrder = 5;
    auto merged = board_(4, "Merged");
    merged.mergedIntoBoardID = id(2);
    merged.sortOrder = 8;
    entries->createTodos({.contents = {"first"}, .board = *inbox, .now = kNow});
    std::map<base::Uuid, Board*> added;
    for (auto* fields : {&legacy, &second, &lost, &merged}) {
        auto& made = addBoard(*fields);
        added[fields->id] = &made;
        addEntry({.typeRawValue = "todo", .content = fields->name, .createdAt = kDay}, &made);
        addEntry({.typeRawValue = "todo",
                  .content = fields->name + " done",
                  .createdAt = kDay,
                  .sortOrder = 1,
                  .isCompleted = true,
                  .completedAt = kDay},
                 &made);
    }
    context->save();

    std::map<base::Uuid, base::Uuid> remapped;
    const auto report =
        repair({.now = kNow, .onMergedBoard = [&](const auto& from, const auto& to) {
                    remapped.emplace(from, to);
                }});
    EXPECT_EQ(remapped,
              (std::map<base::Uuid, base::Uuid>{{id(1), inbox->id()}, {id(2), inbox->id()}}));
    EXPECT_EQ(report.repaired.at(RepairKind::doubledSystemBoards), 2U);
    EXPECT_EQ(report.repaired.at(RepairKind::entriesOfMergedBoards), 6U);
    EXPECT_EQ(boards->boards(), (std::vector<Board*>{inbox, board, added[id(3)]}));
    EXPECT_EQ(added[id(4)]->mergedIntoBoardID(), inbox->id());
    EXPECT_EQ(storedOrder(*inbox),
              (std::vector<std::string>{"first", "Today", "Mine", "Merged", "Today done",
                                        "Mine done", "Merged done"}));
    EXPECT_EQ(storedOrder(*added[id(3)]), (std::vector<std::string>{"Lost", "Lost done"}));
    EXPECT_NO_THROW(backup::validate(stored(), log));
    EXPECT_EQ(log.count("Repaired " + std::to_string(report.count()) +
                        " inconsistent metadata values; preserved entry contents"),
              1U);
}

TEST_F(DataIntegrityServiceTest, EntriesWithoutABoardAreOnTheInboxWhichIsMadeForThem) {
    add({"one", "two", "three"});
    SQLite::Database database(container->configuration().file, SQLite::OPEN_READWRITE);
    for (const bool hasInbox : {true, false}) {
        if (!hasInbox) {
            database.exec("DELETE FROM Board; DELETE FROM ChangeLog");
            database.exec("UPDATE Entry SET board = NULL WHERE content = 'one'");
        } else {
            database.exec("UPDATE Entry SET board = randomblob(16) WHERE content <> 'one'");
        }
        context.reset();
        container = openContainer();
        context = std::make_unique<store::ModelContext>(*container);
        boards = std::make_unique<services::BoardService>(*context, reminders, widgets, log);
        const auto report = repair();
        EXPECT_EQ(report.repaired.at(RepairKind::entriesWithoutBoard), hasInbox ? 2U : 3U);
        ASSERT_NE(boards->inboxBoard(), nullptr);
        auto texts = storedOrder(*boards->inboxBoard());
        EXPECT_EQ(texts.size(), hasInbox ? 2U : 3U);
    }
}

TEST_F(DataIntegrityServiceTest, ASoundStoreIsNotTouchedAndABrokenOneNotHalf) {
    add({"one", "two"});
    const auto revision = container->revision();
    EXPECT_TRUE(repair().isEmpty());
    EXPECT_EQ(container->revision(), revision);

    board->setIcon("no such icon");
    context->save();
    breakSaves();
    log.expectError("Integrity repair could not be saved");
    EXPECT_THROW(repair(), store::StoreError);
    EXPECT_FALSE(context->hasChanges());
    EXPECT_EQ(board->icon(), "no such icon");
    mendSaves();
    // The caller saves.
    const auto before = container->revision();
    EXPECT_EQ(repair({.saveChanges = DataIntegrityService::SaveChanges::no, .now = kNow}).repaired,
              (Reports{{RepairKind::boardLooks, 1}}));
    EXPECT_EQ(container->revision(), before);
    EXPECT_TRUE(context->hasChanges());
}

/// Others can write meanwhile, which they cannot while it changes anything.
TEST_F(DataIntegrityServiceTest, ContentsAreReadOnceWhateverIsRepaired) {
    const model::EntryAttachment file{base::Uuid::random(), "file", base::Bytes(10)};
    add({"one", "two"});
    for (auto* const entry : context->fetch<Entry>()) {
        entry->setAttachmentData(model::EntryAttachment::encode({&file, 1}));
    }
    board->setIcon("no such icon");
    context->save();
    int reads = 0;
    sqlite3_trace_v2(
        container->connection().handle(), SQLITE_TRACE_STMT,
        [](unsigned, void* count, void*, void* sql) {
            const std::string_view text(static_cast<const char*>(sql));
            *static_cast<int*>(count) += text.starts_with("SELECT bytes") ? 1 : 0;
            return 0;
        },
        &reads);
    const DataIntegrityService service(*context, log);
    EXPECT_EQ(service.inspect({.now = kNow}).repaired, (Reports{{RepairKind::boardLooks, 1}}));
    EXPECT_EQ(reads, 2);
    EXPECT_EQ(repair().repaired, (Reports{{RepairKind::boardLooks, 1}}));
    EXPECT_EQ(reads, 4);
    sqlite3_trace_v2(container->connection().handle(), 0, nullptr, nullptr);
}

/// Metadata as nobody would write it, with words that must stay.
class RandomStore {
public:
    RandomStore(unsigned seed, store::ModelContext& context) : m_random(seed), m_context(context) {}

    void fill() {
        std::vector<Board*> boards;
        for (auto left = below(6); left > 0; --left) {
            boards.push_back(&m_context.insert(std::make_unique<Board>(board())));
        }
        for (auto left = below(40); left > 0; --left) {
            auto entry = std::make_unique<Entry>(fields());
            entry->setAttachmentData(attachments());
            entry->setBoard(boards.empty() || below(8) == 0 ? nullptr
                                                            : boards[below(boards.size())]);
            m_context.insert(std::move(entry));
        }
        m_context.save();
    }

private:
    std::size_t below(std::size_t limit) { return m_random() % limit; }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    std::string pick(std::vector<std::string> words) { return words[below(words.size())]; }
    std::optional<std::string> maybe(std::vector<std::string> words) {
        return oneIn(2) ? std::optional(pick(std::move(words))) : std::nullopt;
    }
    std::optional<base::Bytes> attachments() {
        const model::EntryAttachment file{base::Uuid::random(), "file", base::Bytes(below(5000))};
        return oneIn(2)   ? std::nullopt
               : oneIn(3) ? std::optional(base::Bytes(below(50), 7))
                          : model::EntryAttachment::encode({&file, 1});
    }
    base::Instant instant() {
        return oneIn(4) ? base::Instant{oneIn(2) ? 1e300 : -1e11}
                        : base::Instant{static_cast<double>(below(5)) * 100};
    }
    std::optional<base::Instant> maybeInstant() {
        return oneIn(2) ? std::optional(instant()) : std::nullopt;
    }
    std::int64_t number() {
        return oneIn(6) ? (oneIn(2) ? std::numeric_limits<std::int64_t>::max()
                                    : std::numeric_limits<std::int64_t>::min())
                        : static_cast<std::int64_t>(below(6)) - 1;
    }
    BoardFields board() {
        m_ids.push_back(base::Uuid::random());
        return {.id = m_ids.back(),
                .name = pick({"Inbox", "Today", "", " \n", "Work"}),
                .createdAt = instant(),
                .updatedAt = instant(),
                .sortOrder = number(),
                .isSystem = oneIn(3),
                .isArchived = oneIn(3),
                .icon = maybe({"folder.fill", "folder", ""}),
                .iconColor = maybe({"blue", "ultraviolet"}),
                .systemIdentifier = oneIn(2) ? maybe({"inbox", "today", "outbox"}) : std::nullopt,
                .mergedIntoBoardID =
                    oneIn(3) ? std::optional(m_ids[below(m_ids.size())]) : std::nullopt};
    }
    model::EntryFields fields() {
        return {.id = base::Uuid::random(),
                .typeRawValue = pick({"todo", "text", "Todo", ""}),
                .content = oneIn(4) ? "" : "words " + std::to_string(m_random()),
                .richTextData = oneIn(3) ? std::optional(base::Bytes(below(50))) : std::nullopt,
                .createdAt = instant(),
                .updatedAt = instant(),
                .sortOrder = number(),
                .isCompleted = oneIn(2),
                .completedAt = maybeInstant(),
                .dueDay = oneIn(3) ? std::optional<std::int64_t>(oneIn(2) ? 20250310 : 20251350)
                                   : std::nullopt,
                .dueDate = maybeInstant(),
                .dueStartDate = maybeInstant(),
                .reminderDate = maybeInstant()};
    }

    std::mt19937 m_random;
    store::ModelContext& m_context;
    std::vector<base::Uuid> m_ids;
};

/// What must be in a store after the repair.
struct Words {
    std::map<base::Uuid,
             std::tuple<std::string, std::optional<base::Bytes>, std::optional<base::Bytes>>>
        entries;
    /// Parts that nobody can read, in files beside it.
    std::size_t setAside = 0;

    bool operator==(const Words&) const = default;
};

Words wordsOf(store::ModelContext& context, base::LogSink& log) {
    const auto isReadable = [](const auto& decode) {
        try {
            static_cast<void>(decode());
            return true;
        } catch (const base::Error&) {
            return false;
        }
    };
    Words words;
    for (const auto* const entry : context.fetch<Entry>()) {
        auto text = entry->richTextData();
        auto files = entry->attachmentData();
        const richtext::RichTextSerializer serializer(log);
        if (text && entry->content().empty() &&
            !isReadable([&] { return serializer.decode(*text); })) {
            text.reset();
            ++words.setAside;
        }
        if (!isReadable([&] { return model::EntryAttachment::decode(files); })) {
            files.reset();
            ++words.setAside;
        }
        words.entries[entry->id()] = {entry->content(), text, files};
    }
    return words;
}

TEST_F(DataIntegrityServiceTest, AnyMetadataBecomesAValidBackupOfTheSameWords) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        const tests::TemporaryFolder place;
        context.reset();
        container = store::ModelContainer::open(model::currentSchema(),
                                                {.file = place / "Primary.store"}, log);
        context = std::make_unique<store::ModelContext>(*container);
        RandomStore(seed, *context).fill();
        auto words = wordsOf(*context, log);
        // Half of them with the records in memory, half as the next start finds them.
        if (seed % 2 == 0) {
            context = std::make_unique<store::ModelContext>(*container);
        }
        const auto report = repair();
        const auto document = stored();
        ASSERT_NO_THROW(backup::validate(document, log));
        Words after;
        for (const auto& entry : document.entries) {
            after.entries[entry.id] = {entry.content, entry.richTextData, entry.attachmentData};
        }
        for (const auto& name : tests::namesIn(place.path())) {
            after.setAside += name.starts_with("Primary.store.unreadable-") ? 1 : 0;
        }
        ASSERT_EQ(after, words);
        const auto count = [&](RepairKind kind) {
            const auto found = report.repaired.find(kind);
            return found == report.repaired.end() ? 0 : found->second;
        };
        EXPECT_EQ(count(RepairKind::unreadableTexts) + count(RepairKind::unreadableAttachments),
                  words.setAside);
        ASSERT_TRUE(repair().isEmpty());
        ASSERT_EQ(stored(), document);
    }
}

TEST_F(DataIntegrityServiceTest, RowsWithoutAnIdentifierCostNothingAndAreSaved) {
    for (unsigned seed = 0; seed < 6; ++seed) {
        SCOPED_TRACE(seed);
        const tests::TemporaryFolder place;
        const auto open = [&] {
            container = store::ModelContainer::open(model::currentSchema(),
                                                    {.file = place / "Primary.store"}, log);
            context = std::make_unique<store::ModelContext>(*container);
        };
        context.reset();
        open();
        RandomStore(seed, *context).fill();
        context.reset();
        std::multiset<std::string> before;
        std::size_t damaged = 0;
        {
            SQLite::Database database((place / "Primary.store").string(), SQLite::OPEN_READWRITE);
            database.exec("UPDATE Entry SET id = CASE rowid % 2 WHEN 0 THEN x'01' || rowid ELSE "
                          "rowid END WHERE rowid % 5 < 2");
            database.exec("UPDATE Board SET id = 'none' WHERE rowid = 2");
            SQLite::Statement contents(database, "SELECT content FROM Entry");
            while (contents.executeStep()) {
                before.insert(contents.getColumn(0).getString());
            }
            damaged = database
                          .execAndGet("SELECT (SELECT count(*) FROM Entry WHERE rowid % 5 < 2) + "
                                      "(SELECT count(*) FROM Board WHERE rowid = 2)")
                          .getUInt();
        }
        open();
        EXPECT_EQ(repair().damaged, damaged);
        repair();
        context.reset();
        container.reset();
        Work work;
        const auto report =
            repairStore({.storeFile = place / "Primary.store", .now = kNow}, log, work);
        EXPECT_EQ(report.salvage.has_value(), damaged > 0);
        open();
        EXPECT_TRUE(repair().isEmpty());
        const auto document = stored();
        EXPECT_NO_THROW(backup::validate(document, log));
        std::multiset<std::string> after;
        for (const auto& entry : document.entries) {
            after.insert(entry.content);
        }
        EXPECT_EQ(after, before);
    }
}

} // namespace
} // namespace korvex::storage
