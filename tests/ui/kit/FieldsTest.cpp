#include "ui/kit/fields/DateField.h"
#include "ui/kit/fields/DayButton.h"
#include "ui/kit/fields/MonthView.h"
#include "ui/kit/fields/TimeField.h"
#include "ui/kit/fields/WallClock.h"
#include "ui/kit/overlays/Popover.h"

#include "ui/WindowFixture.h"

#include <QAbstractButton>
#include <QLabel>
#include <QSignalSpy>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace korvex::ui {
namespace {

class FieldsTest : public tests::WindowFixture {
protected:
    FieldsTest() {
        auto* const column = new QVBoxLayout(&window);
        day = new DateField({.formats = formats, .today = [] { return QDate(2025, 3, 10); }}, theme,
                            &window);
        day->setAccessibleName(QStringLiteral("Day"));
        time = new TimeField(formats, theme, &window);
        column->addWidget(day);
        column->addWidget(time);
        column->addStretch();
        window.resize(500, 500);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        // The window gave the keyboard to its first field when it came; that is no coming to it.
        time->setFocus();
        day->setFocus();
    }
    ~FieldsTest() override { QApplication::setLayoutDirection(Qt::LeftToRight); }

    static void press(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key), modifiers);
    }
    static void type(TypedField& field, const QString& text) {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
        press(Qt::Key_Return);
    }
    MonthView* month() {
        for (auto* const each : window.findChildren<MonthView*>()) {
            if (each->isVisible()) {
                return each;
            }
        }
        return nullptr;
    }
    MonthView& openMonth() {
        day->setFocus();
        press(Qt::Key_Down, Qt::AltModifier);
        EXPECT_TRUE(month());
        return *month();
    }
    /// The day that the keyboard is on.
    static QDate walkedTo() {
        const auto* const button = qobject_cast<DayButton*>(QApplication::focusWidget());
        return button ? button->day() : QDate();
    }
    QString title() { return month()->findChild<QLabel*>()->text(); }

    std::shared_ptr<const base::DateFormats> formats =
        std::make_shared<const base::DateFormats>("en_US", base::TimeZone::utc());
    QWidget window;
    DateField* day;
    TimeField* time;
};

TEST_F(FieldsTest, WhatIsTypedIsTakenWhenTheTypingIsOver) {
    const QSignalSpy changes(day, &TypedField::changed);
    EXPECT_EQ(day->text(), QStringLiteral("3/10/2025"));
    EXPECT_EQ(day->selectedText(), day->text()) << "so that typing replaces it";
    QTest::keyClicks(day, QStringLiteral("apr 2"));
    EXPECT_EQ(day->date(), QDate(2025, 3, 10));
    press(Qt::Key_Tab);
    EXPECT_EQ(day->date(), QDate(2025, 4, 2));
    EXPECT_EQ(day->text(), QStringLiteral("4/2/2025"));
    EXPECT_EQ(changes.count(), 1);
    type(*time, QStringLiteral("930p"));
    EXPECT_EQ(time->time(), QTime(21, 30));
    EXPECT_EQ(time->text(), QStringLiteral("9:30\u202fPM"));
    EXPECT_EQ(time->selectedText(), time->text());
    QApplication::processEvents();
    EXPECT_GE(time->width(), time->fontMetrics().horizontalAdvance(time->text()));
}

TEST_F(FieldsTest, WhatCannotBeReadStaysAsItWasTypedWithTheReason) {
    day->setDate(QDate(2025, 3, 10));
    for (const auto* const typed : {"31.2.", "1/1/1599", "1/1/4001", ""}) {
        day->setFocus();
        day->selectAll();
        press(Qt::Key_Delete);
        QTest::keyClicks(day, QString::fromUtf8(typed));
        time->setFocus();
        EXPECT_EQ(day->date(), QDate(2025, 3, 10)) << typed;
        EXPECT_EQ(day->text(), QString::fromUtf8(typed));
        const auto text = QString::fromUtf8(typed);
        EXPECT_EQ(day->problem(), text.isEmpty() ? QStringLiteral("Enter a day.")
                                                 : QStringLiteral("“%1” is not a day.").arg(text));
        EXPECT_EQ(day->accessibleDescription(), day->problem());
        day->setFocus();
        press(Qt::Key_Up);
        EXPECT_EQ(day->text(), QString::fromUtf8(typed)) << "there is nothing to step from";
        QTest::keyClicks(day, QStringLiteral("1"));
        EXPECT_EQ(day->problem(), QString()) << "while it is mended";
    }
    type(*day, QStringLiteral("tomorrow"));
    EXPECT_EQ(day->date(), QDate(2025, 3, 11));
}

TEST_F(FieldsTest, WhatIsTypedStaysWhileItsSourceChangesAndCanBeTakenBack) {
    const auto typed = [this](const char* text) {
        time->setFocus();
        time->selectAll();
        QTest::keyClicks(time, QString::fromUtf8(text));
    };
    time->setTime({9, 0});
    typed("7:3");
    time->setTime({10, 0});
    EXPECT_EQ(time->text(), QStringLiteral("7:3"));
    EXPECT_TRUE(time->takeBack());
    EXPECT_EQ(time->text(), QStringLiteral("10:00\u202fAM"));
    EXPECT_FALSE(time->takeBack());
    const QSignalSpy changes(time, &TypedField::changed);
    typed("7:30 PM");
    EXPECT_EQ(time->time(), QTime(19, 30)) << "nothing can be added to it";
    EXPECT_TRUE(time->takeBack());
    EXPECT_EQ(time->time(), QTime(10, 0));
    EXPECT_EQ(changes.count(), 2);
    typed("7:30 PM");
    time->setTime({11, 0});
    EXPECT_EQ(time->text(), QStringLiteral("11:00\u202fAM")) << "it was taken before";
    day->setFocus();
    day->selectAll();
    QTest::keyClicks(day, QStringLiteral("apr"));
    day->setDate({2025, 5, 1});
    EXPECT_EQ(day->text(), QStringLiteral("apr"));
}

TEST_F(FieldsTest, ArrowsStepThePartAtTheCaret) {
    struct Step {
        int caret;
        int key;
        Qt::KeyboardModifiers modifiers;
        QDate day;
        const char* selected;
    };
    for (const auto& each : {
             Step{-1, Qt::Key_Up, {}, {2025, 4, 1}, "1"},
             Step{0, Qt::Key_Down, {}, {2025, 2, 28}, "2"},
             Step{2, Qt::Key_Down, {}, {2025, 3, 30}, "30"},
             Step{5, Qt::Key_Up, {}, {2026, 3, 31}, "2026"},
             Step{9, Qt::Key_Down, {}, {2024, 3, 31}, "2024"},
             Step{9, Qt::Key_PageDown, {}, {2025, 2, 28}, "2"},
             Step{0, Qt::Key_PageUp, Qt::ShiftModifier, {2026, 3, 31}, "2026"},
         }) {
        day->setDate(QDate(2025, 3, 31));
        day->selectAll();
        if (each.caret >= 0) {
            day->setCursorPosition(each.caret);
            day->deselect();
        }
        press(each.key, each.modifiers);
        EXPECT_EQ(day->date(), each.day) << each.caret;
        EXPECT_EQ(day->selectedText(), QString::fromUtf8(each.selected));
        day->setDate(QDate(2020, 1, 1));
    }
    day->setDate(WallClock::latestDay());
    press(Qt::Key_Up);
    EXPECT_EQ(day->date(), WallClock::latestDay());
    struct Turn {
        QTime from;
        int caret;
        int key;
        QTime time;
    };
    for (const auto& each : {
             Turn{{9, 30}, -1, Qt::Key_Up, {9, 35}},
             Turn{{9, 32}, 3, Qt::Key_Up, {9, 35}},
             Turn{{9, 32}, 3, Qt::Key_Down, {9, 30}},
             Turn{{9, 0}, 1, Qt::Key_Down, {8, 0}},
             Turn{{9, 0}, 7, Qt::Key_Up, {21, 0}},
             Turn{{9, 0}, 3, Qt::Key_PageUp, {10, 0}},
             Turn{{23, 58}, -1, Qt::Key_Up, {0, 0}},
             Turn{{0, 0}, -1, Qt::Key_Down, {23, 55}},
         }) {
        time->setTime(each.from);
        time->setFocus();
        time->selectAll();
        if (each.caret >= 0) {
            time->setCursorPosition(each.caret);
            time->deselect();
        }
        press(each.key);
        EXPECT_EQ(time->time(), each.time) << time->text().toStdString();
    }
}

TEST_F(FieldsTest, TheWheelTurnsOnlyTheFieldThatHasTheKeyboard) {
    const auto turn = [](QWidget& over, int by) {
        QWheelEvent event({5, 5}, over.mapToGlobal(QPointF(5, 5)), {}, {0, by}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&over, &event);
    };
    time->setTime(QTime(9, 0));
    turn(*time, 120);
    EXPECT_EQ(time->time(), QTime(9, 0));
    time->setFocus();
    turn(*time, 60);
    EXPECT_EQ(time->time(), QTime(9, 0)) << "half a notch";
    turn(*time, 60);
    EXPECT_EQ(time->time(), QTime(9, 5));
    auto& shown = openMonth();
    turn(shown, -120);
    EXPECT_EQ(title(), QStringLiteral("April 2025"));
}

TEST_F(FieldsTest, KeysWalkThroughTheMonthAndReturnChooses) {
    struct Step {
        int key;
        Qt::KeyboardModifiers modifiers;
        QDate day;
    };
    day->setDate(QDate(2025, 3, 10));
    openMonth();
    EXPECT_EQ(walkedTo(), QDate(2025, 3, 10));
    for (const auto& step : {
             Step{Qt::Key_Left, {}, {2025, 3, 9}},
             Step{Qt::Key_Up, {}, {2025, 3, 2}},
             Step{Qt::Key_Up, {}, {2025, 2, 23}},
             Step{Qt::Key_End, {}, {2025, 3, 1}},
             Step{Qt::Key_Home, {}, {2025, 2, 23}},
             Step{Qt::Key_PageDown, {}, {2025, 3, 23}},
             Step{Qt::Key_PageUp, Qt::ShiftModifier, {2024, 3, 23}},
             Step{Qt::Key_Down, {}, {2024, 3, 30}},
             Step{Qt::Key_Right, {}, {2024, 3, 31}},
             Step{Qt::Key_PageUp, {}, {2024, 2, 29}},
         }) {
        press(step.key, step.modifiers);
        EXPECT_EQ(walkedTo(), step.day);
    }
    EXPECT_EQ(title(), QStringLiteral("February 2024"));
    EXPECT_EQ(QApplication::focusWidget()->accessibleName(),
              QStringLiteral("Thursday, February 29, 2024"));
    press(Qt::Key_Return);
    EXPECT_EQ(month(), nullptr);
    EXPECT_TRUE(day->hasFocus());
    EXPECT_EQ(day->date(), QDate(2024, 2, 29));

    openMonth();
    press(Qt::Key_Left);
    press(Qt::Key_Escape);
    EXPECT_EQ(month(), nullptr);
    EXPECT_EQ(day->date(), QDate(2024, 2, 29));
    QApplication::setLayoutDirection(Qt::RightToLeft);
    openMonth();
    press(Qt::Key_Left);
    EXPECT_EQ(walkedTo(), QDate(2024, 3, 1)) << "to the left days are later";
    day->setDate(WallClock::earliestDay());
    press(Qt::Key_Escape);
    openMonth();
    press(Qt::Key_Up);
    EXPECT_EQ(walkedTo(), WallClock::earliestDay());
}

TEST_F(FieldsTest, TheMonthMarksTodayAndIsOpenedAndClosedByItsButton) {
    day->setDate(QDate(2025, 3, 12));
    auto& button = *day->findChild<QToolButton*>();
    QTest::mouseClick(&button, Qt::LeftButton);
    ASSERT_TRUE(month());
    const auto days = month()->findChildren<DayButton*>();
    EXPECT_EQ(days.size(), 42);
    EXPECT_EQ(days.front()->day(), QDate(2025, 2, 23)) << "a Sunday";
    for (const auto* const each : days) {
        EXPECT_EQ(each->isChecked(), each->day() == QDate(2025, 3, 12));
        EXPECT_EQ(each->accessibleName().endsWith(QStringLiteral(", today")),
                  each->day() == QDate(2025, 3, 10));
    }
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(month(), nullptr) << "the press closes nothing that the click would open again";
    QTest::mouseClick(&button, Qt::LeftButton);
    ASSERT_TRUE(month());
    for (auto* const each : month()->findChildren<DayButton*>()) {
        if (each->day() == QDate(2025, 4, 2)) {
            QTest::mouseClick(each, Qt::LeftButton);
            break;
        }
    }
    EXPECT_EQ(day->text(), QStringLiteral("4/2/2025")) << "a day of another month is one too";
}

TEST_F(FieldsTest, TheMonthStaysInsideTheWindow) {
    for (const auto size : {app::AppPreferences::kFontSizes.front(), preferences.fontSize(),
                            app::AppPreferences::kFontSizes.back()}) {
        preferences.setFontSize(size);
        window.resize(360, 400);
        QApplication::processEvents();
        auto& shown = openMonth();
        const auto& panel = *shown.parentWidget();
        EXPECT_TRUE(window.rect().contains(panel.geometry())) << size;
        EXPECT_TRUE(panel.rect().contains(shown.geometry())) << size;
        window.resize(340, 380);
        QApplication::processEvents();
        EXPECT_TRUE(window.rect().contains(panel.geometry())) << size;
        press(Qt::Key_Escape);
    }
}

TEST_F(FieldsTest, APanelThatWasOpenedFromAnotherBelongsToIt) {
    auto* const outer = new Popover(theme, &window);
    auto* const column = new QVBoxLayout(outer);
    auto* const inside = new DateField(
        {.formats = formats, .today = [] { return QDate(2025, 3, 10); }}, theme, outer);
    auto* const beside = new QLabel(QStringLiteral("beside"), outer);
    column->addWidget(inside);
    column->addWidget(beside);
    outer->openAt({window.mapToGlobal(QPoint(20, 20)), QSize(80, 20)});
    const auto open = [&] {
        inside->setFocus();
        press(Qt::Key_F4);
        ASSERT_TRUE(month());
    };
    open();
    press(Qt::Key_Escape);
    EXPECT_EQ(month(), nullptr);
    EXPECT_TRUE(outer->isVisible());
    open();
    QTest::mouseClick(month(), Qt::LeftButton, {}, QPoint(2, 2));
    EXPECT_TRUE(month());
    EXPECT_TRUE(outer->isVisible());
    QTest::mouseClick(beside, Qt::LeftButton);
    EXPECT_EQ(month(), nullptr);
    EXPECT_TRUE(outer->isVisible());
    open();
    outer->closeNow();
    EXPECT_EQ(month(), nullptr);
}

} // namespace
} // namespace korvex::ui
