#include "ui/kit/controls/ButtonRow.h"

#include <QWidget>

#include <algorithm>

namespace korvex::ui {

ButtonRow::ButtonRow(std::initializer_list<QWidget*> buttons, int spacing)
    : QBoxLayout(LeftToRight) {
    setSpacing(spacing);
    addStretch();
    for (auto* const button : buttons) {
        addWidget(button);
    }
}

ButtonRow::Extent ButtonRow::extent(Qt::Orientation along) const {
    Extent extent;
    for (int i = 1; i < count(); ++i) { // the first is what keeps them at the end
        const auto wanted = itemAt(i)->sizeHint();
        const auto length = along == Qt::Horizontal ? wanted.width() : wanted.height();
        extent.sum += length + (i > 1 ? spacing() : 0);
        extent.most = std::max(extent.most, length);
    }
    return extent;
}

int ButtonRow::heightForWidth(int width) const {
    const auto height = extent(Qt::Vertical);
    return isBeside(width) ? height.most : height.sum;
}

QSize ButtonRow::minimumSize() const {
    return {extent(Qt::Horizontal).most, extent(Qt::Vertical).most};
}

void ButtonRow::setGeometry(const QRect& rect) {
    setDirection(isBeside(rect.width()) ? LeftToRight : TopToBottom);
    QBoxLayout::setGeometry(rect);
}

} // namespace korvex::ui
