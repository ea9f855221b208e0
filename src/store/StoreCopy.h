#pragma once

#include <filesystem>

namespace korvex::store {

/// Makes `copy` a store that holds what `store` holds at one moment, its journal included. `store`
/// may be in use, of any version, and need not be writable; it is not changed. The copy is there
/// whole, in one file and on the disk, or not at all; it never replaces a file. Blocks; any thread.
/// Throws StoreError.
void copyStore(const std::filesystem::path& store, const std::filesystem::path& copy);

} // namespace korvex::store
