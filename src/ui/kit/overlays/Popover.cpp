#include "ui/kit/overlays/Popover.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Shapes.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace korvex::ui {

namespace {

/// A menu is a window of its own: its parents lead to the one that it was opened from.
bool isOf(const QWidget& window, const QWidget& menu) {
    const auto* from = &menu;
    while (from && from != &window) {
        from = from->parentWidget();
    }
    return from != nullptr;
}

void closeMenus(const QWidget& window) {
    for (auto* menu = QApplication::activePopupWidget(); menu && isOf(window, *menu);
         menu = QApplication::activePopupWidget()) {
        menu->close();
    }
}

} // namespace

Popover::Popover(const Theme& theme, QWidget* window)
    : QFrame(window),
      m_theme(theme),
      // Also while another window has the keyboard, as that of a file dialog that is just closing.
      m_focusBefore(window->window()->focusWidget()) {
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_NoMousePropagation); // a press on its ground is none on the window
    setFocusPolicy(Qt::StrongFocus);
    Accessibility::setRole(*this, QAccessible::Dialog);
    hide();
    // Its parts were made for the look that was.
    connect(&theme, &Theme::changed, this, [this] {
        if (isVisible()) {
            dismiss();
        }
    });
}

void Popover::openAt(const QRect& anchor) {
    m_anchor = QRect(parentWidget()->mapFromGlobal(anchor.topLeft()), anchor.size());
    open();
}

void Popover::openInMiddle() {
    m_anchor.reset();
    open();
}

void Popover::open() {
    if (const auto* const from = panelOf(m_focusBefore)) {
        connect(from, &Popover::closing, this, &Popover::closeNow, Qt::UniqueConnection);
    }
    placeAgain();
    show();
    raise();
    QApplication::instance()->installEventFilter(this);
}

void Popover::closeNow() {
    QApplication::instance()->removeEventFilter(this);
    Q_EMIT closing();
    const auto* const focused = window()->focusWidget();
    const auto hadFocus = focused && (focused == this || isAncestorOf(focused));
    close();
    if (hadFocus && m_focusBefore) {
        m_focusBefore->setFocus();
    }
}

void Popover::end() {
    dismiss();
    if (!isHidden()) {
        closeNow();
    }
}

bool Popover::dismissAll(const QWidget& window) {
    closeMenus(window);
    const auto popovers = window.findChildren<Popover*>();
    return std::all_of(popovers.begin(), popovers.end(), [](Popover* open) {
        if (open->isVisible()) {
            open->dismiss();
        }
        return !open->isVisible();
    });
}

void Popover::endAll(const QWidget& window) {
    closeMenus(window);
    for (auto* const open : window.findChildren<Popover*>()) {
        if (open->isVisible()) {
            open->end();
        }
    }
}

const Popover* Popover::panelOf(const QWidget* widget) {
    while (widget && !qobject_cast<const Popover*>(widget)) {
        widget = widget->parentWidget();
    }
    return qobject_cast<const Popover*>(widget);
}

bool Popover::owns(const QWidget* pressed) const {
    const auto isOpener = m_opener && (m_opener == pressed || m_opener->isAncestorOf(pressed));
    if (pressed == this || isAncestorOf(pressed) || isOpener) {
        return true;
    }
    const auto* const other = panelOf(pressed);
    return other && other->m_focusBefore && owns(other->m_focusBefore);
}

QSize Popover::room() const {
    const auto margin = m_theme.space(Space::medium);
    return parentWidget()->size().shrunkBy({margin, margin, margin, margin});
}

void Popover::placeAgain() {
    const auto most = room();
    if (layout()) {
        layout()->activate();
    }
    auto size = sizeHint();
    if (const auto* const content = layout()) {
        const auto wanted = m_panelWidth > 0
                                ? m_panelWidth
                                : std::clamp(size.width(), minimumWidth(), maximumWidth());
        size.setWidth(std::min(wanted, most.width()));
        size.setHeight(content->hasHeightForWidth() ? content->totalHeightForWidth(size.width())
                                                    : content->totalSizeHint().height());
    }
    resize(size.boundedTo(most));
    const auto* const area = parentWidget();
    const auto margin = m_theme.space(Space::medium);
    const auto inside = [margin](int wanted, int extent, int whole) {
        return std::max(margin, std::min(wanted, whole - extent - margin));
    };
    const auto place = m_anchor
                           ? placeBy(*m_anchor)
                           : QPoint((area->width() - width()) / 2, (area->height() - height()) / 2);
    move(inside(place.x(), width(), area->width()), inside(place.y(), height(), area->height()));
}

QPoint Popover::placeBy(const QRect& anchor) const {
    const auto distance = m_theme.space(Space::small);
    const auto margin = m_theme.space(Space::medium);
    const auto area = parentWidget()->rect().adjusted(margin, margin, -margin, -margin);
    const auto isAtRight = anchor.center().x() > area.center().x();
    const auto x = isAtRight ? anchor.right() + 1 - width() : anchor.left();
    const auto below = anchor.bottom() + 1 + distance;
    if (below + height() <= area.bottom() + 1) {
        return {x, below};
    }
    const auto above = anchor.top() - distance - height();
    if (above >= area.top()) {
        return {x, above};
    }
    const auto before = anchor.left() - distance - width();
    const auto after = anchor.right() + 1 + distance;
    const auto isAfterFree = after + width() <= area.right() + 1;
    if (isAfterFree || before >= area.left()) {
        return {isAfterFree ? after : before, anchor.top()};
    }
    return {x, below};
}

void Popover::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && (m_isRefused || saysWhyNot())) {
        // A key that is still held down gives nothing up: the reason was not read yet.
        if (!event->isAutoRepeat()) {
            closeNow();
        }
    } else if (event->key() == Qt::Key_Escape) {
        dismiss();
        m_isRefused = isVisible();
    } else {
        QFrame::keyPressEvent(event);
    }
}

bool Popover::eventFilter(QObject* watched, QEvent* event) {
    const auto isKey = event->type() == QEvent::KeyPress;
    if (isKey ? static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape
              : event->type() == QEvent::MouseButtonPress) {
        m_isRefused = false;
    }
    if (event->type() == QEvent::MouseButtonPress && watched->isWidgetType()) {
        const auto* const pressed = static_cast<QWidget*>(watched);
        // Menus and the lists of combo boxes are windows of their own.
        if (!owns(pressed) && pressed->window() == window()) {
            dismiss();
        }
    } else if (event->type() == QEvent::Resize && watched == parentWidget()) {
        placeAgain();
    }
    return QFrame::eventFilter(watched, event);
}

void Popover::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Shapes::paintPanel(painter, rect(), m_theme.radius(Radius::large), m_theme.colors());
}

bool Popover::focusNextPrevChild(bool next) {
    auto* const start = QApplication::focusWidget() ? QApplication::focusWidget() : this;
    const auto step = [next](QWidget* from) {
        return next ? from->nextInFocusChain() : from->previousInFocusChain();
    };
    for (auto* each = step(start); each != start; each = step(each)) {
        if (isAncestorOf(each) && each->isVisible() && each->isEnabled() &&
            (each->focusPolicy() & Qt::TabFocus) != 0 && !each->focusProxy()) {
            each->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    return true;
}

bool Popover::event(QEvent* event) {
    const auto isDone = QFrame::event(event);
    if (event->type() == QEvent::LayoutRequest && isVisible()) {
        placeAgain();
    }
    return isDone;
}

void Popover::showEvent(QShowEvent* event) {
    QFrame::showEvent(event);
    placeAgain();
}

} // namespace korvex::ui
