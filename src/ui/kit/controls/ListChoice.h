#pragma once

#include <QComboBox>

namespace korvex::ui {

/// Chooses one of a list, which opens from a button that says what is chosen: the only combo box of
/// the windows; Return opens it too. The wheel is for whatever scrolls under it. Main thread.
class ListChoice : public QComboBox {
    Q_OBJECT

public:
    explicit ListChoice(QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
};

} // namespace korvex::ui
