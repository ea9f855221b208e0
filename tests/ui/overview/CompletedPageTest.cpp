#include "ui/overview/CompletedPage.h"

#include "TodoPageFixture.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/fields/DateField.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/overview/CompletedFilterBar.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

namespace korvex::ui {
namespace {

using model::TodoSchedule;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double kHour = 3600;
constexpr double kDay = 86'400;

class CompletedPageTest : public tests::TodoPageFixture<CompletedPage> {
protected:
    CompletedFilterBar& bar() { return *page.findChild<CompletedFilterBar*>(); }
    SearchField& search() { return *bar().findChild<SearchField*>(); }
    QComboBox& picker(const char* name) {
        for (auto* const each : bar().findChildren<QComboBox*>()) {
            if (each->accessibleName() == QString::fromUtf8(name)) {
                return *each;
            }
        }
        throw std::invalid_argument(name);
    }
    void pick(const char* name, const char* choice) {
        auto& from = picker(name);
        const int index = from.findText(QString::fromUtf8(choice));
        ASSERT_GE(index, 0) << choice;
        from.setCurrentIndex(index);
    }
    DateField& dateField(const char* name) {
        for (auto* const each : bar().findChildren<DateField*>()) {
            if (each->accessibleName() == QString::fromUtf8(name)) {
                return *each;
            }
        }
        throw std::invalid_argument(name);
    }
    void enter(const char* name, const char* day) {
        auto& field = dateField(name);
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, QString::fromUtf8(day));
        QTest::keyClick(&field, Qt::Key_Return);
    }
    QPushButton& reset() { return *bar().findChild<QPushButton*>(); }
    std::vector<std::string> said() {
        std::vector<std::string> result;
        for (const auto* const label : page.findChildren<QLabel*>()) {
            if (label->isVisible() && label->text().contains(QLatin1String("completed"))) {
                result.push_back(toUtf8(label->text()));
            }
        }
        return result;
    }
};

TEST_F(CompletedPageTest, TodosStandUnderTheDayOfTheirCompletionTheLatestFirst) {
    show();
    EXPECT_THAT(said(), ElementsAre("No completed todos yet."));
    addCompleted("old", kNow - 40 * kDay);
    addCompleted("yesterday", kNow - 20 * kHour);
    addCompleted("early", kNow - 2 * kHour);
    addCompleted("late", kNow - kHour);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] late", "[x] early", "# Yesterday",
                                    "[x] yesterday", "# January 29, 2025", "[x] old"));
    EXPECT_THAT(said(), ElementsAre("4 completed"));
    EXPECT_EQ(listModel().detailLabel(1).text, QStringLiteral("7:00\u202FAM"));
    waitUntil(kNow + 16 * kHour);
    EXPECT_THAT(rows(), ElementsAre("# Yesterday", "[x] late", "[x] early", "# March 9, 2025",
                                    "[x] yesterday", "# January 29, 2025", "[x] old"))
        << "at midnight, without a click";
    auto& odd = addCompleted("from elsewhere", kNow);
    odd.setCompletedAt(base::Instant{1e300});
    own.context.save();
    EXPECT_EQ(listModel().detailLabel(listModel().rowOf(odd)).text, QString());
}

TEST_F(CompletedPageTest, TakingATickAwayRestoresAndTheRowLeavesAfterAMoment) {
    auto& todo = addCompleted("a", kNow - kHour);
    addCompleted("b", kNow - 2 * kHour);
    show();
    choose(todo);
    key(Qt::Key_Space);
    EXPECT_FALSE(todo.isCompleted());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a"));
    EXPECT_THAT(rows(), ElementsAre("# Today", "[ ] a", "[x] b"));
    runLoop.advance(kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] b"));
    EXPECT_EQ(currentText(), "b");
}

TEST_F(CompletedPageTest, ATickTakenAwayByMistakeComesBackWithItsMoment) {
    auto& todo = addCompleted("a", kNow - 3 * kDay);
    show();
    choose(todo);
    key(Qt::Key_Space);
    key(Qt::Key_Space);
    EXPECT_EQ(todo.completedAt(), kNow - 3 * kDay);
    runLoop.advance(2 * kTickShown);
    EXPECT_THAT(rows(), ElementsAre("# March 7, 2025", "[x] a"));
}

TEST_F(CompletedPageTest, EveryCriterionNarrowsTheListAndResetShowsAllAgain) {
    auto& work = own.boards.createBoard("Work", kNow);
    auto& old = own.boards.createBoard("Old", kNow);
    addCompleted("Café bill", kNow - kHour, &work);
    addCompleted("relic", kNow - 2 * kHour, &old);
    addCompleted("walk", kNow - 10 * kDay);
    auto& due = addTodo("due", TodoSchedule::dueOn(20250301));
    own.entries.completeTodo(due, kNow, kNow - 3 * kHour);
    own.boards.setArchived(true, old, kNow);
    show();
    ASSERT_EQ(rows().size(), 6U);
    EXPECT_TRUE(reset().isHidden());
    struct Case {
        const char* picker;
        const char* choice;
        std::vector<std::string> shown;
    };
    for (const auto& each :
         {Case{"Filter by board", "Work", {"# Today", "[x] Café bill"}},
          Case{"Filter by board status", "Archived boards", {"# Today", "[x] relic"}},
          Case{"Filter by due date", "Completed late", {"# Today", "[x] due"}},
          Case{"Filter by completion date",
               "Today",
               {"# Today", "[x] Café bill", "[x] relic", "[x] due"}}}) {
        auto& one = picker(each.picker);
        pick(each.picker, each.choice);
        EXPECT_EQ(rows(), each.shown) << each.choice;
        QApplication::processEvents();
        QTest::mouseClick(&one, Qt::LeftButton, {}, QPoint(one.width() - 12, one.height() / 2));
        EXPECT_EQ(rows().size(), 6U) << "its cross takes it back: " << each.choice;
        pick(each.picker, each.choice);
        QTest::keyClick(&one, Qt::Key_Backspace);
        EXPECT_EQ(rows().size(), 6U) << each.choice;
        pick(each.picker, each.choice);
        EXPECT_FALSE(reset().isHidden());
        reset().click();
        EXPECT_EQ(rows().size(), 6U) << each.choice;
        EXPECT_TRUE(reset().isHidden());
    }
}

TEST_F(CompletedPageTest, TheColumnOfBoardsIsAsWideAsTheLongestNameInIt) {
    auto& longer = own.boards.createBoard("Household and garden", kNow);
    auto& shorter = own.boards.createBoard("Work", kNow);
    addCompleted("a", kNow - kHour, &longer);
    addCompleted("b", kNow - 2 * kHour, &shorter);
    const QFontMetrics metrics(theme.smallFont());
    const auto expectColumn = [&](const char* longest) {
        const auto& delegate = *qobject_cast<const TodoItemDelegate*>(list().itemDelegate());
        for (int row = 1; row < listModel().rowCount(); ++row) {
            EXPECT_EQ(delegate.layout(row, list().column().width).boardName().width(),
                      metrics.horizontalAdvance(QString::fromUtf8(longest)) + 1);
        }
    };
    show();
    expectColumn("Household and garden");
    pick("Filter by board", "Work");
    expectColumn("Work");
    own.boards.renameBoard(shorter, "Office", kNow);
    expectColumn("Office");
    reset().click();
    expectColumn("Household and garden");
}

TEST_F(CompletedPageTest, TheSearchAnswersEveryKeyAndSaysWhenNothingMatches) {
    addCompleted("Café bill", kNow - kHour);
    addCompleted("call", kNow - 2 * kHour);
    show();
    search().setFocus();
    std::vector<std::size_t> counts;
    for (const auto letter : {'c', 'a', 'f'}) {
        QTest::keyClick(&search(), letter);
        counts.push_back(rows().size());
    }
    EXPECT_THAT(counts, ElementsAre(3U, 3U, 2U));
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] Café bill"));
    QTest::keyClick(&search(), 'x');
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(said(), ElementsAre("No matching completed todos"));
    QTest::keyClick(&search(), Qt::Key_Escape);
    EXPECT_EQ(rows().size(), 3U) << "Escape gives the search up";
    QTest::keyClick(&search(), Qt::Key_Down);
    EXPECT_TRUE(list().hasFocus());
    EXPECT_EQ(currentText(), "Café bill");
}

TEST_F(CompletedPageTest, ACustomRangeHoldsWholeDays) {
    addCompleted("before", kNow - 2 * kDay);
    addCompleted("first", kNow - kDay - 8 * kHour);
    addCompleted("last", kNow + 15.9 * kHour);
    addCompleted("after", kNow + 17 * kHour);
    show();
    EXPECT_FALSE(dateField("First day").isVisible());
    pick("Filter by completion date", "Custom range");
    enter("First day", "31.2.");
    EXPECT_NE(dateField("First day").problem(), QString());
    pick("Filter by completion date", "Any time");
    pick("Filter by completion date", "Custom range");
    EXPECT_EQ(dateField("First day").problem(), QString()) << "it was never meant for this range";
    EXPECT_EQ(dateField("First day").date(), QDate(2025, 3, 4));
    EXPECT_EQ(dateField("Last day").date(), QDate(2025, 3, 10));
    enter("First day", "3/9");
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] last", "# Yesterday", "[x] first"));
    enter("Last day", "3/1");
    EXPECT_THAT(rows(), ElementsAre("# Yesterday", "[x] first"))
        << "in the wrong order: the first day";
}

TEST_F(CompletedPageTest, TheBoardsOnOfferAreThoseOfTheStore) {
    auto& work = own.boards.createBoard("Work", kNow);
    addCompleted("a", kNow, &work);
    addCompleted("b", kNow);
    show();
    pick("Filter by board", "Work");
    own.boards.renameBoard(work, "Office", kNow);
    EXPECT_EQ(picker("Filter by board").currentText(), QStringLiteral("Office"));
    own.boards.setArchived(true, work, kNow);
    EXPECT_EQ(picker("Filter by board").currentText(), QStringLiteral("Office (archived)"));
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] a"));
    EXPECT_EQ(listModel().index(1, 0).data(Qt::AccessibleDescriptionRole).toString(),
              QStringLiteral("Completed, 8:00\u202FAM, Today, Board: Office (archived)"));
    elsewhere([&](tests::StoreClient& client) {
        client.boards.deleteBoard(*client.boards.board(work.id()));
    });
    EXPECT_EQ(picker("Filter by board").currentText(), QStringLiteral("All boards"));
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] b"));
    EXPECT_FALSE(bar().filter().isActive());
}

TEST_F(CompletedPageTest, ChangesFromElsewhereAreFollowedUnderAFilter) {
    auto& todo = addCompleted("apple", kNow - kHour);
    addCompleted("banana", kNow - 2 * kHour);
    show();
    search().setText(QStringLiteral("an"));
    elsewhere([&](tests::StoreClient& client) {
        const auto made = client.entries.createTodos(
            {.contents = {"mango", "plum"}, .board = *client.boards.inboxBoard(), .now = kNow});
        client.entries.completeTodo(*made[0], kNow);
        client.entries.completeTodo(*made[1], kNow);
        client.entries.deleteEntry(theirs(client, todo));
    });
    EXPECT_THAT(rows(), ElementsAre("# Today", "[x] mango", "[x] banana"));
    reset().click();
    EXPECT_EQ(rows().size(), 4U);
}

TEST_F(CompletedPageTest, ReturnOpensTheEntryAndAFilteredChoiceStaysChosen) {
    addCompleted("a 1", kNow - kHour);
    auto& todo = addCompleted("b 2", kNow - 2 * kHour);
    show();
    std::vector<model::Entry*> opened;
    QObject::connect(&page, &TodoListPage::entryOpenRequested, &page,
                     [&](model::Entry* entry) { opened.push_back(entry); });
    choose(todo);
    search().setText(QStringLiteral("2"));
    EXPECT_EQ(currentText(), "b 2");
    key(Qt::Key_Return);
    EXPECT_THAT(opened, ElementsAre(&todo));
    search().setText(QStringLiteral("1"));
    EXPECT_NE(currentText(), "b 2");
}

TEST_F(CompletedPageTest, TabLeadsFromTheSearchOverThePickersToTheList) {
    addCompleted("a", kNow);
    show();
    search().setText(QStringLiteral("a"));
    search().setFocus();
    QStringList names;
    for (int i = 0; i < 7; ++i) {
        names.append(QApplication::focusWidget()->accessibleName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(names.join(QLatin1Char('|')).toStdString(),
              "Search completed entries|Filter by board status|Filter by board|Filter by due date|"
              "Filter by completion date|Reset the filter|Completed");
}

} // namespace
} // namespace korvex::ui
