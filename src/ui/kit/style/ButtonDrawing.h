#pragma once

#include "ui/kit/theme/Theme.h"

#include <QStyleOption>

class QPainter;

namespace korvex::ui {

/// Buttons, check boxes and radio buttons without their words, which Qt draws in the colours that
/// are said here.
namespace ButtonDrawing {

/// What a push button does: what the others do not, what Return does, or something that takes
/// things away for good.
enum class Weight { plain, chief, dangerous };
Weight weightOf(const QStyleOptionButton& option, const QWidget* button);
/// The ground of a push button and the ring of the one that has the keyboard.
void paintPush(QPainter& painter, const QStyleOptionButton& option, Weight weight,
               const Theme& theme);
/// The colour of a push button's words where the palette's is not to be taken; else not valid.
QColor wordsOf(const QStyleOptionButton& option, Weight weight, const ThemeColors& colors);

void paintTool(QPainter& painter, const QStyleOption& option, const Theme& theme);
/// Whether a caret stands behind the icon and the words.
bool hasCaret(const QStyleOptionToolButton& option);
/// The room of icon and words, and that of the caret.
QRect labelOf(const QStyleOptionToolButton& option, const Theme& theme);
QRect caretOf(const QStyleOptionToolButton& option, const Theme& theme);

void paintCheckBox(QPainter& painter, const QStyleOption& option, const Theme& theme);
/// The ring around the box or circle and its words, however wide the control was made.
QRect ringOf(const QStyleOptionButton& option, const Theme& theme);
void paintRadio(QPainter& painter, const QStyleOption& option, const Theme& theme);

} // namespace ButtonDrawing

} // namespace korvex::ui
