#pragma once

#include "ui/kit/theme/Theme.h"

#include <QAbstractButton>
#include <QDate>

#include <optional>

namespace korvex::ui {

/// A day in a month: its number on the grounds of what it is.
class DayButton final : public QAbstractButton {
    Q_OBJECT

public:
    DayButton(const Theme& theme, QWidget* parent);

    struct Look {
        bool isToday = false;
        bool isChosen = false;
        /// It belongs to another month, or to a weekend.
        bool isOfOtherMonth = false;
        bool isQuiet = false;
        /// It is one of several that belong together: their ground has round ends where they or
        /// their week begin and end.
        bool isInRange = false;
        bool beginsRange = false;
        bool endsRange = false;
    };
    void show(const QDate& day, const Look& look);
    const QDate& day() const { return m_day; }

    QSize sizeHint() const override { return minimumSize(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    /// Which day is chosen, the month says.
    void nextCheckState() override {}

private:
    void paintGround(QPainter& painter) const;
    /// Of the state that it is in; none at rest.
    std::optional<Tint> tint() const;

    const Theme& m_theme;
    QDate m_day;
    Look m_look;
};

} // namespace korvex::ui
