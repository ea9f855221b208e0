#include "ui/overview/SearchPage.h"

#include "ui/WindowFixture.h"
#include "ui/contrast/PaintRecord.h"
#include "ui/kit/overlays/ErrorBanner.h"

#include <QLabel>
#include <QScrollBar>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;

class SearchPageTest : public tests::WindowFixture {
protected:
    SearchPageTest() {
        changes = own.context.didChange().connect([this](const auto&) { page.storeChanged(); });
        page.resize(500, 300);
        page.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&page));
    }

    std::vector<std::string> rows() {
        std::vector<std::string> result;
        for (int row = 0; row < results().rowCount(); ++row) {
            const auto index = results().index(row, 0);
            result.push_back(toUtf8(index.data().toString() + QStringLiteral(" | ") +
                                    index.data(Qt::AccessibleDescriptionRole).toString()));
        }
        return result;
    }
    SearchListView& list() { return *page.findChild<SearchListView*>(); }
    QAbstractItemModel& results() { return *list().model(); }
    std::string current() { return toUtf8(list().currentIndex().data().toString()); }
    int currentTop() { return list().visualRect(list().currentIndex()).top(); }

    SearchPage page{workspace, theme};
    base::Subscription changes;
};

TEST_F(SearchPageTest, RowsSayWhatTheyAreAndWhere) {
    auto& trip = own.boards.createBoard("Milk route", kNow);
    const auto todos = add({"Buy milk", "Milk the cow", "Bread"});
    own.entries.updateSchedule(*todos[0], model::TodoSchedule::dueOn(base::DayNumber{20250311}),
                               kNow);
    own.entries.completeTodo(*todos[1], kNow);
    own.entries.createText(
        {.rich = richtext::AttributedString(u"A note\non oat milk"), .board = trip, .now = kNow});
    own.boards.setArchived(true, trip, kNow);
    page.search(QStringLiteral("milk"));
    EXPECT_THAT(rows(), ElementsAre(::testing::StartsWith("Buy milk | Todo, on Inbox, "),
                                    "Milk the cow | Completed Todo, on Inbox",
                                    "Milk route | Board, Archived",
                                    "on oat milk | Text, on Milk route, Archived"));
    EXPECT_EQ(list().currentRow(), 0) << "Return opens the first without more ado";
}

TEST_F(SearchPageTest, WhatFallsDueIsSaidWithoutAClick) {
    workspace.scheduleClock.start(*own.container);
    const auto todos = add({"Buy milk"});
    own.entries.updateSchedule(*todos[0], model::TodoSchedule::dueAt(kNow + 60), kNow);
    page.search(QStringLiteral("milk"));
    runLoop.runPosted();
    EXPECT_THAT(rows(), ElementsAre(::testing::Not(::testing::HasSubstr("Overdue"))));
    clock.advance(61);
    runLoop.advance(61);
    EXPECT_THAT(rows(), ElementsAre(::testing::HasSubstr("Overdue")));
}

TEST_F(SearchPageTest, ADateIsThereAsAWholeOrNotAtAll) {
    const auto todos = add({"a milk", "b milk"});
    own.entries.updateSchedule(*todos[0], model::TodoSchedule::dueOn(20250311), kNow);
    own.entries.updateSchedule(*todos[1], {.dueDate = kNow + 7200.0, .dueStartDate = kNow + 3600.0},
                               kNow);
    page.search(QStringLiteral("milk"));
    const auto drawn = [this] {
        const tests::PaintRecord record(*list().viewport());
        QStringList result;
        for (const auto& each : record.drawn()) {
            result.append(each.words.simplified());
        }
        return result.join(QLatin1Char('|')).toStdString();
    };
    EXPECT_THAT(drawn(), ::testing::AllOf(::testing::HasSubstr("Tomorrow"),
                                          ::testing::HasSubstr("Today · 9:00 AM–10:00 AM")));
    preferences.setFontSize(24);
    page.resize(360, 600);
    QApplication::processEvents();
    EXPECT_THAT(drawn(), ::testing::AllOf(::testing::HasSubstr("Tomorrow"),
                                          ::testing::Not(::testing::HasSubstr("Today"))));
}

TEST_F(SearchPageTest, NothingFoundIsSaidInWords) {
    add({"Bread"});
    page.search(QStringLiteral("milk "));
    const auto labels = page.findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->isVisible() && label->text() == QStringLiteral("No results for “milk”.");
    }));
}

TEST_F(SearchPageTest, FollowsChangesFromAnywhereKeepingTheChosenRowInItsPlace) {
    std::vector<std::string> contents;
    for (int i = 0; i < 200; ++i) {
        contents.push_back("milk " + std::to_string(i));
    }
    const auto todos = add(contents);
    page.search(QStringLiteral("milk"));
    list().setCurrentRow(100);
    const int top = currentTop();
    elsewhere([&](tests::StoreClient& client) {
        client.entries.deleteEntry(theirs(client, *todos[3]));
        client.entries.deleteEntry(theirs(client, *todos[4]));
        client.entries.updateTodo(theirs(client, *todos[150]), "bread", kNow);
    });
    EXPECT_EQ(results().rowCount(), 197);
    EXPECT_EQ(current(), "milk 100");
    EXPECT_EQ(currentTop(), top);

    own.entries.deleteEntry(*todos[100]);
    EXPECT_EQ(current(), "milk 101") << "the next takes the place of one that is gone";
    elsewhere([&](tests::StoreClient& client) {
        client.entries.deleteEntries(*client.boards.inboxBoard());
    });
    EXPECT_EQ(results().rowCount(), 0);
    page.openCurrent(); // nothing to open, nothing happens
}

TEST_F(SearchPageTest, ATodoIsTickedInItsRow) {
    const auto todos = add({"a milk", "b milk"});
    page.search(QStringLiteral("milk"));
    list().setCurrentRow(1);
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_TRUE(todos[1]->isCompleted());
    EXPECT_EQ(results().rowCount(), 2) << "it is still found";
    EXPECT_EQ(current(), "b milk");
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_FALSE(todos[1]->isCompleted());

    auto& old = own.boards.createBoard("Old", kNow);
    own.entries.createTodos({.contents = {"c milk"}, .board = old, .now = kNow});
    own.boards.setArchived(true, old, kNow);
    list().setCurrentRow(2);
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_TRUE(services::completedTodos(old).empty()) << "an archived board is only looked at";
}

TEST_F(SearchPageTest, APressOpensTheRow) {
    const auto todos = add({"a milk", "b milk"});
    std::vector<model::Entry*> opened;
    QObject::connect(&page, &SearchPage::entryOpenRequested, &page,
                     [&](model::Entry* entry) { opened.push_back(entry); });
    page.search(QStringLiteral("milk"));
    const auto rect = list().visualRect(results().index(1, 0));
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, rect.center());
    EXPECT_THAT(opened, ElementsAre(todos[1]));
}

/// However many were found: only what is in sight becomes a row, and so a record.
TEST_F(SearchPageTest, RowsOutOfSightCostNoRecords) {
    base::Uuid id;
    elsewhere([&id](tests::StoreClient& client) {
        auto& board = client.boards.createBoard("Big", kNow);
        client.entries.createTodos(
            {.contents = std::vector<std::string>(5'000, "milk"), .board = board, .now = kNow});
        id = board.id();
    });
    const auto& big = *own.boards.board(id);
    page.search(QStringLiteral("milk"));
    ASSERT_EQ(results().rowCount(), 5'000);
    list().viewport()->repaint();
    EXPECT_FALSE(big.entriesAreLoaded());
    list().verticalScrollBar()->setValue(list().verticalScrollBar()->maximum());
    list().viewport()->repaint();
    EXPECT_EQ(list().visibleRows().second, 4'999);
    EXPECT_FALSE(big.entriesAreLoaded());
}

} // namespace
} // namespace korvex::ui
