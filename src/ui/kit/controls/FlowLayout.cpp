#include "ui/kit/controls/FlowLayout.h"

#include "ui/kit/theme/Direction.h"

#include <algorithm>

namespace korvex::ui {

FlowLayout::FlowLayout(QWidget* parent) : QLayout(parent) {}

FlowLayout::~FlowLayout() {
    for (const auto* const item : m_items) {
        delete item;
    }
}

QLayoutItem* FlowLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)] : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
    auto* const item = itemAt(index);
    if (item) {
        m_items.erase(m_items.begin() + index);
    }
    return item;
}

QSize FlowLayout::sizeHint() const {
    QSize size(-spacing(), 0);
    for (const auto* const item : m_items) {
        if (!item->isEmpty()) {
            const auto wanted = item->sizeHint();
            size = {size.width() + spacing() + wanted.width(),
                    std::max(size.height(), wanted.height())};
        }
    }
    const auto margins = contentsMargins();
    return QSize(std::max(0, size.width()), size.height()) +
           QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

QSize FlowLayout::minimumSize() const {
    QSize size;
    for (const auto* const item : m_items) {
        size = size.expandedTo(item->minimumSize());
    }
    const auto margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

void FlowLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    arrange(rect, Do::place);
}

int FlowLayout::arrange(const QRect& rect, Do what) const {
    const auto margins = contentsMargins();
    const auto room = rect.marginsRemoved(margins);
    auto x = room.left();
    auto y = room.top();
    int lineHeight = 0;
    for (auto* const item : m_items) {
        if (item->isEmpty()) {
            continue;
        }
        const auto wanted = item->sizeHint();
        const auto width = std::min(wanted.width(), room.width());
        const auto height =
            item->hasHeightForWidth() ? item->heightForWidth(width) : wanted.height();
        if (lineHeight > 0 && x + width > room.right() + 1) {
            x = room.left();
            y += lineHeight + spacing();
            lineHeight = 0;
        }
        if (what == Do::place) {
            item->setGeometry(mirrored({x, y, width, height}, room));
        }
        x += width + spacing();
        lineHeight = std::max(lineHeight, height);
    }
    return y + lineHeight - rect.top() + margins.bottom();
}

} // namespace korvex::ui
