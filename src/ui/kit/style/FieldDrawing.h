#pragma once

#include "ui/kit/theme/Theme.h"

#include <QStyle>
#include <QStyleOption>

class QPainter;

namespace korvex::ui {

/// What is filled in: lines of text, numbers, choices; and bars that show a number.
namespace FieldDrawing {

void paintField(QPainter& painter, const QStyleOption& option, const Theme& theme);

void paintComboBox(QPainter& painter, const QStyleOptionComboBox& option, const Theme& theme);
QRect partOfComboBox(const QStyleOptionComboBox& option, QStyle::SubControl part,
                     const Theme& theme);

void paintSpinBox(QPainter& painter, const QStyleOptionSpinBox& option, const Theme& theme);
QRect partOfSpinBox(const QStyleOptionSpinBox& option, QStyle::SubControl part, const Theme& theme);

void paintProgress(QPainter& painter, const QStyleOptionProgressBar& option, const Theme& theme);

} // namespace FieldDrawing

} // namespace korvex::ui
