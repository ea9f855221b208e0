#include "ui/windows/SidebarPlace.h"

#include "ui/kit/controls/SearchField.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/Theme.h"
#include "ui/windows/Sidebar.h"

#include <QApplication>
#include <QEvent>
#include <QMouseEvent>
#include <QSplitter>

#include <algorithm>

namespace korvex::ui {

namespace {

/// A page is not to be narrower than this beside the sidebar.
constexpr int kNarrowestPage = 360;
constexpr int kWidthOver = 280;
/// Beside the page, before the user has given it another.
constexpr int kFirstWidth = 220;
/// What is left of the page at its side, to be pressed.
constexpr int kLeftOfPage = 48;

} // namespace

SidebarPlace::SidebarPlace(QWidget& window, QSplitter& splitter, Sidebar& sidebar,
                           const Theme& theme)
    : m_window(window), m_splitter(splitter), m_sidebar(sidebar), m_width(kFirstWidth) {
    window.installEventFilter(this);
    splitter.installEventFilter(this);
    connect(&splitter, &QSplitter::splitterMoved, this,
            [this](int, int) { m_width = m_splitter.sizes().front(); });
    connect(qApp, &QApplication::focusChanged, this,
            [this](const QWidget*, const QWidget* now) { focusMoved(now); });
    // With a larger font the sidebar needs more of the window.
    connect(&theme, &Theme::changed, this, &SidebarPlace::arrange);
}

bool SidebarPlace::isShown() const {
    return !m_sidebar.isHidden();
}

void SidebarPlace::show() {
    if (m_isNarrow) {
        placeOver();
        m_sidebar.show();
        m_sidebar.raise();
        qApp->installEventFilter(this);
    } else {
        setWanted(true);
    }
}

void SidebarPlace::toggle() {
    if (!m_isNarrow) {
        setWanted(!m_isWanted);
    } else if (isShown()) {
        leavePage();
    } else {
        show();
        m_sidebar.takeKeyboard();
    }
}

void SidebarPlace::leavePage() {
    if (isOver()) {
        putAway();
        Q_EMIT left();
    }
}

void SidebarPlace::putAway() {
    qApp->removeEventFilter(this);
    m_sidebar.hide();
}

void SidebarPlace::setSearching(bool searching) {
    m_isSearching = searching;
    if (isOver()) {
        placeOver();
    }
}

void SidebarPlace::setWidth(int width) {
    m_width = std::max(width, 0);
    divide();
}

void SidebarPlace::setWanted(bool wanted) {
    m_isWanted = wanted;
    if (!m_isNarrow) {
        m_sidebar.setVisible(wanted);
        divide();
    }
}

bool SidebarPlace::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &m_window && event->type() == QEvent::Resize) {
        arrange();
    } else if (watched == &m_splitter && event->type() == QEvent::Resize) {
        divide();
    } else if (event->type() == QEvent::MouseButtonPress && isOver()) {
        auto* const pressed = qobject_cast<QWidget*>(watched);
        if (pressed && pressed->window() == &m_window && pressed != &m_sidebar &&
            !m_sidebar.isAncestorOf(pressed) && !Popover::holds(pressed)) {
            leavePage();
        }
    }
    return false;
}

void SidebarPlace::arrange() {
    const bool isNarrow = m_window.width() < m_sidebar.minimumSizeHint().width() + kNarrowestPage;
    if (isNarrow != m_isNarrow) {
        if (isNarrow) {
            fold();
        } else {
            unfold();
        }
    } else if (isOver()) {
        placeOver();
    }
    divide();
}

/// A window that was narrow has left it less room than it is to have.
void SidebarPlace::divide() {
    if (!m_isNarrow && m_splitter.sizes().front() != m_width) {
        m_splitter.setSizes({m_width, std::max(1, m_splitter.width() - m_width)});
    }
}

void SidebarPlace::fold() {
    auto* const focused = QApplication::focusWidget();
    const bool hadKeyboard = m_sidebar.isAncestorOf(focused);
    const bool isTyping = hadKeyboard && focused == &m_sidebar.searchField();
    m_isNarrow = true;
    m_sidebar.setParent(&m_window);
    m_sidebar.hide();
    if (isTyping) {
        show();
        focused->setFocus();
    } else if (hadKeyboard) {
        Q_EMIT left();
    }
}

void SidebarPlace::unfold() {
    auto* const focused = isOver() ? QApplication::focusWidget() : nullptr;
    const bool hasKeyboard = m_sidebar.isAncestorOf(focused);
    putAway();
    m_isNarrow = false;
    m_sidebar.clearMask();
    m_splitter.insertWidget(0, &m_sidebar);
    // Who is at work in it goes on there.
    m_isWanted = m_isWanted || hasKeyboard;
    m_sidebar.setVisible(m_isWanted);
    if (hasKeyboard) {
        focused->setFocus();
    }
}

void SidebarPlace::placeOver() {
    const auto room = m_window.rect();
    const auto wanted = std::max(kWidthOver, m_sidebar.minimumSizeHint().width());
    const auto width = m_isSearching ? room.width() : std::min(wanted, room.width() - kLeftOfPage);
    m_sidebar.setGeometry(mirrored(QRect(0, 0, width, room.height()), room));
    if (m_isSearching) {
        m_sidebar.setMask(QRect(0, 0, width, m_sidebar.searchHeight()));
    } else {
        m_sidebar.clearMask();
    }
}

void SidebarPlace::focusMoved(const QWidget* now) {
    // No new focus: another window or a menu has the keyboard for a while only.
    if (isOver() && now && now->window() == &m_window && !m_sidebar.isAncestorOf(now) &&
        !Popover::holds(now)) {
        putAway();
    }
}

} // namespace korvex::ui
