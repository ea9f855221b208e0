#include "ui/kit/overlays/PanelScroll.h"

#include <QApplication>
#include <QEvent>
#include <QLayout>

namespace korvex::ui {

PanelScroll::PanelScroll(QWidget* content, QWidget* parent) : QScrollArea(parent) {
    auto policy = sizePolicy();
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setWidget(content);
    // The ground is the panel's.
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    // However the keyboard comes there, also from what does not scroll.
    connect(qApp, &QApplication::focusChanged, this, [this](const QWidget*, QWidget* now) {
        if (now && widget() && widget()->isAncestorOf(now)) { // also while it is taken down
            ensureWidgetVisible(now, 0, 2 * now->height());   // with what it is called
        }
    });
}

int PanelScroll::heightForWidth(int width) const {
    auto& content = *widget()->layout();
    return content.hasHeightForWidth() ? content.totalHeightForWidth(width)
                                       : content.totalSizeHint().height();
}

QSize PanelScroll::sizeHint() const {
    return widget()->layout()->totalSizeHint();
}

bool PanelScroll::eventFilter(QObject* watched, QEvent* event) {
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        updateGeometry(); // the panel is to ask again
    }
    return QScrollArea::eventFilter(watched, event);
}

} // namespace korvex::ui
