#pragma once

#include "base/Log.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvex::storage {

/// Makes a folder the place of the store that all programs share, once: with the store that older
/// programs kept elsewhere, or with a new one. Any thread; several programs may do it at once.
class SharedStoreMigration {
public:
    explicit SharedStoreMigration(base::LogSink& log);

    /// Leaves a store in `directory` and the marker that it is complete, in this order, so that a
    /// kill in between costs nothing. A store that stands there already is never replaced, and the
    /// legacy one is never changed; of a damaged one what can be read is carried over. With the
    /// marker it costs a look into the folder, in which what killed runs left is removed. Where the
    /// folder may not be written there is nothing to prepare. Returns what the user should know, in
    /// full sentences. Throws SharedStoreError `incompleteStore`, LegacyStoreError and
    /// StoreError.
    std::vector<std::string> prepare(const std::optional<std::filesystem::path>& legacyURL,
                                     const std::filesystem::path& directory) const;

    /// Opens a store file, upgrades it where it is older, and reads all of it. Throws StoreError,
    /// `damaged` also where only some of it cannot be read.
    void validateStore(const std::filesystem::path& at) const;

private:
    std::vector<std::string> makePlace(const std::optional<std::filesystem::path>& legacyURL,
                                       const std::filesystem::path& store) const;
    std::vector<std::string> carryOver(const std::filesystem::path& legacy,
                                       const std::filesystem::path& store) const;
    /// Whether the copy is a sound one; else what can be read of it is still to be saved.
    bool copyWhole(const std::filesystem::path& legacy, const std::filesystem::path& staged) const;
    /// Of a staged copy of a legacy store; what is to be said of it.
    std::string salvage(const std::filesystem::path& staged,
                        const std::filesystem::path& legacy) const;

    base::LogSink* m_sink;
    base::Logger m_log;
};

} // namespace korvex::storage
