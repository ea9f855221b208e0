#include "ui/todos/SchedulePopover.h"

#include "support/ScopedEnvironment.h"
#include "ui/WindowFixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

namespace korvex::ui {
namespace {

class SchedulePopoverTest : public tests::WindowFixture {
protected:
    SchedulePopoverTest() {
        window.resize(600, 500);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        entry = add({"a"}).front();
    }

    void open() {
        popover = new SchedulePopover(*entry,
                                      {.entries = own.entries,
                                       .preferences = preferences,
                                       .dates = workspace.dates,
                                       .clock = clock},
                                      theme, &window);
        popover->openAt({window.mapToGlobal(QPoint(20, 20)), QSize(80, 20)});
        popover->setFocus();
        QApplication::processEvents();
    }
    QPushButton& button(const char* text) {
        for (auto* const each : popover->findChildren<QPushButton*>()) {
            if (each->text() == QString::fromUtf8(text)) {
                return *each;
            }
        }
        throw std::invalid_argument(text);
    }
    QCheckBox& box(const char* text) {
        for (auto* const each : popover->findChildren<QCheckBox*>()) {
            if (each->text() == QString::fromUtf8(text)) {
                return *each;
            }
        }
        throw std::invalid_argument(text);
    }
    template <typename Field>
    Field& field(const char* accessibleName) {
        for (auto* const each : popover->findChildren<Field*>()) {
            if (each->accessibleName() == QString::fromUtf8(accessibleName)) {
                return *each;
            }
        }
        throw std::invalid_argument(accessibleName);
    }
    bool says(const char* text) const {
        for (const auto* const label : popover->findChildren<QLabel*>()) {
            if (label->isVisible() && label->text() == QString::fromUtf8(text)) {
                return true;
            }
        }
        return false;
    }
    bool isOpen() {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return popover && popover->isVisible();
    }

    QWidget window;
    model::Entry* entry = nullptr;
    QPointer<SchedulePopover> popover;
};

TEST_F(SchedulePopoverTest, ReturnOnADaysButtonSchedulesForThatDay) {
    open();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueOn(20250311));
}

TEST_F(SchedulePopoverTest, EscapeDoesAsAPressOutside) {
    for (const bool isByEscape : {true, false}) {
        const auto leave = [&] {
            isByEscape ? QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape)
                       : QTest::mouseClick(&window, Qt::LeftButton, {}, QPoint(590, 490));
        };
        open();
        leave();
        EXPECT_FALSE(isOpen());
        EXPECT_FALSE(own.undo.canUndo()) << "nothing was touched";
        open();
        button("Today").click();
        leave();
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueOn(20250310));
        own.undo.undo();
        EXPECT_TRUE(entry->schedule().isEmpty());
    }
}

TEST_F(SchedulePopoverTest, ASecondEscapeGivesUpWhatIsRefused) {
    const auto escape = [] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); };
    open();
    button("Today").click();
    box("Time").click();
    box("Start").click();
    auto& due = field<QDateTimeEdit>("Due time");
    field<QDateTimeEdit>("Start time").setTime(due.time());
    escape();
    ASSERT_TRUE(isOpen());
    due.setFocus();
    QTest::keyClick(&due, Qt::Key_Up);
    escape();
    EXPECT_FALSE(isOpen()) << "what was mended in between is kept";
    EXPECT_FALSE(entry->schedule().isEmpty());
    own.undo.undo();

    open();
    button("Today").click();
    box("Time").click();
    box("Start").click();
    field<QDateTimeEdit>("Start time").setTime(field<QDateTimeEdit>("Due time").time());
    escape();
    ASSERT_TRUE(isOpen());
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Escape, {}, {}, true);
    QApplication::sendEvent(QApplication::focusWidget(), &held);
    ASSERT_TRUE(isOpen()) << "a key that is held down is no second press";
    field<QDateTimeEdit>("Start time").setTime(QTime(23, 59)); // as the wheel does, with no press
    escape();
    ASSERT_TRUE(isOpen()) << "what was changed in between is tried anew";
    escape();
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(entry->schedule().isEmpty());
}

TEST_F(SchedulePopoverTest, AWindowWithAReminderBeforeItsEndIsStored) {
    open();
    button("Tomorrow").click();
    box("Time").click();
    field<QDateTimeEdit>("Due time").setTime(QTime(10, 0));
    box("Start").click();
    field<QDateTimeEdit>("Start time").setTime(QTime(9, 0));
    box("Reminder").click();
    auto& presets = field<QComboBox>("Reminder");
    presets.setCurrentIndex(presets.findText(QStringLiteral("15 minutes before")));
    Q_EMIT presets.activated(presets.currentIndex());
    EXPECT_TRUE(says("The end time is the deadline. Reminder presets count back from the end "
                     "time."));
    button("Save").click();
    EXPECT_FALSE(isOpen());
    const auto day = kNow + 86400.0 - 8 * 3600.0; // midnight of the next day
    EXPECT_EQ(entry->schedule(), (model::TodoSchedule{.dueDate = day + 10 * 3600.0,
                                                      .dueStartDate = day + 9 * 3600.0,
                                                      .reminderDate = day + 9.75 * 3600.0}));
}

TEST_F(SchedulePopoverTest, WhatIsRefusedStaysOpenWithTheReason) {
    open();
    button("Today").click();
    box("Time").click();
    field<QDateTimeEdit>("Due time").setTime(QTime(10, 0));
    box("Start").click();
    field<QDateTimeEdit>("Start time").setTime(QTime(10, 0));
    button("Save").click();
    ASSERT_TRUE(isOpen());
    EXPECT_TRUE(says("Choose a start time before the end time on this date."));
    box("Start").click();
    field<QDateTimeEdit>("Due time").setTime(QTime(7, 0)); // an hour ago
    box("Reminder").click();
    popover->dismiss();
    ASSERT_TRUE(isOpen()) << "a press outside loses nothing either";
    EXPECT_TRUE(says("Choose a reminder in the future."));
    EXPECT_TRUE(entry->schedule().isEmpty());
}

TEST_F(SchedulePopoverTest, AWindowFromOneDayToAnotherIsLeftAloneAndBothDaysCanBeOthers) {
    const auto evening = kNow + 14 * 3600.0;
    const model::TodoSchedule night{.dueDate = evening + 8 * 3600.0, .dueStartDate = evening};
    own.entries.updateSchedule(*entry, night, kNow);
    clock.advance(60);
    open();
    auto& startDay = field<QDateTimeEdit>("Start day");
    EXPECT_TRUE(startDay.isVisible());
    EXPECT_EQ(startDay.date(), QDate(2025, 3, 10));
    EXPECT_EQ(field<QDateTimeEdit>("Due day").date(), QDate(2025, 3, 11));
    popover->dismiss();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(entry->schedule(), night);
    EXPECT_EQ(entry->updatedAt(), kNow) << "nothing was touched, nothing is stored";

    open();
    field<QDateTimeEdit>("Due day").setDate(QDate(2025, 3, 13));
    field<QDateTimeEdit>("Start day").setDate(QDate(2025, 3, 12));
    popover->dismiss();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(entry->schedule(), (model::TodoSchedule{.dueDate = *night.dueDate + 2 * 86400.0,
                                                      .dueStartDate = evening + 2 * 86400.0}));
}

TEST_F(SchedulePopoverTest, ADayThatNoFieldCanShowStaysUntilItIsChanged) {
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueOn(12000310), kNow);
    const auto noon = entry->schedule().effectiveDate(workspace.dates.formats().calendar());
    open();
    EXPECT_EQ(field<QDateTimeEdit>("Due day").date(), QDate(1600, 1, 1));
    box("Time").click();
    popover->dismiss();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(entry->schedule(), (model::TodoSchedule{.dueDate = noon}));

    open();
    field<QDateTimeEdit>("Due time").setTime(QTime(13, 0));
    popover->dismiss();
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueAt(*noon + 3600.0));

    open();
    field<QDateTimeEdit>("Due day").setDate(QDate(2025, 3, 11));
    popover->dismiss();
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueAt(kNow + 86400.0 + 5 * 3600.0));
}

TEST_F(SchedulePopoverTest, ADayThatTheZoneSkippedStaysUntilItIsChanged) {
    const tests::ScopedEnvironment zone("TZ", "Pacific/Apia");
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueOn(20111230), kNow);
    open();
    box("Time").click();
    box("Time").click();
    popover->dismiss();
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueOn(20111230));

    open();
    auto& day = field<QDateTimeEdit>("Due day");
    EXPECT_EQ(day.date(), QDate(2011, 12, 31));
    day.setDate(QDate(2012, 1, 2));
    day.setDate(QDate(2011, 12, 31));
    popover->dismiss();
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueOn(20111231));
}

TEST_F(SchedulePopoverTest, AClearingThatIsRefusedShowsWhatSavingWouldStore) {
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueAt(kNow + 3600.0), kNow);
    open();
    own.entries.deleteEntry(*entry);
    button("Clear").click();
    ASSERT_TRUE(isOpen());
    EXPECT_FALSE(box("Due").isChecked());
}

TEST_F(SchedulePopoverTest, AStoredScheduleIsShownAndCleared) {
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueAt(kNow + 3600.0), kNow);
    open();
    EXPECT_TRUE(box("Due").isChecked());
    EXPECT_EQ(field<QDateTimeEdit>("Due day").date(), QDate(2025, 3, 10));
    EXPECT_EQ(field<QDateTimeEdit>("Due time").time(), QTime(9, 0));
    button("Clear").click();
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(entry->schedule().isEmpty());
}

} // namespace
} // namespace korvex::ui
