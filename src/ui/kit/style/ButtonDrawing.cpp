#include "ui/kit/style/ButtonDrawing.h"

#include "ui/kit/style/ControlState.h"
#include "ui/kit/theme/Danger.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace korvex::ui {

namespace {

QColor filling(ButtonDrawing::Weight weight, const ThemeColors& colors) {
    return weight == ButtonDrawing::Weight::dangerous ? colors.danger : colors.accent;
}

/// A box or circle that can be on or off: where it is on, it is filled.
void paintMark(QPainter& painter, const QStyleOption& option, double radius, const Theme& theme) {
    const auto& colors = theme.colors();
    const ControlState state(option);
    const FadedWhenDisabled faded(painter, state);
    const auto isOff = option.state.testFlag(QStyle::State_Off);
    const auto ground = isOff ? colors.field : colors.accent;
    Shapes::paintBox(painter, option.rect, radius, ground,
                     !isOff              ? QColor()
                     : state.isHovered() ? colors.accent
                                         : colors.border);
    if (state.isHovered() || state.isPressed()) {
        Shapes::paintBox(painter, option.rect, radius,
                         colors.tint(state.isPressed() ? Tint::pressed : Tint::rest), QColor());
    }
}

} // namespace

ButtonDrawing::Weight ButtonDrawing::weightOf(const QStyleOptionButton& option,
                                              const QWidget* button) {
    using Option = QStyleOptionButton;
    // One that Return presses while it has the keyboard is not what its panel is about.
    const auto isChief = option.features.testFlag(Option::DefaultButton) &&
                         !option.features.testFlag(Option::AutoDefaultButton);
    return isDangerous(button) ? Weight::dangerous : isChief ? Weight::chief : Weight::plain;
}

void ButtonDrawing::paintPush(QPainter& painter, const QStyleOptionButton& option, Weight weight,
                              const Theme& theme) {
    const auto& colors = theme.colors();
    const ControlState state(option);
    const auto radius = theme.radius(Radius::medium);
    const auto isFlat = option.features.testFlag(QStyleOptionButton::Flat);
    const auto isFilled = weight != Weight::plain && !isFlat;
    {
        const FadedWhenDisabled faded(painter, state);
        const auto edge = isFlat ? QColor() : Shapes::controlEdge(colors);
        if (isFilled) {
            Shapes::paintBox(painter, option.rect, radius, filling(weight, colors), edge);
        }
        if (!isFilled || state.tint() != Tint::rest) {
            const auto isSeen = !isFlat || state.tint() != Tint::rest;
            auto ground = isSeen ? colors.tint(state.tint()) : QColor();
            if (isFilled) {
                // Away from the colour of its words: they are to be read in every state.
                const auto alpha = ground.alphaF();
                ground = colors.isDark ? Qt::white : Qt::black;
                ground.setAlphaF(alpha);
            }
            Shapes::paintBox(painter, option.rect, radius, ground, isFilled ? QColor() : edge);
        }
    }
    if (state.hasFocus() && isFilled) {
        // A ring of its own colour would not be seen on it.
        Shapes::paintRing(painter, QRectF(option.rect).adjusted(2, 2, -2, -2), radius - 2,
                          wordsOf(option, weight, colors));
    } else if (state.hasFocus()) {
        Shapes::paintRing(painter, option.rect, radius, colors.accent);
    }
}

QColor ButtonDrawing::wordsOf(const QStyleOptionButton& option, Weight weight,
                              const ThemeColors& colors) {
    const auto isFlat = option.features.testFlag(QStyleOptionButton::Flat);
    if (isFlat && !ControlState(option).isEnabled()) {
        return {}; // no ground fades with them
    }
    switch (weight) {
    case Weight::dangerous:
        return isFlat ? colors.danger
                      : readable(colors.onAccent, colors.danger, colors.textContrast());
    case Weight::chief:
        return isFlat ? colors.accent : colors.onAccent;
    case Weight::plain:
        break;
    }
    return {};
}

void ButtonDrawing::paintTool(QPainter& painter, const QStyleOption& option, const Theme& theme) {
    const auto& colors = theme.colors();
    const ControlState state(option);
    const auto radius = theme.radius(Radius::medium);
    const FadedWhenDisabled faded(painter, state);
    const auto isOn = option.state.testFlag(QStyle::State_On);
    if (isOn) {
        // The tint alone is too quiet for what is read from it.
        Shapes::paintBox(painter, option.rect, radius, colors.selection, colors.accent);
    }
    const auto isRaised = !option.state.testFlag(QStyle::State_AutoRaise);
    if (state.tint() != Tint::rest || (isRaised && !isOn)) {
        Shapes::paintBox(painter, option.rect, radius, colors.tint(state.tint()),
                         Shapes::controlEdge(colors));
    }
    if (state.hasFocus()) {
        Shapes::paintRing(painter, option.rect, radius, colors.accent);
    }
}

bool ButtonDrawing::hasCaret(const QStyleOptionToolButton& option) {
    return option.features.testFlag(QStyleOptionToolButton::HasMenu);
}

QRect ButtonDrawing::labelOf(const QStyleOptionToolButton& option, const Theme& theme) {
    if (!hasCaret(option)) {
        return option.rect;
    }
    const auto caret = theme.extent(Extent::caret) + theme.space(Space::hair);
    return QStyle::visualRect(option.direction, option.rect, option.rect.adjusted(0, 0, -caret, 0));
}

QRect ButtonDrawing::caretOf(const QStyleOptionToolButton& option, const Theme& theme) {
    const auto caret = theme.extent(Extent::caret) + theme.space(Space::small);
    auto place = option.rect;
    place.setLeft(place.right() + 1 - caret);
    return QStyle::visualRect(option.direction, option.rect, place);
}

void ButtonDrawing::paintCheckBox(QPainter& painter, const QStyleOption& option,
                                  const Theme& theme) {
    paintMark(painter, option, theme.radius(Radius::small), theme);
    const FadedWhenDisabled faded(painter, ControlState(option));
    const auto isPartly = option.state.testFlag(QStyle::State_NoChange);
    if (isPartly || option.state.testFlag(QStyle::State_On)) {
        const auto margin = theme.space(Space::hair);
        IconSet::draw(
            painter, isPartly ? QStringLiteral("minus-bold") : QStringLiteral("check-bold"),
            theme.colors().onAccent, option.rect.adjusted(margin, margin, -margin, -margin));
    }
}

QRect ButtonDrawing::ringOf(const QStyleOptionButton& option, const Theme& theme) {
    auto width = theme.extent(Extent::box) + 2 * theme.space(Space::small);
    if (!option.text.isEmpty()) {
        const auto words = option.fontMetrics.size(Qt::TextShowMnemonic, option.text);
        width += theme.space(Space::medium) + words.width() + theme.space(Space::small);
    }
    auto ring = option.rect;
    ring.setWidth(std::min(ring.width(), width));
    return QStyle::visualRect(option.direction, option.rect, ring);
}

void ButtonDrawing::paintRadio(QPainter& painter, const QStyleOption& option, const Theme& theme) {
    paintMark(painter, option, option.rect.width() / 2.0, theme);
    if (option.state.testFlag(QStyle::State_On)) {
        const FadedWhenDisabled faded(painter, ControlState(option));
        const auto inset = option.rect.width() * 5 / 16.0;
        const auto dot = QRectF(option.rect).adjusted(inset, inset, -inset, -inset);
        Shapes::paintBox(painter, dot, dot.width() / 2, theme.colors().onAccent, QColor());
    }
}

} // namespace korvex::ui
