#include "ui/kit/pages/ScrollEdge.h"

#include "ui/kit/overlays/Overlay.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QScrollBar>

namespace korvex::ui {

ScrollEdge::ScrollEdge(QAbstractScrollArea& content, const Theme& theme)
    : m_content(content), m_theme(theme) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    new Overlay(*this, content, Overlay::Place::head, theme);
    const auto* const bar = content.verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, &ScrollEdge::follow);
    connect(bar, &QScrollBar::rangeChanged, this, &ScrollEdge::follow);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void ScrollEdge::follow() {
    const auto* const bar = m_content.verticalScrollBar();
    setVisible(bar->value() > bar->minimum());
}

void ScrollEdge::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), m_theme.colors().hairline);
}

} // namespace korvex::ui
