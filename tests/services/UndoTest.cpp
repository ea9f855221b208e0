#include "TextFixture.h"

#include "backup/BackupDocument.h"
#include "backup/BackupFileIO.h"

#include <fstream>
#include <functional>
#include <random>

namespace korvex::tests {

using backup::BackupDocument;
using model::Entry;
using model::EntryServiceErrorCase;
using model::TodoSchedule;

namespace {

class UndoTest : public TextFixture {
protected:
    void SetUp() override {
        TextFixture::SetUp();
        entries =
            std::make_unique<services::EntryService>(*context, reminders, widgets, log, &undo);
        office = &boards->createBoard("Office", kNow);
    }

    Entry& found(const base::Uuid& id) { return *context->find<Entry>(id); }

    /// Everything that is stored, as another program would export it.
    BackupDocument exported() {
        store::ModelContext fresh(*container);
        BackupDocument document{.exportedAt = kNow, .appVersion = "1"};
        auto all = fresh.fetch<model::Board>();
        std::sort(all.begin(), all.end(), [](const auto* left, const auto* right) {
            return services::ordered(*left, *right);
        });
        for (const auto* const each : all) {
            document.boards.push_back(backup::recordOf(*each));
            auto own = each->entries();
            std::sort(own.begin(), own.end(), [](const Entry* left, const Entry* right) {
                return services::ordered(*left, *right);
            });
            for (const Entry* const entry : own) {
                document.entries.push_back(backup::recordOf(*entry, each->id()));
            }
        }
        return document;
    }

    /// The rules that no operation may leave broken.
    void expectSound() {
        const auto document = exported();
        EXPECT_NO_THROW(backup::validate(document, log));
        std::int64_t next = 0;
        const BackupDocument::EntryRecord* last = nullptr;
        for (const auto& entry : document.entries) {
            next = last && last->boardID == entry.boardID ? next + 1 : 0;
            EXPECT_EQ(entry.sortOrder, next) << "order is not dense";
            EXPECT_FALSE(next > 0 && last->isCompleted && !entry.isCompleted)
                << "an open entry behind a completed one";
            last = &entry;
        }
    }

    services::UndoManager undo;
    model::Board* office = nullptr;
};

/// What a person may do, at random but repeatably.
class RandomLife {
public:
    RandomLife(unsigned seed, services::EntryService& service, store::ModelContext& context,
               std::vector<base::Uuid> boards, std::filesystem::path folder)
        : m_random(seed),
          m_service(service),
          m_context(context),
          m_boards(std::move(boards)),
          m_folder(std::move(folder)) {
        for (int i = 0; i < 3; ++i) {
            std::ofstream(m_folder / ("file " + std::to_string(i))) << "bytes " << i;
        }
    }

    /// One operation that may be refused; true when it was done.
    bool step() {
        ++m_now.seconds;
        Entry* const entry = any();
        if (!entry) {
            return false;
        }
        try {
            perform(*entry);
        } catch (const base::Error&) {
            return false;
        }
        return true;
    }

    void create(std::string_view undoName = {}) {
        ++m_now.seconds;
        if (roll(2) == 0) {
            m_service.createTodos({.contents = {text(), text()},
                                   .board = board(),
                                   .now = m_now,
                                   .undoName = undoName});
        } else {
            m_service.createText({.rich = richtext::RichTextSerializer::plainRichText(text()),
                                  .board = board(),
                                  .now = m_now,
                                  .undoName = undoName});
        }
    }

    unsigned roll(unsigned sides) { return static_cast<unsigned>(m_random() % sides); }
    model::Board& board() { return *m_context.find<model::Board>(m_boards[roll(2)]); }

private:
    Entry* any() {
        const auto all = m_context.fetch<Entry>();
        return all.empty() ? nullptr : all[m_random() % all.size()];
    }
    std::string text() { return "words " + std::to_string(m_random() % 1000); }
    richtext::AttributedString rich() {
        return richtext::RichTextSerializer::plainRichText(roll(8) == 0 ? " " : text());
    }
    std::optional<std::int64_t> position() {
        return roll(2) == 0 ? std::nullopt : std::optional<std::int64_t>(roll(8));
    }
    TodoSchedule schedule() {
        return roll(2) == 0 ? TodoSchedule::dueOn(20250301 + roll(28))
                            : TodoSchedule{.dueDate = m_now, .reminderDate = m_now + 60};
    }

    void perform(Entry& entry) {
        using enum model::EntryPlacement;
        Entry& other = *any();
        switch (roll(18)) {
        case 0:
            return m_service.completeTodo(entry, m_now);
        case 1:
            return m_service.restoreTodo(entry, m_now, position());
        case 2:
            return m_service.updateTodo(entry, text(), m_now);
        case 3:
            return m_service.updateText(entry, rich(), m_now);
        case 4:
            return m_service.updateSchedule(entry, schedule(), m_now);
        case 5:
            return m_service.changeType(
                entry, entry.isTodo() ? model::EntryType::text : model::EntryType::todo, m_now);
        case 6:
        case 7:
            return m_service.moveEntry(entry, board(), m_now, position());
        case 8:
            return m_service.moveEntry(entry.id(), other.id(), roll(2) == 0 ? before : after,
                                       *entry.board());
        case 9:
            return m_service.moveEntry(entry.id(), std::int64_t{roll(7)} - 3, *entry.board());
        case 10:
            return m_service.deleteEntry(entry);
        case 11: {
            std::vector<Entry*> both{&entry};
            if (&other != &entry) {
                both.push_back(&other);
            }
            return m_service.deleteEntries(both);
        }
        case 12:
            return roll(4) == 0 ? m_service.completeTodos(*entry.board(), m_now)
                                : m_service.completeTodo(entry, m_now);
        case 13: {
            const std::filesystem::path file = m_folder / ("file " + std::to_string(roll(3)));
            return m_service.attachFiles({&file, 1}, entry, m_now);
        }
        case 14:
            return create("New");
        case 15:
            m_service.splitText(entry, rich(), rich(), m_now, "Split");
            return;
        case 16: {
            const auto attached = model::EntryAttachment::decode(entry.attachmentData());
            return attached.empty() ? void()
                                    : m_service.removeAttachment(attached.front().id, entry, m_now);
        }
        default: {
            const auto attached = model::EntryAttachment::decode(entry.attachmentData());
            return attached.empty() ? void()
                                    : m_service.moveAttachment(attached.front().id, entry, other,
                                                               std::nullopt, before, m_now);
        }
        }
    }

    std::minstd_rand m_random;
    services::EntryService& m_service;
    store::ModelContext& m_context;
    std::vector<base::Uuid> m_boards;
    std::filesystem::path m_folder;
    base::Instant m_now{5000};
};

class RandomLives : public UndoTest, public ::testing::WithParamInterface<unsigned> {};

} // namespace

TEST_P(RandomLives, UndoneEverythingIsAsItWasAndRedoneAsItBecame) {
    RandomLife life(GetParam(), *entries, *context, {board->id(), office->id()}, folder.path());
    for (int i = 0; i < 8; ++i) {
        life.create();
    }
    // These have no name and are not undone: this is what all undoing leads back to.
    const auto firstBytes = backup::BackupFileIO::encode(exported());
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 40; ++i) {
            life.step();
            expectSound();
        }
        const auto lastBytes = backup::BackupFileIO::encode(exported());
        while (undo.canUndo()) {
            undo.undo();
            expectSound();
        }
        EXPECT_EQ(backup::BackupFileIO::encode(exported()), firstBytes);
        // Not all the way: what follows builds on a state in the middle.
        while (undo.canRedo()) {
            undo.redo();
            expectSound();
        }
        EXPECT_EQ(backup::BackupFileIO::encode(exported()), lastBytes);
        for (int i = 0; i < 10 && undo.canUndo(); ++i) {
            undo.undo();
        }
    }
}

TEST_P(RandomLives, UndoingAmongCreationsAndOtherProgramsKeepsTheStoreSound) {
    RandomLife life(GetParam(), *entries, *context, {board->id(), office->id()}, folder.path());
    const auto otherContainer = openContainer();
    store::ModelContext otherContext(*otherContainer);
    services::EntryService others(otherContext, reminders, widgets, log);
    RandomLife otherLife(GetParam() + 1000, others, otherContext, {board->id(), office->id()},
                         folder.path());
    life.create();
    for (int i = 0; i < 120; ++i) {
        const auto takeBack = [&](auto&& work) {
            try {
                work();
            } catch (const base::Error& error) {
                // Someone was faster: refused, and logged.
                log.expectError(error.errorDescription());
            }
        };
        switch (life.roll(8)) {
        case 0:
            life.create("New");
            break;
        case 1:
            otherContext.refresh();
            otherLife.step();
            context->refresh();
            break;
        case 2:
        case 3:
            takeBack([&] { undo.undo(); });
            break;
        case 4:
            takeBack([&] { undo.redo(); });
            break;
        default:
            life.step();
        }
        ASSERT_FALSE(context->hasChanges());
        expectSound();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomLives, ::testing::Range(1U, 13U));

TEST_F(UndoTest, ActionsCarryTheNamesThatTheMenuShows) {
    const auto todos = add({"a", "b", "c"});
    auto& text = note("note");
    auto& whole = note("one two");
    EXPECT_FALSE(undo.canUndo()) << "a creation without a name cannot be undone";
    const std::vector<std::pair<std::string, std::function<void()>>> cases{
        {"Complete Todo", [&] { entries->completeTodo(*todos[0], kLater); }},
        {"Restore Todo", [&] { entries->restoreTodo(*todos[0], kLater); }},
        {"Move to Board", [&] { entries->moveEntry(*todos[1], *office, kLater); }},
        {"Move Entry", [&] { entries->moveEntry(todos[2]->id(), 1, *board); }},
        {"Edit Todo", [&] { entries->updateTodo(*todos[0], "new", kLater); }},
        {"Edit Text", [&] { entries->updateText(text, plain("new"), kLater); }},
        {"Change Schedule",
         [&] { entries->updateSchedule(*todos[0], TodoSchedule::dueOn(20250310), kLater); }},
        {"Change to Text", [&] { entries->changeType(*todos[2], model::EntryType::text, kLater); }},
        {"Complete Todos", [&] { entries->completeTodos(*board, kLater); }},
        {"Delete Entry", [&] { entries->updateText(text, plain(" \n"), kLater); }},
        {"New Todos",
         [&] {
             entries->createTodos({.contents = {"x", "y"},
                                   .board = *board,
                                   .now = kLater,
                                   .undoName = "New Todos"});
         }},
        {"Split Text",
         [&] { entries->splitText(whole, plain("one"), plain("two"), kLater, "Split Text"); }},
    };
    for (const auto& [name, perform] : cases) {
        const auto before = exported();
        perform();
        EXPECT_EQ(undo.undoActionName(), name);
        EXPECT_FALSE(undo.nextUndo()->entries.empty()) << name;
        undo.undo();
        EXPECT_EQ(exported(), before) << name;
        EXPECT_EQ(undo.redoActionName(), name);
        undo.redo();
        EXPECT_EQ(undo.undoActionName(), name);
        EXPECT_FALSE(undo.canRedo());
    }
    const auto before = undo.undoActionName();
    entries->moveEntry(todos[2]->id(), 0, *board);
    entries->deleteEntries(*office);
    EXPECT_EQ(undo.undoActionName(), before) << "nothing was moved, and emptying is for good";
}

TEST_F(UndoTest, AnUndoneTodoStandsWhereItStoodAmongWhatCameMeanwhile) {
    const auto todos = add({"a", "b", "c", "d"});
    entries->completeTodo(*todos[1], kLater);
    EXPECT_EQ(storedOrder(*board), (std::vector<std::string>{"a", "c", "d", "b"}));
    entries->createTodos(
        {.contents = {"new"}, .board = *board, .before = todos[0]->id(), .now = kLater});
    undo.undo();
    EXPECT_EQ(storedOrder(*board), (std::vector<std::string>{"new", "b", "a", "c", "d"}));
    EXPECT_EQ(todos[1]->updatedAt(), kNow);
    EXPECT_FALSE(todos[1]->completedAt());
}

TEST_F(UndoTest, WordsThatAnotherHasWrittenSinceAreNotWrittenOver) {
    auto& todo = *add({"mine"}).front();
    entries->updateTodo(todo, "mine, changed", kLater);
    {
        store::ModelContext theirs(*container);
        services::EntryService others(theirs, reminders, widgets, log);
        others.updateTodo(*theirs.find<Entry>(todo.id()), "theirs", kLater);
    }
    log.expectError("Edit Todo undo failed");
    EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(storedOrder(*board), (std::vector<std::string>{"theirs"}));
    EXPECT_FALSE(undo.canUndo()) << "the stack moves on";

    // Their schedule is no part of what is taken back here.
    entries->completeTodo(todo, kLater);
    {
        store::ModelContext theirs(*container);
        services::EntryService others(theirs, reminders, widgets, log);
        others.updateSchedule(*theirs.find<Entry>(todo.id()), TodoSchedule::dueOn(20250310),
                              kLater);
    }
    undo.undo();
    EXPECT_FALSE(todo.isCompleted());
    EXPECT_EQ(todo.dueDay(), 20250310);
}

TEST_F(UndoTest, ACreationIsTakenBackUnlessAnotherHasWrittenIntoIt) {
    const auto theirs = [&](const base::Uuid& id, auto&& work) {
        store::ModelContext apart(*container);
        services::EntryService others(apart, reminders, widgets, log);
        work(others, *apart.find<Entry>(id));
    };
    const auto create = [&](std::vector<std::string> contents) {
        return entries
            ->createTodos({.contents = std::move(contents),
                           .board = *board,
                           .now = kNow,
                           .undoName = "New"})
            .front()
            ->id();
    };
    const auto ticked = create({"a", "b"});
    theirs(ticked, [](auto& others, Entry& entry) { others.completeTodo(entry, kLater); });
    undo.undo();
    EXPECT_TRUE(exported().entries.empty()) << "a tick is not lost, it comes back with the todo";
    undo.redo();
    EXPECT_TRUE(found(ticked).isCompleted());

    for (const bool isRedone : {false, true}) {
        const auto written = create({"mine", "too"});
        if (isRedone) {
            undo.undo();
            undo.redo();
        }
        theirs(written,
               [](auto& others, Entry& entry) { others.updateTodo(entry, "theirs", kLater); });
        const auto before = exported();
        log.expectError("New undo failed");
        EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
        EXPECT_EQ(exported(), before) << "none of them goes";
    }
}

TEST_F(UndoTest, ASplitIsTakenBackWholeOrNotAtAll) {
    auto& text = note("one two");
    const auto& second = entries->splitText(text, plain("one"), plain("two"), kLater, "Split");
    {
        store::ModelContext theirs(*container);
        services::EntryService others(theirs, reminders, widgets, log);
        others.updateText(*theirs.find<Entry>(text.id()), plain("theirs"), kLater);
    }
    log.expectError("Split undo failed");
    EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(storedOrder(*board), (std::vector<std::string>{"theirs", "two"}));
    EXPECT_TRUE(context->find<Entry>(second.id()));
    EXPECT_FALSE(undo.canRedo());
}

TEST_F(UndoTest, ARestoredEntryIsTheOneThatWasDeleted) {
    add({"a"});
    auto& text = entries->createText({.rich = formatted(), .board = *board, .now = kNow});
    add({"z"});
    const auto id = text.id();
    const auto before = exported();
    entries->deleteEntry(text);
    EXPECT_FALSE(context->find<Entry>(id));
    undo.undo();
    EXPECT_EQ(exported(), before);
    EXPECT_EQ(log.count("Restored deleted entry with identifier"), 1U);
    undo.redo();
    EXPECT_FALSE(context->find<Entry>(id));
    undo.undo();
    EXPECT_EQ(exported(), before);
}

TEST_F(UndoTest, NothingIsRestoredOntoABoardThatIsGone) {
    auto& todo = *add({"a"}).front();
    const auto record = backup::recordOf(todo, board->id());
    EXPECT_EQ(entryRefusal([&] { entries->restoreDeletedEntry(record); }),
              EntryServiceErrorCase::entryUnavailable)
        << "it is still there";
    entries->deleteEntry(todo);
    boards->deleteBoard(*board);
    log.expectError("Delete Entry undo failed");
    EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
    EXPECT_TRUE(exported().entries.empty());
}

TEST_F(UndoTest, AnUndoThatCannotBeStoredLeavesEverythingAsItIs) {
    auto& todo = *add({"a", "b"}).front();
    entries->deleteEntry(todo);
    const auto before = exported();
    breakSaves();
    log.expectError("Delete Entry undo failed");
    log.expectError("rolled back");
    EXPECT_THROW(undo.undo(), base::Error);
    mendSaves();
    EXPECT_EQ(exported(), before);
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(UndoTest, WithdrawsAndPlansRemindersLikeTheChangesThemselves) {
    auto& todo = *add({"a"}).front();
    entries->updateSchedule(todo, {.reminderDate = kLater + 60}, kNow);
    reminders.removed.clear();
    const int reconciles = reminders.reconciles;
    undo.undo();
    EXPECT_EQ(reminders.removed, std::vector{todo.id()});
    EXPECT_EQ(reminders.reconciles, reconciles + 1);
}

/// A row of letters; every change of it registers its inverse.
struct Letters {
    services::UndoManager undo;
    std::string text;
    char refused = '-';

    void add(char letter) {
        text += letter;
        undo.registerUndo(std::string(1, letter), 1, [this, letter] { take(letter); });
    }
    void take(char letter) {
        if (letter == refused) {
            throw std::runtime_error("refused");
        }
        text.pop_back();
        undo.registerUndo("again", 1, [this, letter] { add(letter); });
    }
};

TEST(UndoManager, WhatAGroupHoldsIsOneStep) {
    using Group = services::UndoManager::Group;
    Letters letters;
    auto& undo = letters.undo;
    int changes = 0;
    const auto subscription = undo.didChange().connect([&] { ++changes; });
    letters.add('a');
    {
        const Group outer(undo, "outer");
        letters.add('b');
        const Group inner(undo, "inner");
        letters.add('c');
        undo.undo();
        EXPECT_EQ(letters.text, "abc") << "it is not finished yet";
    }
    { const Group empty(undo, "empty"); }
    EXPECT_EQ(changes, 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(undo.undoActionName(), "outer");
        undo.undo();
        EXPECT_EQ(letters.text, "a");
        EXPECT_EQ(undo.redoActionName(), "outer");
        undo.redo();
        EXPECT_EQ(letters.text, "abc");
    }
    EXPECT_THROW(
        {
            const Group failing(undo);
            letters.add('d');
            throw std::runtime_error("the second part");
        },
        std::runtime_error);
    EXPECT_EQ(undo.undoActionName(), "d") << "what was done can be undone";
    EXPECT_FALSE(undo.canRedo());
}

TEST(UndoManager, AStepIsTakenBackFromAmongOthers) {
    services::UndoManager undo;
    std::string undone;
    for (const char letter : {'a', 'b', 'c'}) {
        undo.registerUndo(std::string(1, letter), 1, [&undone, letter] { undone += letter; });
    }
    const auto latest = undo.nextUndo()->id;
    undo.undo();
    EXPECT_FALSE(undo.findUndo(latest));
    const auto middle = undo.nextUndo()->id;
    undo.registerUndo("d", 1, [&] { undone += 'd'; });
    undo.undo(middle);
    undo.undo(middle);
    EXPECT_EQ(undone, "cb") << "once";
    EXPECT_EQ(undo.undoActionName(), "d");
}

TEST(UndoManager, AStepThatIsRefusedInTheMiddleIsDoneAgain) {
    Letters letters;
    {
        const services::UndoManager::Group group(letters.undo, "abc");
        for (const char letter : {'a', 'b', 'c'}) {
            letters.add(letter);
        }
    }
    letters.refused = 'a';
    EXPECT_THROW(letters.undo.undo(), std::runtime_error);
    EXPECT_EQ(letters.text, "abc");
    EXPECT_FALSE(letters.undo.canUndo());
    EXPECT_FALSE(letters.undo.canRedo());
}

TEST(UndoManager, KeepsTheLatestWithinItsBounds) {
    services::UndoManager undo;
    std::vector<int> undone;
    for (int i = 0; i < 600; ++i) {
        undo.registerUndo("small", 1, [&undone, i] { undone.push_back(i); });
    }
    undo.registerUndo("large", services::UndoManager::kMaximumCost, [&] { undone.push_back(-1); });
    undo.undo();
    EXPECT_FALSE(undo.canUndo());
    undo.registerUndo("larger", services::UndoManager::kMaximumCost * 2,
                      [&] { undone.push_back(-2); });
    undo.undo();
    EXPECT_EQ(undone, (std::vector{-1, -2}));

    for (int i = 0; i < 600; ++i) {
        undo.registerUndo("small", 1, [] {});
    }
    std::size_t count = 0;
    for (; undo.canUndo(); ++count) {
        undo.undo();
    }
    EXPECT_EQ(count, services::UndoManager::kMaximumActions);
}

} // namespace korvex::tests
