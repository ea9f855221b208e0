#pragma once

#include <QString>

#include <optional>

namespace korvex::ui {

/// Longer targets cannot be typed.
inline constexpr int kMaximumLinkLength = 2'048;

/// What was typed as a link's target, as it is stored: a host without a scheme gets "https://", a
/// mail address "mailto:". Absent for what could not be opened afterwards: other schemes, and text
/// that is no address.
std::optional<QString> linkTarget(const QString& typed);

} // namespace korvex::ui
