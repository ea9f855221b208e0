#include "ui/overview/UpcomingPage.h"

#include "TodoPageFixture.h"
#include "model/ServiceErrors.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/todos/SchedulePopover.h"

#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>

#include <algorithm>
#include <random>

namespace korvex::ui {
namespace {

using model::TodoSchedule;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr double kHour = 3600;
constexpr double kDay = 86'400;

class UpcomingPageTest : public tests::TodoPageFixture<UpcomingPage> {
protected:
    bool says(const char* text) {
        for (const auto* const label : page.findChildren<QLabel*>()) {
            if (label->isVisible() && label->text() == QString::fromUtf8(text)) {
                return true;
            }
        }
        return false;
    }
    QPoint circleOf(const model::Entry& entry) {
        const auto rect = rectOf(listModel().rowOf(entry));
        return rect.topLeft() + QPoint(26, rect.height() / 2);
    }
    void click(const model::Entry& entry) {
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, circleOf(entry));
    }
    void point(const QPoint& at) {
        QMouseEvent move(QEvent::MouseMove, at, list().viewport()->mapToGlobal(at), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(list().viewport(), &move);
    }
    std::string description(int row) {
        return toUtf8(listModel().index(row, 0).data(Qt::AccessibleDescriptionRole).toString());
    }
};

TEST_F(UpcomingPageTest, WhatCameDueWithoutAnAnswerIsSaidToBeSoForItsReason) {
    using enum schedule::AuthorizationStatus;
    reminders.set({.authorization = authorized, .isQuieted = true});
    const auto todos = add({"quieted", "hidden"});
    show();
    own.entries.updateSchedule(*todos[0], {.reminderDate = kNow + -60.0}, kNow + -120.0);
    EXPECT_TRUE(says("Reminders came due while you were not to be disturbed."));
    reminders.set(denied);
    own.entries.updateSchedule(*todos[1], {.reminderDate = kNow + -50.0}, kNow + -120.0);
    EXPECT_TRUE(says("Reminders came due that you may not have seen."));
    own.entries.completeTodo(*todos[0], kNow);
    clock.advance(60);
    workspace.scheduleClock.refresh();
    EXPECT_TRUE(says("Reminders came due that no notification could show."));
}

TEST_F(UpcomingPageTest, TodosStandInSectionsAndNothingIsSaidOfTheOthers) {
    auto& archive = own.boards.createBoard("Old", kNow);
    addTodo("hidden", TodoSchedule::dueOn(20250310), &archive);
    own.boards.setArchived(true, archive, kNow);
    add({"unscheduled"});
    show();
    EXPECT_TRUE(says("No upcoming todos."));
    EXPECT_THAT(rows(), IsEmpty());
    addTodo("late", TodoSchedule::dueAt(kNow - kHour));
    addTodo("today", TodoSchedule::dueOn(20250310));
    addTodo("soon", TodoSchedule::dueOn(20250312));
    addTodo("far", TodoSchedule::dueOn(20250601));
    clock.set(kNow - kDay);
    addTodo("reminded", {.reminderDate = kNow - kHour});
    waitUntil(kNow);
    EXPECT_FALSE(says("No upcoming todos."));
    EXPECT_THAT(rows(),
                ElementsAre("# Overdue", "[ ] late", "# Today", "[ ] today", "# Next 3 days",
                            "[ ] soon", "# Later", "[ ] far", "# Past Reminders", "[ ] reminded"));
    EXPECT_TRUE(listModel().heading(0).isUrgent);
    EXPECT_FALSE(listModel().heading(2).isUrgent);
}

TEST_F(UpcomingPageTest, TimeMovesTodosBetweenSectionsWithoutAClick) {
    auto& meeting = addTodo("meeting", TodoSchedule::dueAt(kNow + kHour));
    addTodo("call", {.reminderDate = kNow + 2 * kHour});
    addTodo("shopping", TodoSchedule::dueOn(20250310));
    addTodo("tomorrow", TodoSchedule::dueOn(20250311));
    show();
    choose(meeting);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] meeting", "[ ] call", "[ ] shopping",
                                    "# Next 3 days", "[ ] tomorrow"));
    waitUntil(kNow + kHour);
    EXPECT_THAT(rows(), ElementsAre("# Overdue", "[ ] meeting", "# Today", "[ ] call",
                                    "[ ] shopping", "# Next 3 days", "[ ] tomorrow"));
    waitUntil(kNow + 2 * kHour);
    EXPECT_THAT(rows(),
                ElementsAre("# Overdue", "[ ] meeting", "# Today", "[ ] shopping", "# Next 3 days",
                            "[ ] tomorrow", "# Past Reminders", "[ ] call"));
    waitUntil(kNow + 16 * kHour);
    EXPECT_THAT(rows(), ElementsAre("# Overdue", "[ ] meeting", "[ ] shopping", "# Today",
                                    "[ ] tomorrow", "# Past Reminders", "[ ] call"));
    EXPECT_EQ(currentText(), "meeting") << "the choice goes along";
}

TEST_F(UpcomingPageTest, ATickIsStoredAtOnceSeenForAMomentAndThenItsRowLeaves) {
    auto& first = addTodo("a", TodoSchedule::dueOn(20250310));
    auto& second = addTodo("b", TodoSchedule::dueOn(20250312));
    addTodo("c", TodoSchedule::dueOn(20250312));
    show();
    click(second);
    click(first);
    EXPECT_TRUE(first.isCompleted());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("c"));
    const auto ticked = ElementsAre("# Today", "[x] a", "# Next 3 days", "[x] b", "[ ] c");
    EXPECT_THAT(rows(), ticked) << "where they stood";
    runLoop.advance(0.8 * kTickShown);
    EXPECT_THAT(rows(), ticked);
    runLoop.advance(0.3 * kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Next 3 days", "[ ] c"));
    EXPECT_EQ(currentText(), "c") << "not the heading";
}

TEST_F(UpcomingPageTest, ATickTakenBackInTimeChangesNothing) {
    addTodo("a", TodoSchedule::dueOn(20250310));
    auto& todo = addTodo("b", TodoSchedule::dueOn(20250310));
    addTodo("c", TodoSchedule::dueOn(20250310));
    show();
    choose(todo);
    key(Qt::Key_Return, Qt::ControlModifier);
    key(Qt::Key_Space);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c")) << "at its place on the board";
    runLoop.advance(0.8 * kTickShown);
    key(Qt::Key_Space); // for good, but its time begins anew
    runLoop.advance(0.8 * kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] a", "[x] b", "[ ] c"));
    runLoop.advance(0.3 * kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] a", "[ ] c"));
}

TEST_F(UpcomingPageTest, SpaceBetweenWordsIsNoTick) {
    auto& todo = addTodo("a", TodoSchedule::dueOn(20250310));
    show();
    list().setCurrentRow(1);
    for (const int key : {Qt::Key_B, Qt::Key_Space}) {
        QTest::keyClick(&list(), static_cast<Qt::Key>(key));
    }
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, {}, QStringLiteral(" "), true);
    QApplication::sendEvent(&list(), &held);
    EXPECT_FALSE(todo.isCompleted());
}

TEST_F(UpcomingPageTest, RowsHoldStillWhileThePointerTicksOneAfterAnother) {
    std::vector<model::Entry*> todos;
    for (const auto* text : {"a", "b", "c"}) {
        todos.push_back(&addTodo(text, TodoSchedule::dueOn(20250310)));
    }
    show();
    click(*todos[0]);
    runLoop.advance(0.8 * kTickShown);
    click(*todos[1]);
    runLoop.advance(0.8 * kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] a", "[x] b", "[ ] c"));
    point(circleOf(*todos[2]));
    runLoop.advance(4 * kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] a", "[x] b", "[ ] c"))
        << "the third is about to be ticked";
    point(QPoint(300, 300));
    runLoop.advance(kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] c")) << "it was not";

    auto& last = addTodo("d", TodoSchedule::dueOn(20250310));
    point(circleOf(last));
    choose(*todos[2]);
    key(Qt::Key_Space);
    runLoop.advance(kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] d")) << "a pointer that only lies there";
}

TEST_F(UpcomingPageTest, TicksTakenBackInAnyOrderChangeNothing) {
    std::vector<model::Entry*> todos;
    for (const auto* text : {"a", "b", "c", "d"}) {
        todos.push_back(&addTodo(text, TodoSchedule::dueOn(20250310)));
    }
    show();
    std::vector<std::size_t> ticked{0, 1, 2};
    do {
        auto back = ticked;
        std::sort(back.begin(), back.end());
        do {
            for (const auto* order : {&ticked, &back}) {
                for (const auto index : *order) {
                    click(*todos[index]);
                }
            }
            ASSERT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c", "d"));
        } while (std::next_permutation(back.begin(), back.end()));
        runLoop.advance(kTickShown);
    } while (std::next_permutation(ticked.begin(), ticked.end()));
    // What has left meanwhile does not count any more.
    click(*todos[0]);
    runLoop.advance(0.5 * kTickShown);
    click(*todos[2]);
    own.entries.deleteEntry(*todos[0]);
    click(*todos[2]);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b", "c", "d"));
}

TEST_F(UpcomingPageTest, LabelsAndSectionsGoByTheSameMoment) {
    addTodo("meeting", TodoSchedule::dueAt(kNow + kHour));
    show();
    clock.advance(2 * kHour); // and nobody has heard of it yet
    list().forgetLabels();
    EXPECT_FALSE(listModel().detailLabel(1).isOverdue);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] meeting"));
    runLoop.advance(2 * kHour);
    EXPECT_THAT(rows(), ElementsAre("# Overdue", "[ ] meeting"));
    EXPECT_TRUE(listModel().detailLabel(1).isOverdue);
    EXPECT_THAT(description(1), ::testing::HasSubstr("Overdue"));
}

TEST_F(UpcomingPageTest, UndoWhileARowIsLeavingBringsItBackInFullHeight) {
    auto& todo = addTodo("a", TodoSchedule::dueOn(20250310));
    show();
    list().setStyle(nullptr); // the application's, in which rows move
    const auto height = [this] { return rectOf(1).height(); };
    const auto full = height();
    choose(todo);
    key(Qt::Key_Space);
    const auto isSeen = [this] {
        const auto picture = list().viewport()->grab(rectOf(1)).toImage();
        auto empty = picture;
        empty.fill(theme.colors().content);
        return picture != empty;
    };
    runLoop.advance(kTickShown + 0.05);
    EXPECT_EQ(height(), full) << "it fades";
    EXPECT_TRUE(isSeen());
    runLoop.advance(0.08);
    ASSERT_LT(height(), full);
    EXPECT_FALSE(isSeen()) << "what closes is empty: nothing is seen cut";
    own.undo.undo();
    runLoop.advance(0.08);
    EXPECT_EQ(height(), full);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] a"));
    key(Qt::Key_Space);
    runLoop.advance(kTickShown + 0.13);
    key(Qt::Key_Space); // taken back while it leaves
    EXPECT_EQ(height(), full);
    runLoop.advance(2 * kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] a"));
    key(Qt::Key_Space);
    runLoop.advance(kTickShown);
    for (int late = 0; late < 2; ++late) {
        EXPECT_FALSE(rows().empty());
        runLoop.advanceToTimerLate(0.12);
    }
    EXPECT_THAT(rows(), IsEmpty()) << "with fewer pictures, in the same time";
}

TEST_F(UpcomingPageTest, AnUndoneTickAfterItsRowHasLeftBringsTheRowBack) {
    auto& todo = addTodo("a", TodoSchedule::dueOn(20250310));
    show();
    choose(todo);
    key(Qt::Key_Space);
    runLoop.advance(kTickShown);
    EXPECT_THAT(rows(), IsEmpty());
    own.undo.undo();
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] a"));
}

TEST_F(UpcomingPageTest, WhatIsRefusedIsSaidAndTheTodoStays) {
    auto& todo = addTodo("a", TodoSchedule::dueOn(20250310));
    show();
    choose(todo);
    // Deleted by a program of whose change nothing is known here yet.
    tests::StoreClient hidden(folder / "Primary.store", log);
    hidden.entries.deleteEntry(theirs(hidden, todo));
    key(Qt::Key_Space);
    EXPECT_EQ(page.banner().message(),
              toQString(model::descriptionOf(model::EntryServiceErrorCase::entryUnavailable)));
    own.context.refresh();
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(UpcomingPageTest, TheKeyboardPassesOverHeadings) {
    addTodo("a", TodoSchedule::dueOn(20250310));
    addTodo("b", TodoSchedule::dueOn(20250312));
    addTodo("c", TodoSchedule::dueOn(20250601));
    show();
    page.takeKeyboard();
    EXPECT_EQ(currentText(), "a");
    std::vector<std::string> visited;
    for (const auto which : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Up,
                             Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp}) {
        key(which);
        visited.push_back(currentText());
    }
    EXPECT_THAT(visited, ElementsAre("a", "b", "c", "c", "b", "a", "c", "a"));
}

TEST_F(UpcomingPageTest, ReturnADoubleClickAndTheMenuOpenTheEntryOnItsBoard) {
    auto& todo = addTodo("a", TodoSchedule::dueOn(20250310));
    show();
    std::vector<model::Entry*> opened;
    QObject::connect(&page, &TodoListPage::entryOpenRequested, &page,
                     [&](model::Entry* entry) { opened.push_back(entry); });
    choose(todo);
    key(Qt::Key_Return);
    QTest::mouseDClick(list().viewport(), Qt::LeftButton, {},
                       rectOf(listModel().rowOf(todo)).center());
    Q_EMIT list().menuRequested(1, page.mapToGlobal(QPoint(50, 50)));
    auto* const menu = page.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    QStringList items;
    for (const auto* const action : menu->actions()) {
        items.append(action->text());
    }
    items.removeAll(QString());
    EXPECT_EQ(items, QStringList({QStringLiteral("Go to entry"), QStringLiteral("Schedule…"),
                                  QStringLiteral("Complete"), QStringLiteral("Delete todo")}));
    menu->actions().front()->trigger();
    EXPECT_THAT(opened, ElementsAre(&todo, &todo, &todo));
}

TEST_F(UpcomingPageTest, TheDueLabelAndControlDOpenTheSchedule) {
    auto& todo = addTodo("a", TodoSchedule::dueOn(20250310));
    show();
    const auto popover = [this] { return page.findChild<SchedulePopover*>(); };
    QTest::mouseClick(
        list().viewport(), Qt::LeftButton, {},
        list().viewport()->mapFromGlobal(list().scheduleAnchor(listModel().rowOf(todo)).center()));
    ASSERT_NE(popover(), nullptr);
    for (auto* const button : popover()->findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("Tomorrow")) {
            button->click();
            break;
        }
    }
    EXPECT_THAT(rows(), ElementsAre("# Next 3 days", "[ ] a"));
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    choose(todo);
    key(Qt::Key_D, Qt::ControlModifier);
    EXPECT_NE(popover(), nullptr);
}

TEST_F(UpcomingPageTest, DeletingCanBeUndone) {
    addTodo("a", TodoSchedule::dueOn(20250310));
    auto& todo = addTodo("b", TodoSchedule::dueOn(20250310));
    addTodo("c", TodoSchedule::dueOn(20250310));
    show();
    choose(todo);
    key(Qt::Key_Delete);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] a", "[ ] c"));
    EXPECT_EQ(currentText(), "c");
    EXPECT_EQ(page.banner().message(), QStringLiteral("“b” was deleted."));
    own.undo.undo();
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] a", "[ ] b", "[ ] c"));
    // As another version of the program may have stored it.
    auto& empty = *own.context.find<model::Entry>(todo.id());
    empty.setContent("");
    own.context.save();
    choose(empty);
    key(Qt::Key_Delete);
    EXPECT_EQ(page.banner().message(), QStringLiteral("The entry was deleted."));
}

TEST_F(UpcomingPageTest, ChangesFromElsewhereLeaveChoiceAndPlaceOnTheScreenAlone) {
    std::vector<model::Entry*> todos;
    for (int i = 0; i < 200; ++i) {
        todos.push_back(
            &addTodo(("todo " + std::to_string(i)).c_str(), TodoSchedule::dueOn(20250310)));
    }
    show();
    choose(*todos[100]);
    list().scrollTo(list().currentIndex(), QAbstractItemView::PositionAtCenter);
    const auto place = rectOf(list().currentRow()).top();
    elsewhere([&](tests::StoreClient& client) {
        client.entries.completeTodo(theirs(client, *todos[3]), kNow);
        client.entries.updateTodo(theirs(client, *todos[101]), "changed", kNow + 1.0);
        client.entries.deleteEntry(theirs(client, *todos[7]));
        client.entries.createTodos({.contents = {"new"},
                                    .board = *client.boards.inboxBoard(),
                                    .now = kNow,
                                    .schedule = TodoSchedule::dueAt(kNow - kDay)});
    });
    EXPECT_EQ(rows().size(), 1U + 198 + 2);
    EXPECT_EQ(rows()[1], "[ ] new");
    EXPECT_EQ(currentText(), "todo 100");
    EXPECT_EQ(rectOf(list().currentRow()).top(), place);
    EXPECT_EQ(listModel().text(listModel().rowOf(*todos[101])), QStringLiteral("changed"));
}

TEST_F(UpcomingPageTest, TheRowUnderAPointerThatRestsIsMarkedWhateverScrolls) {
    for (int i = 0; i < 30; ++i) {
        addTodo("a todo", TodoSchedule::dueOn(20250310));
    }
    show();
    const QPoint rest(350, 200);
    const auto seen = [this] { return list().viewport()->grab().toImage(); };
    point(rest);
    for (const int value : {90, 200}) {
        list().verticalScrollBar()->setValue(value);
        const auto scrolled = seen();
        point(rest);
        EXPECT_TRUE(seen() == scrolled);
    }
}

TEST_F(UpcomingPageTest, ALongerTextElsewhereMakesItsRowHigher) {
    auto& todo = addTodo("a", TodoSchedule::dueOn(20250310));
    show();
    const int height = rectOf(1).height();
    elsewhere([&](tests::StoreClient& client) {
        client.entries.updateTodo(theirs(client, todo), std::string(400, 'w') + " end", kNow);
    });
    EXPECT_GT(rectOf(1).height(), 2 * height) << "wrapped, never cut";
}

TEST_F(UpcomingPageTest, ABoardsNewNameAndItsArchivingAreFollowed) {
    auto& board = own.boards.createBoard("Work", kNow);
    addTodo("a", TodoSchedule::dueOn(20250310), &board);
    show();
    EXPECT_EQ(description(1), "Open, Due: Today, Board: Work");
    const auto before = list().grab().toImage();
    own.boards.renameBoard(board, "Office", kNow);
    EXPECT_EQ(description(1), "Open, Due: Today, Board: Office");
    EXPECT_NE(list().grab().toImage(), before);
    own.boards.setArchived(true, board, kNow);
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(UpcomingPageTest, RemindersThatNobodyShowedStandAboveAllOthersUntilTheyAreSeen) {
    reminders.set(schedule::AuthorizationStatus::unavailable, "There is no daemon.");
    auto& call = addTodo("call", {.reminderDate = kNow + 60});
    auto& rent = addTodo("rent", {.dueDate = kNow + kHour, .reminderDate = kNow + 120});
    addTodo("milk", TodoSchedule::dueAt(kNow + 30));
    show();
    const auto plain = ElementsAre("# Today", "[ ] milk", "[ ] call", "[ ] rent");
    EXPECT_THAT(rows(), plain);
    const auto buttons = page.findChildren<QPushButton*>();
    auto& button = **std::find_if(buttons.begin(), buttons.end(), [](const auto* each) {
        return each->text() == QStringLiteral("Mark as Seen");
    });
    EXPECT_FALSE(button.isVisible());
    waitUntil(kNow + 120);
    waitUntil(kNow + kHour);
    EXPECT_THAT(rows(),
                ElementsAre("# Reminders", "[ ] call", "[ ] rent", "# Overdue", "[ ] milk"));
    EXPECT_TRUE(says("Reminders came due that no notification could show."));
    const auto labelOf = [this](int row) { return toUtf8(listModel().detailLabel(row).text); };
    EXPECT_THAT(labelOf(2), StartsWith("Overdue · Today"));
    EXPECT_THAT(labelOf(4), StartsWith("Today")) << "its heading says it";

    page.hide(); // nobody has done anything
    page.show();
    click(call); // in passing
    EXPECT_TRUE(call.isCompleted());
    EXPECT_THAT(rows(),
                ElementsAre("# Reminders", "[x] call", "[ ] rent", "# Overdue", "[ ] milk"));
    runLoop.advance(1.1 * kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Reminders", "[ ] rent", "# Overdue", "[ ] milk"));

    page.hide();
    page.show();
    EXPECT_THAT(rows(), ElementsAre("# Reminders", "[ ] rent", "# Overdue", "[ ] milk"));
    waitUntil(clock.now() + 10);
    choose(rent);
    key(Qt::Key_Down);
    EXPECT_THAT(rows(), ElementsAre("# Reminders", "[ ] rent", "# Overdue", "[ ] milk"));
    page.hide();
    page.show();
    EXPECT_THAT(rows(), ElementsAre("# Overdue", "[ ] milk", "[ ] rent"));
    EXPECT_FALSE(button.isVisible());
    EXPECT_THAT(labelOf(2), StartsWith("Today"));

    const auto& once = addTodo("once more", {.reminderDate = clock.now() + 60});
    const auto& done = addTodo("done by another program", {.reminderDate = clock.now() + 60});
    waitUntil(clock.now() + 60);
    EXPECT_EQ(rows().size(), 6U);
    elsewhere([&](tests::StoreClient& program) {
        program.entries.completeTodo(theirs(program, done), clock.now());
    });
    EXPECT_THAT(rows(),
                ElementsAre("# Reminders", "[ ] once more", "# Overdue", "[ ] milk", "[ ] rent"));
    ASSERT_TRUE(button.isVisible());
    EXPECT_TRUE(QTest::qWaitForWindowActive(&page));
    button.click();
    EXPECT_THAT(rows(), ElementsAre("# Overdue", "[ ] milk", "[ ] rent", "# Past Reminders",
                                    "[ ] once more"));
    EXPECT_EQ(page.focusWidget(), &list());
    app::FileUserDefaults kept(folder / "settings.json");
    EXPECT_EQ(kept.real("remindersSeenUntil"), once.reminderDate()->seconds);
}

TEST_F(UpcomingPageTest, TheBellSaysWhen) {
    struct {
        double at;
        const char* said;
    } const cases[] = {
        {kHour, "Reminder today at 9:00\u202fAM"},
        {kDay, "Reminder tomorrow at 8:00\u202fAM"},
        {2 * kDay, "Reminder on Wed, Mar 12, 2025 at 8:00\u202fAM"},
        {-kHour, "Reminder was today at 7:00\u202fAM"},
        {-kDay, "Reminder was yesterday at 8:00\u202fAM"},
        {-7 * kDay, "Reminder was on Mon, Mar 3, 2025 at 8:00\u202fAM"},
    };
    clock.set(kNow - 30 * kDay);
    for (const auto& each : cases) {
        auto& todo = addTodo("a", {.dueDay = 20250310, .reminderDate = kNow + each.at});
        const auto label = dueLabelOf(todo, kNow, workspace.dates);
        EXPECT_EQ(toUtf8(label.reminder).find("Reminder"), 0U);
        auto plain = label.reminder;
        EXPECT_EQ(plain.replace(QChar(0x202F), QLatin1Char(' ')),
                  QString::fromUtf8(each.said).replace(QChar(0x202F), QLatin1Char(' ')));
        EXPECT_EQ(label.isReminderPast, each.at < 0);
        own.entries.completeTodo(todo, kNow);
        EXPECT_FALSE(dueLabelOf(todo, kNow, workspace.dates).hasReminder) << "it does not come";
    }
}

TEST_F(UpcomingPageTest, WhatHappensOutOfSightIsMadeUpFor) {
    auto& todo = addTodo("a", TodoSchedule::dueOn(20250310));
    addTodo("b", TodoSchedule::dueOn(20250311));
    show();
    page.hide();
    addTodo("c", TodoSchedule::dueOn(20250310));
    own.entries.deleteEntry(todo);
    waitUntil(kNow + 16 * kHour);
    page.show();
    EXPECT_THAT(rows(), ElementsAre("# Overdue", "[ ] c", "# Today", "[ ] b"));
}

/// Whatever happens, the rows are those of a page made anew, one for one.
TEST_F(UpcomingPageTest, AfterAnyChangesThePageIsAsOneMadeAnew) {
    auto& board = own.boards.createBoard("Work", kNow);
    show();
    std::mt19937 random(11); // NOLINT: the same every time
    std::vector<model::Entry*> todos;
    const auto pick = [&](std::size_t count) { return random() % count; };
    for (int step = 0; step < 120; ++step) {
        const TodoSchedule schedule =
            TodoSchedule::dueAt(kNow + (static_cast<double>(pick(40)) - 5) * kDay / 2);
        auto* const todo = todos.empty() ? nullptr : todos[pick(todos.size())];
        switch (todo && todo->isLive() ? pick(6) : 0) {
        case 0:
            todos.push_back(&addTodo("new", schedule, pick(2) == 0 ? &board : nullptr));
            break;
        case 1:
            own.entries.updateSchedule(*todo, pick(3) == 0 ? TodoSchedule{} : schedule,
                                       clock.now());
            break;
        case 2:
            own.entries.deleteEntry(*todo);
            break;
        case 3:
            todo->isCompleted() ? own.entries.restoreTodo(*todo, clock.now())
                                : own.entries.completeTodo(*todo, clock.now());
            break;
        case 4:
            own.boards.setArchived(!board.isArchived(), board, clock.now());
            break;
        case 5:
            waitUntil(clock.now() + kDay / 10);
            break;
        }
    }
    UpcomingPage anew(workspace, theme);
    anew.resize(page.size());
    anew.show();
    const auto* const wanted =
        qobject_cast<TodoListModel*>(anew.findChild<TodoListView*>()->model());
    ASSERT_EQ(wanted->rowCount(), listModel().rowCount());
    for (int row = 0; row < listModel().rowCount(); ++row) {
        EXPECT_EQ(wanted->entry(row), listModel().entry(row)) << row;
        EXPECT_EQ(toUtf8(wanted->text(row)), toUtf8(listModel().text(row))) << row;
    }
}

} // namespace
} // namespace korvex::ui
