#pragma once

#include "ui/workspace/Workspace.h"

#include <QString>

#include <filesystem>

namespace korvex::ui {

/// What stands in the title of every window: "Korvex", and "~/Notes – Korvex" over a store that is
/// not in the user's own data folder, since two windows may be open then.
QString programName(const Workspace& workspace);
/// The same before the store in this folder is open.
QString programName(const std::filesystem::path& dataDirectory);

} // namespace korvex::ui
