#include "schedule/TodoScheduleEditor.h"

#include "base/Error.h"
#include "model/ServiceErrors.h"

#include <algorithm>
#include <utility>

namespace korvex::schedule {

namespace {

constexpr const char* kWindowRefusal = "Choose a start time before the end time on this date.";
constexpr const char* kReminderRefusal = "Choose a reminder in the future.";
constexpr const char* kChangedRefusal =
    "Another program changed this schedule. It is now: %1. Choose Done to replace that.";
constexpr const char* kClearedRefusal =
    "Another program cleared this schedule. Choose Done to set what is chosen here.";
constexpr const char* kWindowAnchor =
    "The end time is the deadline. Reminder presets count back from the end time.";
constexpr const char* kAllDayAnchor = "Without a due time, presets count back from %1.";

constexpr double kHour = 3600;
constexpr double kMinute = 60;

base::Instant nextFullHour(base::Instant now, const base::Calendar& calendar) {
    auto fields = calendar.components(now);
    if (!fields) {
        return now + kHour;
    }
    fields->minute = 0;
    fields->second = 0;
    // Where an hour occurs twice, its first beginning may lie more than an hour back.
    const auto hour = calendar.instant(*fields);
    return hour && *hour + kHour > now ? *hour + kHour : now + kHour;
}

/// An hour before the end, but on the same day.
base::Instant proposedStart(base::Instant due, const base::Calendar& calendar) {
    const auto midnight = calendar.startOfDay(due);
    return midnight ? std::max(due - kHour, *midnight) : due - kHour;
}

/// Raises the flag for a scope, whatever ends it.
class Saving {
public:
    explicit Saving(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Saving() { m_flag = false; }
    Saving(const Saving&) = delete;
    Saving& operator=(const Saving&) = delete;

private:
    bool& m_flag;
};

bool isPresent(const std::optional<base::Instant>& instant) {
    return instant && instant->isValid();
}

} // namespace

TodoScheduleEditor::TodoScheduleEditor(const model::TodoSchedule& original, Settings settings,
                                       base::Instant now, const base::DateFormats& formats,
                                       OnSave onSave, std::function<void()> onClose)
    : m_settings(settings),
      m_formats(formats),
      m_onSave(std::move(onSave)),
      m_onClose(std::move(onClose)) {
    load(original, now);
}

void TodoScheduleEditor::load(const model::TodoSchedule& stored, base::Instant now) {
    m_original = stored;
    m_stored = stored;
    m_isUnseen = false;
    m_refusal.reset();
    const auto& calendar = m_formats.calendar();
    const auto effective = m_original.effectiveDate(calendar);

    hasTime = !m_original.dueDay && isPresent(m_original.dueDate);
    hasDue = hasTime || (m_original.dueDay && effective);
    m_due = hasDue ? *effective : proposal(now);
    m_proposedDue = hasDue ? std::nullopt : std::optional(m_due);
    m_isDueOfOriginalDay = hasDue && !hasTime;
    hasWindow = hasTime && isPresent(m_original.dueStartDate);
    start = hasWindow ? *m_original.dueStartDate : proposedStart(m_due, calendar);
    m_proposedStart = hasWindow ? std::nullopt : std::optional(start);
    startHasOwnDay = hasWindow && calendar.day(start) != calendar.day(m_due);
    hasReminder = isPresent(m_original.reminderDate);
    reminder = hasReminder ? *m_original.reminderDate : nextFullHour(now, calendar);
    reminderPreset = presetAtReminder();
    m_originalPreset = reminderPreset;
    m_initial = schedule();
}

bool TodoScheduleEditor::storedChanged(const model::TodoSchedule& stored, Typing typing,
                                       base::Instant now) {
    if (m_saving || stored == m_stored) {
        return false;
    }
    if (typing == Typing::no && schedule() == m_initial) {
        load(stored, now);
        return true;
    }
    m_stored = stored;
    m_isUnseen = stored != m_original; // nobody misses a change that was taken back
    return false;
}

void TodoScheduleEditor::setDefaultReminderMinutes(int minutes, base::Instant now) {
    m_settings.defaultReminderMinutes = minutes;
    if (isReminderUntouched()) {
        reminderPreset = presetAtReminder();
        m_originalPreset = reminderPreset;
    } else {
        updatePresetReminder(now);
    }
}

bool TodoScheduleEditor::isToday(base::Instant moment, base::Instant now) const {
    return m_formats.calendar().day(moment) == m_formats.calendar().day(now);
}

base::Instant TodoScheduleEditor::proposal(base::Instant now) const {
    const auto nextHour = nextFullHour(now, m_formats.calendar());
    return isToday(nextHour, now) ? nextHour : now;
}

void TodoScheduleEditor::addTime(base::Instant now) {
    hasTime = true;
    if (m_due < now && isToday(m_due, now)) {
        setDue(proposal(now));
        m_proposedDue = m_due;
    }
}

void TodoScheduleEditor::addWindow(base::Instant now) {
    if (!hasTime) {
        addTime(now);
    }
    hasWindow = true;
    if (start != m_proposedStart) {
        return;
    }
    const auto& calendar = m_formats.calendar();
    start = proposedStart(m_due, calendar);
    const auto next = nextFullHour(now, calendar);
    const auto isMovable = m_due == m_proposedDue;
    if (start < now && isToday(m_due, now) && isToday(next, now) && (next < m_due || isMovable)) {
        start = next;
        if (isMovable) {
            const auto end = next + kHour;
            const auto midnight = calendar.startOfDay(end);
            setDue(isToday(end, now) || !midnight ? end : *midnight - kMinute);
            m_proposedDue = m_due;
        }
    }
    m_proposedStart = start;
}

void TodoScheduleEditor::addReminder(base::Instant now) {
    hasReminder = true;
    reminderPreset = hasDue ? std::optional(TodoReminderPreset::atDueTime) : std::nullopt;
    const auto own = reminder;
    updatePresetReminder(now);
    if (reminderPreset && reminder < now) {
        reminderPreset.reset();
        reminder = own;
    }
}

void TodoScheduleEditor::setDue(base::Instant due) {
    m_due = due;
    m_isDueOfOriginalDay = false;
}

std::optional<base::DayNumber> TodoScheduleEditor::dueDay() const {
    return m_isDueOfOriginalDay ? m_original.dueDay : m_formats.calendar().day(m_due);
}

std::optional<base::Instant> TodoScheduleEditor::anchor() const {
    const auto& calendar = m_formats.calendar();
    if (hasTime) {
        return hasWindow ? windowEnd() : m_due;
    }
    const auto day = dueDay();
    return day ? allDayAnchor(*day, m_settings.defaultReminderMinutes, calendar) : std::nullopt;
}

std::optional<base::Instant> TodoScheduleEditor::momentOf(TodoReminderPreset preset) const {
    const auto from = anchor();
    return from ? reminderDate(preset, *from, m_formats.calendar()) : std::nullopt;
}

bool TodoScheduleEditor::isReminderUntouched() const {
    return reminder == m_original.reminderDate && reminderPreset == m_originalPreset;
}

std::optional<TodoReminderPreset> TodoScheduleEditor::presetAtReminder() const {
    if (!hasReminder || !hasDue) {
        return std::nullopt;
    }
    const auto* const found =
        std::find_if(kAllReminderPresets.begin(), kAllReminderPresets.end(),
                     [this](TodoReminderPreset each) { return momentOf(each) == reminder; });
    return found == kAllReminderPresets.end() ? std::nullopt : std::optional(*found);
}

void TodoScheduleEditor::updatePresetReminder(base::Instant now) {
    if (!hasReminder || !reminderPreset || !hasDue) {
        return;
    }
    const auto moved = momentOf(*reminderPreset);
    if (isReminderUntouched() && reminder < now && moved && *moved < now) {
        reminderPreset = presetAtReminder();
    } else {
        reminder = moved.value_or(reminder);
    }
}

std::optional<TodoScheduleEditor::Explanation> TodoScheduleEditor::anchorExplanation() const {
    if (!hasReminder || !hasDue) {
        return std::nullopt;
    }
    if (hasTime) {
        return hasWindow ? std::optional(Explanation{.text = kWindowAnchor, .time = std::nullopt})
                         : std::nullopt;
    }
    const auto from = anchor();
    return from ? std::optional(
                      Explanation{.text = kAllDayAnchor, .time = m_formats.shortTime(*from)})
                : std::nullopt;
}

std::optional<base::Instant> TodoScheduleEditor::windowStart() const {
    const auto& calendar = m_formats.calendar();
    if (startHasOwnDay) {
        return start.isValid() ? std::optional(start) : std::nullopt;
    }
    const auto date = calendar.components(m_due);
    auto fields = calendar.components(start);
    if (!date || !fields) {
        return std::nullopt;
    }
    fields->year = date->year;
    fields->month = date->month;
    fields->day = date->day;
    // A start that lies on the date already is taken as it is: its hour may occur twice that day.
    if (calendar.components(start) == fields) {
        return start;
    }
    const auto moment = calendar.instant(*fields);
    return moment && calendar.components(*moment) == fields ? moment : std::nullopt;
}

std::optional<base::Instant> TodoScheduleEditor::windowEnd() const {
    return m_due.isValid() ? std::optional(m_due) : std::nullopt;
}

std::optional<TodoScheduleEditor::Refusal> TodoScheduleEditor::check(base::Instant now) const {
    if (hasDue && hasTime && hasWindow) {
        const auto windowFrom = windowStart();
        const auto windowTo = windowEnd();
        if (!windowFrom || !windowTo || *windowFrom >= *windowTo) {
            return Refusal{Concern::window, kWindowRefusal};
        }
    }
    // Nobody must move an old reminder to change something else.
    if (hasReminder && reminder < now && m_original.reminderDate != reminder) {
        return Refusal{Concern::reminder, kReminderRefusal};
    }
    return std::nullopt;
}

void TodoScheduleEditor::judge(base::Instant now) {
    if (auto refused = check(now)) {
        m_refusal = std::move(refused);
    } else {
        holdJudgement();
    }
}

void TodoScheduleEditor::holdJudgement() {
    if (m_refusal && m_refusal->concern != Concern::whole) {
        m_refusal.reset();
    }
}

std::optional<model::TodoSchedule> TodoScheduleEditor::schedule() const {
    model::TodoSchedule result;
    if (hasDue && !hasTime) {
        result.dueDay = dueDay();
        if (!result.dueDay) {
            return std::nullopt;
        }
    } else if (hasDue) {
        result.dueDate = m_due;
        if (hasWindow) {
            result.dueDate = windowEnd();
            result.dueStartDate = windowStart();
            if (!result.dueDate || !result.dueStartDate) {
                return std::nullopt;
            }
        }
    }
    if (hasReminder) {
        result.reminderDate = reminder;
    }
    return result;
}

bool TodoScheduleEditor::save(base::Instant now) {
    if (m_saving) {
        return false;
    }
    m_refusal = check(now);
    if (m_refusal) {
        return false;
    }
    const auto described = schedule();
    if (std::exchange(m_isUnseen, false) && described != m_stored) {
        m_refusal = {Concern::whole, m_stored.isEmpty() ? kClearedRefusal : kChangedRefusal};
        return false;
    }
    try {
        const Saving saving(m_saving);
        if (!described) {
            throw model::EntryServiceError(model::EntryServiceErrorCase::invalidSchedule);
        }
        m_onSave(*described);
    } catch (const base::Error& error) {
        m_refusal = {Concern::whole, error.errorDescription()};
        return false;
    }
    close();
    return true;
}

bool TodoScheduleEditor::dismiss(base::Instant now) {
    if (schedule() != m_initial) {
        return save(now);
    }
    close();
    return true;
}

} // namespace korvex::schedule
