#pragma once

#include "schedule/TodoScheduleEditor.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/todos/TodoServices.h"

#include <QDateTime>

#include <memory>
#include <optional>

class QCheckBox;
class QLabel;
class QPushButton;

namespace korvex::ui {

class DateField;
class ReminderChoice;
class ReminderNotice;
class RefusalLabel;
class TimeField;
class TypedField;

/// Edits when a todo is due and when to be reminded of it. While nothing was changed in it, it
/// follows what other programs do; it closes when the todo is gone or completed.
class SchedulePopover final : public Popover {
    Q_OBJECT

public:
    SchedulePopover(model::Entry& entry, const TodoServices& services, const Theme& theme,
                    QWidget* window);
    /// Of todos that are not stored yet: what is saved goes to `keep`, which throws what it
    /// refuses.
    SchedulePopover(const model::TodoSchedule& schedule, schedule::TodoScheduleEditor::OnSave keep,
                    const TodoServices& services, const Theme& theme, QWidget* window);

    /// Saves what was changed, if anything was; what cannot be saved stays open with the reason.
    void dismiss() override;

Q_SIGNALS:
    /// Something has changed in the store, and the todo may stand elsewhere.
    void followed();

protected:
    bool saysWhyNot() const override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// What is edited, wherever that is kept.
    struct Subject {
        /// Absent where it is no entry yet.
        std::optional<base::Uuid> entry;
        model::TodoSchedule schedule;
        bool isCompleted = false;
        schedule::TodoScheduleEditor::OnSave keep;
    };
    SchedulePopover(Subject subject, const TodoServices& services, const Theme& theme,
                    QWidget* window);
    static Subject subjectOf(const model::Entry& entry, const TodoServices& services);

    /// Anything has changed in the store.
    void follow();
    void followSetting(app::AppPreferences::Property property);
    /// In one of its fields.
    bool isTyping() const;
    bool hearOfOthers();
    void makeFields();
    void layOut();
    QWidget* makeContent();
    void orderTabs();
    void connectFields();
    /// What is to be filled in once the box is checked.
    QWidget& fieldOf(const QCheckBox& box) const;
    /// Shows the editor's state in the fields, and the other way round.
    void showState();
    void takeState();
    void takeTimes();
    void holdJudgement();
    /// A field says that something is wrong with it, or no longer.
    void takeProblem();
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
    /// Chooses the day and is done.
    void setDueDay(int daysFromToday);
    base::Instant instantOf(const QDate& day, const QTime& time, base::Instant otherwise) const;
    QDateTime dateTimeOf(base::Instant instant) const;
    void clear();
    void save();
    /// Reads what is being typed. False where a field says nothing; the first such one then has the
    /// keyboard.
    bool takeTyped();
    void showErrors();
    /// Why the editor refused, of which it has said so.
    QString reason() const;

    TodoServices m_services;
    std::shared_ptr<const base::DateFormats> m_formats;
    schedule::TodoScheduleEditor m_editor;
    std::optional<base::Uuid> m_entry;
    /// Since a field last said what is wrong with it.
    bool m_isChangedSince = false;
    base::Subscription m_changes;
    base::Subscription m_settings;
    bool m_isShowing = false;
    Shown m_shown;

    QPushButton* m_today;
    QPushButton* m_tomorrow;
    QPushButton* m_nextWeek;
    QCheckBox* m_hasDue;
    DateField* m_day;
    QCheckBox* m_hasStart;
    QWidget* m_startFields;
    DateField* m_startDay;
    TimeField* m_start;
    QCheckBox* m_hasTime;
    TimeField* m_time;
    QCheckBox* m_hasReminder;
    ReminderChoice* m_reminder;
    QLabel* m_explanation;
    ReminderNotice* m_notice;
    /// Each beside what it concerns; the last is about all of it.
    RefusalLabel* m_dayRefusal;
    RefusalLabel* m_timeRefusal;
    RefusalLabel* m_reminderRefusal;
    RefusalLabel* m_refusal;
    QPushButton* m_clear;
    QPushButton* m_done;
};

} // namespace korvex::ui
