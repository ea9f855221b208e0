#pragma once

#include "ui/todos/DueLabel.h"

#include <QToolButton>

namespace korvex::ui {

/// Says in a todo's editor when the todo is due, as its row does and in the same place; offers to
/// make a schedule where there is none. Main thread; the theme must outlive it.
class DueButton final : public QToolButton {
    Q_OBJECT

public:
    DueButton(const Theme& theme, QWidget* parent);

    const DueLabel& label() const { return m_label; }
    void setLabel(const DueLabel& label);
    /// Lets what it says stand here in its parent; around that is the button's own room.
    void placeAround(const QRect& words);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// From the button's sides and from its top and foot to what it says.
    QMargins around() const;

    const Theme& m_theme;
    DueLabel m_label;
};

} // namespace korvex::ui
