#include "ui/settings/NotificationsPane.h"

#include "app/AgentStart.h"
#include "ui/kit/words/Text.h"

#include <QPushButton>
#include <QShowEvent>

namespace korvex::ui {

namespace {

using schedule::AuthorizationStatus;
using schedule::NotificationTexts;

} // namespace

NotificationsPane::NotificationsPane(const Workspace& workspace, const Theme& theme)
    : SettingsPane(tr("Notifications"), theme),
      m_center(workspace.reminders),
      m_isUsersOwn(workspace.isUsersOwn),
      m_canStartAtLogin(workspace.quickEntry),
      m_desktopSettings(DesktopNotificationSettings::current()),
      m_status(settingsValue(theme)),
      m_button(new QPushButton(translated(NotificationTexts::kEnable))),
      m_changes(m_center.didChange().connect([this] { followSoon(); })) {
    auto& group = addGroup({}, translated(NotificationTexts::kPurpose));
    m_statusRow = &group.addRow(tr("Notifications"), m_status);
    m_buttonRow = &group.addRow({}, m_button);
    connect(m_button, &QPushButton::clicked, this, &NotificationsPane::perform);
}

void NotificationsPane::showEvent(QShowEvent* event) {
    SettingsPane::showEvent(event);
    if (!event->spontaneous()) {
        // What the desktop says may have changed since, as may what is planned.
        m_center.requestReconcile();
    }
}

NotificationsPane::Remedy NotificationsPane::remedy() const {
    switch (m_center.status().authorization) {
    case AuthorizationStatus::notDetermined:
        return Remedy::ask;
    case AuthorizationStatus::denied:
        return m_desktopSettings ? Remedy::openDesktopSettings : Remedy::none;
    case AuthorizationStatus::unavailable:
        // Without a reason nobody knows yet, and of another store nobody ever reminds.
        return m_center.status().reason.empty() || !m_isUsersOwn ? Remedy::none : Remedy::lookAgain;
    case AuthorizationStatus::authorized:
    case AuthorizationStatus::provisional:
    case AuthorizationStatus::ephemeral:
        break;
    }
    return Remedy::none;
}

void NotificationsPane::perform() {
    m_buttonRow->setRefusal({});
    if (remedy() == Remedy::openDesktopSettings) {
        if (!m_desktopSettings->open()) {
            m_buttonRow->setRefusal(tr("The settings of the desktop could not be opened."));
        }
        return;
    }
    m_center.requestAuthorization();
    m_center.requestReconcile();
}

QStringList NotificationsPane::limits() const {
    const auto& status = m_center.status();
    if (status.authorization == AuthorizationStatus::unavailable) {
        return status.reason.empty() ? QStringList() : QStringList(translated(status.reason));
    }
    QStringList lines;
    if (status.isQuieted) {
        lines.append(tr("You are not to be disturbed now, by your desktop's settings."));
    }
    if (!status.canAct) {
        lines.append(tr("What shows notifications here has no buttons: todos are completed in "
                        "Korvex."));
    }
    return lines;
}

QString NotificationsPane::note() const {
    if (m_center.status().authorization == AuthorizationStatus::denied) {
        return translated(NotificationTexts::kDisabledInSettings);
    }
    auto lines = limits();
    if (!lines.isEmpty() && m_isUsersOwn) { // of no other store is it kept what was seen
        lines.append(tr("Reminders that come due are listed at the top of Upcoming until you "
                        "have seen them."));
    }
    if (m_isUsersOwn && m_canStartAtLogin && !app::startsAtLogin()) {
        lines.append(tr("After you log in, reminders wait until Korvex is started, unless “Start "
                        "Korvex when you log in” is on, under Quick Entry."));
    }
    return lines.join(QLatin1Char('\n'));
}

void NotificationsPane::follow() {
    const auto& status = m_center.status();
    m_status->say(translated(schedule::statusLabel(status.authorization)));
    m_statusRow->setNote(note());
    const auto& failed = status.permissionErrorMessage ? status.permissionErrorMessage
                                                       : status.schedulingErrorMessage;
    m_statusRow->setRefusal(failed ? translated(*failed) : QString());
    m_button->setText(remedy() == Remedy::lookAgain ? tr("Look Again")
                                                    : translated(NotificationTexts::kEnable));
    m_buttonRow->setVisible(remedy() != Remedy::none);
}

} // namespace korvex::ui
