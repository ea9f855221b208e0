#pragma once

#include <QVariant>
#include <QWidget>

namespace korvex::ui {

/// The name of the property by which the style knows a button that takes something away for good.
inline constexpr auto kDangerProperty = "danger";

inline void markDangerous(QWidget& button) {
    button.setProperty(kDangerProperty, true);
}

inline bool isDangerous(const QWidget* button) {
    return button && button->property(kDangerProperty).toBool();
}

} // namespace korvex::ui
