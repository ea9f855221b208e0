#pragma once

#include "base/Log.h"
#include "store/ModelContainer.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace korvex::storage {

/// The one store that all programs of a user share: how it is opened. Whoever may prepare it does
/// so first (`StoreStart`); others open with `existingStoreOnly`, which creates nothing.
class SharedModelContainer {
public:
    /// The schema of this build.
    static const store::Schema& schema();
    /// For the store file, kept in step with a cloud container where one is named.
    static store::ModelConfiguration
    configuration(const std::filesystem::path& at,
                  const std::optional<std::string>& cloudKitIdentifier);

    struct Options {
        bool isStoredInMemoryOnly = false;
        /// Else the one in the user's data folder.
        std::optional<std::filesystem::path> storeURL = std::nullopt;
        bool existingStoreOnly = false;
        std::optional<std::string> cloudKitIdentifier = std::nullopt;
        /// Else an existing store is only opened as it is, and any other one upgraded.
        std::optional<store::ModelConfiguration::Older> whenOlder = std::nullopt;
        /// How long opening, and each step after it, waits for other programs; else as long as a
        /// migration may take.
        std::optional<std::chrono::milliseconds> lockTimeout = std::nullopt;
    };
    /// Where opening with a cloud fails, the same file opens without it. Throws StoreError, and
    /// SharedStoreError: `appGroupUnavailable` where the user has no data folder; of an existing
    /// store only `notPrepared`, `incompleteStore` and `cloudMigrationRequired`.
    static std::unique_ptr<store::ModelContainer> make(const Options& options, base::LogSink& log);

    /// For whoever looks at a store or repairs it: one that is there, prepared or not. Creates
    /// none. Throws StoreError and SharedStoreError `incompleteStore`.
    static std::unique_ptr<store::ModelContainer>
    openExisting(const std::filesystem::path& file, store::ModelConfiguration::Older whenOlder,
                 base::LogSink& log);
    /// Of whatever version; nothing is changed. Throws StoreError.
    static void checkThatItIsAStore(const std::filesystem::path& file, base::LogSink& log);
};

} // namespace korvex::storage
