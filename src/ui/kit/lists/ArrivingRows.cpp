#include "ui/kit/lists/ArrivingRows.h"

#include <QAbstractItemView>
#include <QStyle>

#include <algorithm>

namespace korvex::ui {

ArrivingRows::ArrivingRows(QAbstractItemView& view) : m_view(view), m_animation(&view) {
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    QObject::connect(&m_animation, &QVariantAnimation::valueChanged, &view, [this] { update(); });
    QObject::connect(&m_animation, &QVariantAnimation::finished, &view, [this] { m_rows.clear(); });
}

void ArrivingRows::add(const QModelIndex& first, const QModelIndex& last) {
    const auto duration =
        m_view.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &m_view);
    m_animation.stop();
    update();
    m_rows.clear();
    if (duration <= 0) {
        return;
    }
    for (int row = first.row(); row <= last.row(); ++row) {
        m_rows.emplace_back(first.siblingAtRow(row));
    }
    m_animation.setDuration(duration);
    m_animation.start();
}

void ArrivingRows::update() {
    for (const auto& row : m_rows) {
        m_view.update(row);
    }
}

double ArrivingRows::opacityOf(const QModelIndex& index) const {
    const auto isArriving = std::find(m_rows.begin(), m_rows.end(), index) != m_rows.end();
    return isArriving ? m_animation.currentValue().toDouble() : 1;
}

} // namespace korvex::ui
