#include "ui/widget/WidgetFixture.h"

#include "store/SoleHold.h"
#include "store/StoreLock.h"
#include "ui/AccessibleTree.h"
#include "ui/boards/BoardPicker.h"
#include "ui/widget/WidgetPage.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QScrollBar>

#include <gmock/gmock.h>

#include <fstream>
#include <future>
#include <thread>

namespace korvex::ui {
namespace {

using app::RememberedWidget;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double kHour = 3600;

/// The rows that a list has laid out to know their heights.
struct LaidOut : LazyListView {
    static std::size_t count(const LazyListView& list) {
        return (list.*&LaidOut::measuredRows)().size();
    }
};

class WidgetTest : public WidgetFixture {};

TEST_F(WidgetTest, OpenTodosOfOneBoardAreShownAndNothingElseIsRead) {
    auto& work = app->boards.createBoard("Work", kNow);
    add({"elsewhere"}, *inbox);
    const auto todos = add({"first", "second", "done"}, work);
    app->entries.completeTodo(*todos.back(), kNow);
    auto& window = show(work.id());
    EXPECT_THAT(rows(window), ElementsAre("[ ] first", "[ ] second"));
    EXPECT_EQ(nameOf(window), "Work, 2 open todos");
    EXPECT_FALSE(store->open()->context.find<model::Board>(work.id())->entriesAreLoaded());
    app->entries.updateTodo(*todos[0], "first, and more", kNow);
    add({"third"}, work);
    app->boards.renameBoard(work, "Office", kNow);
    notice();
    EXPECT_THAT(rows(window), ElementsAre("[ ] first, and more", "[ ] second", "[ ] third"));
    EXPECT_EQ(nameOf(window), "Office, 3 open todos");
}

TEST_F(WidgetTest, ATickIsStoredAtOnceAndItsRowLeavesALittleLater) {
    add({"one", "two", "three"}, *inbox);
    auto& window = show();
    tick(window, 1);
    EXPECT_EQ(completions(), 1);
    EXPECT_EQ(announced, 1);
    EXPECT_THAT(rows(window), ElementsAre("[ ] one", "[x] two", "[ ] three"));
    EXPECT_EQ(nameOf(window), "Inbox, 2 open todos");
    runLoop.advance(0.4);
    EXPECT_THAT(rows(window), ElementsAre("[ ] one", "[x] two", "[ ] three"));
    runLoop.advance(0.2);
    EXPECT_THAT(rows(window), ElementsAre("[ ] one", "[ ] three"));
    // The keyboard goes on where it was.
    EXPECT_EQ(listOf(window).currentRow(), 1);

    // Ticked once more while it is seen, the todo stands where it stood.
    tick(window, 0);
    tick(window, 0);
    EXPECT_EQ(announced, 3);
    runLoop.advance(1);
    EXPECT_THAT(rows(window), ElementsAre("[ ] one", "[ ] three"));
    EXPECT_EQ(completions(), 1);
}

TEST_F(WidgetTest, OfSeveralWhoCompleteATodoOneDoesAndARefusalIsTold) {
    const auto todos = add({"one", "two", "three"}, *inbox);
    auto& window = show();
    app->entries.completeTodo(*todos[0], kNow - kHour);
    tick(window, 0);
    EXPECT_EQ(announced, 0);
    EXPECT_EQ(todos[0]->completedAt(), kNow - kHour);
    runLoop.advance(1);
    EXPECT_THAT(rows(window), ElementsAre("[ ] two", "[ ] three"));

    log.expectError("Widget completion failed");
    {
        const store::LockedStep busy(app->context);
        QElapsedTimer timer;
        timer.start();
        tick(window, 0);
        EXPECT_NE(hint(window), "");
        EXPECT_LT(timer.elapsed(), 5'000) << "the widget hangs while another program writes";
    }
    runLoop.advance(1);
    EXPECT_THAT(rows(window), ElementsAre("[ ] two", "[ ] three"));
}

TEST_F(WidgetTest, ABoardThatIsEmptyArchivedOrGoneSaysSoAndComesBack) {
    auto& work = app->boards.createBoard("Work", kNow);
    auto& window = show(work.id());
    EXPECT_EQ(hint(window), "No open todos.");
    add({"task"}, work);
    notice();
    EXPECT_EQ(hint(window), "");
    app->boards.setArchived(true, work, kNow);
    notice();
    EXPECT_THAT(rows(window), IsEmpty());
    EXPECT_EQ(hint(window), "“Work” is archived. Restore it in Korvex, or choose another board in "
                            "the menu.");
    app->boards.setArchived(false, work, kNow);
    notice();
    EXPECT_THAT(rows(window), ElementsAre("[ ] task"));
    app->boards.deleteBoard(work);
    notice();
    EXPECT_THAT(rows(window), IsEmpty());
    EXPECT_EQ(hint(window), "This board is not there any more. Choose another one in the menu.");
}

TEST_F(WidgetTest, WithoutAStoreItWaitsAndMakesNone) {
    const auto home = folder / "later";
    file = home / "Primary.store";
    auto& window = show();
    EXPECT_THAT(rows(window), ElementsAre("no store"));
    EXPECT_EQ(hint(window), "Open Korvex once to prepare the shared store.");
    EXPECT_FALSE(std::filesystem::exists(home));
    const auto said = log.lines().size();
    notice();
    notice();
    EXPECT_EQ(log.lines().size(), said) << "the same is said again and again";

    std::filesystem::create_directory(home);
    startApp();
    add({"first"}, *inbox);
    notice();
    EXPECT_THAT(rows(window), ElementsAre("[ ] first"));

    // It leaves, another file has its name, and it comes back.
    app.reset();
    appContainer.reset();
    std::filesystem::rename(home, folder / "away");
    notice();
    EXPECT_THAT(rows(window), ElementsAre("no store"));
    std::filesystem::copy(folder / "away", home);
    std::ofstream(file) << "no store at all";
    notice();
    EXPECT_THAT(rows(window), ElementsAre("no store"));
    EXPECT_NE(hint(window), "Open Korvex once to prepare the shared store.");
    std::filesystem::remove_all(home);
    std::filesystem::rename(folder / "away", home);
    notice();
    EXPECT_THAT(rows(window), ElementsAre("[ ] first"));
}

TEST_F(WidgetTest, WhoMustBeAloneWithTheStoreGetsItAndTheTodosComeBack) {
    add({"one", "two"}, *inbox);
    auto& window = show();
    app.reset();
    appContainer.reset();
    std::promise<void> locked;
    std::promise<void> alone;
    std::promise<void> done;
    std::jthread other([&] {
        const store::StoreFile theirs(file);
        store::StoreLock lock(theirs.lockFile(), std::chrono::seconds(1));
        const store::StoreLock::Guard guard(&lock);
        locked.set_value();
        try {
            const store::SoleHold hold(theirs, std::chrono::seconds(2));
            alone.set_value();
            done.get_future().wait();
        } catch (...) {
            alone.set_exception(std::current_exception());
        }
    });
    locked.get_future().wait();
    log.expectError("Widget completion failed");
    tick(window, 0);
    EXPECT_THAT(hint(window), ::testing::HasSubstr("Nothing was changed"));
    auto isAlone = alone.get_future();
    while (isAlone.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) {
        notice();
    }
    EXPECT_NO_THROW(isAlone.get());
    for (int i = 0; i < 3; ++i) {
        notice(); // it does not come in between, nor says so again and again
        EXPECT_THAT(rows(window), ElementsAre("no store"));
    }
    EXPECT_EQ(hint(window), "Korvex is upgrading or repairing the store. The todos come back when "
                            "it is done.");
    EXPECT_EQ(log.count("upgrading or repairing"), 1U);
    done.set_value();
    other.join();
    notice();
    EXPECT_THAT(rows(window), ElementsAre("[ ] one", "[ ] two"));
    EXPECT_EQ(hint(window), "");
    tick(window, 0);
    startApp();
    EXPECT_EQ(completions(), 1);
}

TEST_F(WidgetTest, LabelsFollowTheClock) {
    const auto todos =
        app->entries.createTodos({.contents = {"call"},
                                  .board = *inbox,
                                  .now = kNow,
                                  .schedule = model::TodoSchedule::dueAt(kNow + kHour)});
    auto& window = show();
    const auto description = [&] {
        return toUtf8(
            listOf(window).model()->index(0, 0).data(Qt::AccessibleDescriptionRole).toString());
    };
    const auto before = description();
    runLoop.runPosted();
    clock.advance(kHour + 1);
    runLoop.advance(kHour + 1);
    EXPECT_NE(description(), before);
    EXPECT_THAT(description(), ::testing::HasSubstr("verdue"));

    // Another program sets a reminder while the widget stands there.
    app->entries.updateSchedule(*todos[0], {.reminderDate = clock.now() + kHour}, clock.now());
    notice();
    const auto hasRung = [&] {
        return static_cast<WidgetTodoModel*>(listOf(window).model())->dueLabel(0).isReminderPast;
    };
    EXPECT_FALSE(hasRung());
    clock.advance(kHour + 1);
    runLoop.advance(kHour + 1);
    EXPECT_TRUE(hasRung());
}

TEST_F(WidgetTest, KeysWalkTickAndOpen) {
    auto& work = app->boards.createBoard("Work", kNow);
    const auto todos = add({"one", "two"}, work);
    auto& window = show(work.id());
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    auto& board = *window.findChild<WidgetBoardButton*>();
    board.setFocus();
    QTest::keyClick(&board, Qt::Key_Return);
    QTest::keyClick(&board, Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), &listOf(window));
    QTest::keyClick(&listOf(window), Qt::Key_Down);
    QTest::keyClick(&listOf(window), Qt::Key_Return);
    EXPECT_THAT(desktop.opened, ElementsAre("korvex://board/" + work.id().text(),
                                            "korvex://entry/" + todos[1]->id().text()));
    // A press of the text does the same; one of the circle ticks.
    auto& list = listOf(window);
    const auto row = list.visualRect(list.model()->index(0, 0));
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, row.center());
    EXPECT_EQ(desktop.opened.back(), "korvex://entry/" + todos[0]->id().text());
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                      row.topLeft() + QPoint(26, row.height() / 2));
    EXPECT_THAT(rows(window), ElementsAre("[x] one", "[ ] two"));
    // Two quick presses are meant as one.
    const auto circle = row.topLeft() + QPoint(26, 3 * row.height() / 2);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, circle);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, circle);
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, circle);
    EXPECT_THAT(rows(window), ElementsAre("[x] one", "[x] two"));
}

TEST_F(WidgetTest, AnotherBoardIsChosenByItsNameAndRemembered) {
    auto& work = app->boards.createBoard("Work", kNow);
    auto& old = app->boards.createBoard("Old", kNow);
    app->boards.setArchived(true, old, kNow);
    add({"task"}, work);
    auto& window = show();
    EXPECT_EQ(nameOf(window), "Inbox");
    window.findChildren<QToolButton*>().front()->click();
    auto& picker = *window.findChild<BoardPicker*>();
    EXPECT_EQ(picker.findChild<QLineEdit*>()->accessibleName(), "Board");
    EXPECT_EQ(picker.findChild<QListView*>()->model()->rowCount(), 2); // not the archived one
    QTest::keyClicks(picker.findChild<QLineEdit*>(), "wor");
    QTest::keyClick(picker.findChild<QLineEdit*>(), Qt::Key_Return);
    EXPECT_THAT(rows(window), ElementsAre("[ ] task"));

    set.reset();
    ASSERT_TRUE(widgets().showRemembered());
    EXPECT_EQ(nameOf(*set->windows().front()), "Work, 1 open todo");
}

TEST_F(WidgetTest, WhatCannotBeDoneIsToldInTheWidgetWithAndWithoutAStore) {
    auto& work = app->boards.createBoard("Work", kNow);
    desktop.error = std::make_error_code(std::errc::read_only_file_system);
    desktop.refusal = WidgetDesktop::Refusal::notInstalled;
    auto& window = show(work.id());
    const auto link = "korvex://board/" + work.id().text();
    const auto refusals = [&] {
        window.findChild<WidgetBoardButton*>()->click();
        EXPECT_THAT(hint(window), ::testing::HasSubstr("is not installed."));
        choose(window, "Show Widgets When You Log In");
        EXPECT_THAT(hint(window), ::testing::HasSubstr("Read-only file system."));
        desktop.refusal.reset();
        window.findChild<WidgetBoardButton*>()->click();
        EXPECT_THAT(hint(window), ::testing::Not(::testing::HasSubstr("Read-only")));
        desktop.refusal = WidgetDesktop::Refusal::notInstalled;
    };
    refusals();
    app.reset();
    appContainer.reset();
    std::filesystem::rename(file, folder / "away");
    notice();
    ASSERT_THAT(rows(window), ElementsAre("no store"));
    refusals();
    // Whether its board is to be had is the app's affair.
    EXPECT_THAT(desktop.opened, ::testing::Each(link));

    set.reset();
    ASSERT_FALSE(app::WidgetFile(folder / "widgets.json")
                     .write(std::vector<RememberedWidget>(app::WidgetFile::kMostWidgets)));
    ASSERT_TRUE(widgets().showRemembered());
    auto& asked = *set->windows()[3];
    choose(asked, "Add Widget");
    EXPECT_EQ(set->windows().size(), app::WidgetFile::kMostWidgets);
    EXPECT_THAT(hint(asked), ::testing::HasSubstr("as many widgets as there can be"));
}

TEST_F(WidgetTest, LongTextsAreCutAfterAFewLinesAndEveryoneHearsThemWhole) {
    const std::string word = "unbelievably long ";
    std::string text;
    for (int i = 0; i < 100; ++i) {
        text += word;
    }
    add({"short", text, std::string(3000, 'x')}, *inbox);
    auto& window = show();
    auto& list = listOf(window);
    const auto line = list.visualRect(list.model()->index(0, 0)).height();
    for (const int row : {1, 2}) {
        const auto height = list.visualRect(list.model()->index(row, 0)).height();
        EXPECT_GT(height, line);
        EXPECT_LT(height, 3 * line);
    }
    EXPECT_GT(list.model()->index(1, 0).data(Qt::AccessibleTextRole).toString().size(), 1000);
    for (const auto size : {11, 24}) {
        preferences.setFontSize(size);
        QApplication::processEvents();
        tests::AccessibleTree tree(window);
        EXPECT_THAT(tree.problems(), IsEmpty()) << tree.text();
    }
}

TEST_F(WidgetTest, TenThousandTodosScrollAndOnlyThoseInSightAreLaidOut) {
    std::vector<std::string> texts;
    for (int i = 0; i < 10'000; ++i) {
        texts.push_back("todo " + std::to_string(i));
    }
    add(std::move(texts), *inbox);
    auto& window = show();
    auto& list = listOf(window);
    EXPECT_EQ(list.model()->rowCount(), 10'000);
    for (int i = 0; i < 50; ++i) {
        list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum() / 50 * i);
        window.grab();
    }
    const auto [first, last] = list.visibleRows();
    const auto inSight = static_cast<std::size_t>(last - first + 1);
    EXPECT_GE(LaidOut::count(list), inSight);
    EXPECT_LE(LaidOut::count(list), 51 * (inSight + 2)); // and one that is cut at either end
}

} // namespace
} // namespace korvex::ui
