#include "ui/widget/WidgetSet.h"

#include "storage/StoreStart.h"
#include "store/SoleHold.h"
#include "store/StoreLock.h"
#include "ui/AccessibleTree.h"
#include "ui/StillStyle.h"
#include "ui/WindowFixture.h"
#include "ui/boards/BoardPicker.h"
#include "ui/widget/NotedDesktop.h"
#include "ui/widget/WidgetHeader.h"
#include "ui/widget/WidgetPage.h"
#include "ui/widget/WidgetTodoList.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolButton>

#include <gmock/gmock.h>

#include <fstream>
#include <future>
#include <map>
#include <thread>

namespace korvex::ui {
namespace {

using app::RememberedWidget;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr base::Instant kNow{763286400};
constexpr double kHour = 3600;

/// The rows that a list has laid out to know their heights.
struct LaidOut : LazyListView {
    static std::size_t count(const LazyListView& list) {
        return (list.*&LaidOut::measuredRows)().size();
    }
};

/// A store as the app has prepared it, in another program's hands, and widgets over it.
class WidgetTest : public ::testing::Test {
protected:
    WidgetTest() { startApp(); }

    void startApp() {
        auto started = storage::StoreStart::open({.storeFile = file, .now = kNow}, log);
        app.reset();
        appContainer = std::move(started.container);
        app = std::make_unique<tests::StoreClient>(file, log);
        app->boards.initializeDefaultBoards(kNow);
        inbox = app->boards.inboxBoard();
    }
    std::vector<model::Entry*> add(std::vector<std::string> contents, model::Board& board) {
        return app->entries.createTodos(
            {.contents = std::move(contents), .board = board, .now = kNow});
    }
    /// The store file was rewritten, as the watcher notices.
    void notice() {
        store->follow();
        runLoop.runPosted();
    }
    void makeStore() {
        store = std::make_unique<WidgetStore>(
            WidgetStore::Surroundings{.file = file,
                                      .clock = clock,
                                      .runLoop = runLoop,
                                      .reconciling = reminders,
                                      .reminders = notifications,
                                      .announceChange = [this] { ++announced; },
                                      .log = log,
                                      .timeZone = base::TimeZone::utc,
                                      .patience = std::chrono::milliseconds(0)});
    }
    WidgetSet& widgets() {
        if (!store) {
            makeStore();
        }
        if (!set) {
            set = std::make_unique<WidgetSet>(
                app::WidgetFile(folder / "widgets.json"),
                WidgetSurroundings{*store, theme, dates, folding, runLoop, desktop}, log);
        }
        return *set;
    }
    /// The only widget, which shows this board.
    WidgetWindow& show(const std::optional<base::Uuid>& board = std::nullopt) {
        widgets().open(board);
        auto& window = *set->windows().back();
        window.setStyle(&still);
        if (auto* const list = window.findChild<WidgetTodoList*>()) {
            list->setStyle(&still);
        }
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        return window;
    }

    static WidgetTodoList& listOf(WidgetWindow& window) {
        return *window.findChild<WidgetTodoList*>();
    }
    static std::vector<std::string> rows(WidgetWindow& window) {
        auto* const list = window.findChild<WidgetTodoList*>();
        if (!list) {
            return {"no store"};
        }
        std::vector<std::string> result;
        for (int row = 0; row < list->model()->rowCount(); ++row) {
            const auto index = list->model()->index(row, 0);
            result.push_back((index.data(Qt::CheckStateRole) == Qt::Checked ? "[x] " : "[ ] ") +
                             toUtf8(index.data().toString()));
        }
        return result;
    }
    /// The texts over the list, or in its place.
    static std::string hint(const WidgetWindow& window) {
        QStringList said;
        for (const auto* const label : window.findChildren<QLabel*>()) {
            if (label->isVisible()) {
                said.append(label->text());
            }
        }
        return toUtf8(said.join(QLatin1Char(' ')));
    }
    static void tick(WidgetWindow& window, int row) {
        auto& list = listOf(window);
        list.setCurrentRow(row);
        QTest::keyClick(&list, Qt::Key_Space);
    }
    static std::string nameOf(const WidgetWindow& window) {
        return toUtf8(window.findChild<WidgetBoardButton*>()->accessibleName());
    }
    std::map<std::string, QAction*> menuOf(WidgetWindow& window) {
        for (auto* const button : window.findChildren<QToolButton*>()) {
            if (button->accessibleName() == QLatin1String("Menu of the widget")) {
                button->click();
            }
        }
        std::map<std::string, QAction*> items;
        for (auto* const action : window.findChildren<QMenu*>().back()->actions()) {
            items[toUtf8(action->text())] = action;
        }
        return items;
    }
    void choose(WidgetWindow& window, const std::string& item) {
        menuOf(window).at(item)->trigger();
        if (auto* const menu = QApplication::activePopupWidget()) {
            menu->close();
        }
    }
    int completions() {
        app->context.refresh();
        return static_cast<int>(app->context.count<model::Entry>(model::Entry::completedTodos()));
    }

    tests::RecordingLog log;
    tests::TemporaryFolder folder;
    std::filesystem::path file = folder / "Primary.store";
    tests::FakeClock clock{kNow};
    tests::FakeRunLoop runLoop;
    app::FileUserDefaults defaults{folder / "settings.json"};
    app::AppPreferences preferences{defaults, log};
    Theme theme{preferences};
    tests::StillStyle still;
    DateTexts dates{"en_US"};
    base::TextFolding folding{"en_US"};
    services::NoReminders reminders;
    schedule::NoNotifications notifications;
    tests::NotedDesktop desktop;
    std::unique_ptr<store::ModelContainer> appContainer;
    std::unique_ptr<tests::StoreClient> app;
    model::Board* inbox = nullptr;
    int announced = 0;
    std::unique_ptr<WidgetStore> store;
    std::unique_ptr<WidgetSet> set;
};

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

TEST_F(WidgetTest, SeveralAreAddedRemovedAndComeBackWhereTheyStood) {
    auto& work = app->boards.createBoard("Work", kNow);
    auto& first = show();
    auto& second = show(work.id());
    EXPECT_FALSE(first.geometry().intersects(second.geometry()));
    EXPECT_EQ(desktop.withKeyboard, second.windowHandle());
    // The same board is not shown twice: its widget gets the keyboard, where the user has put it.
    second.setGeometry(40, 50, 260, 300);
    widgets().open(inbox->id());
    EXPECT_EQ(desktop.withKeyboard, first.windowHandle());
    widgets().open(work.id());
    EXPECT_EQ(desktop.withKeyboard, second.windowHandle());
    EXPECT_EQ(set->windows().size(), 2U);
    EXPECT_EQ(second.geometry(), QRect(40, 50, 260, 300));
    EXPECT_EQ(desktop.prepared, 2) << "the desktop's hints are replaced while it is shown";
    // Without a board those come back that are closed, or put away.
    first.close();
    second.showMinimized();
    widgets().open(std::nullopt);
    EXPECT_TRUE(first.isVisible());
    EXPECT_FALSE(second.isMinimized());
    EXPECT_EQ(desktop.withKeyboard, first.windowHandle());
    EXPECT_EQ(set->windows().size(), 2U);
    choose(first, "Add Widget");
    EXPECT_EQ(set->windows().size(), 3U);
    choose(first, "Remove Widget");
    QTest::qWait(10);
    EXPECT_EQ(set->windows().size(), 2U);
    // It was moved just now when the session ends.
    second.setGeometry(60, 50, 260, 300);
    QTest::qWait(50);
    set->save();

    set.reset();
    desktop.withKeyboard = nullptr;
    ASSERT_TRUE(widgets().showRemembered());
    EXPECT_EQ(desktop.withKeyboard, nullptr) << "nobody has asked for them";
    EXPECT_EQ(set->windows()[0]->geometry(), QRect(60, 50, 260, 300));
    {
        // Closed, they are remembered all the same.
        QSignalSpy emptied(set.get(), &WidgetSet::emptied);
        choose(*set->windows()[1], "Close All Widgets");
        QTest::qWait(10);
        EXPECT_GE(emptied.count(), 1);
    }
    widgets().open(std::nullopt);
    ASSERT_EQ(set->windows().size(), 2U);
    QSignalSpy emptied(set.get(), &WidgetSet::emptied);
    for (auto* const window : set->windows()) {
        choose(*window, "Remove Widget");
    }
    QTest::qWait(10);
    EXPECT_EQ(emptied.count(), 1);
    set.reset();
    EXPECT_FALSE(widgets().showRemembered());
}

TEST_F(WidgetTest, OneThatWasCalledStandsOverOthersUntilTheKeyboardIsGoneForGood) {
    auto& window = show();
    const auto isBelow = [&] {
        return window.windowHandle()->flags().testFlag(Qt::WindowStaysOnBottomHint);
    };
    QWidget other;
    other.show();
    const auto activate = [](QWidget& which) {
        which.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&which));
    };
    activate(window);
    EXPECT_FALSE(isBelow());
    // As a key does that the desktop has for itself.
    activate(other);
    activate(window);
    runLoop.advance(10);
    EXPECT_FALSE(isBelow());
    activate(other);
    runLoop.advance(10);
    EXPECT_TRUE(isBelow());
    activate(window);
    EXPECT_TRUE(isBelow()) << "nobody has called it this time";

    // By arrow keys, which go to the window manager, or to where the user has gone on to.
    const auto place = [&] {
        activate(window);
        choose(window, "Move by Arrow Keys");
        QApplication::processEvents();
        EXPECT_FALSE(isBelow());
        activate(other);
    };
    place();
    EXPECT_EQ(desktop.placings, 1);
    runLoop.advance(20);
    window.move(window.pos() + QPoint(10, 0));
    QApplication::processEvents();
    runLoop.advance(20);
    EXPECT_FALSE(isBelow()) << "it is still being moved";
    runLoop.advance(20);
    EXPECT_TRUE(isBelow()) << "nobody else says that it has ended";

    place();
    activate(window);
    choose(window, "Keep Below Other Windows");
    choose(window, "Keep Below Other Windows");
    EXPECT_FALSE(isBelow()) << "it has the keyboard";
    activate(other);
    runLoop.advance(10);
    EXPECT_TRUE(isBelow());
}

TEST_F(WidgetTest, TheMenuOffersWhatTheDesktopKnows) {
    auto& window = show();
    EXPECT_EQ(desktop.prepared, 1);
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::WindowStaysOnBottomHint));
    choose(window, "Keep Below Other Windows");
    EXPECT_FALSE(window.windowFlags().testFlag(Qt::WindowStaysOnBottomHint));
    EXPECT_TRUE(window.isVisible());
    choose(window, "Show Widgets When You Log In");
    EXPECT_EQ(desktop.atLogin, true);
    choose(window, "Show Widgets When You Log In");
    EXPECT_EQ(desktop.atLogin, false);

    set.reset();
    desktop.isX11 = false;
    desktop.atLogin.reset();
    ASSERT_TRUE(widgets().showRemembered());
    auto& plain = *set->windows().front();
    EXPECT_FALSE(plain.windowFlags().testFlag(Qt::FramelessWindowHint));
    const auto items = menuOf(plain);
    EXPECT_FALSE(items.at("Keep Below Other Windows")->isEnabled());
    EXPECT_TRUE(items.contains("This desktop lets no window do that."));
    EXPECT_FALSE(items.at("Show Widgets When You Log In")->isEnabled());
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
