#pragma once

#include "base/Signal.h"
#include "schedule/ReminderCenter.h"
#include "ui/settings/DesktopNotificationSettings.h"
#include "ui/settings/SettingsPane.h"
#include "ui/workspace/Workspace.h"

#include <optional>

class QPushButton;

namespace korvex::ui {

/// Whether reminders can be shown, why not, and what can be done about it. Main thread.
class NotificationsPane final : public SettingsPane {
    Q_OBJECT

public:
    NotificationsPane(const Workspace& workspace, const Theme& theme);

protected:
    void follow() override;
    void showEvent(QShowEvent* event) override;

private:
    /// What the button does; none where nothing can be done from here.
    enum class Remedy { none, ask, openDesktopSettings, lookAgain };
    Remedy remedy() const;
    void perform();
    QString note() const;
    /// Why they do not reach the user, or not as they should; none where nobody knows.
    QStringList limits() const;

    schedule::ReminderCenter& m_center;
    bool m_isUsersOwn;
    /// Whether there is a pane from which Korvex can be started at login.
    bool m_canStartAtLogin;
    std::optional<DesktopNotificationSettings> m_desktopSettings;
    SettingsLabel* m_status;
    SettingsRow* m_statusRow;
    QPushButton* m_button;
    SettingsRow* m_buttonRow;
    base::Subscription m_changes;
};

} // namespace korvex::ui
