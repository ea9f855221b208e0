#include "ui/todos/SchedulePopover.h"

#include "support/ScopedEnvironment.h"
#include "ui/WindowFixture.h"
#include "ui/kit/fields/TypedField.h"

#include <QAbstractButton>
#include <QLabel>
#include <QPointer>
#include <QScrollArea>
#include <QWheelEvent>

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
        popover = new SchedulePopover(*entry, todoServices(workspace), theme, &window);
        popover->openAt({window.mapToGlobal(QPoint(20, 20)), QSize(80, 20)});
        popover->setFocus();
        QApplication::processEvents();
    }
    QAbstractButton& button(const char* text) {
        for (auto* const each : popover->findChildren<QAbstractButton*>()) {
            if (each->text() == QString::fromUtf8(text)) {
                return *each;
            }
        }
        throw std::invalid_argument(text);
    }
    TypedField& field(const char* accessibleName) {
        for (auto* const each : popover->findChildren<TypedField*>()) {
            if (each->accessibleName() == QString::fromUtf8(accessibleName)) {
                return *each;
            }
        }
        throw std::invalid_argument(accessibleName);
    }
    /// Types over what is there; it is taken when the keyboard goes elsewhere.
    void enter(const char* fieldName, const char* text) {
        auto& into = field(fieldName);
        into.setFocus();
        into.selectAll();
        QTest::keyClicks(&into, QString::fromUtf8(text));
    }
    QString shown(const char* fieldName) { return field(fieldName).text(); }
    bool isOn(const char* text) { return button(text).isChecked(); }
    const QLabel* said(const char* text) const {
        for (const auto* const label : popover->findChildren<QLabel*>()) {
            if (label->isVisible() && label->text() == QString::fromUtf8(text)) {
                return label;
            }
        }
        return nullptr;
    }
    bool says(const char* text) const { return said(text) != nullptr; }
    bool isOpen() {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return popover && popover->isVisible();
    }

    QWidget window;
    model::Entry* entry = nullptr;
    QPointer<SchedulePopover> popover;
};

/// The days that people mean most take one click, or Return.
TEST_F(SchedulePopoverTest, ADaysButtonSchedulesForThatDayAndIsDone) {
    for (const bool isByReturn : {true, false}) {
        open();
        if (isByReturn) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        } else {
            button("Tomorrow").click();
        }
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueOn(20250311));
        own.undo.undo();
        EXPECT_TRUE(entry->schedule().isEmpty());
    }
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueOn(20250310), kNow);
    open();
    enter("Due day", "31.2.");
    button("Done").click();
    button("Today").click();
    EXPECT_FALSE(isOpen()) << "the day is another than what was typed";
    EXPECT_EQ(entry->dueDay(), 20250310);
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
        button("Due").click();
        enter("Due day", "mar 12");
        leave();
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueOn(20250312)) << "also half typed";
        own.undo.undo();
        EXPECT_TRUE(entry->schedule().isEmpty());
    }
}

TEST_F(SchedulePopoverTest, ASecondEscapeGivesUpWhatIsRefused) {
    const auto escape = [] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); };
    const auto makeEmptyWindow = [&] {
        open();
        button("Due").click();
        button("From").click();
        EXPECT_TRUE(isOn("Until")) << "a start needs an end";
        enter("Start time", "9");
        enter("Due time", "9");
    };
    makeEmptyWindow();
    escape();
    ASSERT_TRUE(isOpen());
    QTest::keyClick(&field("Due time"), Qt::Key_Up);
    escape();
    EXPECT_FALSE(isOpen()) << "what was mended in between is kept";
    EXPECT_FALSE(entry->schedule().isEmpty());
    own.undo.undo();

    makeEmptyWindow();
    escape();
    ASSERT_TRUE(isOpen());
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Escape, {}, {}, true);
    QApplication::sendEvent(QApplication::focusWidget(), &held);
    ASSERT_TRUE(isOpen()) << "a key that is held down is no second press";
    auto& due = field("Due time");
    QWheelEvent turn({5, 5}, due.mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton,
                     Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&due, &turn);
    escape();
    ASSERT_TRUE(isOpen()) << "what was changed in between is tried anew";
    escape();
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(entry->schedule().isEmpty());
}

TEST_F(SchedulePopoverTest, OneEscapeGivesUpWhatWasRefusedBefore) {
    const auto press = [](Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); };
    const auto refuse = [&] {
        open();
        button("Due").click();
        button("Until").click();
        enter("Due time", "25:99");
        press(Qt::Key_Return);
        ASSERT_TRUE(isOpen());
    };
    refuse();
    EXPECT_FALSE(field("Due time").problem().isEmpty());
    press(Qt::Key_Escape);
    EXPECT_FALSE(isOpen()) << "the reason was read";
    EXPECT_TRUE(entry->schedule().isEmpty());
    refuse();
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("25:98"));
    press(Qt::Key_Escape);
    ASSERT_TRUE(isOpen()) << "of this nothing was said yet";
    press(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    for (const bool isTyped : {true, false}) {
        refuse();
        if (isTyped) {
            enter("Due day", "mar 12");
        } else {
            button("Reminder").click();
        }
        press(Qt::Key_Escape);
        ASSERT_TRUE(isOpen()) << "what was changed since is not thrown away by one key";
        press(Qt::Key_Escape);
        EXPECT_FALSE(isOpen());
    }
}

TEST_F(SchedulePopoverTest, WhatAnotherProgramSetsIsFollowedOrNotReplacedUnseen) {
    const auto set = [&](base::DayNumber day) {
        elsewhere([&](auto& client) {
            client.entries.updateSchedule(theirs(client, *entry), model::TodoSchedule::dueOn(day),
                                          kNow);
        });
    };
    open();
    EXPECT_FALSE(button("Clear").isEnabled());
    button("Due").click();
    set(20250311);
    EXPECT_TRUE(button("Clear").isEnabled()) << "whatever has been changed here";
    popover->closeNow();
    open();
    set(20250312);
    EXPECT_EQ(shown("Due day"), QStringLiteral("3/12/2025"));
    enter("Due day", "2025-03-20");
    set(20250313);
    EXPECT_EQ(shown("Due day"), QStringLiteral("2025-03-20")) << "what is being typed stays";
    // Not heard of yet.
    other->entries.updateSchedule(theirs(*other, *entry), model::TodoSchedule::dueOn(20250314),
                                  kNow);
    popover->dismiss();
    ASSERT_TRUE(isOpen());
    const auto now = entry->schedule().accessibilityLabel(false, kNow, workspace.dates.formats());
    EXPECT_TRUE(says(("Another program changed this schedule. It is now: " + now +
                      ". Choose Done to replace that.")
                         .c_str()));
    EXPECT_EQ(entry->dueDay(), 20250314);
    button("Done").click();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(entry->dueDay(), 20250320);
    open();
    elsewhere([&](auto& client) { client.entries.deleteEntry(theirs(client, *entry)); });
    EXPECT_FALSE(isOpen());
}

TEST_F(SchedulePopoverTest, AWindowWithAReminderBeforeItsEndIsStored) {
    open();
    button("Due").click();
    enter("Due day", "tomorrow");
    button("From").click();
    enter("Start time", "9");
    enter("Due time", "10");
    button("Reminder").click();
    button("15 minutes before").click();
    EXPECT_TRUE(says("The end time is the deadline. Reminder presets count back from the end "
                     "time."));
    button("Done").click();
    EXPECT_FALSE(isOpen());
    const auto day = kNow + 86400.0 - 8 * 3600.0; // midnight of the next day
    EXPECT_EQ(entry->schedule(), (model::TodoSchedule{.dueDate = day + 10 * 3600.0,
                                                      .dueStartDate = day + 9 * 3600.0,
                                                      .reminderDate = day + 9.75 * 3600.0}));
    open();
    button("Until").click();
    EXPECT_FALSE(isOn("From")) << "it goes with the end";
    button("Custom").click();
    enter("Day of the reminder", "3/12");
    enter("Time of the reminder", "8:15");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(entry->schedule(),
              (model::TodoSchedule{.dueDay = 20250311, .reminderDate = day + 32.25 * 3600.0}));
}

TEST_F(SchedulePopoverTest, AnotherDefaultReminderTimeHoldsAtOnce) {
    open();
    button("Due").click();
    enter("Due day", "tomorrow");
    button("Reminder").click();
    button("1 hour before").click();
    preferences.setDefaultReminderMinutes(10 * 60 + 30);
    button("Done").click();
    EXPECT_EQ(entry->reminderDate(), kNow + 86400.0 + 1.5 * 3600.0);
}

TEST_F(SchedulePopoverTest, WhatIsRefusedStaysOpenWithTheReasonBesideIt) {
    const auto isBelow = [&](const char* reason, const QWidget& above, const QWidget& below) {
        const auto* const label = said(reason);
        const auto top = [&](const QWidget& of) { return of.mapTo(popover, QPoint()).y(); };
        return label && top(*label) > top(above) && top(*label) < top(below);
    };
    open();
    button("Due").click();
    enter("Due day", "31.2.");
    button("Done").click();
    ASSERT_TRUE(isOpen());
    EXPECT_TRUE(isBelow("“31.2.” is not a day.", field("Due day"), button("From")));
    EXPECT_TRUE(field("Due day").hasFocus());
    enter("Due day", "today");
    button("From").click();
    enter("Due time", "10");
    enter("Start time", "10");
    field("Due time").setFocus(); // no Return
    const auto* const wrongWindow = "Choose a start time before the end time on this date.";
    EXPECT_TRUE(isBelow(wrongWindow, field("Due time"), button("Reminder")));
    EXPECT_EQ(field("Start time").accessibleDescription(), QString::fromUtf8(wrongWindow));
    button("Done").click();
    ASSERT_TRUE(isOpen());
    enter("Start time", "1");
    EXPECT_FALSE(says(wrongWindow)) << "it is about to be another time";
    enter("Start time", "10:30 am");
    EXPECT_TRUE(says(wrongWindow)) << "the time is whole";
    enter("Start time", "9:30 am");
    EXPECT_FALSE(says(wrongWindow));
    EXPECT_EQ(field("Start time").accessibleDescription(), QString());
    button("From").click();
    enter("Due time", "7"); // an hour ago
    button("Reminder").setFocus();
    button("Reminder").click();
    EXPECT_FALSE(says("Choose a reminder in the future."));
    button("At due time").click();
    EXPECT_TRUE(says("Choose a reminder in the future."));
    popover->dismiss();
    ASSERT_TRUE(isOpen()) << "a press outside loses nothing either";
    EXPECT_TRUE(isBelow("Choose a reminder in the future.", button("Reminder"), button("Done")));
    EXPECT_TRUE(entry->schedule().isEmpty());
}

TEST_F(SchedulePopoverTest, AnotherChoiceTakesThePlaceOfWhatWasRefused) {
    open();
    for (const auto* const each : {"Due", "Until", "From", "Reminder", "Custom"}) {
        button(each).click();
    }
    struct Case {
        const char* field;
        std::vector<const char*> presses;
    };
    for (const auto& [name, presses] :
         {Case{"Start time", {"From", "From"}}, Case{"Due time", {"Until", "Until"}},
          Case{"Time of the reminder", {"At due time", "Custom"}},
          Case{"Day of the reminder", {"Reminder", "Reminder", "Custom"}}}) {
        SCOPED_TRACE(name);
        enter(name, "31x");
        button("Done").setFocus();
        EXPECT_NE(field(name).problem(), QString());
        for (const auto* const each : presses) {
            button(each).click();
        }
        EXPECT_EQ(field(name).problem(), QString());
        EXPECT_NE(shown(name), QStringLiteral("31x"));
    }
}

TEST_F(SchedulePopoverTest, WhoeverChecksABoxByKeyIsInItsField) {
    open();
    const std::pair<const char*, const char*> cases[] = {
        {"Due", "Due day"}, {"Until", "Due time"}, {"From", "Start time"}};
    for (const auto& [box, into] : cases) {
        button(box).setFocus();
        QTest::keyClick(&button(box), Qt::Key_Space);
        EXPECT_TRUE(field(into).hasFocus()) << box;
        EXPECT_EQ(field(into).selectedText(), shown(into)) << "to be typed over";
    }
    button("Reminder").setFocus();
    QTest::keyClick(&button("Reminder"), Qt::Key_Space);
    EXPECT_TRUE(button("At due time").hasFocus());
    button("From").setFocus();
    QTest::keyClick(&button("From"), Qt::Key_Space);
    EXPECT_TRUE(button("From").hasFocus()) << "what is taken away has no field";
}

TEST_F(SchedulePopoverTest, AWindowFromOneDayToAnotherIsLeftAloneAndBothDaysCanBeOthers) {
    const auto evening = kNow + 14 * 3600.0;
    const model::TodoSchedule night{.dueDate = evening + 8 * 3600.0, .dueStartDate = evening};
    own.entries.updateSchedule(*entry, night, kNow);
    clock.advance(60);
    open();
    EXPECT_TRUE(field("Start day").isVisible());
    EXPECT_EQ(shown("Start day"), QStringLiteral("3/10/2025"));
    EXPECT_EQ(shown("Due day"), QStringLiteral("3/11/2025"));
    popover->dismiss();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(entry->schedule(), night);
    EXPECT_EQ(entry->updatedAt(), kNow) << "nothing was touched, nothing is stored";

    open();
    enter("Due day", "3/13");
    enter("Start day", "3/12");
    popover->dismiss();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(entry->schedule(), (model::TodoSchedule{.dueDate = *night.dueDate + 2 * 86400.0,
                                                      .dueStartDate = evening + 2 * 86400.0}));
}

TEST_F(SchedulePopoverTest, ADayThatNoFieldCanShowStaysUntilItIsChanged) {
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueOn(12000310), kNow);
    const auto noon = entry->schedule().effectiveDate(workspace.dates.formats().calendar());
    open();
    EXPECT_EQ(shown("Due day"), QStringLiteral("1/1/1600"));
    button("Until").click();
    popover->dismiss();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(entry->schedule(), (model::TodoSchedule{.dueDate = noon}));

    open();
    enter("Due time", "1pm");
    popover->dismiss();
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueAt(*noon + 3600.0));

    open();
    enter("Due day", "3/11/2025");
    popover->dismiss();
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueAt(kNow + 86400.0 + 5 * 3600.0));
}

TEST_F(SchedulePopoverTest, ADayThatTheZoneSkippedStaysUntilItIsChanged) {
    const tests::ScopedEnvironment zone("TZ", "Pacific/Apia");
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueOn(20111230), kNow);
    open();
    button("Until").click();
    button("Until").click();
    popover->dismiss();
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueOn(20111230));

    open();
    EXPECT_EQ(shown("Due day"), QStringLiteral("12/31/2011"));
    enter("Due day", "1/2/2012");
    EXPECT_TRUE(field("Due day").take());
    enter("Due day", "12/31/2011");
    popover->dismiss();
    EXPECT_EQ(entry->schedule(), model::TodoSchedule::dueOn(20111231));
}

TEST_F(SchedulePopoverTest, AClearingThatIsRefusedShowsWhatSavingWouldStore) {
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueAt(kNow + 3600.0), kNow);
    open();
    tests::StoreClient another(folder / "Primary.store", log);
    another.entries.updateSchedule(theirs(another, *entry), model::TodoSchedule::dueOn(20250314),
                                   kNow);
    button("Clear").click();
    ASSERT_TRUE(isOpen());
    EXPECT_FALSE(isOn("Due"));
}

TEST_F(SchedulePopoverTest, AStoredScheduleIsShownAndCleared) {
    own.entries.updateSchedule(*entry, model::TodoSchedule::dueAt(kNow + 3600.0), kNow);
    open();
    EXPECT_TRUE(isOn("Due"));
    EXPECT_EQ(shown("Due day"), QStringLiteral("3/10/2025"));
    EXPECT_EQ(shown("Due time"), QStringLiteral("9:00\u202fAM"));
    button("Clear").click();
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(entry->schedule().isEmpty());
}

TEST_F(SchedulePopoverTest, WhatAReminderComesToWhereNoNotificationCanBeShownIsSaid) {
    using schedule::AuthorizationStatus;
    const char* const kDisabled = "Notifications disabled on this computer";
    const char* const kInFull =
        "Notifications are disabled on this computer. Your reminder can still be saved. Enable "
        "them in your desktop's settings → Notifications → Korvex.";
    const char* const kUnavailable = "Notifications unavailable on this computer";
    reminders.set(AuthorizationStatus::notDetermined);
    open();
    button("Today").setFocus();
    EXPECT_EQ(reminders.authorizationRequests, 0) << "nobody wants a reminder";
    button("Reminder").click();
    EXPECT_EQ(reminders.authorizationRequests, 1);
    reminders.set(AuthorizationStatus::denied); // the user said no
    EXPECT_TRUE(says(kDisabled));
    EXPECT_TRUE(says(kInFull));
    QApplication::processEvents();
    EXPECT_TRUE(window.rect().contains(popover->geometry()));
    button("Reminder").click();
    EXPECT_FALSE(says(kDisabled));
    button("Reminder").click();
    EXPECT_EQ(reminders.authorizationRequests, 1) << "asked once";
    button("Done").click();
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(entry->reminderDate()) << "the reminder is saved";

    open();
    EXPECT_TRUE(says(kDisabled));
    EXPECT_FALSE(says(kInFull)) << "they know by now";
    reminders.set(AuthorizationStatus::unavailable, "There is no daemon.");
    EXPECT_TRUE(says(kUnavailable));
    EXPECT_TRUE(says("There is no daemon."));
    reminders.set({.authorization = AuthorizationStatus::notDetermined,
                   .permissionErrorMessage = "It could not be requested."});
    EXPECT_TRUE(says("It could not be requested."));
    reminders.set(AuthorizationStatus::authorized);
    EXPECT_FALSE(says(kUnavailable));
    EXPECT_FALSE(says("It could not be requested."));
}

/// Whatever is on, in the narrowest window with the largest font too: nothing hangs out of the
/// window, Tab goes as the eye does, and what has the keyboard is in sight.
TEST_F(SchedulePopoverTest, StaysInsideTheWindowAndIsWalkedThroughAsItIsRead) {
    own.entries.updateSchedule(
        *entry,
        {.dueDate = kNow + 7200.0, .dueStartDate = kNow + 3600.0, .reminderDate = kNow + 1800.0},
        kNow);
    for (const auto size : {preferences.fontSize(), app::AppPreferences::kFontSizes.back()}) {
        preferences.setFontSize(size);
        reminders.set(schedule::AuthorizationStatus::unavailable, "Nobody shows any.");
        window.resize(360, 500);
        open();
        EXPECT_TRUE(window.rect().contains(popover->geometry())) << size;
        const auto margin = theme.space(Space::large);
        auto& scrolled = *popover->findChild<QScrollArea*>();
        EXPECT_EQ(scrolled.width(), popover->width()) << "its handle runs in the margin";
        // The style of these tests would take room for it.
        scrolled.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        button("Today").setFocus();
        auto* const content = button("Today").parentWidget();
        int top = 0;
        do {
            const auto* const at = QApplication::focusWidget();
            const QRect place(at->mapTo(popover, QPoint()), at->size());
            EXPECT_TRUE(popover->rect().adjusted(margin, 0, -margin, 0).contains(place))
                << at->accessibleName().toStdString();
            if (content->isAncestorOf(at)) {
                const auto now = at->mapTo(content, QPoint()).y() + at->height() / 2;
                EXPECT_GE(now, top) << at->accessibleName().toStdString();
                top = now;
            }
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (!button("Today").hasFocus());
        popover->closeNow();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

} // namespace
} // namespace korvex::ui
