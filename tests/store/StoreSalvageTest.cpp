#include "StoreFixture.h"

#include "store/ChangeLog.h"
#include "store/StoreFile.h"
#include "store/salvage/StoreSalvage.h"
#include "support/CaseOf.h"
#include "support/FileSizeLimit.h"
#include "support/FolderNames.h"
#include "support/OldStore.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <set>

namespace korvex::tests {

using model::Board;
using model::Entry;
using store::ModelContext;

/// A store whose pages can be damaged behind its back, as a disk would.
class StoreSalvageTest : public StoreFixture {
protected:
    static constexpr int kEntries = 400;
    static constexpr std::size_t kPage = 4096;

    /// Two boards by turns, texts of some 200 bytes, attachments now and then.
    void makeStore() {
        for (const auto& each : std::filesystem::directory_iterator(folder())) {
            std::filesystem::remove(each.path());
        }
        contents.clear();
        const auto container = open();
        ModelContext context(*container);
        boards = {addBoard(context, "Home").id(), addBoard(context, "Work").id()};
        for (int i = 0; i < kEntries; ++i) {
            const auto text = "entry " + std::to_string(i) + std::string(200, 'x');
            auto& board = *context.find<Board>(boards[static_cast<std::size_t>(i % 2)]);
            auto& entry = addTodo(context, board, text, i);
            if (i % 40 == 0) {
                entry.setAttachmentData(base::Bytes(9000, 7));
            }
            contents[entry.id()] = text;
        }
        context.save();
        container->checkpoint();
    }

    store::SalvageReport salvage(const store::SalvageWatch& watch = {}) {
        return store::salvageStore(storeFile(), model::currentSchema(),
                                   std::chrono::milliseconds(50), log, watch);
    }

    std::int64_t number(const std::string& sql) {
        return SQLite::Database(storeFile().string(), SQLite::OPEN_READONLY).execAndGet(sql);
    }
    /// The pages of a table or index, leaves only where asked.
    std::vector<std::int64_t> pages(const std::string& name, const std::string& type) {
        SQLite::Database database(storeFile().string(), SQLite::OPEN_READONLY);
        SQLite::Statement pages(database, "SELECT pageno FROM dbstat WHERE name = ? AND "
                                          "pagetype = ? ORDER BY pageno");
        pages.bind(1, name);
        pages.bind(2, type);
        std::vector<std::int64_t> result;
        while (pages.executeStep()) {
            result.push_back(pages.getColumn(0));
        }
        return result;
    }
    void overwrite(std::int64_t page, std::size_t offset, const std::string& bytes) {
        std::fstream file(storeFile(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(
            static_cast<std::streamoff>(static_cast<std::size_t>(page - 1) * kPage + offset));
        file << bytes;
    }
    /// As many records as `makeStore` makes, by a program of an older version.
    void makeOldStore() {
        for (const auto& each : std::filesystem::directory_iterator(folder())) {
            std::filesystem::remove(each.path());
        }
        contents.clear();
        OldStore old(storeFile(), OldStore::version("V13"));
        const auto home = OldStore::board("Inbox", {{"systemIdentifier", std::string("inbox")}});
        old.addBoard(home);
        old.addBoard(OldStore::board("Work", {{"isSystem", std::int64_t{0}}}));
        for (std::int64_t i = 0; i < kEntries; ++i) {
            const auto id = base::Uuid::random();
            contents[id] = "old " + std::to_string(i) + std::string(200, 'x');
            old.addEntry(OldStore::entry(home, "todo", contents[id],
                                         {{"id", id}, {"sortOrder", i}, {"dueDate", 1.5}}));
        }
    }
    /// The pages name each other.
    static std::string circle(std::string store) {
        std::fill_n(store.begin(), kPage, '\0');
        for (std::size_t page = 1; page * kPage < store.size(); ++page) {
            std::string inner(kPage, '\0');
            inner[0] = 5;
            inner[4] = 100;
            inner[5] = 12;
            inner[11] = static_cast<char>(page);
            for (std::size_t cell = 0; cell < 100; ++cell) {
                inner[12 + 2 * cell] = 8;
            }
            inner[2051] = 3;
            store.replace(page * kPage, kPage, inner);
        }
        return store;
    }
    void zero(std::int64_t page) { overwrite(page, 0, std::string(kPage, '\0')); }

    /// Opens what was saved: it is sound, and every entry has the words that it had, but for
    /// `altered` ones.
    void expectSound(std::size_t entries, std::size_t altered = 0) {
        const auto container = open();
        const auto check = container->check();
        EXPECT_FALSE(check.isDamaged);
        // An altered one may name a board that never was.
        EXPECT_LE(check.problems.size(), altered);
        EXPECT_THAT(container->notices(), testing::IsEmpty());
        ModelContext context(*container);
        const auto found = context.fetch<Entry>();
        EXPECT_EQ(found.size(), entries);
        std::size_t differing = 0;
        for (const auto* entry : found) {
            const auto known = contents.find(entry->id());
            differing += known == contents.end() || known->second != entry->content() ? 1 : 0;
        }
        EXPECT_LE(differing, altered);
        addBoard(context, "It can be written");
        context.save();
    }

    struct Sum {
        std::size_t missing = 0;
        std::size_t altered = 0;
        std::size_t withoutBytes = 0;
    };
    static Sum sumOf(const store::SalvageReport& report) {
        Sum sum;
        for (const auto& loss : report.losses) {
            sum.missing += loss.missing;
            sum.altered += loss.altered;
            sum.withoutBytes += loss.withoutBytes;
        }
        return sum;
    }

    std::vector<base::Uuid> boards;
    std::map<base::Uuid, std::string> contents;
};

TEST_F(StoreSalvageTest, ZeroedPagesCostTheirOwnRowsWhichAreCountedByBoard) {
    makeStore();
    const auto leaves = pages("Entry", "leaf");
    ASSERT_GT(leaves.size(), 10U);
    const auto hit = leaves[leaves.size() / 2];
    const auto lost = static_cast<std::size_t>(
        number("SELECT ncell FROM dbstat WHERE pageno = " + std::to_string(hit)));
    {
        // By which what was replaced is found again.
        const SQLite::Database database(storeFile().string(), SQLite::OPEN_READWRITE);
        store::ChangeLog::keepReplacement(database.getHandle(), {.revision = 1, .note = "noted"});
    }
    open()->checkpoint();
    zero(hit);
    EXPECT_TRUE(open()->check().isDamaged);
    const auto report = salvage();
    EXPECT_FALSE(report.mayMissMore);
    EXPECT_EQ(open()->replacementNote(), "noted");
    EXPECT_EQ(report.saved, kEntries - lost + 2);
    std::map<base::Uuid, std::size_t> missing;
    for (const auto& loss : report.losses) {
        ASSERT_TRUE(loss.owner);
        EXPECT_EQ(loss.type, &Entry::recordType());
        missing[*loss.owner] = loss.missing;
    }
    EXPECT_EQ(missing[boards[0]] + missing[boards[1]], lost);
    EXPECT_LE(missing[boards[0]], missing[boards[1]] + 1);
    EXPECT_LE(missing[boards[1]], missing[boards[0]] + 1);
    EXPECT_TRUE(std::filesystem::exists(report.kept));
    expectSound(kEntries - lost);
}

TEST_F(StoreSalvageTest, EveryPageMayBeGone) {
    makeStore();
    const auto count = number("PRAGMA page_count");
    const auto whole = folder() / "whole";
    std::filesystem::copy_file(storeFile(), whole);
    std::map<std::int64_t, std::string> names;
    {
        SQLite::Database database(whole.string(), SQLite::OPEN_READONLY);
        SQLite::Statement pages(database, "SELECT pageno, name || ' ' || pagetype FROM dbstat");
        while (pages.executeStep()) {
            names[pages.getColumn(0)] = pages.getColumn(1).getString();
        }
    }
    std::set<std::string> tried;
    for (std::int64_t page = 2; page <= count; ++page) {
        if (!tried.insert(names[page]).second) {
            continue; // one of its kind
        }
        SCOPED_TRACE(names[page]);
        for (const auto* companion : {"-wal", "-shm", ".lock"}) {
            std::filesystem::remove(storeFile().string() + companion);
        }
        std::filesystem::copy_file(whole, storeFile(),
                                   std::filesystem::copy_options::overwrite_existing);
        zero(page);
        const auto report = salvage();
        const auto sum = sumOf(report);
        const auto container = open();
        EXPECT_FALSE(container->check().isDamaged);
        const auto entries = ModelContext(*container).count<Entry>();
        if (!report.mayMissMore) {
            const auto boardsLost = 2 - ModelContext(*container).count<Board>();
            EXPECT_EQ(entries + boardsLost, kEntries + boardsLost * 2 - sum.missing);
        }
        EXPECT_GE(entries, kEntries - 30U);
        // One that leads to others costs nothing: those are all there.
        EXPECT_TRUE(!names[page].ends_with(" internal") ||
                    (report.saved == kEntries + 2U && sum.missing == 0 &&
                     number("SELECT count(*) FROM \"Entry.attachmentData\"") == kEntries / 40))
            << report.saved << " saved";
        std::filesystem::remove(report.kept);
    }
    EXPECT_GT(tried.size(), 8U);
}

TEST_F(StoreSalvageTest, WhatWasDeletedDoesNotComeBackFromPagesInUseNoMore) {
    makeStore();
    {
        const auto container = open();
        ModelContext context(*container);
        for (auto* entry : context.fetch<Entry>()) {
            if (entry->sortOrder() >= kEntries / 2) {
                context.remove(*entry);
            }
        }
        context.save();
        container->checkpoint();
    }
    ASSERT_GT(number("PRAGMA freelist_count"), 10);
    zero(pages("Entry", "internal").at(0));
    EXPECT_EQ(salvage().saved, kEntries / 2 + 2U);
    expectSound(kEntries / 2);
}

/// The same store three times: as this version makes it, as an upgrade leaves it, and of an older
/// version.
TEST_F(StoreSalvageTest, AStoreThatDoesNotOpenIsSavedFromACopyThatDoes) {
    enum class Made { now, upgraded, older };
    // What is done to the file, how much is saved then, and whether it is known that it is all.
    const struct {
        const char* name;
        Made made;
        std::size_t from;
        std::size_t zeros;
        std::size_t left;
        std::size_t leastSaved;
        bool isKnown;
        std::size_t boards = 2;
        const char* flipped = nullptr;
        const char* lostRoot = nullptr;
    } cases[] = {
        {"first page", Made::now, 0, kPage, 100, kEntries + 2, true},
        {"header", Made::now, 0, 100, 100, kEntries + 2, true},
        {"tables' names", Made::now, 100, kPage - 100, 100, kEntries + 2, true},
        {"a column's name", Made::now, 0, 0, 100, kEntries + 2, true, 2, "content"},
        {"a newer column's name", Made::now, 0, 0, 100, kEntries + 2, true, 2, "dueStartDate"},
        {"a version's column", Made::now, 0, 0, 100, kEntries + 2, true, 2, "version"},
        {"a checksum's column", Made::now, 0, 0, 100, kEntries + 2, true, 2, "checksum"},
        {"the store's identifier", Made::now, 0, 0, 100, kEntries + 2, true, 2, "storeID"},
        {"the log's number", Made::now, 0, 0, 100, kEntries + 2, true, 2, "revision"},
        {"the log's changes", Made::now, 0, 0, 100, kEntries + 2, true, 2, "changes"},
        {"attachments' owner", Made::now, 0, 0, 100, kEntries + 2, true, 2, "owner"},
        {"attachments' bytes", Made::now, 0, 0, 100, kEntries + 2, true, 2, "bytes"},
        {"version's number", Made::now, 63, 1, 100, kEntries + 2, true},
        {"half of the file", Made::now, 0, 0, 50, kEntries / 4, false},
        {"first page, half of the file", Made::now, 0, kPage, 50, kEntries / 4, false},
        {"first page, root", Made::now, 0, kPage, 100, kEntries + 2, false, 2, nullptr, "Entry"},
        {"first page, root of attachments", Made::now, 0, kPage, 100, kEntries + 2, true, 2,
         nullptr, "Entry.attachmentData"},
        {"all pages where tables begin", Made::now, 0, 16 * kPage, 100, kEntries / 2, false, 0},
        {"first page", Made::upgraded, 0, kPage, 100, kEntries + 2, false},
        {"first page, root", Made::upgraded, 0, kPage, 100, kEntries + 2, false, 2, nullptr,
         "Entry"},
        {"header", Made::upgraded, 0, 100, 100, kEntries + 2, true},
        {"a column's name", Made::older, 0, 0, 100, kEntries + 2, false, 2, "content"},
        {"first page", Made::older, 0, kPage, 100, kEntries + 2, false},
        {"the store's identifier", Made::older, 0, 0, 100, kEntries + 2, false, 2, "storeID"},
        {"header", Made::older, 0, 100, 100, kEntries + 2, true},
        {"version's number", Made::older, 63, 1, 100, kEntries + 2, true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name + std::string(", made ") + std::to_string(int(each.made)));
        if (each.made == Made::now) {
            makeStore();
        } else {
            makeOldStore();
        }
        if (each.made == Made::upgraded) {
            open({.whenOlder = store::ModelConfiguration::Older::upgrade})->checkpoint();
            open(); // a good start, after which there is but one store
        }
        if (each.lostRoot) {
            zero(pages(each.lostRoot, "internal").at(0));
        }
        if (each.flipped) {
            overwrite(1, bytesOf(storeFile()).find(each.flipped), "K");
        }
        overwrite(1, each.from, std::string(each.zeros, '\0'));
        std::filesystem::resize_file(storeFile(),
                                     std::filesystem::file_size(storeFile()) * each.left / 100);
        const auto before = bytesOf(storeFile());
        EXPECT_THAT(
            refusal({.whenOlder = store::ModelConfiguration::Older::upgrade}),
            testing::AnyOf(store::StoreErrorCase::damaged, store::StoreErrorCase::notAStore));
        const auto report = salvage();
        EXPECT_GE(report.saved, each.leastSaved);
        // SQLite notes in the header of one that it opens that its journal is gone.
        const std::size_t from = each.flipped || each.zeros == 1 ? 100 : 0;
        EXPECT_TRUE(bytesOf(report.kept).substr(from) == before.substr(from));
        const auto sum = sumOf(report);
        EXPECT_EQ(sum.altered, 0U);
        EXPECT_EQ(report.mayMissMore, !each.isKnown);
        if (each.isKnown) {
            EXPECT_EQ(report.saved + sum.missing, kEntries + 2U);
            EXPECT_EQ(number("SELECT count(*) FROM \"Entry.attachmentData\""),
                      each.made == Made::now ? kEntries / 40 : 0);
        }
        expectSound(report.saved - each.boards, each.boards == 2 ? 0 : kEntries);
        EXPECT_THAT(namesIn(folder()), testing::Each(testing::Not(testing::HasSubstr(".new-"))));
    }
}

TEST_F(StoreSalvageTest, WhatIsNoStoreOrInUseIsLeftAsItIs) {
    makeStore();
    auto other = open();
    // By another program: to close the file here gives up the locks on it.
    const auto zeroing = "dd if=/dev/zero of='" + storeFile().string() +
                         "' bs=4096 count=1 conv=notrunc 2>/dev/null";
    ASSERT_EQ(std::system(zeroing.c_str()), 0);
    EXPECT_EQ(caseOf<store::StoreError>([&] { salvage(); }), store::StoreErrorCase::busy);
    other.reset();
    const auto whole = bytesOf(storeFile());
    for (const auto& content : {std::string(5000, 'n'), std::string(20'000, '\0'), circle(whole)}) {
        std::ofstream(storeFile(), std::ios::binary) << content;
        EXPECT_EQ(caseOf<store::StoreError>([&] { salvage(); }),
                  store::StoreErrorCase::nothingReadable);
        EXPECT_TRUE(bytesOf(storeFile()) == content);
        EXPECT_THAT(namesIn(folder()), testing::Each(testing::Not(testing::HasSubstr(".new-"))));
    }
}

TEST_F(StoreSalvageTest, ANewerStoreWithoutItsHeaderIsNotTakenForOneOfThisVersion) {
    makeStore();
    SQLite::Database(storeFile().string(), SQLite::OPEN_READWRITE)
        .exec("ALTER TABLE Entry ADD COLUMN mood TEXT");
    open()->checkpoint();
    overwrite(1, 0, std::string(100, '\0'));
    EXPECT_EQ(caseOf<store::StoreError>([&] { salvage(); }), store::StoreErrorCase::newerVersion);
}

/// The journal of the store that is kept would pass for the new one's.
TEST_F(StoreSalvageTest, TheJournalOfADamagedStoreIsReadAndGoesWithIt) {
    makeStore();
    {
        const auto container = open();
        ModelContext context(*container);
        auto& entry = *context.find<Entry>(contents.begin()->first);
        auto& text = contents.begin()->second;
        text.replace(0, 4, "ENTR"); // no longer than before, so that the first page stays as it is
        entry.setContent(text);
        context.save();
    }
    ASSERT_GT(std::filesystem::file_size(journalFile()), 0U);
    overwrite(1, 16, std::string("\x20\x00", 2)); // pages of another size than the journal's
    const auto journal = bytesOf(journalFile());
    const auto report = salvage();
    EXPECT_EQ(report.saved, kEntries + 2U);
    EXPECT_TRUE(bytesOf(report.kept.string() + "-wal") == journal);
    expectSound(kEntries);
}

/// Where its tables begin says only the journal, and one of them begins where nothing is left.
TEST_F(StoreSalvageTest, OfAFileThatIsCutToNothingTheNewestIsSavedFromTheJournal) {
    for (const auto isUpgraded : {false, true}) {
        SCOPED_TRACE(isUpgraded ? "upgraded" : "as made");
        isUpgraded ? makeOldStore() : makeStore();
        constexpr std::size_t kNew = 60;
        std::size_t boardsSaved = 0;
        {
            const auto container = open({.whenOlder = store::ModelConfiguration::Older::upgrade});
            ModelContext context(*container);
            auto& board = addBoard(context, "New");
            for (std::size_t i = 0; i < kNew; ++i) {
                addTodo(context, board, "new " + std::to_string(i) + std::string(200, 'x'));
            }
            context.save();
            boardsSaved = context.count<Board>();
        }
        const auto journal = bytesOf(journalFile());
        std::filesystem::resize_file(storeFile(), 0);
        const auto report = salvage();
        EXPECT_TRUE(bytesOf(report.kept.string() + "-wal") == journal);
        EXPECT_GE(report.saved, kNew + boardsSaved);
        EXPECT_TRUE(report.mayMissMore || !report.losses.empty());
        const auto container = open();
        EXPECT_FALSE(container->check().isDamaged);
        std::size_t found = 0;
        ModelContext context(*container);
        for (const auto* entry : context.fetch<Entry>()) {
            found += entry->content().starts_with("new ") ? 1 : 0;
        }
        EXPECT_EQ(found, kNew);
    }
}

/// As of a file that somebody made to hold others up: a first page that is lost, and pages of which
/// each seems to lead to a table.
TEST_F(StoreSalvageTest, ASalvageCanBeEndedAtAnyTimeAndEndsByItself) {
    makeStore();
    const auto inner = pages("Entry", "internal").at(0);
    auto crafted = bytesOf(storeFile());
    const auto place = static_cast<std::size_t>(inner - 1) * kPage;
    const auto page = crafted.substr(place, kPage);
    std::fill_n(crafted.begin() + static_cast<std::ptrdiff_t>(place), kPage, '\0');
    constexpr int kTrees = 150;
    for (int i = 0; i < kTrees; ++i) {
        crafted += page;
    }
    std::fill_n(crafted.begin(), kPage, '\0');
    std::ofstream(storeFile(), std::ios::binary) << crafted;
    struct Ended {};
    const auto names = namesIn(folder());
    std::size_t ticks = 0;
    for (const auto last : {1U, 100U, 1'000U, 10'000U}) {
        ticks = 0;
        EXPECT_THROW(salvage({.tick =
                                  [&] {
                                      if (++ticks >= last) {
                                          throw Ended();
                                      }
                                  }}),
                     Ended);
        EXPECT_EQ(ticks, last) << "it went on";
        EXPECT_TRUE(bytesOf(storeFile()) == crafted);
        EXPECT_EQ(namesIn(folder()), names);
    }
    ticks = 0;
    const auto report = salvage({.tick = [&] { ++ticks; }});
    EXPECT_EQ(report.saved, kEntries + 2U);
    EXPECT_TRUE(report.mayMissMore);
    EXPECT_LT(ticks, 50'000U);
}

TEST_F(StoreSalvageTest, FlippedBitsCostNoMoreThanTheyHit) {
    makeStore();
    const auto leaves = pages("Entry", "leaf");
    std::mt19937 random(11);
    for (int round = 0; round < 30; ++round) {
        makeStore();
        const auto page = leaves[random() % leaves.size()];
        const auto offset = random() % kPage;
        {
            std::fstream file(storeFile(), std::ios::in | std::ios::out | std::ios::binary);
            const auto place =
                static_cast<std::streamoff>(static_cast<std::size_t>(page - 1) * kPage + offset);
            file.seekg(place);
            const auto byte = static_cast<char>(file.get() ^ (1 << random() % 8));
            file.seekp(place);
            file.put(byte);
        }
        SCOPED_TRACE("page " + std::to_string(page) + " offset " + std::to_string(offset));
        const auto sum = sumOf(salvage());
        EXPECT_LE(sum.altered, 1U);
        EXPECT_LE(sum.missing, 25U); // the rows of a page, where its head was hit
        expectSound(kEntries - sum.missing, sum.altered);
    }
}

TEST_F(StoreSalvageTest, WordsOutliveTheirIdentifier) {
    makeStore();
    const auto change = [&](const std::string& sql) {
        SQLite::Database(storeFile().string(), SQLite::OPEN_READWRITE).exec(sql);
    };
    change("UPDATE Entry SET id = 'none' WHERE rowid = 7");
    change("UPDATE Entry SET id = x'00', typeRawValue = 5 WHERE rowid = 8");
    change("UPDATE Board SET id = x'01' WHERE rowid = 2");
    change("INSERT INTO ChangeLog(revision, changes) VALUES(9223372036854775807, NULL)");
    {
        // Two rows with one identifier: of an index that does not know of the second.
        SQLite::Database database(storeFile().string(), SQLite::OPEN_READWRITE);
        database.exec("PRAGMA writable_schema = ON");
        database.exec("UPDATE sqlite_schema SET sql = replace(sql, ' UNIQUE', '') "
                      "WHERE name = 'Entry'");
        database.exec("DELETE FROM sqlite_schema WHERE name = 'sqlite_autoindex_Entry_1'");
        database.exec("PRAGMA writable_schema = RESET");
        database.exec("UPDATE Entry SET id = (SELECT id FROM Entry WHERE rowid = 10), "
                      "checksum = checksum + 1 WHERE rowid = 9");
        database.exec("CREATE TEMP TABLE copy AS SELECT * FROM Entry WHERE rowid = 10");
        database.exec("UPDATE copy SET \"rowid\" = 1000");
        database.exec("INSERT INTO Entry SELECT * FROM copy");
    }
    const auto sum = sumOf(salvage());
    EXPECT_EQ(sum.missing, 0U);
    EXPECT_EQ(sum.altered, 5U);
    EXPECT_LT(number("SELECT max(revision) FROM ChangeLog"), 100);
    const auto container = open();
    EXPECT_FALSE(container->check().isDamaged);
    std::multiset<std::string> before;
    std::multiset<std::string> after;
    for (const auto& [id, text] : contents) {
        before.insert(text);
        if (text.starts_with("entry 9x")) {
            before.insert(text); // of row 10
        }
    }
    ModelContext context(*container);
    for (const auto* entry : context.fetch<Entry>()) {
        after.insert(entry->content());
    }
    EXPECT_EQ(after, before);
    EXPECT_EQ(context.count<Board>(), 2U);
}

TEST_F(StoreSalvageTest, WhatCannotBeWrittenIsNotTheDamagedStoresFault) {
    makeStore();
    {
        const auto container = open();
        ModelContext context(*container);
        auto& board = *context.find<Board>(boards[0]);
        for (int i = 0; i < 400; ++i) {
            addTodo(context, board, std::string(9000, 'y'), i); // more than a page cache holds
        }
        context.save();
        container->checkpoint();
    }
    zero(pages("Entry", "leaf").at(3));
    const auto bytes = std::filesystem::file_size(storeFile());
    {
        const FileSizeLimit limit(1 << 20);
        EXPECT_THROW(salvage(), store::StoreError);
    }
    EXPECT_EQ(std::filesystem::file_size(storeFile()), bytes);
    EXPECT_THAT(namesIn(folder()), testing::Each(testing::Not(testing::HasSubstr("damaged"))));
    EXPECT_GT(salvage().saved, 700U);
}

TEST_F(StoreSalvageTest, AStoreInUseStaysAsItIs) {
    makeStore();
    const auto other = open();
    EXPECT_THROW(salvage(), store::StoreError);
    ModelContext context(*other);
    addBoard(context, "Goes on");
    context.save();
}

TEST_F(StoreSalvageTest, ACopyHoldsTheJournalToo) {
    const auto container = open();
    ModelContext context(*container);
    addBoard(context, "In the journal");
    context.save();
    const auto copy = folder() / "copy" / "Primary.store";
    std::filesystem::create_directory(copy.parent_path());
    store::StoreFile(storeFile()).copyTo(copy);
    EXPECT_THROW(store::StoreFile(storeFile()).copyTo(copy), store::StoreError) << "never replaced";
    EXPECT_THROW(store::StoreFile(folder() / "none").copyTo(folder() / "other"), store::StoreError);
    const auto copied = open({.file = copy});
    EXPECT_EQ(ModelContext(*copied).fetch<Board>().at(0)->name(), "In the journal");
    EXPECT_TRUE(copied->isFromElsewhere());
    EXPECT_FALSE(container->isFromElsewhere());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(copy.parent_path()), {}), 4);
}

} // namespace korvex::tests
