#pragma once

#include <filesystem>
#include <string_view>

namespace korvex::storage::storeMarkers {

// Files beside the store whose presence says what has been done with it.

/// The store is ready for every program; it says which rules of repair the store was held to.
inline constexpr std::string_view kPrepared = "migration-v1-complete";
/// The store is ready to be kept in step with a cloud.
inline constexpr std::string_view kPreparedForCloud = "cloud-v11-prepared";

/// Whether the marker stands beside the store.
bool isSet(const std::filesystem::path& store, std::string_view marker);
/// Sets it, for good. `contents`: what it says. Throws StoreError.
void set(const std::filesystem::path& store, std::string_view marker,
         std::string_view contents = {});
/// Removes what killed programs left when they set one.
void removeLeftBehind(const std::filesystem::path& store);
/// Whether it says just that.
bool says(const std::filesystem::path& store, std::string_view marker, std::string_view contents);

/// Throws SharedStoreError `incompleteStore` where the folder says that it has the store of all
/// programs and the store is not there. What cannot be looked at is left to whoever opens it.
void checkThatNothingIsGone(const std::filesystem::path& store);

} // namespace korvex::storage::storeMarkers
