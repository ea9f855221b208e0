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

/// Whether this is the folder that is used where none is given. What there is once for a user,
/// belongs to the store in it.
bool isUsersOwn(const std::filesystem::path& dataDirectory);

/// Where programs kept a store before all shared one: `$XDG_DATA_HOME/Korvex/default.store`. Only
/// the user's own data folder takes it over; absent for any other.
std::optional<std::filesystem::path> legacyStoreFile(const std::filesystem::path& dataDirectory);

/// The store file inside it.
std::filesystem::path storeFile(const std::filesystem::path& dataDirectory);

/// What files that lie elsewhere and belong to this store have in their names: 16 hexadecimal
/// digits, others for each path.
std::string storeMark(const std::filesystem::path& storeFile);

/// The agent's file of requests for the store in a data folder, in the folder for the state of
/// programs: `reminders.sqlite`, and where the environment has put the store in another place than
/// the usual one, with the store's mark in its name. What is planned of one store is not another's.
std::filesystem::path reminderFile(const std::filesystem::path& stateFolder,
                                   const std::filesystem::path& dataDirectory);

/// To be asked before a store is opened that is made where there is none: what the user is to be
/// told then, where drafts that lie there show that the folder has held one before.
std::optional<std::string> missingStoreNotice(const std::filesystem::path& dataDirectory);

} // namespace korvex::app
