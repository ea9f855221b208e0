#include "ui/todos/SchedulePopover.h"

#include "ui/kit/controls/FlowLayout.h"
#include "ui/kit/controls/RefusalLabel.h"
#include "ui/kit/fields/DateField.h"
#include "ui/kit/fields/TimeField.h"
#include "ui/kit/fields/WallClock.h"
#include "ui/kit/overlays/PanelScroll.h"
#include "ui/kit/words/Refusal.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/ReminderChoice.h"
#include "ui/todos/ReminderNotice.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace korvex::ui {

SchedulePopover::SchedulePopover(model::Entry& entry, const TodoServices& services,
                                 const Theme& theme, QWidget* window)
    : SchedulePopover(subjectOf(entry, services), services, theme, window) {}

SchedulePopover::SchedulePopover(const model::TodoSchedule& schedule,
                                 schedule::TodoScheduleEditor::OnSave keep,
                                 const TodoServices& services, const Theme& theme, QWidget* window)
    : SchedulePopover(Subject{.schedule = schedule, .keep = std::move(keep)}, services, theme,
                      window) {}

SchedulePopover::Subject SchedulePopover::subjectOf(const model::Entry& entry,
                                                    const TodoServices& services) {
    return {.entry = entry.id(),
            .schedule = entry.schedule(),
            .isCompleted = entry.isCompleted(),
            .keep = [services, id = entry.id()](const model::TodoSchedule& schedule) {
                auto* const todo = services.context.find<model::Entry>(id);
                if (!todo) {
                    throw model::EntryServiceError(model::EntryServiceErrorCase::entryUnavailable);
                }
                services.entries.updateSchedule(*todo, schedule, services.clock.now());
            }};
}

SchedulePopover::SchedulePopover(Subject subject, const TodoServices& services, const Theme& theme,
                                 QWidget* window)
    : Popover(theme, window),
      m_services(services),
      m_formats(services.dates.shared()),
      m_editor(subject.schedule,
               {.completed = subject.isCompleted,
                .defaultReminderMinutes = services.preferences.defaultReminderMinutes()},
               services.clock.now(), *m_formats, std::move(subject.keep), [this] { closeNow(); }),
      m_entry(subject.entry),
      m_changes(
          services.context.didChange().connect([this](const store::ChangeSet&) { follow(); })),
      m_settings(services.preferences.didChange().connect(
          [this](app::AppPreferences::Property property) { followSetting(property); })) {
    setAccessibleName(tr("Schedule"));
    makeFields();
    layOut();
    connectFields();
    showState();
    auto* const first = m_editor.hasDue ? static_cast<QWidget*>(m_day) : m_today;
    first->setFocus();
    setFocusProxy(first);
}

void SchedulePopover::follow() {
    if (!m_entry) {
        return;
    }
    const auto* const todo = m_services.context.find<model::Entry>(*m_entry);
    if (!todo || !todo->isTodo() || todo->isCompleted()) {
        closeNow();
        return;
    }
    using Typing = schedule::TodoScheduleEditor::Typing;
    if (m_editor.storedChanged(todo->schedule(), isTyping() ? Typing::yes : Typing::no,
                               m_services.clock.now())) {
        showState();
    }
    m_clear->setEnabled(!m_editor.stored().isEmpty());
    Q_EMIT followed();
}

void SchedulePopover::followSetting(app::AppPreferences::Property property) {
    if (property == app::AppPreferences::Property::defaultReminderMinutes) {
        m_editor.setDefaultReminderMinutes(m_services.preferences.defaultReminderMinutes(),
                                           m_services.clock.now());
        showState(); // what is being typed stays in its field
    }
}

bool SchedulePopover::isTyping() const {
    const auto fields = findChildren<const TypedField*>();
    return std::any_of(fields.begin(), fields.end(), [](const TypedField* each) {
        return !each->isHidden() && each->isTyping();
    });
}

/// What is about to be replaced is to be known. False when there is nothing any more.
bool SchedulePopover::hearOfOthers() {
    // Where this cannot be read, saving says so.
    static_cast<void>(refusal([this] { m_services.context.refresh(); }));
    return !isHidden();
}

void SchedulePopover::makeFields() {
    const DateField::Settings dates{.formats = m_formats, .today = [this] {
                                        return dateTimeOf(m_services.clock.now()).date();
                                    }};
    m_today = new QPushButton(tr("Today"), this);
    m_tomorrow = new QPushButton(tr("Tomorrow"), this);
    m_nextWeek = new QPushButton(tr("Next week"), this);
    m_hasDue = new QCheckBox(tr("Due"), this);
    m_day = new DateField(dates, theme(), this);
    m_day->setAccessibleName(tr("Due day"));
    m_hasStart = new QCheckBox(tr("From"), this);
    m_startFields = new QWidget(this);
    m_startDay = new DateField(dates, theme(), m_startFields);
    m_startDay->setAccessibleName(tr("Start day"));
    m_start = new TimeField(m_formats, theme(), m_startFields);
    m_start->setAccessibleName(tr("Start time"));
    m_hasTime = new QCheckBox(tr("Until"), this);
    m_time = new TimeField(m_formats, theme(), this);
    m_time->setAccessibleName(tr("Due time"));
    m_hasReminder = new QCheckBox(tr("Reminder"), this);
    const auto inside = theme().scaled(kPanelMeasure) - 2 * theme().space(Space::large);
    m_reminder = new ReminderChoice(
        dates, std::min(inside, room().width() - 2 * theme().space(Space::large)), theme(), this);
    m_explanation = new QLabel(this);
    m_explanation->setWordWrap(true);
    m_explanation->setFont(theme().smallFont());
    m_explanation->setForegroundRole(QPalette::PlaceholderText);
    m_notice = new ReminderNotice(m_services.reminders, theme(), this);
    m_dayRefusal = new RefusalLabel(theme(), this);
    m_timeRefusal = new RefusalLabel(theme(), this);
    m_reminderRefusal = new RefusalLabel(theme(), this);
    m_refusal = new RefusalLabel(theme(), this);
    m_clear = new QPushButton(tr("Clear"), this);
    m_clear->setFlat(true);
    m_clear->setEnabled(!m_editor.stored().isEmpty());
    m_done = new QPushButton(tr("Done"), this);
    m_done->setDefault(true);
}

QWidget* SchedulePopover::makeContent() {
    const auto space = theme().space(Space::medium);
    const auto flow = [](std::initializer_list<QWidget*> widgets, int apart, QWidget* parent) {
        auto* const layout = new FlowLayout(parent);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(apart);
        for (auto* const each : widgets) {
            layout->addWidget(each);
        }
        return layout;
    };
    flow({m_startDay, m_start}, space, m_startFields);
    auto* const form = new QFormLayout;
    form->setHorizontalSpacing(theme().space(Space::large));
    form->setVerticalSpacing(space);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->addRow(m_hasDue, m_day);
    form->addRow(m_dayRefusal);
    form->addRow(m_hasStart, m_startFields);
    form->addRow(m_hasTime, m_time);
    form->addRow(m_timeRefusal);
    auto* const reminder = new QVBoxLayout;
    reminder->setSpacing(space);
    for (auto* const each : std::initializer_list<QWidget*>{
             m_hasReminder, m_notice, m_reminder, m_explanation, m_reminderRefusal, m_refusal}) {
        reminder->addWidget(each);
    }
    auto* const content = new QWidget(this);
    auto* const groups = new QVBoxLayout(content);
    const auto margin = theme().space(Space::large);
    groups->setContentsMargins(margin, 0, margin, 0);
    groups->setSpacing(theme().space(Space::large));
    groups->addLayout(
        flow({m_today, m_tomorrow, m_nextWeek}, theme().space(Space::small), nullptr));
    groups->addLayout(form);
    groups->addLayout(reminder);
    return content;
}

void SchedulePopover::layOut() {
    setPanelWidth(theme().scaled(kPanelMeasure));
    auto* const column = new QVBoxLayout(this);
    const auto margin = theme().space(Space::large);
    // The scroll handle has the margin at the side to itself.
    column->setContentsMargins(0, margin, 0, margin);
    column->setSpacing(margin);
    column->addWidget(new PanelScroll(makeContent(), this), 1);
    auto* const buttons = new QHBoxLayout;
    buttons->setContentsMargins(margin, 0, margin, 0);
    buttons->addWidget(m_clear);
    buttons->addStretch();
    buttons->addWidget(m_done);
    column->addLayout(buttons);
    orderTabs();
}

void SchedulePopover::orderTabs() {
    std::vector<QWidget*> stops{m_today,   m_tomorrow, m_nextWeek,   m_hasDue,
                                m_day,     m_hasStart, m_startDay,   m_start,
                                m_hasTime, m_time,     m_hasReminder};
    const auto ofReminder = m_reminder->stops();
    stops.insert(stops.end(), ofReminder.begin(), ofReminder.end());
    stops.insert(stops.end(), {m_clear, m_done});
    for (std::size_t i = 1; i < stops.size(); ++i) {
        setTabOrder(stops[i - 1], stops[i]);
    }
}

void SchedulePopover::connectFields() {
    for (auto* const box : {m_hasDue, m_hasStart, m_hasTime, m_hasReminder}) {
        connect(box, &QCheckBox::toggled, this, [this, box](bool isOn) {
            const auto isUsers = !m_isShowing && box->hasFocus();
            takeState();
            if (isUsers && isOn) {
                fieldOf(*box).setFocus();
            }
        });
    }
    for (auto* const field :
         std::initializer_list<TypedField*>{m_day, m_startDay, m_start, m_time}) {
        connect(field, &TypedField::changed, this, &SchedulePopover::takeState);
        connect(field, &TypedField::problemChanged, this, &SchedulePopover::takeProblem);
        connect(field, &TypedField::typing, this, &SchedulePopover::holdJudgement);
    }
    connect(m_reminder, &ReminderChoice::changed, this, &SchedulePopover::takeState);
    connect(m_reminder, &ReminderChoice::problemChanged, this, &SchedulePopover::takeProblem);
    connect(m_reminder, &ReminderChoice::typing, this, &SchedulePopover::holdJudgement);
    connect(m_notice, &ReminderNotice::changed, this, &SchedulePopover::showErrors);
    connect(m_today, &QPushButton::clicked, this, [this] { setDueDay(0); });
    connect(m_tomorrow, &QPushButton::clicked, this, [this] { setDueDay(1); });
    connect(m_nextWeek, &QPushButton::clicked, this, [this] { setDueDay(7); });
    connect(m_clear, &QPushButton::clicked, this, &SchedulePopover::clear);
    connect(m_done, &QPushButton::clicked, this, &SchedulePopover::save);
}

QWidget& SchedulePopover::fieldOf(const QCheckBox& box) const {
    if (&box == m_hasDue) {
        return *m_day;
    }
    if (&box == m_hasStart) {
        return m_startDay->isHidden() ? static_cast<QWidget&>(*m_start) : *m_startDay;
    }
    return &box == m_hasTime ? static_cast<QWidget&>(*m_time) : *m_reminder;
}

void SchedulePopover::holdJudgement() {
    m_editor.holdJudgement();
    showErrors();
    m_isChangedSince = true;
}

void SchedulePopover::takeProblem() {
    m_isChangedSince = false;
    showErrors();
}

void SchedulePopover::showState() {
    const QScopedValueRollback showing(m_isShowing, true);
    const auto due = dateTimeOf(m_editor.due());
    const auto start = dateTimeOf(m_editor.start);
    const bool hasTime = m_editor.hasDue && m_editor.hasTime;
    const bool hasStart = hasTime && m_editor.hasWindow;
    m_hasDue->setChecked(m_editor.hasDue);
    m_day->setDate(due.date());
    m_hasStart->setChecked(hasStart);
    m_startDay->setDate(start.date());
    m_start->setTime(start.time());
    m_hasTime->setChecked(hasTime);
    m_time->setTime(due.time());
    m_hasReminder->setChecked(m_editor.hasReminder);
    m_reminder->show(m_editor.reminderPreset, dateTimeOf(m_editor.reminder),
                     m_editor.hasDue ? ReminderChoice::Offer::presets
                                     : ReminderChoice::Offer::momentOnly);
    m_shown = shown();

    m_day->setVisible(m_editor.hasDue);
    m_hasStart->setVisible(m_editor.hasDue);
    m_startFields->setVisible(hasStart);
    m_startDay->setVisible(m_editor.startHasOwnDay);
    m_hasTime->setVisible(m_editor.hasDue);
    m_time->setVisible(hasTime);
    m_reminder->setVisible(m_editor.hasReminder);
    m_notice->setReminder(m_editor.hasReminder ? ReminderNotice::Reminder::on
                                               : ReminderNotice::Reminder::off);
    const auto explanation = m_editor.anchorExplanation();
    m_explanation->setVisible(explanation && m_editor.reminderPreset);
    auto text = explanation ? translated(explanation->text) : QString();
    if (explanation && explanation->time) {
        text = text.arg(toQString(*explanation->time));
    }
    m_explanation->setText(text);
    showErrors();
}

void SchedulePopover::takeState() {
    if (m_isShowing) {
        return;
    }
    changed();
    const auto now = shown();
    m_editor.hasDue = m_hasDue->isChecked();
    if (m_editor.hasDue) {
        takeTimes();
    }
    if (now.due != m_shown.due) {
        m_editor.setDue(edited(m_editor.due(), m_shown.due, now.due));
    }
    if (m_editor.startHasOwnDay) {
        m_editor.start = edited(m_editor.start, m_shown.start, now.start);
    } else if (now.start.time() != m_shown.start.time()) {
        m_editor.start = instantOf(now.due.date(), now.start.time(), m_editor.start);
    }
    m_editor.reminder = edited(m_editor.reminder, m_shown.reminder, now.reminder);
    if (m_hasReminder->isChecked() && !m_editor.hasReminder) {
        m_reminder->discard();
        m_editor.addReminder(m_services.clock.now());
        m_notice->turnedOn();
    } else {
        m_editor.hasReminder = m_hasReminder->isChecked();
        m_editor.reminderPreset = m_reminder->preset();
    }
    m_editor.updatePresetReminder(m_services.clock.now());
    m_editor.judge(m_services.clock.now());
    showState();
    m_isChangedSince = true;
}

/// A start needs an end, and goes with it.
void SchedulePopover::takeTimes() {
    const auto now = m_services.clock.now();
    if (m_hasStart->isChecked() && !m_editor.hasWindow) {
        m_startDay->discard();
        m_start->discard();
        if (!m_editor.hasTime) {
            m_time->discard();
        }
        m_editor.addWindow(now);
    } else if (m_hasTime->isChecked() && !m_editor.hasTime) {
        m_time->discard();
        m_editor.addTime(now);
    } else {
        m_editor.hasTime = m_hasTime->isChecked();
        m_editor.hasWindow = m_hasStart->isChecked() && m_editor.hasTime;
    }
}

void SchedulePopover::setDueDay(int daysFromToday) {
    changed();
    const auto today = dateTimeOf(m_services.clock.now()).date();
    m_editor.hasDue = true;
    const auto due = m_editor.due();
    m_editor.setDue(instantOf(today.addDays(daysFromToday), dateTimeOf(due).time(), due));
    m_editor.updatePresetReminder(m_services.clock.now());
    m_day->discard();
    showState();
    save();
}

void SchedulePopover::clear() {
    m_editor.hasDue = false;
    m_editor.hasReminder = false;
    if (hearOfOthers() && !m_editor.save(m_services.clock.now())) {
        showState();
        refused();
    }
}

void SchedulePopover::save() {
    if (takeTyped() && hearOfOthers() && !m_editor.save(m_services.clock.now())) {
        showState();
        refused();
    }
}

void SchedulePopover::dismiss() {
    if (takeTyped() && hearOfOthers() && !m_editor.dismiss(m_services.clock.now())) {
        showState();
    }
}

bool SchedulePopover::takeTyped() {
    auto isRead = !m_reminder->isVisible() || m_reminder->take();
    for (auto* const field :
         std::initializer_list<TypedField*>{m_time, m_start, m_startDay, m_day}) {
        if (field->isVisible() && !field->take()) {
            field->setFocus(); // in the end it is the first
            isRead = false;
        }
    }
    m_isChangedSince = false; // all of it was tried
    return isRead;
}

QString SchedulePopover::reason() const {
    const auto now = m_editor.stored().accessibilityLabel(m_editor.isCompleted(),
                                                          m_services.clock.now(), *m_formats);
    return translated(m_editor.refusal()->errorMessage)
        .replace(QLatin1String("%1"), toQString(now));
}

void SchedulePopover::showErrors() {
    const auto& refused = m_editor.refusal();
    using Concern = schedule::TodoScheduleEditor::Concern;
    const auto problemOf = [](std::initializer_list<const TypedField*> fields) {
        for (const auto* const field : fields) {
            if (!field->isHidden() && !field->problem().isEmpty()) {
                return field->problem();
            }
        }
        return QString();
    };
    const auto why = [&](Concern concern) {
        return refused && refused->concern == concern ? reason() : QString();
    };
    const auto say = [&](RefusalLabel& label, const QString& problem, Concern concern) {
        label.say(problem.isEmpty() ? why(concern) : problem);
    };
    m_dayRefusal->say(problemOf({m_day}));
    say(*m_timeRefusal, problemOf({m_startDay, m_start, m_time}), Concern::window);
    say(*m_reminderRefusal, m_reminder->isHidden() ? QString() : m_reminder->problem(),
        Concern::reminder);
    say(*m_refusal, {}, Concern::whole);
    // The start is what such a refusal asks for.
    m_startDay->objectTo(why(Concern::window));
    m_start->objectTo(why(Concern::window));
    m_reminder->objectTo(why(Concern::reminder));
    if (isVisible()) {
        placeAgain();
    }
}

bool SchedulePopover::saysWhyNot() const {
    if (m_isChangedSince) {
        return false;
    }
    const auto fields = findChildren<const TypedField*>();
    return std::any_of(fields.begin(), fields.end(), [](const TypedField* each) {
        return each->isVisible() && !each->problem().isEmpty();
    });
}

void SchedulePopover::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        Popover::keyPressEvent(event);
        return;
    }
    for (auto* const button : {m_today, m_tomorrow, m_nextWeek, m_clear}) {
        if (button->hasFocus()) {
            button->click();
            return;
        }
    }
    m_reminder->pressFocused();
    save();
}

SchedulePopover::Shown SchedulePopover::shown() const {
    return {.due = QDateTime(m_day->date(), m_time->time(), Qt::UTC),
            .start = QDateTime(m_startDay->date(), m_start->time(), Qt::UTC),
            .reminder = m_reminder->moment()};
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
    return WallClock::instantOf(day, time, m_formats->calendar(), otherwise);
}

QDateTime SchedulePopover::dateTimeOf(base::Instant instant) const {
    return WallClock::dateTimeOf(instant, m_formats->calendar());
}

} // namespace korvex::ui
