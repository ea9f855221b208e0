#include "TextFixture.h"

#include <gmock/gmock.h>

namespace korvex::tests {

using model::EntryServiceErrorCase;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

namespace {

class EntryLifecycleTest : public TextFixture {
protected:
    void SetUp() override {
        TextFixture::SetUp();
        office = &boards->createBoard("Office", kNow);
    }
    std::vector<model::Entry*> addToOffice(std::vector<std::string> contents) {
        return entries->createTodos(
            {.contents = std::move(contents), .board = *office, .now = kNow});
    }

    model::Board* office = nullptr;
};

} // namespace

TEST_F(EntryLifecycleTest, MovesToTheWantedPlaceOfAnotherBoardAndClosesTheGap) {
    const struct {
        std::optional<std::int64_t> position;
        std::vector<std::string> expected;
    } cases[] = {
        {std::nullopt, {"x", "y", "moved", "done"}},
        {0, {"moved", "x", "y", "done"}},
        {1, {"x", "moved", "y", "done"}},
        {99, {"x", "y", "moved", "done"}},
        {-1, {"moved", "x", "y", "done"}},
    };
    entries->completeTodo(*addToOffice({"done", "x", "y"}).front(), kNow);
    auto& moved = *add({"a", "moved", "b"})[1];
    for (const auto& each : cases) {
        const int reconciles = reminders.reconciles;
        entries->moveEntry(moved, *office, kLater, each.position);
        EXPECT_EQ(storedOrder(*office), each.expected);
        EXPECT_THAT(storedOrder(*board), ElementsAre("a", "b"));
        EXPECT_EQ(moved.updatedAt(), kLater);
        EXPECT_EQ(reminders.reconciles, reconciles + 1);
        entries->moveEntry(moved, *board, kNow, 1);
        EXPECT_THAT(storedOrder(*board), ElementsAre("a", "moved", "b"));
    }
}

TEST_F(EntryLifecycleTest, ACompletedTodoThatMovesStaysCompletedBehindTheOthers) {
    entries->completeTodo(*addToOffice({"old", "x"}).front(), kNow);
    auto& moved = *add({"moved", "a"}).front();
    entries->completeTodo(moved, kNow);
    entries->moveEntry(moved, *office, kLater, 0);
    EXPECT_TRUE(moved.isCompleted());
    EXPECT_EQ(services::activeEntries(*office).size(), 1U);
    EXPECT_THAT(storedOrder(*office), ElementsAre("x", "moved", "old"));
    EXPECT_THAT(storedOrder(*board), ElementsAre("a"));
}

TEST_F(EntryLifecycleTest, NothingMovesToABoardThatIsGone) {
    auto& entry = *add({"a"}).front();
    {
        store::ModelContext theirs(*container);
        services::BoardService others(theirs, reminders, widgets, log);
        others.deleteBoard(*theirs.find<model::Board>(office->id()));
    }
    EXPECT_EQ(entryRefusal([&] { entries->moveEntry(entry, *office, kLater); }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_THAT(storedOrder(*board), ElementsAre("a"));
}

TEST_F(EntryLifecycleTest, CompletesAllOpenTodosOfABoardAtOnce) {
    const auto todos = add({"a", "b", "c"});
    auto& text = note("note");
    entries->completeTodo(*todos[1], kNow);
    addToOffice({"x"});
    reminders.removed.clear();
    int saves = 0;
    const auto counting = container->didSave().connect([&](const auto&) { ++saves; });
    entries->completeTodos(*board, kLater);
    EXPECT_EQ(saves, 1);
    EXPECT_THAT(storedOrder(*board), ElementsAre("note", "a", "c", "b"));
    EXPECT_EQ(todos[0]->completedAt(), kLater);
    EXPECT_EQ(todos[1]->completedAt(), kNow);
    EXPECT_FALSE(text.isCompleted());
    EXPECT_THAT(reminders.removed, UnorderedElementsAre(todos[0]->id(), todos[2]->id()));
    EXPECT_EQ(services::activeTodos(*office).size(), 1U);

    entries->completeTodos(*board, kLater);
    EXPECT_EQ(saves, 1) << "nothing is left to complete";
}

TEST_F(EntryLifecycleTest, CompletesTheNamedTodosOfSeveralBoardsAtOnceOrNoneOfThem) {
    const auto todos = add({"a", "b", "c", "d"});
    auto& text = note("note");
    auto& elsewhere = *addToOffice({"x", "y"}).front();
    entries->completeTodo(*todos[2], kNow);
    int saves = 0;
    const auto counting = container->didSave().connect([&](const auto&) { ++saves; });
    EXPECT_EQ(entryRefusal([&] {
                  entries->completeTodos(std::vector{todos[0], &text}, kLater);
              }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_FALSE(todos[0]->isCompleted());

    entries->completeTodos(std::vector{todos[3], todos[2], &elsewhere, todos[0]}, kLater);
    EXPECT_EQ(saves, 1);
    EXPECT_THAT(storedOrder(*board), ElementsAre("b", "note", "a", "d", "c"));
    EXPECT_THAT(storedOrder(*office), ElementsAre("y", "x"));
    EXPECT_EQ(todos[2]->completedAt(), kNow) << "it was completed before";
}

} // namespace korvex::tests
