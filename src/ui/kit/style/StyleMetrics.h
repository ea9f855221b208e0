#pragma once

#include "ui/kit/theme/Theme.h"

#include <QStyle>

#include <optional>

namespace korvex::ui {

/// The measures of controls; nothing where Qt's own are to be taken.
namespace StyleMetrics {

std::optional<int> metric(QStyle::PixelMetric metric, const Theme& theme);
std::optional<int> hint(QStyle::StyleHint hint, const Theme& theme);

/// How large a control is around `content`. `base` is how large Qt would make it.
QSize size(QStyle::ContentsType type, const QStyleOption* option, const QSize& content,
           const QSize& base, const Theme& theme);

} // namespace StyleMetrics

} // namespace korvex::ui
