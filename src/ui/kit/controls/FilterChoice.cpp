#include "ui/kit/controls/FilterChoice.h"

#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStylePainter>

#include <algorithm>

namespace korvex::ui {

namespace {

/// A board's name may be long: this many letters of it tell enough.
constexpr int kShownLetters = 24;

} // namespace

FilterChoice::FilterChoice(const QString& name, const Theme& theme, QWidget* parent)
    : ListChoice(parent), m_theme(theme) {
    setAccessibleName(name);
    setToolTip(name);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // As wide as what is chosen.
    connect(this, &QComboBox::currentTextChanged, this, [this] { updateGeometry(); });
}

QStyleOptionComboBox FilterChoice::option() const {
    QStyleOptionComboBox option;
    initStyleOption(&option);
    if (isSet()) {
        option.frame = false; // the tint of what is chosen is its ground
        option.subControls.setFlag(QStyle::SC_ComboBoxArrow, false);
    }
    return option;
}

QSize FilterChoice::sizeHint() const {
    const auto metrics = fontMetrics();
    const auto words = std::min(metrics.horizontalAdvance(currentText()),
                                kShownLetters * metrics.averageCharWidth());
    const auto icon =
        itemIcon(currentIndex()).isNull() ? 0 : iconSize().width() + m_theme.space(Space::small);
    const auto shown = option();
    return style()->sizeFromContents(QStyle::CT_ComboBox, &shown,
                                     {icon + words + m_theme.space(Space::small), metrics.height()},
                                     this);
}

QRect FilterChoice::signRect() const {
    const auto shown = option();
    return style()->subControlRect(QStyle::CC_ComboBox, &shown, QStyle::SC_ComboBoxArrow, this);
}

void FilterChoice::showPopup() {
    // The button may be narrower than what it offers.
    auto& list = *view();
    list.setMinimumWidth(list.sizeHintForColumn(0) + 2 * m_theme.space(Space::medium));
    ListChoice::showPopup();
}

void FilterChoice::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QStylePainter painter(this);
    auto shown = option();
    if (isSet()) {
        Shapes::paintChosen(painter, rect(), m_theme.radius(Radius::medium), colors);
    }
    painter.drawComplexControl(QStyle::CC_ComboBox, shown);
    if (isSet()) {
        const auto size = m_theme.extent(Extent::smallIcon);
        QRect cross(0, 0, size, size);
        cross.moveCenter(signRect().center());
        IconSet::draw(painter, QStringLiteral("x"), colors.text, cross);
    }
    const auto words =
        style()->subControlRect(QStyle::CC_ComboBox, &shown, QStyle::SC_ComboBoxEditField, this);
    const auto icon =
        shown.currentIcon.isNull() ? 0 : shown.iconSize.width() + m_theme.space(Space::small);
    shown.currentText =
        fontMetrics().elidedText(currentText(), Qt::ElideRight, words.width() - icon);
    painter.setPen(colors.text);
    painter.drawControl(QStyle::CE_ComboBoxLabel, shown);
}

void FilterChoice::mousePressEvent(QMouseEvent* event) {
    const bool isOnCross = isSet() && signRect().contains(event->pos());
    if (isOnCross && event->button() == Qt::LeftButton) {
        setCurrentIndex(0);
    } else {
        ListChoice::mousePressEvent(event);
    }
}

void FilterChoice::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        setCurrentIndex(0);
    } else {
        ListChoice::keyPressEvent(event);
    }
}

} // namespace korvex::ui
