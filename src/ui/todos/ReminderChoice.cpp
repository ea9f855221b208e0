#include "ui/todos/ReminderChoice.h"

#include "ui/kit/controls/ButtonGrid.h"
#include "ui/kit/controls/FlowLayout.h"
#include "ui/kit/fields/TimeField.h"
#include "ui/kit/words/Text.h"

#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <initializer_list>

namespace korvex::ui {

ReminderChoice::ReminderChoice(const DateField::Settings& dates, int room, const Theme& theme,
                               QWidget* parent)
    : QWidget(parent),
      m_moment(new QWidget(this)),
      m_day(new DateField(dates, theme, m_moment)),
      m_time(new TimeField(dates.formats, theme, m_moment)) {
    makePresets(room, theme);
    m_day->setAccessibleName(tr("Day of the reminder"));
    m_time->setAccessibleName(tr("Time of the reminder"));
    for (auto* const field : std::initializer_list<TypedField*>{m_day, m_time}) {
        connect(field, &TypedField::typing, this, &ReminderChoice::typing);
        connect(field, &TypedField::changed, this, &ReminderChoice::changed);
        connect(field, &TypedField::problemChanged, this, &ReminderChoice::problemChanged);
    }
    auto* const fields = new FlowLayout(m_moment);
    fields->setContentsMargins(0, 0, 0, 0);
    fields->setSpacing(theme.space(Space::medium));
    fields->addWidget(m_day);
    fields->addWidget(m_time);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme.space(Space::medium));
    column->addWidget(m_presets);
    column->addWidget(m_moment);
}

void ReminderChoice::makePresets(int room, const Theme& theme) {
    std::vector<QToolButton*> buttons;
    int widest = 0;
    const auto add = [&](const QString& title, std::optional<schedule::TodoReminderPreset> preset) {
        auto* const button = new QToolButton(this);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setText(title);
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        connect(button, &QToolButton::clicked, this, [this, preset] {
            if (preset) {
                discard();
            }
            choose(preset);
            Q_EMIT changed();
        });
        widest = std::max(widest, button->sizeHint().width());
        buttons.push_back(button);
    };
    for (const auto preset : schedule::kAllReminderPresets) {
        add(translated(schedule::title(preset)), preset);
    }
    add(tr("Custom"), std::nullopt);
    m_presets = new ButtonGrid(tr("Reminder"), 2 * widest < room ? 2 : 1, theme, this);
    for (auto* const button : buttons) {
        button->setMinimumWidth(std::min(widest, room));
        m_presets->add(button);
    }
}

void ReminderChoice::choose(std::optional<schedule::TodoReminderPreset> preset) {
    const auto& all = schedule::kAllReminderPresets;
    const auto place = preset ? std::find(all.begin(), all.end(), *preset) : all.end();
    m_preset = preset;
    m_presets->choose(static_cast<std::size_t>(place - all.begin()));
    m_moment->setVisible(!preset);
}

void ReminderChoice::show(std::optional<schedule::TodoReminderPreset> preset,
                          const QDateTime& moment, Offer offer) {
    m_presets->setVisible(offer == Offer::presets);
    setFocusProxy(offer == Offer::presets ? static_cast<QWidget*>(m_presets) : m_day);
    choose(offer == Offer::presets ? preset : std::nullopt);
    m_day->setDate(moment.date());
    m_time->setTime(moment.time());
}

void ReminderChoice::discard() {
    m_day->discard();
    m_time->discard();
}

QDateTime ReminderChoice::moment() const {
    return {m_day->date(), m_time->time(), Qt::UTC};
}

bool ReminderChoice::take() {
    bool isRead = true;
    if (!m_preset) {
        for (auto* const field : std::initializer_list<TypedField*>{m_time, m_day}) {
            if (!field->take()) {
                field->setFocus(); // in the end it is the first
                isRead = false;
            }
        }
    }
    return isRead;
}

QString ReminderChoice::problem() const {
    const auto& ofDay = m_day->problem();
    return m_preset ? QString() : ofDay.isEmpty() ? m_time->problem() : ofDay;
}

void ReminderChoice::objectTo(const QString& why) {
    m_day->objectTo(why);
    m_time->objectTo(why);
}

void ReminderChoice::pressFocused() {
    for (auto* const button : m_presets->buttons()) {
        if (button->hasFocus()) {
            button->click();
        }
    }
}

std::vector<QWidget*> ReminderChoice::stops() const {
    std::vector<QWidget*> result(m_presets->buttons().begin(), m_presets->buttons().end());
    result.insert(result.end(), {m_day, m_time});
    return result;
}

} // namespace korvex::ui
