#include "ui/todos/SchedulePopover.h"

#include "ui/kit/controls/DateFields.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/words/Text.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTimeEdit>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace korvex::ui {

namespace {

constexpr int kPanelWidth = 300;
constexpr int kMargin = 14;
constexpr int kWindowMargin = 8;
/// Stands in the list of presets for a moment of the user's own.
constexpr int kCustom = -1;

} // namespace

SchedulePopover::SchedulePopover(model::Entry& entry, const TodoServices& services,
                                 const Theme& theme, QWidget* window)
    : Popover(theme, window),
      m_services(services),
      m_formats(services.dates.shared()),
      m_editor(
          entry.schedule(),
          {.completed = entry.isCompleted(),
           .defaultReminderMinutes = services.preferences.defaultReminderMinutes()},
          services.clock.now(), *m_formats,
          [this, &entry](const model::TodoSchedule& schedule) {
              m_services.entries.updateSchedule(entry, schedule, m_services.clock.now());
          },
          [this] { closeNow(); }) {
    setAccessibleName(tr("Schedule"));
    makeFields();
    layOut();
    connectFields();
    showState();
    auto* const first = m_editor.hasDue ? static_cast<QWidget*>(m_day) : m_today;
    first->setFocus();
    setFocusProxy(first);
}

void SchedulePopover::makeFields() {
    m_hasDue = new QCheckBox(tr("Due"), this);
    m_day = new QDateEdit(this);
    m_day->setCalendarPopup(true);
    m_day->setAccessibleName(tr("Due day"));
    m_today = new QPushButton(tr("Today"), this);
    m_tomorrow = new QPushButton(tr("Tomorrow"), this);
    m_nextWeek = new QPushButton(tr("Next week"), this);
    m_hasTime = new QCheckBox(tr("Time"), this);
    m_time = new QTimeEdit(this);
    m_time->setAccessibleName(tr("Due time"));
    m_hasWindow = new QCheckBox(tr("Start"), this);
    m_startDay = new QDateEdit(this);
    m_startDay->setCalendarPopup(true);
    m_startDay->setAccessibleName(tr("Start day"));
    m_start = new QTimeEdit(this);
    m_start->setAccessibleName(tr("Start time"));
    m_hasReminder = new QCheckBox(tr("Reminder"), this);
    m_preset = new QComboBox(this);
    m_preset->setAccessibleName(tr("Reminder"));
    m_reminder = new QDateTimeEdit(this);
    m_reminder->setCalendarPopup(true);
    m_reminder->setAccessibleName(tr("Moment of the reminder"));
    const auto dayFormat = DateFields::dayFormat(*m_formats);
    const auto timeFormat = DateFields::timeFormat(*m_formats);
    for (auto* const day : {m_day, m_startDay}) {
        DateFields::setUp(*day, dayFormat);
    }
    DateFields::setUp(*m_reminder, dayFormat + QLatin1Char(' ') + timeFormat);
    for (QDateTimeEdit* const field :
         {static_cast<QDateTimeEdit*>(m_time), static_cast<QDateTimeEdit*>(m_start)}) {
        DateFields::setUp(*field, timeFormat);
    }
    m_explanation = new QLabel(this);
    m_explanation->setWordWrap(true);
    m_explanation->setFont(theme().smallFont());
    m_error = new QLabel(this);
    m_error->setWordWrap(true);
    m_error->setFont(theme().smallFont());
    Accessibility::setRole(*m_error, QAccessible::AlertMessage);
    auto errorPalette = m_error->palette();
    errorPalette.setColor(QPalette::WindowText, theme().colors().danger);
    m_error->setPalette(errorPalette);
    auto quietPalette = m_explanation->palette();
    quietPalette.setColor(QPalette::WindowText, theme().colors().secondaryText);
    m_explanation->setPalette(quietPalette);
    m_clear = new QPushButton(tr("Clear"), this);
    m_save = new QPushButton(tr("Save"), this);
    m_save->setDefault(true);
}

void SchedulePopover::layOut() {
    const auto room = window()->width() - 2 * kWindowMargin;
    const auto isNarrow = theme().scaled(kPanelWidth) > room;
    setFixedWidth(std::min(theme().scaled(kPanelWidth), room));
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    grid->setVerticalSpacing(8);
    const auto addLine = [grid](QLayout* line) {
        grid->addLayout(line, grid->rowCount(), 0, 1, 2);
    };
    auto* const days = new QBoxLayout(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    days->setSpacing(6);
    for (auto* const button : {m_today, m_tomorrow, m_nextWeek}) {
        days->addWidget(button);
    }
    auto* const start = new QWidget(this);
    auto* const startLines = new QVBoxLayout(start);
    startLines->setContentsMargins(QMargins());
    startLines->setSpacing(grid->verticalSpacing());
    startLines->addWidget(m_startDay);
    startLines->addWidget(m_start);
    addLine(days);
    for (const auto& [box, field] :
         std::initializer_list<std::pair<QWidget*, QWidget*>>{{m_hasDue, m_day},
                                                              {m_hasTime, m_time},
                                                              {m_hasWindow, start},
                                                              {m_hasReminder, m_preset},
                                                              {nullptr, m_reminder}}) {
        const auto row = grid->rowCount();
        if (box) {
            grid->addWidget(box, row, 0, 1, isNarrow ? 2 : 1);
        }
        // Where there is no room beside it, the field stands under its box.
        grid->addWidget(field, isNarrow && box ? row + 1 : row, isNarrow ? 0 : 1, 1,
                        isNarrow ? 2 : 1);
    }
    grid->addWidget(m_explanation, grid->rowCount(), 0, 1, 2);
    grid->addWidget(m_error, grid->rowCount(), 0, 1, 2);
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(m_clear);
    buttons->addStretch();
    buttons->addWidget(m_save);
    addLine(buttons);
    grid->setColumnStretch(1, 1);
    // Tab leads through them as they stand.
    QWidget* before = m_today;
    for (QWidget* const each : std::initializer_list<QWidget*>{
             m_tomorrow, m_nextWeek, m_hasDue, m_day, m_hasTime, m_time, m_hasWindow, m_startDay,
             m_start, m_hasReminder, m_preset, m_reminder, m_clear, m_save}) {
        setTabOrder(before, each);
        before = each;
    }
}

void SchedulePopover::connectFields() {
    const auto changed = [this] { takeState(); };
    for (auto* const box : {m_hasDue, m_hasTime, m_hasWindow, m_hasReminder}) {
        connect(box, &QCheckBox::toggled, this, changed);
    }
    for (QDateTimeEdit* const field :
         {static_cast<QDateTimeEdit*>(m_day), static_cast<QDateTimeEdit*>(m_time),
          static_cast<QDateTimeEdit*>(m_startDay), static_cast<QDateTimeEdit*>(m_start),
          m_reminder}) {
        connect(field, &QDateTimeEdit::dateTimeChanged, this, changed);
    }
    connect(m_preset, &QComboBox::activated, this, changed);
    connect(m_today, &QPushButton::clicked, this, [this] { setDueDay(0); });
    connect(m_tomorrow, &QPushButton::clicked, this, [this] { setDueDay(1); });
    connect(m_nextWeek, &QPushButton::clicked, this, [this] { setDueDay(7); });
    connect(m_clear, &QPushButton::clicked, this, &SchedulePopover::clear);
    connect(m_save, &QPushButton::clicked, this, &SchedulePopover::save);
}

void SchedulePopover::fillPresets() {
    m_preset->clear();
    if (m_editor.hasDue) {
        for (const auto preset : schedule::kAllReminderPresets) {
            m_preset->addItem(translated(schedule::title(preset)), static_cast<int>(preset));
        }
    }
    m_preset->addItem(tr("Custom"), kCustom);
    const auto chosen = m_editor.reminderPreset && m_editor.hasDue
                            ? static_cast<int>(*m_editor.reminderPreset)
                            : kCustom;
    m_preset->setCurrentIndex(m_preset->findData(chosen));
}

void SchedulePopover::showState() {
    const QScopedValueRollback showing(m_isShowing, true);
    const auto due = dateTimeOf(m_editor.due());
    m_hasDue->setChecked(m_editor.hasDue);
    m_day->setDate(due.date());
    m_hasTime->setChecked(m_editor.hasTime);
    m_time->setTime(due.time());
    m_hasWindow->setChecked(m_editor.hasWindow);
    const auto start = dateTimeOf(m_editor.start);
    m_startDay->setDate(start.date());
    m_start->setTime(start.time());
    m_hasReminder->setChecked(m_editor.hasReminder);
    m_reminder->setDateTime(dateTimeOf(m_editor.reminder));
    fillPresets();
    m_shown = shown();

    m_day->setEnabled(m_editor.hasDue);
    const auto hasTime = m_editor.hasDue && m_editor.hasTime;
    m_hasTime->setVisible(m_editor.hasDue);
    m_time->setVisible(m_editor.hasDue);
    m_time->setEnabled(hasTime);
    m_hasWindow->setVisible(hasTime);
    m_startDay->setVisible(hasTime && m_editor.startHasOwnDay);
    m_startDay->setEnabled(m_editor.hasWindow);
    m_start->setVisible(hasTime);
    m_start->setEnabled(m_editor.hasWindow);
    m_preset->setEnabled(m_editor.hasReminder);
    m_reminder->setVisible(m_editor.hasReminder && m_preset->currentData().toInt() == kCustom);
    const auto explanation = m_editor.anchorExplanation();
    m_explanation->setVisible(explanation && m_editor.reminderPreset);
    auto text = explanation ? translated(explanation->text) : QString();
    if (explanation && explanation->time) {
        text = text.arg(toQString(*explanation->time));
    }
    m_explanation->setText(text);
    m_clear->setEnabled(!m_editor.original().isEmpty());
    showError();
    if (isVisible()) {
        placeAgain();
    }
}

void SchedulePopover::takeState() {
    if (m_isShowing) {
        return;
    }
    changed();
    const auto reminderAppears = m_hasReminder->isChecked() && !m_editor.hasReminder;
    const auto now = shown();
    m_editor.hasDue = m_hasDue->isChecked();
    m_editor.hasTime = m_hasTime->isChecked();
    m_editor.hasWindow = m_hasWindow->isChecked();
    if (now.due != m_shown.due) {
        m_editor.setDue(edited(m_editor.due(), m_shown.due, now.due));
    }
    if (m_editor.startHasOwnDay) {
        m_editor.start = edited(m_editor.start, m_shown.start, now.start);
    } else if (now.start.time() != m_shown.start.time()) {
        m_editor.start = instantOf(now.due.date(), now.start.time(), m_editor.start);
    }
    m_editor.hasReminder = m_hasReminder->isChecked();
    m_editor.reminder = edited(m_editor.reminder, m_shown.reminder, now.reminder);
    const auto preset = m_preset->currentData().toInt();
    if (reminderAppears && m_editor.hasDue) {
        m_editor.reminderPreset = schedule::TodoReminderPreset::atDueTime;
    } else if (preset == kCustom) {
        m_editor.reminderPreset.reset();
    } else {
        m_editor.reminderPreset = static_cast<schedule::TodoReminderPreset>(preset);
    }
    m_editor.updatePresetReminder();
    showState();
}

void SchedulePopover::setDueDay(int daysFromToday) {
    changed();
    const auto today = dateTimeOf(m_services.clock.now()).date();
    m_editor.hasDue = true;
    const auto due = m_editor.due();
    m_editor.setDue(instantOf(today.addDays(daysFromToday), dateTimeOf(due).time(), due));
    m_editor.updatePresetReminder();
    showState();
}

void SchedulePopover::clear() {
    m_editor.hasDue = false;
    m_editor.hasReminder = false;
    save();
}

void SchedulePopover::save() {
    if (!m_editor.save(m_services.clock.now())) {
        showState();
    }
}

void SchedulePopover::dismiss() {
    if (!m_editor.dismiss(m_services.clock.now())) {
        showState();
    }
}

void SchedulePopover::showError() {
    const auto& message = m_editor.errorMessage();
    m_error->setVisible(message.has_value());
    m_error->setText(message ? translated(*message) : QString());
    Accessibility::say(*m_error, m_error->text());
}

void SchedulePopover::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        Popover::keyPressEvent(event);
        return;
    }
    // On a day's button Return chooses the day and is done.
    for (auto* const button : {m_today, m_tomorrow, m_nextWeek, m_clear}) {
        if (button->hasFocus()) {
            button->click();
            if (button == m_clear) {
                return;
            }
        }
    }
    save();
}

SchedulePopover::Shown SchedulePopover::shown() const {
    return {.due = QDateTime(m_day->date(), m_time->time(), Qt::UTC),
            .start = QDateTime(m_startDay->date(), m_start->time(), Qt::UTC),
            .reminder = m_reminder->dateTime()};
}

base::Instant SchedulePopover::edited(base::Instant instant, const QDateTime& before,
                                      const QDateTime& now) const {
    if (now == before) {
        return instant;
    }
    const auto former = dateTimeOf(instant);
    return instantOf(now.date() != before.date() ? now.date() : former.date(),
                     now.time() != before.time() ? now.time() : former.time(), instant);
}

base::Instant SchedulePopover::instantOf(const QDate& day, const QTime& time,
                                         base::Instant otherwise) const {
    return DateFields::instantOf(day, time, m_formats->calendar(), otherwise);
}

QDateTime SchedulePopover::dateTimeOf(base::Instant instant) const {
    return DateFields::dateTimeOf(instant, m_formats->calendar());
}

} // namespace korvex::ui
