#include "ui/contrast/PictureContrast.h"

#include "ui/kit/theme/ThemeColors.h"

#include <QHash>
#include <QScrollBar>

#include <algorithm>

namespace korvex::tests {

namespace {

using Drawn = PaintRecord::Drawn;

/// A colour counts that at least this part of what is no ground has: no edge, no stray pixel.
constexpr double kLeastPart = 0.03;

using Counts = QHash<QRgb, int>;

QColor mostFrequent(const Counts& counts) {
    const auto found = std::max_element(counts.begin(), counts.end());
    return found == counts.end() ? QColor() : QColor(found.key());
}

void count(const QImage& picture, const QRect& rect, Counts& counts) {
    const auto scale = qRound(picture.devicePixelRatio());
    const QRect inside = QRect(rect.topLeft() * scale, rect.size() * scale) & picture.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = inside.left(); x <= inside.right(); ++x) {
            ++counts[line[x]];
        }
    }
}

Counts colorsIn(const QImage& picture, const QRegion& region) {
    Counts counts;
    for (const auto& rect : region) {
        count(picture, rect, counts);
    }
    return counts;
}

/// The strongest that much of it is drawn in.
double strongest(const Counts& counts, const QColor& ground) {
    int drawn = 0;
    for (const auto each : counts) {
        drawn += each;
    }
    drawn -= counts.value(ground.rgb());
    double result = 1;
    for (auto each = counts.begin(); each != counts.end(); ++each) {
        if (each.key() != ground.rgb() && each.value() >= drawn * kLeastPart) {
            result = std::max(result, ui::contrast(QColor(each.key()), ground));
        }
    }
    return result;
}

} // namespace

PictureContrast::PictureContrast(QWidget& widget, const Limits& limits)
    : m_picture(widget.grab().toImage().convertToFormat(QImage::Format_RGB32)) {
    auto drawn = PaintRecord(widget).drawn();
    for (auto* const bar : widget.findChildren<QScrollBar*>()) {
        const auto place = bar->visibleRegion().translated(bar->mapTo(&widget, QPoint()));
        if (!place.isEmpty() && bar->maximum() > bar->minimum()) {
            drawn.push_back({.kind = Drawn::Kind::sign,
                             .place = place.boundingRect(),
                             .visible = place,
                             .words = QStringLiteral("scroll handle")});
        }
    }
    for (const auto& each : drawn) {
        const bool isText = each.kind == Drawn::Kind::text;
        ++(isText ? m_texts : m_marks);
        const auto ratio = measure(each);
        if (ratio < (isText ? limits.text : limits.marks)) {
            const auto place = each.place.toRect();
            m_faint.push_back(
                QStringLiteral("%1 “%2” at %3, %4, %5 × %6: %7 to 1")
                    .arg(isText ? QStringLiteral("text") : QStringLiteral("mark"), each.words)
                    .arg(place.x())
                    .arg(place.y())
                    .arg(place.width())
                    .arg(place.height())
                    .arg(ratio, 0, 'f', 2)
                    .toStdString());
        }
    }
}

double PictureContrast::measure(const Drawn& drawn) const {
    const auto ground = groundOf(drawn);
    return drawn.kind == Drawn::Kind::outline
               ? measureOutline(drawn, ground)
               : strongest(colorsIn(m_picture, drawn.visible), ground);
}

/// The middle one of all points that are in sight: at corners a line is blurred.
double PictureContrast::measureOutline(const Drawn& drawn, const QColor& ground) const {
    std::vector<double> ratios;
    for (const auto& point : drawn.points) {
        const auto pixel = (point * m_picture.devicePixelRatio()).toPoint();
        if (drawn.visible.contains(point.toPoint()) && m_picture.rect().contains(pixel)) {
            ratios.push_back(ui::contrast(m_picture.pixelColor(pixel), ground));
        }
    }
    if (ratios.empty()) {
        return 21;
    }
    const auto middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
    std::nth_element(ratios.begin(), middle, ratios.end());
    return *middle;
}

/// Letters leave most of their place to the ground; of other things it is what is around them.
QColor PictureContrast::groundOf(const Drawn& drawn) const {
    if (drawn.kind == Drawn::Kind::text) {
        return mostFrequent(colorsIn(m_picture, drawn.visible));
    }
    const auto place = drawn.place.toAlignedRect();
    return mostFrequent(
        colorsIn(m_picture, QRegion(place.adjusted(-3, -3, 3, 3)) - place.adjusted(-1, -1, 1, 1)));
}

} // namespace korvex::tests
