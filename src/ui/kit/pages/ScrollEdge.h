#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QAbstractScrollArea;

namespace korvex::ui {

/// The line under what stands above a list, there while rows have gone under it: without it they
/// would look cut.
class ScrollEdge final : public QWidget {
    Q_OBJECT

public:
    ScrollEdge(QAbstractScrollArea& content, const Theme& theme);

    QSize sizeHint() const override { return {QWIDGETSIZE_MAX, 1}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void follow();

    QAbstractScrollArea& m_content;
    const Theme& m_theme;
};

} // namespace korvex::ui
