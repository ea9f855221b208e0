#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

#include <vector>

class QAbstractButton;
class QGridLayout;

namespace korvex::ui {

/// Buttons in rows of which one is chosen: one place in the tab order, the chosen button's or the
/// one that the arrows have come to since. They walk in both directions and stop at the edges.
class ButtonGrid final : public QWidget {
    Q_OBJECT

public:
    ButtonGrid(const QString& name, int columns, const Theme& theme, QWidget* parent);

    /// Takes the button over; it stands behind those that are there.
    void add(QAbstractButton* button);
    const std::vector<QAbstractButton*>& buttons() const { return m_buttons; }
    /// This button alone is checked.
    void choose(std::size_t index);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Makes this button the grid's place in the tab order.
    void enterAt(std::size_t index);
    bool walk(std::size_t from, int key);

    QGridLayout* m_grid;
    int m_columns;
    std::vector<QAbstractButton*> m_buttons;
};

} // namespace korvex::ui
