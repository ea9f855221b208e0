#include "ui/kit/theme/IconSet.h"

#include "ui/kit/theme/Design.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <utility>

/// The resources stand in a static library, where nobody asks for them on their own.
static void initializeIcons() {
    Q_INIT_RESOURCE(icons);
}

namespace korvex::ui {

namespace {

QPixmap drawn(const QString& name, const QColor& color, int pixels) {
    initializeIcons();
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    if (file.open(QIODevice::ReadOnly)) {
        auto svg = file.readAll();
        svg.replace("currentColor", color.name().toLatin1());
        QSvgRenderer renderer(svg);
        QPainter painter(&pixmap);
        renderer.render(&painter);
    }
    return pixmap;
}

/// Draws at the size that is asked for, so that an icon is sharp at every scale factor.
class IconEngine final : public QIconEngine {
public:
    IconEngine(QString name, QColor color) : m_name(std::move(name)), m_color(color) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const auto scale = painter->device()->devicePixelRatio();
        const auto size = std::min(rect.width(), rect.height());
        const auto opacity = painter->opacity();
        if (mode == QIcon::Disabled) {
            painter->setOpacity(opacity * kDisabledOpacity);
        }
        painter->drawPixmap(rect.x() + (rect.width() - size) / 2,
                            rect.y() + (rect.height() - size) / 2,
                            IconSet::pixmap(m_name, m_color, size, scale));
        painter->setOpacity(opacity);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap result(size);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return result;
    }
    QIconEngine* clone() const override { return new IconEngine(m_name, m_color); }

private:
    QString m_name;
    QColor m_color;
};

} // namespace

QPixmap IconSet::pixmap(const QString& name, const QColor& color, int size, qreal scale) {
    const auto pixels = qRound(size * scale);
    const auto key = QStringLiteral("korvex/%1/%2/%3").arg(name, color.name()).arg(pixels);
    QPixmap result;
    if (!QPixmapCache::find(key, &result)) {
        result = drawn(name, color, pixels);
        QPixmapCache::insert(key, result);
    }
    result.setDevicePixelRatio(scale);
    return result;
}

QIcon IconSet::icon(const QString& name, const QColor& color) {
    return QIcon(new IconEngine(name, color));
}

QIcon IconSet::program() {
    return icon(QStringLiteral("korvex"), Qt::black);
}

void IconSet::draw(QPainter& painter, const QString& name, const QColor& color, const QRect& rect) {
    painter.drawPixmap(rect.topLeft(),
                       pixmap(name, color, rect.width(), painter.device()->devicePixelRatio()));
}

} // namespace korvex::ui
