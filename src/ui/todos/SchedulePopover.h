#pragma once

#include "schedule/TodoScheduleEditor.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/todos/TodoServices.h"

#include <QDateTime>

#include <memory>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QDateTimeEdit;
class QLabel;
class QPushButton;
class QTimeEdit;

namespace korvex::ui {

/// Edits when a todo is due and when to be reminded of it.
class SchedulePopover final : public Popover {
    Q_OBJECT

public:
    SchedulePopover(model::Entry& entry, const TodoServices& services, const Theme& theme,
                    QWidget* window);

    /// Saves what was changed, if anything was; what cannot be saved stays open with the reason.
    void dismiss() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void makeFields();
    void layOut();
    void connectFields();
    void fillPresets();
    /// Shows the editor's state in the fields, and the other way round.
    void showState();
    void takeState();
    /// What the fields show, which is not always what the editor has: they know fewer days.
    struct Shown {
        QDateTime due;
        QDateTime start;
        QDateTime reminder;
    };
    Shown shown() const;
    /// The moment with the day and the time that were changed in its field since `before`: what was
    /// not touched stays, even where the field could not show it.
    base::Instant edited(base::Instant instant, const QDateTime& before,
                         const QDateTime& now) const;
    void setDueDay(int daysFromToday);
    base::Instant instantOf(const QDate& day, const QTime& time, base::Instant otherwise) const;
    QDateTime dateTimeOf(base::Instant instant) const;
    void clear();
    void save();
    void showError();

    TodoServices m_services;
    std::shared_ptr<const base::DateFormats> m_formats;
    schedule::TodoScheduleEditor m_editor;
    bool m_isShowing = false;
    Shown m_shown;

    QCheckBox* m_hasDue;
    QDateEdit* m_day;
    QCheckBox* m_hasTime;
    QTimeEdit* m_time;
    QCheckBox* m_hasWindow;
    QDateEdit* m_startDay;
    QTimeEdit* m_start;
    QCheckBox* m_hasReminder;
    QComboBox* m_preset;
    QDateTimeEdit* m_reminder;
    QLabel* m_explanation;
    QLabel* m_error;
    QPushButton* m_today;
    QPushButton* m_tomorrow;
    QPushButton* m_nextWeek;
    QPushButton* m_clear;
    QPushButton* m_save;
};

} // namespace korvex::ui
