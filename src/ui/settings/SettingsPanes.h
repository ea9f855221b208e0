#pragma once

#include "ui/settings/BackupOperations.h"
#include "ui/settings/SettingsPane.h"

#include <vector>

namespace korvex::ui {

/// All panes, in the order in which they are listed. The workspace and the theme outlive them.
std::vector<SettingsPaneMaker> settingsPanes(const Workspace& workspace, EditingWindows windows,
                                             const Theme& theme);

} // namespace korvex::ui
