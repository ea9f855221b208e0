#pragma once

#include "storage/SharedStoreError.h"
#include "store/StoreError.h"

#include <filesystem>
#include <string>

namespace korvex::storage {

/// What saves or mends a store, as it is typed in a terminal.
std::string repairCommand(const std::filesystem::path& storeFile);

/// What has failed: a repair is not advised where it was tried.
enum class Attempt { opening, repair };
/// What a person can do about a store that could not be used for this reason: the command that
/// saves what can be read of it, and where else what it held is kept. In full sentences, to be told
/// behind the reason; empty where that says all.
std::string adviceOn(store::StoreErrorCase reason, const std::filesystem::path& storeFile,
                     Attempt attempt = Attempt::opening);
std::string adviceOn(SharedStoreErrorCase reason, const std::filesystem::path& storeFile);
/// That a store that opens is damaged, and what saves what can be read of it.
std::string damageNotice(const std::filesystem::path& storeFile);
/// The part of it on backups.
std::string adviceOnBackups(const std::filesystem::path& storeFile);

} // namespace korvex::storage
