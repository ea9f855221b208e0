#pragma once

#include <QString>

#include <string_view>

namespace korvex::ui {

/// The name in the icon set for a board's stored symbol: "folder-fill" for "folder.fill". An
/// unknown symbol gets the default icon.
QString boardIconName(std::string_view symbol);

} // namespace korvex::ui
