#include "ui/entries/EntryListModel.h"

#include "ui/WindowFixture.h"

#include <QItemSelectionModel>
#include <QPersistentModelIndex>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using RowKind = EntryListModel::RowKind;

class EntryListModelTest : public tests::WindowFixture {
protected:
    EntryListModelTest() {
        changes = own.context.didChange().connect([this](const auto&) { model.refresh(); });
        const auto note = [this](const char* what) {
            return [this, what](const QModelIndex&, int first, int last) {
                signalled.push_back(std::string(what) + " " + std::to_string(first) + "-" +
                                    std::to_string(last));
            };
        };
        QObject::connect(&model, &QAbstractItemModel::rowsInserted, &model, note("insert"));
        QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &model, note("remove"));
        QObject::connect(
            &model, &QAbstractItemModel::rowsMoved, &model,
            [this](const QModelIndex&, int first, int, const QModelIndex&, int destination) {
                signalled.push_back("move " + std::to_string(first) + " to " +
                                    std::to_string(destination));
            });
        QObject::connect(&model, &QAbstractItemModel::dataChanged, &model,
                         [this](const QModelIndex& first, const QModelIndex& last) {
                             signalled.push_back("change " + std::to_string(first.row()) + "-" +
                                                 std::to_string(last.row()));
                         });
        QObject::connect(&model, &QAbstractItemModel::modelReset, &model,
                         [this] { signalled.emplace_back("reset"); });
    }

    void show() {
        model.setBoard(inbox);
        signalled.clear();
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (int row = 0; row < model.rowCount(); ++row) {
            result.push_back(model.kind(row) == RowKind::draft ? "(draft)"
                                                               : toUtf8(model.text(row)));
        }
        return result;
    }

    EntryListModel model{workspace.context, workspace.serializer, workspace.scheduleClock,
                         workspace.dates};
    base::Subscription changes;
    std::vector<std::string> signalled;
};

TEST_F(EntryListModelTest, EachChangeTouchesOnlyTheRowsThatItConcerns) {
    const auto todos = add({"a", "b", "c", "d"});
    show();
    const auto take = [this] { return std::exchange(signalled, {}); };

    own.entries.createTodos(
        {.contents = {"front"}, .board = *inbox, .before = todos[0]->id(), .now = kNow});
    EXPECT_THAT(take(), ElementsAre("insert 0-0")) << "though all others were renumbered";
    own.entries.moveEntry(todos[0]->id(), 2, *inbox);
    EXPECT_THAT(take(), ElementsAre("move 1 to 4"));
    own.entries.updateTodo(*todos[1], "changed", kNow);
    EXPECT_THAT(take(), ElementsAre("change 1-1"));
    own.entries.updateSchedule(*todos[2], model::TodoSchedule::dueOn(20250311), kNow);
    EXPECT_THAT(take(), ElementsAre("change 2-2"));
    own.entries.completeTodo(*todos[3], kNow);
    EXPECT_THAT(take(), ElementsAre("remove 4-4", "insert 5-5"))
        << "leaves, and the heading of the completed comes";
    elsewhere([](tests::StoreClient& client) {
        client.entries.createTodos(
            {.contents = {"x", "y"}, .board = *client.boards.inboxBoard(), .now = kNow});
    });
    EXPECT_THAT(take(), ElementsAre("insert 4-5"));
    EXPECT_THAT(texts(),
                ElementsAre("front", "changed", "c", "a", "x", "y", "New todo", "Completed (1)"));
}

TEST_F(EntryListModelTest, SelectionFollowsItsTodoThroughAWholesaleChange) {
    std::vector<std::string> contents;
    for (int i = 0; i < 120; ++i) {
        contents.push_back("todo " + std::to_string(i));
    }
    const auto todos = add(contents);
    show();
    const QPersistentModelIndex chosen = model.index(7, 0);
    elsewhere([&](tests::StoreClient& client) {
        auto& board = *client.boards.inboxBoard();
        // Every second one to the front: more moves than are worth announcing one by one.
        for (int i = 1; i < 120; i += 2) {
            client.entries.moveEntry(todos[static_cast<std::size_t>(i)]->id(), todos[0]->id(),
                                     model::EntryPlacement::before, board);
        }
    });
    EXPECT_THAT(signalled, ::testing::IsEmpty()) << "the rows changed all at once";
    ASSERT_TRUE(chosen.isValid());
    EXPECT_EQ(model.entry(chosen.row()), todos[7]);
    EXPECT_EQ(chosen.row(), 3);
}

TEST_F(EntryListModelTest, ATickedTodoStaysInItsPlaceUntilItIsReleased) {
    const auto todos = add({"a", "b", "c"});
    show();
    model.linger(*todos[1]);
    own.entries.completeTodo(*todos[1], kNow);
    EXPECT_THAT(texts(), ElementsAre("a", "b", "c", "New todo"));
    own.entries.createTodos({.contents = {"new"}, .board = *inbox, .now = kNow});
    own.entries.moveEntry(todos[2]->id(), -1, *inbox);
    EXPECT_THAT(texts(), ElementsAre("c", "a", "b", "new", "New todo"))
        << "behind the one that it stood behind";
    model.release(*todos[1]);
    EXPECT_THAT(texts(), ElementsAre("c", "a", "new", "New todo", "Completed (1)"));
}

TEST_F(EntryListModelTest, TickedTodosKeepTheirOrderUntilOneGoesToAnotherBoard) {
    auto& work = own.boards.createBoard("Work", kNow);
    const auto todos = add({"a", "b", "c", "d"});
    show();
    for (const auto index : {2U, 1U, 0U}) { // each one below a row that is ticked after it
        model.linger(*todos[index]);
        own.entries.completeTodo(*todos[index], kNow);
    }
    EXPECT_THAT(texts(), ElementsAre("a", "b", "c", "d", "New todo"));
    own.entries.moveEntry(*todos[1], work, kNow);
    EXPECT_THAT(texts(), ElementsAre("a", "c", "d", "New todo")) << "and that one leaves at once";
    EXPECT_FALSE(model.isLingering(*todos[1]));
}

TEST_F(EntryListModelTest, ATickTakenBackLeavesAnOrdinaryTodo) {
    const auto todos = add({"a", "b"});
    show();
    model.linger(*todos[0]);
    own.entries.completeTodo(*todos[0], kNow);
    own.entries.restoreTodo(*todos[0], kNow, 0);
    EXPECT_FALSE(model.isLingering(*todos[0]));
    model.release(*todos[0]);
    EXPECT_THAT(texts(), ElementsAre("a", "b", "New todo"));
}

TEST_F(EntryListModelTest, TheDraftKeepsItsPlaceWhileOthersComeAndGo) {
    const auto todos = add({"a", "b"});
    show();
    model.openDraft(todos[0]);
    elsewhere([](tests::StoreClient& client) {
        client.entries.createTodos(
            {.contents = {"late"}, .board = *client.boards.inboxBoard(), .now = kNow});
    });
    EXPECT_THAT(texts(), ElementsAre("a", "(draft)", "b", "late", "New todo"));
    own.entries.completeTodo(*todos[0], kNow);
    EXPECT_THAT(texts(), ::testing::Contains("(draft)")) << "whoever it stood behind is gone";
    model.closeDraft();
    model.openDraftAtEnd();
    add({"later"});
    EXPECT_THAT(texts(), ElementsAre("b", "late", "later", "(draft)", "New todo", "Completed (1)"));
}

TEST_F(EntryListModelTest, CompletedTodosOpenAndCloseUnderTheirHeading) {
    const auto todos = add({"a", "b"});
    own.entries.completeTodo(*todos[0], kNow);
    own.entries.completeTodo(*todos[1], kNow + 60);
    show();
    EXPECT_THAT(texts(), ElementsAre("New todo", "Completed (2)"));
    model.setCompletedExpanded(true);
    EXPECT_THAT(texts(), ElementsAre("New todo", "Completed (2)", "b", "a"));
    own.entries.restoreTodo(*todos[0], kNow);
    EXPECT_THAT(texts(), ElementsAre("a", "New todo", "Completed (1)", "b"));
    model.setCompletedExpanded(false);
    EXPECT_THAT(texts(), ElementsAre("a", "New todo", "Completed (1)"));
}

TEST_F(EntryListModelTest, AnEntryOverTheLimitIsShownCutAndNotEdited) {
    // As another version of the program may have stored it.
    auto& entry = own.context.insert(std::make_unique<model::Entry>(
        model::EntryFields{.id = base::Uuid::random(), .typeRawValue = "todo"}));
    entry.setBoard(inbox);
    entry.setContent(std::string(10'001, 'x'));
    own.context.save();
    show();
    EXPECT_EQ(model.text(0), QString(500, QLatin1Char('x')) + QStringLiteral("…"));
    EXPECT_FALSE(model.isEditable(0));
}

TEST_F(EntryListModelTest, AScreenReaderHearsTextStateAndSchedule) {
    const auto todos = add({"a"});
    own.entries.updateSchedule(*todos[0], model::TodoSchedule::dueOn(20250309), kNow);
    show();
    const auto index = model.index(0, 0);
    EXPECT_EQ(index.data(Qt::AccessibleTextRole).toString(), QStringLiteral("a"));
    EXPECT_EQ(index.data(Qt::AccessibleDescriptionRole).toString(),
              QStringLiteral("Open, Due: Yesterday, Overdue"));
    EXPECT_EQ(index.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
}

} // namespace
} // namespace korvex::ui
