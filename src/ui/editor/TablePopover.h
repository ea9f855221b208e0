#pragma once

#include "ui/kit/overlays/Popover.h"

class QLabel;
class QPushButton;
class QSpinBox;

namespace korvex::ui {

/// Asks for the size of a new table. Return inserts it, Escape gives up.
class TablePopover final : public Popover {
    Q_OBJECT

public:
    TablePopover(const Theme& theme, QWidget* window);

Q_SIGNALS:
    /// Both are within the limits of a table.
    void chosen(int rows, int columns);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QSpinBox* field(const QString& title, int value, int maximum);
    void layOut();
    void wrapWords();
    void showSize();
    void insert();

    QLabel* m_size;
    QSpinBox* m_columns;
    QSpinBox* m_rows;
    QLabel* m_limits;
    QPushButton* m_insert;
};

} // namespace korvex::ui
