#pragma once

#include <filesystem>

namespace korvex::app {

/// The folder that the XDG variable names, else the one under the user's home. As XDG has it, a
/// variable that is empty or holds a relative path counts as not set.
std::filesystem::path userFolder(const char* variable, const std::filesystem::path& underHome);
/// The one under the user's home, whatever any variable says.
std::filesystem::path folderUnderHome(const std::filesystem::path& underHome);

} // namespace korvex::app
