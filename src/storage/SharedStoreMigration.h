#pragma once

#include "base/Log.h"

#include <filesystem>
#include <optional>

namespace korvex::storage {

/// Makes a folder the place of the store that all programs share, once: with the store that older
/// programs kept elsewhere, or with a new one. Any thread; several programs may do it at once.
class SharedStoreMigration {
public:
    explicit SharedStoreMigration(base::LogSink& log);

    /// Leaves a store in `directory` and the marker that it is complete, in this order, so that a
    /// kill in between costs nothing. A store that stands there already is never replaced, and the
    /// legacy one is never changed. With the marker it costs a look into the folder, in which what
    /// killed runs left is removed. Where the folder may not be written there is nothing to
    /// prepare. Throws SharedStoreError `incompleteStore` and StoreError.
    void prepare(const std::optional<std::filesystem::path>& legacyURL,
                 const std::filesystem::path& directory) const;

    /// Opens a store file, upgrades it where it is older, and reads all of it. What is damaged in
    /// it is logged: it can be repaired later. Throws StoreError where it is no readable store.
    void validateStore(const std::filesystem::path& at) const;

private:
    void carryOver(const std::filesystem::path& legacy, const std::filesystem::path& store) const;

    base::LogSink* m_sink;
    base::Logger m_log;
};

} // namespace korvex::storage
