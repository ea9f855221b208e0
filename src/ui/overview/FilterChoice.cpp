#include "ui/overview/FilterChoice.h"

#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace korvex::ui {

namespace {

/// A board's name may be long: this many letters of it tell enough.
constexpr int kShownLetters = 24;

} // namespace

FilterChoice::FilterChoice(const QString& name, const Theme& theme, QWidget* parent)
    : QComboBox(parent), m_theme(theme) {
    setAccessibleName(name);
    setToolTip(name);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // As wide as what is chosen.
    connect(this, &QComboBox::currentTextChanged, this, [this] { updateGeometry(); });
}

int FilterChoice::iconRoom() const {
    return itemIcon(currentIndex()).isNull()
               ? 0
               : m_theme.extent(Extent::smallIcon) + m_theme.space(Space::small);
}

QSize FilterChoice::sizeHint() const {
    const auto metrics = fontMetrics();
    const auto words = std::min(metrics.horizontalAdvance(currentText()),
                                kShownLetters * metrics.averageCharWidth());
    return {2 * m_theme.space(Space::medium) + iconRoom() + words + m_theme.space(Space::small) +
                m_theme.extent(Extent::smallIcon) + 1,
            m_theme.extent(Extent::control)};
}

QRect FilterChoice::signRect() const {
    const auto size = m_theme.extent(Extent::smallIcon);
    return mirrored(
        QRect(width() - m_theme.space(Space::medium) - size, (height() - size) / 2, size, size),
        width());
}

void FilterChoice::showPopup() {
    // The button may be narrower than what it offers.
    auto& list = *view();
    list.setMinimumWidth(list.sizeHintForColumn(0) + 2 * m_theme.space(Space::medium));
    m_isOpen = true;
    QComboBox::showPopup();
}

void FilterChoice::hidePopup() {
    m_isOpen = false;
    QComboBox::hidePopup();
}

void FilterChoice::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    const auto radius = m_theme.radius(Radius::medium);
    QPainter painter(this);
    if (isSet()) {
        Shapes::paintChosen(painter, rect(), radius, colors);
    }
    if (!isSet() || underMouse() || m_isOpen) {
        const auto tint = m_isOpen       ? Shapes::Tint::pressed
                          : underMouse() ? Shapes::Tint::hovered
                                         : Shapes::Tint::rest;
        Shapes::paintBox(painter, rect(), radius, Shapes::tint(colors, tint),
                         Shapes::controlEdge(colors));
    }
    Shapes::paintFocusRing(painter, *this);
    const auto margin = m_theme.space(Space::medium);
    if (iconRoom() > 0) {
        const auto size = m_theme.extent(Extent::smallIcon);
        itemIcon(currentIndex())
            .paint(&painter, mirrored(QRect(margin, (height() - size) / 2, size, size), width()));
    }
    QRect words(margin + iconRoom(), 0, 0, height());
    words.setRight(width() - 1 - margin - m_theme.extent(Extent::smallIcon) -
                   m_theme.space(Space::small));
    painter.setPen(colors.text);
    painter.drawText(mirrored(words, width()), static_cast<int>(lineStart()),
                     fontMetrics().elidedText(currentText(), Qt::ElideRight, words.width()));
    if (isSet()) {
        IconSet::draw(painter, QStringLiteral("x"), colors.text, signRect());
    } else {
        Shapes::paintCaret(painter, signRect(), Shapes::Caret::down, colors.secondaryText, m_theme);
    }
}

void FilterChoice::mousePressEvent(QMouseEvent* event) {
    const auto margin = m_theme.space(Space::medium);
    const bool isOnCross =
        isSet() && signRect().adjusted(-margin / 2, -margin, margin, margin).contains(event->pos());
    if (isOnCross && event->button() == Qt::LeftButton) {
        setCurrentIndex(0);
    } else {
        QComboBox::mousePressEvent(event);
    }
}

void FilterChoice::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        setCurrentIndex(0);
    } else {
        QComboBox::keyPressEvent(event);
    }
}

void FilterChoice::wheelEvent(QWheelEvent* event) {
    event->ignore(); // who scrolls over it does not mean it
}

} // namespace korvex::ui
