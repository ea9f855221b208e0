#pragma once

#include "ui/editor/BarPlace.h"
#include "ui/kit/theme/Theme.h"

#include <QWidget>

namespace korvex::ui {

/// The ground of a bar that keeps to an edge of the list, from one side of the list to the other:
/// lines of the text begin or end at it rather than beside the bar. Main thread.
class BarStrip final : public QWidget {
    Q_OBJECT

public:
    BarStrip(const Theme& theme, QWidget* parent);

    /// Lies under the bar, at this edge of what is seen.
    void keepTo(BarPlace::Edge edge, const QRect& sight, const QRect& bar);

protected:
    void paintEvent(QPaintEvent* event) override;
    /// A press beside the bar is none on what lies under the strip.
    void mousePressEvent(QMouseEvent* event) override;

private:
    const Theme& m_theme;
    BarPlace::Edge m_edge = BarPlace::Edge::none;
};

} // namespace korvex::ui
