#pragma once

#include <QScrollArea>

namespace korvex::ui {

/// The content of a panel: as high as it wants to be, and scrolled where the window has no room for
/// that. Takes the content over.
class PanelScroll final : public QScrollArea {
    Q_OBJECT

public:
    PanelScroll(QWidget* content, QWidget* parent);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace korvex::ui
