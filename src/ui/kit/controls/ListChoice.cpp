#include "ui/kit/controls/ListChoice.h"

#include <QKeyEvent>
#include <QWheelEvent>

namespace korvex::ui {

ListChoice::ListChoice(QWidget* parent) : QComboBox(parent) {
    setFocusPolicy(Qt::StrongFocus); // nor is the keyboard meant
}

void ListChoice::wheelEvent(QWheelEvent* event) {
    event->ignore(); // who scrolls over it does not mean it
}

void ListChoice::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        showPopup(); // as it presses a button
    } else {
        QComboBox::keyPressEvent(event);
    }
}

} // namespace korvex::ui
