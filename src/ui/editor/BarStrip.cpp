#include "ui/editor/BarStrip.h"

#include <QMouseEvent>
#include <QPainter>

namespace korvex::ui {

BarStrip::BarStrip(const Theme& theme, QWidget* parent) : QWidget(parent), m_theme(theme) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setContextMenuPolicy(Qt::PreventContextMenu);
    hide();
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void BarStrip::keepTo(BarPlace::Edge edge, const QRect& sight, const QRect& bar) {
    m_edge = edge;
    auto place = sight;
    if (edge == BarPlace::Edge::top) {
        place.setBottom(bar.bottom() + bar.top() - sight.top());
    } else {
        place.setTop(bar.top() - (sight.bottom() - bar.bottom()));
    }
    setGeometry(place);
}

void BarStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.colors().content);
    const auto end = m_edge == BarPlace::Edge::top ? height() - 1 : 0;
    painter.fillRect(QRect(0, end, width(), 1), m_theme.colors().hairline);
}

void BarStrip::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

} // namespace korvex::ui
