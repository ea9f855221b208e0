#include "ui/kit/style/FieldDrawing.h"

#include "ui/kit/style/ControlState.h"
#include "ui/kit/theme/Shapes.h"

#include <algorithm>

namespace korvex::ui {

namespace {

using Shapes::Caret;

QRect caretRoom(const QStyleOption& option, const Theme& theme) {
    auto room = option.rect;
    room.setLeft(room.right() + 1 - theme.extent(Extent::caret) - 2 * theme.space(Space::medium));
    return room;
}

void paintStep(QPainter& painter, const QStyleOptionSpinBox& option, QStyle::SubControl part,
               Caret caret, const Theme& theme) {
    const auto& colors = theme.colors();
    const auto room = FieldDrawing::partOfSpinBox(option, part, theme);
    const auto leads = option.stepEnabled.testFlag(part == QStyle::SC_SpinBoxUp
                                                       ? QAbstractSpinBox::StepUpEnabled
                                                       : QAbstractSpinBox::StepDownEnabled);
    const ControlState state(option);
    if (leads && option.activeSubControls.testFlag(part) && state.isEnabled()) {
        Shapes::paintBox(painter, room, theme.radius(Radius::small),
                         colors.tint(state.isPressed() ? Tint::pressed : Tint::hovered), QColor());
    }
    auto step = option;
    step.state.setFlag(QStyle::State_Enabled, leads && state.isEnabled());
    const FadedWhenDisabled faded(painter, ControlState(step));
    Shapes::paintCaret(painter, room, caret, colors.secondaryText, theme);
}

} // namespace

void FieldDrawing::paintField(QPainter& painter, const QStyleOption& option, const Theme& theme) {
    const auto& colors = theme.colors();
    const ControlState state(option);
    const auto radius = theme.radius(Radius::medium);
    const FadedWhenDisabled faded(painter, state);
    Shapes::paintBox(painter, option.rect, radius, colors.field, colors.border);
    if (state.hasFocus()) {
        Shapes::paintRing(painter, option.rect, radius, colors.accent);
    }
}

void FieldDrawing::paintComboBox(QPainter& painter, const QStyleOptionComboBox& option,
                                 const Theme& theme) {
    const auto& colors = theme.colors();
    const ControlState state(option);
    if (option.editable) {
        paintField(painter, option, theme);
    } else {
        const auto radius = theme.radius(Radius::medium);
        const FadedWhenDisabled faded(painter, state);
        const auto tint = option.state.testFlag(QStyle::State_On) ? Tint::pressed : state.tint();
        if (option.frame || tint != Tint::rest) {
            Shapes::paintBox(painter, option.rect, radius, colors.tint(tint),
                             Shapes::controlEdge(colors));
        }
        if (state.hasFocus()) {
            Shapes::paintRing(painter, option.rect, radius, colors.accent);
        }
    }
    if (option.subControls.testFlag(QStyle::SC_ComboBoxArrow)) {
        const FadedWhenDisabled faded(painter, state);
        Shapes::paintCaret(painter, partOfComboBox(option, QStyle::SC_ComboBoxArrow, theme),
                           Caret::down, colors.secondaryText, theme);
    }
}

QRect FieldDrawing::partOfComboBox(const QStyleOptionComboBox& option, QStyle::SubControl part,
                                   const Theme& theme) {
    const auto caret = caretRoom(option, theme);
    const auto mirrored = [&option](const QRect& place) {
        return QStyle::visualRect(option.direction, option.rect, place);
    };
    switch (part) {
    case QStyle::SC_ComboBoxArrow:
        return mirrored(caret);
    case QStyle::SC_ComboBoxEditField: {
        auto words = option.rect.adjusted(theme.space(Space::medium), 1, 0, -1);
        words.setRight(caret.left() - 1 + theme.space(Space::small));
        return mirrored(words);
    }
    case QStyle::SC_ComboBoxListBoxPopup:
        return option.rect.adjusted(0, 0, 0, theme.space(Space::small));
    default:
        return option.rect;
    }
}

void FieldDrawing::paintSpinBox(QPainter& painter, const QStyleOptionSpinBox& option,
                                const Theme& theme) {
    if (option.frame) {
        paintField(painter, option, theme);
    }
    if (option.buttonSymbols != QAbstractSpinBox::NoButtons) {
        paintStep(painter, option, QStyle::SC_SpinBoxUp, Caret::up, theme);
        paintStep(painter, option, QStyle::SC_SpinBoxDown, Caret::down, theme);
    }
}

QRect FieldDrawing::partOfSpinBox(const QStyleOptionSpinBox& option, QStyle::SubControl part,
                                  const Theme& theme) {
    const auto hasSteps = option.buttonSymbols != QAbstractSpinBox::NoButtons;
    const auto margin = theme.space(Space::hair) + 1;
    auto steps = option.rect.adjusted(0, margin, -margin, -margin);
    steps.setLeft(steps.right() + 1 -
                  (hasSteps ? theme.extent(Extent::caret) + theme.space(Space::medium) : 0));
    const auto middle = steps.top() + steps.height() / 2;
    const auto mirrored = [&option](const QRect& place) {
        return QStyle::visualRect(option.direction, option.rect, place);
    };
    switch (part) {
    case QStyle::SC_SpinBoxUp:
        return mirrored(QRect(steps.topLeft(), QPoint(steps.right(), middle - 1)));
    case QStyle::SC_SpinBoxDown:
        return mirrored(QRect(QPoint(steps.left(), middle), steps.bottomRight()));
    case QStyle::SC_SpinBoxEditField: {
        auto words = option.rect.adjusted(theme.space(Space::small), margin, 0, -margin);
        words.setRight(steps.left() - 1);
        return mirrored(words);
    }
    default:
        return option.rect;
    }
}

void FieldDrawing::paintProgress(QPainter& painter, const QStyleOptionProgressBar& option,
                                 const Theme& theme) {
    const auto& colors = theme.colors();
    const FadedWhenDisabled faded(painter, ControlState(option));
    QRect bar(option.rect.left(), 0, option.rect.width(), theme.extent(Extent::progress));
    bar.moveTop(option.rect.top() + (option.rect.height() - bar.height()) / 2);
    const auto radius = bar.height() / 2.0;
    Shapes::paintBox(painter, bar, radius, colors.tint(Tint::hovered), Shapes::controlEdge(colors));
    const auto range = static_cast<double>(option.maximum) - option.minimum;
    // Of what has no known end a middle part is filled: it is under way, nothing else is known.
    const auto part = range > 0 ? (option.progress - option.minimum) / range : 0.5;
    auto done = bar;
    done.setWidth(std::clamp(static_cast<int>(part * bar.width()), 0, bar.width()));
    if (range <= 0) {
        done.moveLeft(bar.left() + bar.width() / 4);
    }
    if (done.width() > 0) {
        Shapes::paintBox(painter, QStyle::visualRect(option.direction, option.rect, done), radius,
                         colors.accent, QColor());
    }
}

} // namespace korvex::ui
