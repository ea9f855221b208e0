#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace korvex::base {

/// Gives a file new contents, all or nothing: written beside it, synced, renamed over it. A
/// symbolic link stays one, its target is replaced; the permissions stay. Missing folders are made.
/// Any thread.
std::error_code replaceFile(const std::filesystem::path& file, std::string_view contents);

} // namespace korvex::base
