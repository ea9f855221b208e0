#pragma once

#include "ui/kit/theme/Theme.h"

#include <QProxyStyle>

namespace korvex::ui {

/// Qt's own style, as desktops without one of theirs have it, drawn flat in the theme's colours:
/// hairlines rather than bevels, and boxes that are to be seen on a dark ground.
class QuietStyle final : public QProxyStyle {
    Q_OBJECT

public:
    explicit QuietStyle(const Theme& theme);

    /// Takes the place of Qt's own style; a desktop's style stays as it is.
    static void installOver(const Theme& theme);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;

private:
    void drawCheckBox(const QStyleOption& option, QPainter& painter) const;
    void drawButton(const QStyleOption& option, QPainter& painter) const;
    void drawToolButton(const QStyleOption& option, QPainter& painter) const;
    void drawFrame(const QRectF& rect, double radius, const QStyleOption& option, QPainter& painter,
                   const QColor& ground) const;

    const Theme& m_theme;
};

} // namespace korvex::ui
