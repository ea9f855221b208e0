#pragma once

#include "base/DateFormats.h"
#include "ui/kit/fields/WheelNotches.h"
#include "ui/kit/theme/Theme.h"

#include <QDate>
#include <QWidget>

#include <memory>
#include <vector>

class QGridLayout;
class QLabel;
class QToolButton;

namespace korvex::ui {

class DayButton;

/// A month as a grid of weeks, from which a day is chosen. Arrows walk through the days, Home and
/// End to the ends of the week, Page Up and Down and the wheel to other months, with Shift to other
/// years; Return chooses. One place in the tab order besides the two buttons. Main thread.
class MonthView final : public QWidget {
    Q_OBJECT

public:
    struct Marks {
        QDate today;
        QDate chosen;
        /// Days that belong together, both ends included; none where they are not valid.
        QDate first;
        QDate last;
    };
    MonthView(std::shared_ptr<const base::DateFormats> formats, const Marks& marks,
              const Theme& theme, QWidget* parent);

    /// Makes the days as small as it takes, but no larger than usual.
    void fitInto(const QSize& room);

Q_SIGNALS:
    void chosen(const QDate& day);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    QLayout* makeHeader();
    QToolButton* makeStep(const QString& icon, const QString& name, int months);
    void makeGrid();
    void fill();
    void showTitle();
    /// Makes this day the one that the keyboard is on.
    void goTo(const QDate& day);
    /// The day that a key leads to from there; none for other keys.
    QDate dayBy(const QKeyEvent& key) const;
    DayButton& buttonOf(const QDate& day) const;
    int columnOf(const QDate& day) const;

    std::shared_ptr<const base::DateFormats> m_formats;
    Marks m_marks;
    const Theme& m_theme;
    /// The day that the keyboard is on, in the month that is shown.
    QDate m_day;
    /// What stands at the beginning of the grid.
    QDate m_start;
    QLabel* m_title;
    QGridLayout* m_grid;
    std::vector<QLabel*> m_weekdays;
    std::vector<DayButton*> m_days;
    int m_titleRoom = 0;
    WheelNotches m_wheel;
};

} // namespace korvex::ui
