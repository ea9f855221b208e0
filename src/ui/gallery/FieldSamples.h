#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

namespace korvex::ui {

/// Days and times that are typed, one of them not to be read, and a month with a range of days.
QWidget* makeFieldSamples(const Theme& theme, QWidget* parent);

} // namespace korvex::ui
