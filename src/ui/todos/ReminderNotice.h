#pragma once

#include "base/Signal.h"
#include "schedule/ReminderCenter.h"
#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QLabel;

namespace korvex::ui {

/// Says under a reminder that no notification will be shown for it, and why; takes no room where
/// one will be. Asks for the permission when the user wants the first one. Main thread; the center
/// must outlive it.
class ReminderNotice final : public QWidget {
    Q_OBJECT

public:
    ReminderNotice(schedule::ReminderCenter& center, const Theme& theme, QWidget* parent);

    enum class Reminder { off, on };
    /// What is set by now, whoever has set it.
    void setReminder(Reminder reminder);
    /// The user has just turned it on: from now on all is said that they are to know.
    void turnedOn();

Q_SIGNALS:
    /// It says something else, and may take more room.
    void changed();

private:
    struct Words {
        QString status;
        QString text;

        bool operator==(const Words&) const = default;
    };
    Words words() const;
    void follow();

    schedule::ReminderCenter& m_center;
    QLabel* m_status;
    QLabel* m_text;
    Words m_said;
    Reminder m_reminder = Reminder::off;
    bool m_wasTurnedOn = false;
    base::Subscription m_changes;
};

} // namespace korvex::ui
