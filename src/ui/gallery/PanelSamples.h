#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

namespace korvex::ui {

/// What lies over the content, drawn within it so that one picture shows all: a menu, a list of
/// choices, a question, banners; and what scrolls.
QWidget* makePanelSamples(const Theme& theme, QWidget* parent);

} // namespace korvex::ui
