#pragma once

#include "ui/workspace/Workspace.h"

#include <QString>

namespace korvex::ui {

/// What stands in the title of every window: "Korvex", and "~/Notes – Korvex" over a store that is
/// not in the user's own data folder, since two windows may be open then.
QString programName(const Workspace& workspace);

} // namespace korvex::ui
