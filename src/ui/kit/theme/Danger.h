#pragma once

#include <QVariant>
#include <QWidget>

namespace korvex::ui {

/// The name of the property by which the style knows a button that takes something away for good.
inline constexpr auto kDangerProperty = "danger";

enum class Danger { no, yes };

inline void markDangerous(QWidget& button, Danger danger = Danger::yes) {
    button.setProperty(kDangerProperty, danger == Danger::yes);
}

inline bool isDangerous(const QWidget* button) {
    return button && button->property(kDangerProperty).toBool();
}

} // namespace korvex::ui
