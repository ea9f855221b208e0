#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace korvex::app {

/// The store's file name inside the data folder.
inline constexpr const char* kStoreFileName = "Primary.store";

/// Where the store lies: the folder given, else `$XDG_DATA_HOME/korvex`, else
/// `~/.local/share/korvex`. Nothing is created.
std::filesystem::path dataDirectory(const std::optional<std::filesystem::path>& given);

/// The store file inside it.
std::filesystem::path storeFile(const std::filesystem::path& dataDirectory);

/// To be asked before a store is opened that is made where there is none: what the user is to be
/// told then, where drafts that lie there show that the folder has held one before.
std::optional<std::string> missingStoreNotice(const std::filesystem::path& dataDirectory);

} // namespace korvex::app
