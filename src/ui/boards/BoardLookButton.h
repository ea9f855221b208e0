#pragma once

#include "ui/kit/theme/Theme.h"

#include <QColor>
#include <QString>
#include <QToolButton>

namespace korvex::ui {

/// One of the icons, or one of the colours, that a board may have. The chosen one stands out: an
/// icon upon its colour, a colour with a tick and a ring of its own.
class BoardLookButton final : public QToolButton {
    Q_OBJECT

public:
    /// As wide and high as `side`, in pixels.
    BoardLookButton(const QString& title, int side, const Theme& theme, QWidget* parent);

    /// Without an icon it is the colour that is offered.
    void show(const QColor& color, const QString& icon = {});

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintIcon(QPainter& painter) const;
    void paintColor(QPainter& painter) const;
    /// Of this size, in the middle.
    QRectF middle(double size) const;

    const Theme& m_theme;
    QColor m_color;
    QString m_icon;
};

} // namespace korvex::ui
