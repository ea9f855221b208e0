#include "schedule/TodoScheduleEditor.h"

#include "base/Error.h"
#include "support/Moments.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <tuple>
#include <utility>
#include <vector>

namespace korvex::schedule {
namespace {

using base::Instant;
using model::TodoSchedule;
using Concern = TodoScheduleEditor::Concern;
using Refusal = TodoScheduleEditor::Refusal;

const Refusal kWindowRefusal{Concern::window,
                             "Choose a start time before the end time on this date."};
const Refusal kReminderRefusal{Concern::reminder, "Choose a reminder in the future."};

class TodoScheduleEditorTest : public ::testing::Test {
protected:
    static Instant at(std::string_view text) { return tests::moment(text, "Europe/Berlin"); }

    TodoScheduleEditor edit(const TodoSchedule& original,
                            TodoScheduleEditor::Settings settings = {}) {
        return {original,
                settings,
                m_now,
                m_formats,
                [this](const TodoSchedule& schedule) { m_saved.push_back(schedule); },
                [this] { ++m_closed; }};
    }

    Instant m_now = at("2025-01-15T08:20");
    base::DateFormats m_formats{"en_GB", tests::zone("Europe/Berlin")};
    std::vector<TodoSchedule> m_saved;
    int m_closed = 0;
};

TEST_F(TodoScheduleEditorTest, GivesBackWhatItWasGiven) {
    for (const auto& original : {
             TodoSchedule{},
             TodoSchedule{.dueDay = 20250115},
             TodoSchedule{.dueDay = 10102},
             TodoSchedule{.dueDay = 20250330, .reminderDate = at("2025-03-29T09:00")},
             TodoSchedule{.dueDate = at("2025-01-15T09:00:30.250")},
             TodoSchedule{.dueDate = at("2025-01-15T10:00"),
             .dueStartDate = at("2025-01-15T09:00")},
             // From one day to another.
             TodoSchedule{.dueDate = at("2025-01-15T10:00"),
             .dueStartDate = at("2025-01-14T22:00")},
             // The hour from two to three comes twice this day.
             TodoSchedule{.dueDate = tests::moment("2025-10-26T02:45+01:00"),
             .dueStartDate = tests::moment("2025-10-26T02:15+01:00")},
             TodoSchedule{.reminderDate = at("2020-01-01T09:00")},
         }) {
        auto editor = edit(original);
        editor.updatePresetReminder(m_now);
        EXPECT_EQ(editor.hasDue, original.hasDue());
        EXPECT_EQ(editor.schedule(), original);
        EXPECT_TRUE(editor.dismiss(m_now));
        EXPECT_TRUE(m_saved.empty()) << "nothing was touched";
        EXPECT_TRUE(editor.save(m_now));
        EXPECT_EQ(std::exchange(m_saved, {}), std::vector{original});
    }
}

TEST_F(TodoScheduleEditorTest, ADayThatTheZoneSkippedStaysUntilAnotherIsChosen) {
    m_formats = base::DateFormats("en_GB", tests::zone("Pacific/Apia"));
    auto editor = edit(TodoSchedule::dueOn(20111230));
    editor.hasReminder = true;
    EXPECT_EQ(editor.schedule(),
              (TodoSchedule{.dueDay = 20111230, .reminderDate = editor.reminder}));
    const auto shown = editor.due();
    editor.setDue(shown + 86'400);
    EXPECT_EQ(editor.schedule()->dueDay, 20120101);
    editor.setDue(shown);
    EXPECT_EQ(editor.schedule()->dueDay, 20111231) << "chosen, not left as it was";
}

TEST_F(TodoScheduleEditorTest, DismissingSavesWhatWasChangedAndNothingElse) {
    const TodoSchedule night{.dueDate = at("2025-01-16T06:00"),
                             .dueStartDate = at("2025-01-15T22:00")};
    auto editor = edit(night);
    editor.hasReminder = true;
    editor.reminder = at("2025-01-15T21:00");
    EXPECT_TRUE(editor.dismiss(m_now));
    EXPECT_EQ(m_saved.back(), (TodoSchedule{.dueDate = night.dueDate,
                                            .dueStartDate = night.dueStartDate,
                                            .reminderDate = editor.reminder}));
    editor.setDue(at("2025-01-17T06:00"));
    editor.start = at("2025-01-16T23:00");
    EXPECT_TRUE(editor.dismiss(m_now));
    EXPECT_EQ(m_saved.back().dueDate, at("2025-01-17T06:00"));
    EXPECT_EQ(m_saved.back().dueStartDate, at("2025-01-16T23:00")) << "both days can be others";
    editor.start = at("2025-01-17T07:00");
    EXPECT_FALSE(editor.dismiss(m_now));
    EXPECT_EQ(editor.refusal(), kWindowRefusal);

    auto undecided = edit({});
    undecided.hasDue = true;
    undecided.hasDue = false;
    m_saved.clear();
    EXPECT_TRUE(undecided.dismiss(m_now));
    EXPECT_TRUE(m_saved.empty());
}

TEST_F(TodoScheduleEditorTest, FollowsOtherProgramsUntilItIsTouchedAndReplacesNothingUnseen) {
    using Typing = TodoScheduleEditor::Typing;
    const auto theirs = TodoSchedule::dueOn(20250120);
    auto untouched = edit(TodoSchedule::dueOn(20250116));
    EXPECT_TRUE(untouched.storedChanged(theirs, Typing::no, m_now));
    EXPECT_EQ(untouched.schedule(), theirs);
    EXPECT_TRUE(untouched.dismiss(m_now));
    EXPECT_TRUE(m_saved.empty());

    for (const auto typing : {Typing::no, Typing::yes}) {
        auto editor = edit(TodoSchedule::dueOn(20250116));
        const auto choose = [&editor] { editor.setDue(at("2025-01-18T12:00")); };
        if (typing == Typing::no) {
            choose();
        }
        EXPECT_FALSE(editor.storedChanged(theirs, typing, m_now));
        choose(); // what was being typed is read before it is saved
        EXPECT_FALSE(editor.save(m_now));
        EXPECT_EQ(editor.refusal()->errorMessage.find("Another program changed this schedule"), 0U);
        EXPECT_EQ(editor.refusal()->concern, Concern::whole);
        EXPECT_EQ(editor.stored(), theirs);
        EXPECT_FALSE(editor.storedChanged(theirs, Typing::no, m_now))
            << "something else was changed";
        EXPECT_TRUE(editor.save(m_now)) << "once";
        EXPECT_EQ(m_saved.back(), TodoSchedule::dueOn(20250118));
    }
    auto same = edit({});
    same.hasDue = true;
    same.setDue(at("2025-01-20T12:00"));
    same.storedChanged(theirs, Typing::no, m_now);
    EXPECT_TRUE(same.save(m_now)) << "both want the same";

    auto undecided = edit({});
    undecided.hasReminder = true;
    undecided.reminder = m_now - 1;
    EXPECT_FALSE(undecided.save(m_now));
    EXPECT_FALSE(undecided.storedChanged(theirs, Typing::no, m_now));
    undecided.hasReminder = false;
    EXPECT_TRUE(undecided.storedChanged(TodoSchedule::dueOn(20250121), Typing::no, m_now));
    EXPECT_EQ(undecided.refusal(), std::nullopt) << "not of what is shown now";
    undecided.hasDue = false;
    EXPECT_TRUE(undecided.save(m_now)) << "what it replaces was shown";

    auto unharmed = edit({});
    unharmed.hasDue = true;
    unharmed.storedChanged(theirs, Typing::no, m_now);
    unharmed.storedChanged({}, Typing::no, m_now);
    EXPECT_TRUE(unharmed.save(m_now)) << "it was taken back";
}

TEST_F(TodoScheduleEditorTest, ProposesTheNextFullHour) {
    const auto editor = edit({});
    EXPECT_EQ(editor.due(), at("2025-01-15T09:00"));
    EXPECT_EQ(editor.start, at("2025-01-15T08:00"));
    EXPECT_EQ(editor.reminder, at("2025-01-15T09:00"));

    // In the day's last hour, today is still today, but a reminder must lie ahead.
    m_now = at("2025-01-15T23:10");
    const auto late = edit({});
    EXPECT_EQ(m_formats.calendar().day(late.due()), 20250115);
    EXPECT_EQ(late.reminder, at("2025-01-16T00:00"));
}

TEST_F(TodoScheduleEditorTest, ProposesNoTimeThatIsOverWhileTodayHasAnother) {
    const auto today = TodoSchedule::dueOn(20250115);
    const struct {
        const char* now;
        TodoSchedule stored;
        const char* start;
        const char* end;
    } cases[] = {
        {"2025-01-15T16:20", {}, "2025-01-15T17:00", "2025-01-15T18:00"},
        {"2025-01-15T16:20", today, "2025-01-15T17:00", "2025-01-15T18:00"},
        {"2025-01-15T16:20", TodoSchedule::dueOn(20250116), "2025-01-16T11:00", "2025-01-16T12:00"},
        {"2025-01-15T16:20", TodoSchedule::dueAt(at("2025-01-15T17:10")), "2025-01-15T17:00",
         "2025-01-15T17:10"},
        {"2025-01-15T16:20", TodoSchedule::dueAt(at("2025-01-15T17:00")), "2025-01-15T16:00",
         "2025-01-15T17:00"},
        {"2025-01-15T22:10", {}, "2025-01-15T23:00", "2025-01-15T23:59"},
        {"2025-01-15T23:10", today, "2025-01-15T22:10", "2025-01-15T23:10"},
    };
    for (const auto& each : cases) {
        m_now = at(each.now);
        auto editor = edit(each.stored);
        editor.hasDue = true;
        editor.addWindow(m_now);
        const TodoSchedule window{.dueDate = at(each.end), .dueStartDate = at(each.start)};
        EXPECT_EQ(editor.schedule(), window) << each.now << " to " << each.end;
        editor.hasWindow = false;
        editor.start = at(each.start) - 60;
        editor.addWindow(m_now);
        EXPECT_EQ(editor.start, at(each.start) - 60) << "what the user chose stays";
    }
    m_now = at("2025-01-15T16:20");
    for (const auto& [stored, preset, moment] :
         {std::tuple(today, std::optional<TodoReminderPreset>(), at("2025-01-15T17:00")),
          std::tuple(TodoSchedule::dueOn(20250116), std::optional(TodoReminderPreset::atDueTime),
                     at("2025-01-16T09:00"))}) {
        auto editor = edit(stored);
        editor.addReminder(m_now);
        EXPECT_EQ(editor.reminderPreset, preset);
        EXPECT_EQ(editor.reminder, moment);
    }
}

TEST_F(TodoScheduleEditorTest, LeavesOutWhatMakesNoSense) {
    const Instant never{std::numeric_limits<double>::quiet_NaN()};
    const auto editor = edit({.dueDate = never, .dueStartDate = never, .reminderDate = never});
    EXPECT_FALSE(editor.hasDue);
    EXPECT_FALSE(editor.hasReminder);
    EXPECT_EQ(editor.schedule(), TodoSchedule{});
    EXPECT_FALSE(edit({.dueDay = 20250229}).hasDue);
}

TEST_F(TodoScheduleEditorTest, BuildsTheScheduleThatItsFieldsDescribe) {
    auto editor = edit({});
    editor.setDue(at("2025-03-10T10:00"));
    editor.start = at("2001-09-09T09:30");
    editor.hasTime = true;
    editor.hasWindow = true;
    EXPECT_EQ(editor.schedule(), TodoSchedule{}) << "nothing is due yet";
    editor.hasDue = true;
    EXPECT_EQ(editor.schedule(), (TodoSchedule{.dueDate = at("2025-03-10T10:00"),
                                               .dueStartDate = at("2025-03-10T09:30")}));
    editor.hasWindow = false;
    EXPECT_EQ(editor.schedule(), TodoSchedule::dueAt(at("2025-03-10T10:00")));
    editor.hasTime = false;
    EXPECT_EQ(editor.schedule(), TodoSchedule::dueOn(20250310));
    editor.setDue(Instant::distantFuture() + 1);
    EXPECT_EQ(editor.schedule(), std::nullopt);
}

TEST_F(TodoScheduleEditorTest, MovesTheReminderWithItsPreset) {
    struct Case {
        const char* what;
        bool hasTime;
        bool hasWindow;
        TodoReminderPreset preset;
        int defaultMinutes;
        const char* reminder;
    };
    using enum TodoReminderPreset;
    for (const auto& each : {
             Case{"due time", true, false, oneHour, 540, "2025-03-10T13:00"},
             Case{"the end of a window", true, true, oneHour, 540, "2025-03-10T13:00"},
             Case{"all day", false, false, oneDay, 540, "2025-03-09T09:00"},
             Case{"all day, from midnight", false, false, fifteenMinutes, 0, "2025-03-09T23:45"},
             Case{"all day, whatever the window", false, true, atDueTime, 1439, "2025-03-10T23:59"},
         }) {
        auto editor = edit({}, {.defaultReminderMinutes = each.defaultMinutes});
        editor.hasDue = true;
        editor.hasTime = each.hasTime;
        editor.hasWindow = each.hasWindow;
        editor.setDue(at("2025-03-10T14:00"));
        editor.start = at("2025-03-10T12:00");
        editor.hasReminder = true;
        editor.reminderPreset = each.preset;
        editor.updatePresetReminder(m_now);
        EXPECT_EQ(editor.reminder, at(each.reminder)) << each.what;
    }
}

TEST_F(TodoScheduleEditorTest, LeavesTheReminderAloneWithoutPresetOrDueMoment) {
    for (const auto field : {&TodoScheduleEditor::hasDue, &TodoScheduleEditor::hasReminder}) {
        auto editor = edit({.dueDay = 20250310, .reminderDate = at("2025-03-10T12:34")});
        editor.reminderPreset = TodoReminderPreset::oneDay;
        editor.*field = false;
        editor.updatePresetReminder(m_now);
        EXPECT_EQ(editor.reminder, at("2025-03-10T12:34"));
    }
    auto editor = edit({.dueDay = 20250310, .reminderDate = at("2025-03-10T12:34")});
    editor.updatePresetReminder(m_now);
    EXPECT_EQ(editor.reminder, at("2025-03-10T12:34"));
}

TEST_F(TodoScheduleEditorTest, KnowsAPresetAgainByItsMomentAndMovesItWithTheDueTime) {
    using enum TodoReminderPreset;
    struct Case {
        TodoSchedule stored;
        std::optional<TodoReminderPreset> preset;
    };
    const auto due = at("2025-03-10T14:00");
    for (const auto& each : {
             Case{{.dueDate = due, .reminderDate = due}, atDueTime},
             Case{{.dueDate = due, .reminderDate = due - 3600}, oneHour},
             Case{{.dueDate = due, .reminderDate = due - 3601}, std::nullopt},
             Case{{.dueDate = due,
             .dueStartDate = due - 7200,
             .reminderDate = at("2025-03-09T14:00")},
                  oneDay},
             // The clock is set forward in the night before.
             Case{{.dueDay = 20250330, .reminderDate = at("2025-03-29T09:00")}, oneDay},
             Case{{.dueDay = 20250330, .reminderDate = at("2025-03-29T10:00")}, std::nullopt},
             Case{{.reminderDate = due}, std::nullopt},
         }) {
        auto editor = edit(each.stored);
        EXPECT_EQ(editor.reminderPreset, each.preset);
        EXPECT_EQ(editor.schedule(), each.stored);
    }
    auto editor = edit({.dueDate = due, .reminderDate = due - 3600});
    editor.setDue(due + 86'400);
    editor.updatePresetReminder(m_now);
    EXPECT_EQ(editor.reminder, due + 86'400 - 3600);

    // Who sets another default time changes no todo that is just being looked at.
    auto looked = edit({.dueDay = 20250310, .reminderDate = at("2025-03-10T09:00")});
    EXPECT_EQ(looked.reminderPreset, atDueTime);
    looked.setDefaultReminderMinutes(630, m_now);
    EXPECT_EQ(looked.reminder, at("2025-03-10T09:00"));
    EXPECT_EQ(looked.reminderPreset, std::nullopt) << "it is none of these times any more";
    auto changed = edit({.dueDay = 20250310, .reminderDate = at("2025-03-10T09:00")});
    changed.hasTime = true;
    changed.setDefaultReminderMinutes(630, m_now);
    EXPECT_EQ(changed.reminder, at("2025-03-10T09:00"));

    // Yesterday's todo is put off until today by one click, though nine o'clock is over by now.
    m_now = at("2025-01-15T10:00");
    const auto was = at("2025-01-14T09:00");
    auto overdue = edit({.dueDay = 20250114, .reminderDate = was});
    overdue.setDue(at("2025-01-15T12:00"));
    overdue.updatePresetReminder(m_now);
    EXPECT_TRUE(overdue.save(m_now));
    EXPECT_EQ(m_saved.back(), (TodoSchedule{.dueDay = 20250115, .reminderDate = was}));
    auto later = edit({.dueDay = 20250114, .reminderDate = was});
    later.setDue(at("2025-01-16T12:00"));
    later.updatePresetReminder(m_now);
    EXPECT_EQ(later.reminder, at("2025-01-16T09:00")) << "of this day it reminds";
}

TEST_F(TodoScheduleEditorTest, SaysWhatPresetsCountBackFrom) {
    auto editor = edit({.dueDate = at("2025-01-15T10:00"),
                        .dueStartDate = at("2025-01-15T09:00"),
                        .reminderDate = at("2025-01-15T08:00")},
                       {.defaultReminderMinutes = 450});
    EXPECT_EQ(editor.anchorExplanation(),
              (TodoScheduleEditor::Explanation{
                  "The end time is the deadline. Reminder presets count back from the end time.",
                  std::nullopt}));
    editor.hasWindow = false;
    EXPECT_EQ(editor.anchorExplanation(), std::nullopt);
    editor.hasTime = false;
    EXPECT_EQ(editor.anchorExplanation(),
              (TodoScheduleEditor::Explanation{"Without a due time, presets count back from %1.",
                                               "07:30"}));
    editor.hasReminder = false;
    EXPECT_EQ(editor.anchorExplanation(), std::nullopt);
}

TEST_F(TodoScheduleEditorTest, ChecksTheWindowOnItsDate) {
    struct Case {
        const char* what;
        const char* start;
        const char* due;
        std::optional<Refusal> refusal;
    };
    for (const auto& each : {
             Case{"before", "2025-01-20T09:59", "2025-01-15T10:00", std::nullopt},
             Case{"equal", "2025-01-15T10:00", "2025-01-15T10:00", kWindowRefusal},
             Case{"after", "2025-01-14T11:00", "2025-01-15T10:00", kWindowRefusal},
             Case{"a start that the clocks skip", "2025-01-15T02:30", "2025-03-30T10:00",
                  kWindowRefusal},
             Case{"from midnight", "2025-01-15T00:00", "2025-03-30T00:01", std::nullopt},
         }) {
        auto editor = edit({});
        editor.hasDue = true;
        editor.hasTime = true;
        editor.hasWindow = true;
        editor.start = at(each.start);
        editor.setDue(at(each.due));
        EXPECT_EQ(editor.check(m_now), each.refusal) << each.what;
        // A window that is switched off is not looked at.
        editor.hasWindow = false;
        EXPECT_EQ(editor.check(m_now), std::nullopt) << each.what;
    }
}

TEST_F(TodoScheduleEditorTest, WantsAReminderInTheFutureUnlessItIsTheOldOne) {
    const auto old = at("2025-01-15T07:00");
    auto editor = edit({.dueDay = 20250115, .reminderDate = old});
    EXPECT_EQ(editor.check(m_now), std::nullopt);
    editor.reminder = old + 60;
    EXPECT_EQ(editor.check(m_now), kReminderRefusal);
    editor.reminder = m_now;
    EXPECT_EQ(editor.check(m_now), std::nullopt);
    editor.reminder = old + 60;
    editor.hasReminder = false;
    EXPECT_EQ(editor.check(m_now), std::nullopt);

    // The window is checked first.
    editor.hasReminder = true;
    editor.hasTime = true;
    editor.hasWindow = true;
    editor.start = editor.due();
    EXPECT_EQ(editor.check(m_now), kWindowRefusal);
}

TEST_F(TodoScheduleEditorTest, StaysOpenWithTheReasonUntilItIsSaved) {
    std::function<void()> fail = [] { throw base::Error("test", 1, "The disk is full."); };
    TodoScheduleEditor* open = nullptr;
    TodoScheduleEditor editor(
        {}, {}, m_now, m_formats,
        [&](const TodoSchedule& schedule) {
            EXPECT_FALSE(open->save(m_now)) << "a second press while the first is saving";
            fail();
            m_saved.push_back(schedule);
        },
        [&] { ++m_closed; });
    open = &editor;
    EXPECT_FALSE(editor.save(m_now));
    EXPECT_EQ(editor.refusal(), (Refusal{Concern::whole, "The disk is full."}));

    editor.hasDue = true;
    editor.setDue(Instant::distantFuture() + 1);
    EXPECT_FALSE(editor.save(m_now));
    EXPECT_EQ(editor.refusal()->errorMessage, "Choose a valid todo schedule.");
    editor.setDue(m_now);
    editor.hasReminder = true;
    editor.reminder = m_now - 1;
    EXPECT_FALSE(editor.save(m_now));
    EXPECT_EQ(editor.refusal(), kReminderRefusal);
    editor.hasReminder = false;

    fail = [] { throw std::bad_alloc(); };
    EXPECT_THROW(editor.save(m_now), std::bad_alloc);
    EXPECT_TRUE(m_saved.empty());
    EXPECT_EQ(m_closed, 0);
    fail = [] {};
    EXPECT_TRUE(editor.save(m_now));
    EXPECT_EQ(editor.refusal(), std::nullopt);
    EXPECT_EQ(m_saved, std::vector{TodoSchedule::dueOn(20250115)});
    EXPECT_EQ(m_closed, 1);
}

TEST_F(TodoScheduleEditorTest, MayEndWhenItCloses) {
    std::unique_ptr<TodoScheduleEditor> editor;
    editor = std::make_unique<TodoScheduleEditor>(
        TodoSchedule{}, TodoScheduleEditor::Settings{}, m_now, m_formats,
        [](const TodoSchedule&) {}, [&] { editor.reset(); });
    EXPECT_TRUE(editor->save(m_now));
    EXPECT_EQ(editor, nullptr);
}

} // namespace
} // namespace korvex::schedule
