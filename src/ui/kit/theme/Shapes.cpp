#include "ui/kit/theme/Shapes.h"

#include "ui/kit/theme/IconSet.h"

#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace korvex::ui {

namespace {

constexpr double kRingWidth = 2;

QString iconOf(Shapes::Caret caret) {
    switch (caret) {
    case Shapes::Caret::up:
        return QStringLiteral("caret-up-bold");
    case Shapes::Caret::left:
        return QStringLiteral("caret-left-bold");
    case Shapes::Caret::right:
        return QStringLiteral("caret-right-bold");
    case Shapes::Caret::down:
        break;
    }
    return QStringLiteral("caret-down-bold");
}

} // namespace

void Shapes::paintBox(QPainter& painter, const QRectF& box, double radius, const QColor& ground,
                      const QColor& edge) {
    if (!ground.isValid() && !edge.isValid()) {
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(edge.isValid() ? QPen(edge, kLine) : QPen(Qt::NoPen));
    painter.setBrush(ground.isValid() ? QBrush(ground) : QBrush(Qt::NoBrush));
    const auto inset = edge.isValid() ? kLine / 2.0 : 0.0;
    painter.drawRoundedRect(box.adjusted(inset, inset, -inset, -inset), radius - inset,
                            radius - inset);
    painter.restore();
}

void Shapes::paintChosen(QPainter& painter, const QRectF& box, double radius,
                         const ThemeColors& colors) {
    paintBox(painter, box, radius, colors.selection,
             colors.isHighContrast ? colors.accent : QColor());
}

QColor Shapes::controlEdge(const ThemeColors& colors) {
    return colors.isHighContrast ? colors.border : QColor();
}

void Shapes::paintRing(QPainter& painter, const QRectF& box, double radius, const QColor& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, kRingWidth));
    painter.setBrush(Qt::NoBrush);
    constexpr auto kInset = kRingWidth / 2;
    painter.drawRoundedRect(box.adjusted(kInset, kInset, -kInset, -kInset), radius - kInset,
                            radius - kInset);
    painter.restore();
}

void Shapes::paintFocusRing(QPainter& painter, const QWidget& control) {
    QStyleOptionFocusRect ring;
    ring.initFrom(&control);
    control.style()->drawPrimitive(QStyle::PE_FrameFocusRect, &ring, &painter, &control);
}

void Shapes::paintPanel(QPainter& painter, const QRectF& box, double radius,
                        const ThemeColors& colors) {
    paintBox(painter, box, radius, colors.raised, colors.hairline);
}

void Shapes::paintCheckCircle(QPainter& painter, const QRect& place, CheckCircle circle,
                              const ThemeColors& colors) {
    IconSet::draw(painter,
                  circle == CheckCircle::completed ? QStringLiteral("check-circle-fill")
                                                   : QStringLiteral("circle"),
                  circle == CheckCircle::open ? colors.secondaryText : colors.accent, place);
}

void Shapes::paintCaret(QPainter& painter, const QRect& room, Caret caret, const QColor& color,
                        const Theme& theme) {
    const auto size = theme.extent(Extent::caret);
    QRect place(0, 0, size, size);
    place.moveCenter(room.center());
    IconSet::draw(painter, iconOf(caret), color, place);
}

} // namespace korvex::ui
