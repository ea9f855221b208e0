#pragma once

#include "schedule/TodoReminderPreset.h"
#include "ui/kit/fields/DateField.h"

#include <QDateTime>
#include <QWidget>

#include <optional>

namespace korvex::ui {

class ButtonGrid;
class TimeField;

/// When to be reminded: all the presets in sight, or a moment of the user's own. Main thread.
class ReminderChoice final : public QWidget {
    Q_OBJECT

public:
    /// `room` is the most that it can be wide, in pixels.
    ReminderChoice(const DateField::Settings& dates, int room, const Theme& theme, QWidget* parent);

    /// Presets count back from what is due: without that there is the moment only.
    enum class Offer { presets, momentOnly };
    /// Without a preset the moment is shown.
    void show(std::optional<schedule::TodoReminderPreset> preset, const QDateTime& moment,
              Offer offer);
    std::optional<schedule::TodoReminderPreset> preset() const { return m_preset; }
    QDateTime moment() const;

    /// Shows the moment in place of what has been typed, which another choice has made void.
    void discard();
    /// Reads what has been typed. False where a field says nothing.
    bool take();
    /// Why not; empty where nothing was refused.
    QString problem() const;
    /// Marks a moment that can be read and yet cannot be; empty when it can.
    void objectTo(const QString& why);
    /// Presses the button that has the keyboard, if one has.
    void pressFocused();
    /// What Tab leads through, in this order.
    std::vector<QWidget*> stops() const;

Q_SIGNALS:
    /// The user is about to give the moment another value.
    void typing();
    void changed();
    void problemChanged();

private:
    void makePresets(int room, const Theme& theme);
    void choose(std::optional<schedule::TodoReminderPreset> preset);

    std::optional<schedule::TodoReminderPreset> m_preset;
    ButtonGrid* m_presets = nullptr;
    QWidget* m_moment;
    DateField* m_day;
    TimeField* m_time;
};

} // namespace korvex::ui
