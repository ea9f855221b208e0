#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

namespace korvex::ui {

/// What the design is made of: its colours, each with its contrast, its sizes of type, distances
/// and round corners.
class DesignSamples final : public QWidget {
    Q_OBJECT

public:
    DesignSamples(const Theme& theme, QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int paintColors(QPainter& painter, int top) const;
    int paintType(QPainter& painter, int top) const;
    int paintMeasures(QPainter& painter, int top) const;

    const Theme& m_theme;
};

} // namespace korvex::ui
