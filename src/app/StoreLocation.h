#pragma once

#include <filesystem>
#include <optional>

namespace korvex::app {

/// The store's file name inside the data folder.
inline constexpr const char* kStoreFileName = "Primary.store";

/// Where the store lies: the folder given, else `$XDG_DATA_HOME/korvex`, else
/// `~/.local/share/korvex`. Nothing is created.
std::filesystem::path dataDirectory(const std::optional<std::filesystem::path>& given);

/// The store file inside it.
std::filesystem::path storeFile(const std::filesystem::path& dataDirectory);

} // namespace korvex::app
