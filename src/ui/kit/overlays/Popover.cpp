#include "ui/kit/overlays/Popover.h"

#include "ui/kit/speech/Accessibility.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr int kDistance = 4;
constexpr int kWindowMargin = 8;
constexpr int kCornerRadius = 8;

} // namespace

Popover::Popover(const Theme& theme, QWidget* window)
    : QFrame(window), m_theme(theme), m_focusBefore(QApplication::focusWidget()) {
    setAttribute(Qt::WA_DeleteOnClose);
    setFocusPolicy(Qt::StrongFocus);
    Accessibility::setRole(*this, QAccessible::Dialog);
    hide();
    connect(&theme, &Theme::changed, this, [this] { update(); });
}

void Popover::openAt(const QRect& anchor) {
    m_anchor = anchor;
    placeAgain();
    show();
    raise();
    QApplication::instance()->installEventFilter(this);
}

void Popover::closeNow() {
    QApplication::instance()->removeEventFilter(this);
    const auto hadFocus = isAncestorOf(QApplication::focusWidget()) || hasFocus();
    close();
    if (hadFocus && m_focusBefore) {
        m_focusBefore->setFocus();
    }
}

bool Popover::dismissAll(const QWidget& window) {
    const auto popovers = window.findChildren<Popover*>();
    return std::all_of(popovers.begin(), popovers.end(), [](Popover* open) {
        if (open->isVisible()) {
            open->dismiss();
        }
        return !open->isVisible();
    });
}

bool Popover::holds(const QWidget* widget) {
    while (widget && !qobject_cast<const Popover*>(widget)) {
        widget = widget->parentWidget();
    }
    return widget != nullptr;
}

void Popover::placeAgain() {
    if (layout()) {
        layout()->activate();
    }
    adjustSize();
    const auto* const area = parentWidget();
    const QRect near(area->mapFromGlobal(m_anchor.topLeft()), m_anchor.size());
    const auto place = [](int wanted, int size, int room) {
        return std::max(kWindowMargin, std::min(wanted, room - size - kWindowMargin));
    };
    auto y = near.bottom() + kDistance;
    if (y + height() > area->height() - kWindowMargin &&
        near.top() - kDistance - height() >= kWindowMargin) {
        y = near.top() - kDistance - height();
    }
    const auto isAtRight = near.center().x() > area->width() / 2;
    const auto x = isAtRight ? near.right() + 1 - width() : near.left();
    move(place(x, width(), area->width()), place(y, height(), area->height()));
}

void Popover::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && m_isRefused) {
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
        auto* const pressed = static_cast<QWidget*>(watched);
        // Menus and the lists of combo boxes are windows of their own.
        if (pressed != this && !isAncestorOf(pressed) && pressed->window() == window()) {
            dismiss();
        }
    }
    return QFrame::eventFilter(watched, event);
}

void Popover::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    painter.fillRect(rect(), Qt::transparent);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(blended(colors.text, colors.content, 0.25));
    painter.setBrush(colors.content);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kCornerRadius,
                            kCornerRadius);
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

void Popover::showEvent(QShowEvent* event) {
    QFrame::showEvent(event);
    placeAgain();
}

} // namespace korvex::ui
