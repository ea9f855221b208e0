#include "ui/kit/pages/ColumnLayout.h"

#include "ui/kit/theme/Column.h"

namespace korvex::ui {

ColumnLayout::ColumnLayout(const Theme& theme, QWidget* parent)
    : QVBoxLayout(parent), m_theme(theme) {
    setContentsMargins(0, 0, 0, 0);
    setSpacing(0);
    connect(&theme, &Theme::changed, this, &ColumnLayout::invalidate);
}

int ColumnLayout::heightForWidth(int width) const {
    return QVBoxLayout::heightForWidth(Column::of(width, m_theme).width);
}

int ColumnLayout::minimumHeightForWidth(int width) const {
    return QVBoxLayout::minimumHeightForWidth(Column::of(width, m_theme).width);
}

void ColumnLayout::setGeometry(const QRect& rect) {
    const auto column = Column::of(rect.width(), m_theme);
    QVBoxLayout::setGeometry({rect.left() + column.left, rect.top(), column.width, rect.height()});
}

} // namespace korvex::ui
