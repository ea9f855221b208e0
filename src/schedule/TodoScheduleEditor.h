#pragma once

#include "base/DateFormats.h"
#include "model/TodoSchedule.h"
#include "schedule/TodoReminderPreset.h"

#include <functional>
#include <optional>
#include <string>

namespace korvex::schedule {

/// What a person edits in the schedule popover, and its checks; no widgets. The view sets the
/// fields, calls `updatePresetReminder` after each change of the due fields or the preset, and
/// `save` or `dismiss` at the end. Main thread.
class TodoScheduleEditor {
public:
    struct Settings {
        bool completed = false;
        /// Minutes after midnight, 0 to 1439.
        int defaultReminderMinutes = kStandardReminderMinutes;
    };
    /// Stores the schedule; throws base::Error when that is refused.
    using OnSave = std::function<void(const model::TodoSchedule&)>;

    /// `formats` gives the zone and must outlive the editor. What the original does not have starts
    /// at the next full hour.
    TodoScheduleEditor(const model::TodoSchedule& original, Settings settings, base::Instant now,
                       const base::DateFormats& formats, OnSave onSave,
                       std::function<void()> onClose);

    bool hasDue = false;
    bool hasTime = false;
    bool hasWindow = false;
    /// Only its wall-clock time counts, on the date of `due`; unless it has a day of its own.
    base::Instant start;
    /// The window of the original starts on another day than it ends. Then `start` counts as it is,
    /// or opening such a window would squeeze it into one day.
    bool startHasOwnDay = false;
    bool hasReminder = false;
    base::Instant reminder;
    /// Absent while the reminder is a moment of the user's own. A stored reminder is that of the
    /// preset at whose moment it stands.
    std::optional<TodoReminderPreset> reminderPreset;

    /// Gives the due day a time: that of `due`, but today none that is over.
    void addTime(base::Instant now);
    /// Gives it a start too: the hour before the end, but today none that is over while there is
    /// another. Times that the user chose stay.
    void addWindow(base::Instant now);

    /// Reminds at the due time, or at a moment of the user's own where there is no such time any
    /// more.
    void addReminder(base::Instant now);

    base::Instant due() const { return m_due; }
    /// The user has chosen it, be it the moment that it was: a day of the original that the zone
    /// skipped is kept until then.
    void setDue(base::Instant due);

    /// Why something was not saved, in English, to be translated, and what that is about, so that
    /// it can be said there.
    enum class Concern { window, reminder, whole };
    struct Refusal {
        Concern concern;
        std::string errorMessage;
        bool operator==(const Refusal&) const = default;
    };
    /// That of the last save, or of what was judged since; absent where there is none to be shown.
    const std::optional<Refusal>& refusal() const { return m_refusal; }
    /// Finds out after a change whether the fields agree with each other.
    void judge(base::Instant now);
    /// While one still types, nothing is said of how the fields agree.
    void holdJudgement();
    bool isCompleted() const { return m_settings.completed; }

    /// The todo has another schedule now, which another program has set. While nothing was changed
    /// here the fields follow; else the next save of something else is refused once, so that nobody
    /// replaces what they have not seen. What is being typed is a change too. True when the fields
    /// are others now.
    enum class Typing { no, yes };
    bool storedChanged(const model::TodoSchedule& stored, Typing typing, base::Instant now);
    /// What the todo has now; in such a refusal "%1" stands for it.
    const model::TodoSchedule& stored() const { return m_stored; }

    /// The setting of this name is another: the reminder follows it where its preset was chosen
    /// here; where it only stands at a preset's moment, it stays.
    void setDefaultReminderMinutes(int minutes, base::Instant now);
    /// Moves the reminder to its preset, if one is chosen and there is something due. One that the
    /// original had, and of which it has reminded already, stays where the moment that it would
    /// move to is over too: a todo is put off without another thought.
    void updatePresetReminder(base::Instant now);
    /// In English, to be translated; "%1" in it stands for the time where there is one.
    struct Explanation {
        std::string text;
        std::optional<std::string> time;
        bool operator==(const Explanation&) const = default;
    };
    /// What the presets count back from, when that needs a word; absent otherwise.
    std::optional<Explanation> anchorExplanation() const;

    /// The first check that fails at `now`; absent when all pass.
    std::optional<Refusal> check(base::Instant now) const;
    /// The schedule that the fields describe; absent when a day cannot be formed.
    std::optional<model::TodoSchedule> schedule() const;

    /// Checks, builds, hands over and closes; a refusal becomes `refusal` and keeps the editor
    /// open. True when it was saved. `onClose` may destroy the editor.
    bool save(base::Instant now);
    /// Saves like that where the fields describe another schedule than at the beginning; just
    /// closes where they do not. True when it has closed.
    bool dismiss(base::Instant now);
    void close() const { m_onClose(); }

private:
    void load(const model::TodoSchedule& stored, base::Instant now);
    /// What is offered for today: the next full hour, in the last one this moment.
    base::Instant proposal(base::Instant now) const;
    bool isToday(base::Instant moment, base::Instant now) const;
    std::optional<base::Instant> anchor() const;
    std::optional<base::Instant> momentOf(TodoReminderPreset preset) const;
    std::optional<TodoReminderPreset> presetAtReminder() const;
    /// Nobody has changed here what reminds.
    bool isReminderUntouched() const;
    std::optional<base::DayNumber> dueDay() const;
    /// The start and the end of the window; absent where the clock has no such time on the due
    /// date.
    std::optional<base::Instant> windowStart() const;
    std::optional<base::Instant> windowEnd() const;

    model::TodoSchedule m_original;
    /// What the fields described at first: the original without what makes no sense.
    std::optional<model::TodoSchedule> m_initial;
    model::TodoSchedule m_stored;
    /// It is another than the user was told of.
    bool m_isUnseen = false;
    base::Instant m_due;
    /// What the user was offered and has not changed, where they still are `m_due` and `start`.
    std::optional<base::Instant> m_proposedDue;
    std::optional<base::Instant> m_proposedStart;
    /// `m_due` stands for the original's day: one that the zone skipped has no moment of its own.
    bool m_isDueOfOriginalDay = false;
    /// That of the original, which nobody has chosen here.
    std::optional<TodoReminderPreset> m_originalPreset;
    Settings m_settings;
    const base::DateFormats& m_formats;
    OnSave m_onSave;
    std::function<void()> m_onClose;
    std::optional<Refusal> m_refusal;
    bool m_saving = false;
};

} // namespace korvex::schedule
