#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

namespace korvex::ui {

/// A table of the controls: a line for each kind, a column for each state.
QWidget* makeControlSamples(const Theme& theme, QWidget* parent);

} // namespace korvex::ui
