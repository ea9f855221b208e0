#pragma once

#include "base/Log.h"
#include "store/OlderTable.h"
#include "store/Schema.h"
#include "store/StoreFile.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace korvex::store {

/// Brings a store of an older version to the current one: a copy is upgraded in one transaction and
/// takes the store's place when it is on the disk. The former file stays beside it under the name
/// "Primary.store.BeforeV17-…", for the current version's name, until `removeFormerStores`. The
/// write lock must be held and no connection be open in this process; waits `patience` for those of
/// others. Takes about as long as to copy the file twice. Throws StoreError, and has then at most
/// moved the journal into the file.
void upgradeStore(const StoreFile& file, const Schema& schema, std::chrono::milliseconds patience,
                  const base::Logger& log);

/// Under which an upgrade keeps the former file (`StoreFile::kept`): "BeforeV17" for
/// `KorvexSchemaV17`.
std::string formerStoreName(const Schema& schema);

/// Gives them names under which they stay, "Primary.store.former-…": the store has lost what only
/// they may still hold. Those that it has from before. Throws StoreError.
std::vector<std::filesystem::path> keepFormerStores(const std::filesystem::path& store,
                                                    const Schema& schema);

/// What an upgrade does to the tables of a copy. `store` is what that is a copy of. Throws
/// StoreError.
void upgradeTables(sqlite3* store, sqlite3* copy, const std::vector<OlderTable>& tables);

/// Whether upgrades to the current version have kept any.
bool hasFormerStores(const std::filesystem::path& store, const Schema& schema);
/// Removes them. To be called once the upgraded store has proven itself. Failures are for the next
/// time.
void removeFormerStores(const std::filesystem::path& store, const Schema& schema) noexcept;

} // namespace korvex::store
