#include "ui/todos/ReminderNotice.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/words/Text.h"

#include <QLabel>
#include <QVBoxLayout>

#include <initializer_list>

namespace korvex::ui {

namespace {

using schedule::AuthorizationStatus;
using schedule::NotificationTexts;

} // namespace

ReminderNotice::ReminderNotice(schedule::ReminderCenter& center, const Theme& theme,
                               QWidget* parent)
    : QWidget(parent),
      m_center(center),
      m_status(new QLabel(this)),
      m_text(new QLabel(this)),
      m_changes(center.didChange().connect([this] { follow(); })) {
    Accessibility::setRole(*m_text, QAccessible::AlertMessage);
    m_status->setFont(Theme::strong(theme.smallFont()));
    m_text->setFont(theme.smallFont());
    m_text->setForegroundRole(QPalette::PlaceholderText);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme.space(Space::hair));
    for (auto* const label : std::initializer_list<QLabel*>{m_status, m_text}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->hide();
        column->addWidget(label);
    }
    hide();
}

void ReminderNotice::setReminder(Reminder reminder) {
    m_reminder = reminder;
    follow();
}

void ReminderNotice::turnedOn() {
    m_wasTurnedOn = true;
    if (m_center.status().authorization == AuthorizationStatus::notDetermined) {
        m_center.requestAuthorization();
    }
    setReminder(Reminder::on);
}

ReminderNotice::Words ReminderNotice::words() const {
    const auto& status = m_center.status();
    if (m_reminder == Reminder::off) {
        return {};
    }
    if (status.permissionErrorMessage) {
        return {.status = {}, .text = translated(*status.permissionErrorMessage)};
    }
    if (status.authorization == AuthorizationStatus::denied) {
        return {.status = translated(NotificationTexts::kDisabled),
                .text =
                    m_wasTurnedOn ? translated(NotificationTexts::kDisabledAtReminder) : QString()};
    }
    // Without a reason nobody knows yet.
    if (status.authorization != AuthorizationStatus::unavailable || status.reason.empty()) {
        return {};
    }
    auto why = translated(status.reason);
    if (m_wasTurnedOn) {
        why += QLatin1Char(' ') + translated(NotificationTexts::kUnavailableAtReminder);
    }
    return {.status = translated(NotificationTexts::kUnavailable), .text = why};
}

void ReminderNotice::follow() {
    const auto wanted = words();
    if (wanted == m_said) {
        return;
    }
    m_said = wanted;
    m_status->setText(wanted.status);
    m_status->setVisible(!wanted.status.isEmpty());
    m_text->setText(wanted.text);
    m_text->setVisible(!wanted.text.isEmpty());
    setVisible(m_said != Words());
    if (m_wasTurnedOn && !wanted.text.isEmpty()) {
        Accessibility::say(*m_text, wanted.text);
    }
    Q_EMIT changed();
}

} // namespace korvex::ui
