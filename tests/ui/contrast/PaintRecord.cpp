#include "ui/contrast/PaintRecord.h"

#include <QAbstractSpinBox>
#include <QBitmap>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPaintEngine>
#include <QPainterPath>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <optional>

namespace korvex::tests {

namespace {

using Drawn = PaintRecord::Drawn;

/// Larger is no sign but content or a ground.
constexpr double kLargestSign = 48;
/// A filled shape without a line is a sign up to this, such as a bullet; a larger one is a ground.
constexpr double kLargestDot = 14;
/// Lines as wide as this say where the keyboard is; a thinner one around much only parts.
constexpr double kRingWidth = 1.8;
constexpr int kOutlinePoints = 64;

/// Takes down what is painted instead of painting it.
class RecordingEngine final : public QPaintEngine {
public:
    explicit RecordingEngine(std::vector<Drawn>& drawn)
        : QPaintEngine(AllFeatures), m_drawn(drawn) {}

    Type type() const override { return User; }
    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }

    void updateState(const QPaintEngineState& now) override {
        if (now.state() & DirtyClipEnabled && !now.isClipEnabled()) {
            m_clip.reset();
        }
        if (now.state() & DirtyClipRegion) {
            clip(now.transform().map(now.clipRegion()), now.clipOperation());
        }
        if (now.state() & DirtyClipPath) {
            clip(regionOf(now.transform().map(now.clipPath())), now.clipOperation());
        }
    }

    void drawTextItem(const QPointF& baseline, const QTextItem& item) override {
        const QRectF place(baseline.x(), baseline.y() - item.ascent(), item.width(),
                           item.ascent() + item.descent());
        if (!item.text().trimmed().isEmpty()) {
            add({.kind = Drawn::Kind::text, .place = place, .words = item.text()});
        }
    }
    void drawPixmap(const QRectF& place, const QPixmap& pixmap, const QRectF&) override {
        if (pixmap.hasAlpha() && QRegion(pixmap.mask()).isEmpty()) {
            return; // only a place that is kept free
        }
        drawPicture(place, !pixmap.hasAlpha());
    }
    void drawImage(const QRectF& place, const QImage& image, const QRectF&,
                   Qt::ImageConversionFlags) override {
        drawPicture(place, !image.hasAlphaChannel());
    }
    void drawTiledPixmap(const QRectF& place, const QPixmap& pixmap, const QPointF&) override {
        drawPicture(place, !pixmap.hasAlpha());
    }
    using QPaintEngine::drawRects;
    void drawRects(const QRectF* rects, int count) override {
        for (int i = 0; i < count; ++i) {
            QPainterPath path;
            path.addRect(rects[i]);
            drawPath(path);
        }
    }
    using QPaintEngine::drawPolygon;
    void drawPolygon(const QPointF* points, int count, PolygonDrawMode mode) override {
        QPainterPath path;
        path.moveTo(points[0]);
        for (int i = 1; i < count; ++i) {
            path.lineTo(points[i]);
        }
        if (mode != PolylineMode) {
            path.closeSubpath();
        }
        drawPath(path);
    }
    void drawPath(const QPainterPath& path) override {
        const auto place = path.boundingRect();
        const auto size = std::max(place.width(), place.height());
        const auto& brush = state->brush();
        const bool isFilled = brush.style() != Qt::NoBrush && brush.color().alpha() > 0;
        if (isFilled && brush.style() == Qt::SolidPattern && brush.color().alpha() == 255 &&
            state->opacity() >= 1) {
            cover(regionOf(state->transform().map(path)));
        }
        const auto& pen = state->pen();
        const bool isLine = pen.style() != Qt::NoPen && pen.color().alpha() > 0;
        // What is but one step of a line across or down parts, and says nothing.
        const bool isStroke = std::min(place.width(), place.height()) > 1;
        if (isLine && isStroke) {
            const bool isTold = size <= kLargestSign || pen.widthF() >= kRingWidth;
            addOutline(path, isTold ? Edge::ofSign : Edge::ofControl);
        } else if (isFilled && isStroke && size <= kLargestDot) {
            add({.kind = Drawn::Kind::sign, .place = place});
        }
    }

    /// Edges that count where a control has them.
    const std::vector<Drawn>& edges() const { return m_edges; }

private:
    enum class Edge { ofSign, ofControl };

    static QRegion regionOf(const QPainterPath& path) {
        QRegion region;
        for (const auto& polygon : path.toFillPolygons()) {
            region += QRegion(polygon.toPolygon());
        }
        return region;
    }

    void clip(const QRegion& region, Qt::ClipOperation operation) {
        switch (operation) {
        case Qt::NoClip:
            m_clip.reset();
            break;
        case Qt::ReplaceClip:
            m_clip = region;
            break;
        case Qt::IntersectClip:
            m_clip = m_clip ? *m_clip & region : region;
            break;
        }
    }

    QRegion inSight(const QRegion& region) const {
        const auto clipped = m_clip ? region & *m_clip : region;
        return systemClip().isEmpty() ? clipped : clipped & systemClip();
    }

    bool complete(Drawn& drawn) const {
        drawn.place = state->transform().mapRect(drawn.place);
        drawn.visible = inSight(drawn.place.toAlignedRect());
        return state->opacity() >= 1 && !drawn.visible.isEmpty();
    }

    void add(Drawn drawn) {
        if (complete(drawn)) {
            m_drawn.push_back(std::move(drawn));
        }
    }

    void addOutline(const QPainterPath& path, Edge edge) {
        Drawn drawn{.kind = Drawn::Kind::outline, .place = path.boundingRect()};
        for (int i = 0; i < kOutlinePoints; ++i) {
            drawn.points.push_back(
                state->transform().map(path.pointAtPercent(i / double(kOutlinePoints))));
        }
        if (complete(drawn)) {
            (edge == Edge::ofSign ? m_drawn : m_edges).push_back(std::move(drawn));
        }
    }

    void drawPicture(const QRectF& place, bool isOpaque) {
        if (isOpaque) {
            cover(state->transform().mapRect(place).toRect());
        }
        if (std::max(place.width(), place.height()) <= kLargestSign) {
            add({.kind = Drawn::Kind::sign, .place = place});
        }
    }

    void cover(const QRegion& region) {
        const auto covered = inSight(region);
        for (auto* const list : {&m_drawn, &m_edges}) {
            for (auto& each : *list) {
                each.visible -= covered;
            }
        }
    }

    std::vector<Drawn>& m_drawn;
    std::vector<Drawn> m_edges;
    std::optional<QRegion> m_clip;
};

class RecordingDevice final : public QPaintDevice {
public:
    RecordingDevice(QSize size, std::vector<Drawn>& drawn) : m_size(size), m_engine(drawn) {}

    QPaintEngine* paintEngine() const override { return &m_engine; }
    const RecordingEngine& engine() const { return m_engine; }

protected:
    int metric(PaintDeviceMetric metric) const override {
        const auto& screen = *QGuiApplication::primaryScreen();
        switch (metric) {
        case PdmWidth:
            return m_size.width();
        case PdmHeight:
            return m_size.height();
        case PdmDpiX:
        case PdmDpiY:
            return qRound(screen.logicalDotsPerInch());
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return qRound(screen.physicalDotsPerInch());
        case PdmDepth:
            return 32;
        case PdmNumColors:
            return 0;
        case PdmWidthMM:
        case PdmHeightMM:
            return 0;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return qRound(devicePixelRatioFScale());
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    QSize m_size;
    mutable RecordingEngine m_engine;
};

double area(const QRegion& region) {
    double result = 0;
    for (const auto& rect : region) {
        result += double(rect.width()) * rect.height();
    }
    return result;
}

/// Half of it tells what it is; less may be a rest under a panel's edge.
bool isInSight(const Drawn& drawn) {
    return area(drawn.visible) > 0.5 * area(drawn.place.toAlignedRect());
}

bool isEnabled(QWidget& root, const QPoint& place) {
    auto* const child = root.childAt(place);
    const auto& widget = child ? *child : root;
    if (const auto* const menu = qobject_cast<const QMenu*>(&widget)) {
        const auto* const action = menu->actionAt(menu->mapFrom(&root, place));
        return !action || action->isEnabled();
    }
    return widget.isEnabled();
}

bool isField(const QWidget* widget) {
    return qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QAbstractSpinBox*>(widget);
}

/// Whether it stands around a field, which is known by that line.
bool isEdgeOfField(QWidget& root, const Drawn& edge) {
    constexpr double kTolerance = 4;
    for (auto* widget = root.childAt(edge.place.center().toPoint()); widget && widget != &root;
         widget = widget->parentWidget()) {
        const QRectF place(widget->mapTo(&root, QPoint()), QSizeF(widget->size()));
        if (isField(widget) && std::abs(place.width() - edge.place.width()) <= kTolerance &&
            std::abs(place.height() - edge.place.height()) <= kTolerance) {
            return true;
        }
    }
    return false;
}

} // namespace

PaintRecord::PaintRecord(QWidget& widget) {
    RecordingDevice device(widget.size(), m_drawn);
    widget.render(&device);
    for (const auto& edge : device.engine().edges()) {
        if (isEdgeOfField(widget, edge)) {
            m_drawn.push_back(edge);
        }
    }
    std::erase_if(m_drawn, [&](const Drawn& each) {
        return !isInSight(each) || !isEnabled(widget, each.place.center().toPoint());
    });
}

} // namespace korvex::tests
