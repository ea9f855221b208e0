#include "ui/capture/PanelRoom.h"

#include <QEvent>
#include <QLayout>
#include <QScopedValueRollback>
#include <QTimer>

#include <algorithm>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kWidth = 560;
/// How much of the screen is above it.
constexpr double kAbove = 0.2;

int heightOf(const QLayout& content, int width) {
    return content.hasHeightForWidth() ? content.totalHeightForWidth(width)
                                       : content.totalSizeHint().height();
}

} // namespace

PanelRoom::PanelRoom(QWidget& panel, const Theme& theme) : m_panel(panel), m_theme(theme) {
    panel.installEventFilter(this);
}

void PanelRoom::placeOn(const QRect& screen) {
    m_screen = screen;
    fit();
}

void PanelRoom::makeFor(Popover& popover, const QWidget* opener) {
    m_popover = &popover;
    m_opener = opener;
    popover.installEventFilter(this);
    fit();
}

Popover* PanelRoom::openedBy(const QWidget& opener) const {
    return m_popover && m_popover->isVisible() && m_opener == &opener ? m_popover : nullptr;
}

bool PanelRoom::isOpen() const {
    return m_popover && !m_popover->isHidden();
}

int PanelRoom::heightForPopover() const {
    if (!m_popover) {
        return 0;
    }
    const auto margin = m_theme.space(Space::medium);
    const auto above = m_opener ? m_opener->mapTo(&m_panel, QPoint(0, m_opener->height())).y() +
                                      m_theme.space(Space::small)
                                : margin;
    return above + heightOf(*m_popover->layout(), std::min(m_popover->width(), m_panel.width())) +
           2 * margin;
}

void PanelRoom::fit() {
    if (m_isFitting || m_screen.isEmpty()) {
        return;
    }
    const QScopedValueRollback fitting(m_isFitting, true);
    const auto margin = m_theme.space(Space::large);
    const auto width = std::min(m_theme.scaled(kWidth), m_screen.width() - 2 * margin);
    if (width != m_panel.width()) {
        m_panel.resize(width, m_panel.height()); // the text finds its lines
    }
    m_panel.layout()->activate();
    const auto high = std::min(std::max(heightOf(*m_panel.layout(), width), heightForPopover()),
                               m_screen.height() - 2 * margin);
    const auto top = std::min(m_screen.top() + static_cast<int>(kAbove * m_screen.height()),
                              m_screen.bottom() - margin - high);
    const QRect place(m_screen.left() + (m_screen.width() - width) / 2,
                      std::max(top, m_screen.top() + margin), width, high);
    if (place != m_panel.geometry()) {
        m_panel.setGeometry(place);
    }
}

bool PanelRoom::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    // It goes with the panel too, and comes back with it.
    if (watched == m_popover && type == QEvent::Hide && m_popover->isHidden()) {
        m_popover = nullptr;
    }
    if (watched == &m_panel && type == QEvent::LayoutRequest) {
        fit();
    } else if (watched != &m_panel &&
               (type == QEvent::LayoutRequest || type == QEvent::Show || type == QEvent::Hide)) {
        QTimer::singleShot(0, this, &PanelRoom::fit); // once it has its own size
    }
    return false;
}

} // namespace korvex::ui
