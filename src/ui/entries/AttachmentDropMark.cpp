#include "ui/entries/AttachmentDropMark.h"

#include "ui/todos/RowFrame.h"

#include <QPainter>

namespace korvex::ui {

namespace {

constexpr int kCornerRadius = 6;
constexpr int kTint = 30; // of 255

} // namespace

AttachmentDropMark::AttachmentDropMark(const Theme& theme, QWidget* viewport)
    : QWidget(viewport), m_theme(theme) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

void AttachmentDropMark::mark(const QRect& row, const std::optional<QRect>& place) {
    setGeometry(row);
    m_place = place ? std::optional(place->translated(-row.topLeft())) : std::nullopt;
    show();
    raise();
    update();
}

void AttachmentDropMark::paintEvent(QPaintEvent*) {
    const auto& accent = m_theme.colors().accent;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    auto tint = accent;
    tint.setAlpha(kTint);
    const auto distance = m_theme.rowDistance() / 2;
    const auto margin = RowFrame::kBoxMargin;
    painter.setPen(QPen(accent, 2));
    painter.setBrush(tint);
    painter.drawRoundedRect(QRectF(rect()).adjusted(margin + 1, distance + 1, -margin - 1,
                                                    -(m_theme.rowDistance() - distance) - 1),
                            kCornerRadius, kCornerRadius);
    if (m_place) {
        painter.fillRect(*m_place, accent);
    }
}

} // namespace korvex::ui
