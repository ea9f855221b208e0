#pragma once

#include "ui/kit/controls/ListChoice.h"
#include "ui/kit/theme/Theme.h"

#include <QStyleOptionComboBox>

namespace korvex::ui {

/// One criterion of a filter: a quiet button that says its choice and offers the others. The first
/// choice leaves everything as it is; with another one the button is tinted, and its cross, Delete
/// or Backspace choose the first again. Main thread.
class FilterChoice final : public ListChoice {
    Q_OBJECT

public:
    FilterChoice(const QString& name, const Theme& theme, QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    void showPopup() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool isSet() const { return currentIndex() > 0; }
    /// What the style draws it by: with a choice, the cross stands in the place of the caret.
    QStyleOptionComboBox option() const;
    /// Where the cross or the caret is.
    QRect signRect() const;

    const Theme& m_theme;
};

} // namespace korvex::ui
