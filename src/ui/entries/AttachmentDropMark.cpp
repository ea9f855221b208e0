#include "ui/entries/AttachmentDropMark.h"

#include "ui/kit/theme/Shapes.h"
#include "ui/todos/RowFrame.h"

#include <QPainter>

namespace korvex::ui {

namespace {

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
    const auto box = RowFrame::of(m_theme).box(size());
    const auto radius = m_theme.radius(Radius::medium);
    Shapes::paintBox(painter, box, radius, tint, {});
    Shapes::paintRing(painter, box, radius, accent);
    if (m_place) {
        painter.fillRect(*m_place, accent);
    }
}

} // namespace korvex::ui
