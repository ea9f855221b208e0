#pragma once

#include "base/Log.h"
#include "store/StoreLock.h"
#include "store/salvage/StoreSalvage.h"

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

    /// Whether older programs have left a store there, or what says that they had one.
    static bool isLeft(const std::filesystem::path& legacy);

    /// Leaves a store in `directory` and the marker that it is complete, in this order, so that a
    /// kill in between costs nothing. A store that stands there already is never replaced, and the
    /// legacy one is never changed. With the marker it costs a look into the folder, in which what
    /// killed runs left is removed. Where the folder may not be written there is nothing to
    /// prepare. Returns what the user should know, in full sentences. Throws SharedStoreError
    /// `incompleteStore`, StoreError, and LegacyStoreError, also where the legacy store is damaged.
    std::vector<std::string> prepare(const std::optional<std::filesystem::path>& legacyURL,
                                     const std::filesystem::path& directory) const;

    struct TakenOver {
        /// In full sentences; none where a store stood in the folder already.
        std::vector<std::string> notices;
        /// Present where the legacy store was damaged.
        std::optional<store::SalvageReport> salvage;
    };
    /// The same for whoever asks for it: of a damaged legacy store what can be read is carried
    /// over, since nothing else is to be had of it. Nobody looks at it any more after that.
    TakenOver takeOver(const std::filesystem::path& legacy,
                       const std::filesystem::path& directory) const;

    /// Opens a store file, upgrades it where it is older, and reads all of it. Throws StoreError,
    /// `damaged` also where only some of it cannot be read.
    void validateStore(const std::filesystem::path& at) const;

private:
    enum class Damaged { refused, salvaged };
    TakenOver makePlace(const std::optional<std::filesystem::path>& legacyURL,
                        const std::filesystem::path& store, Damaged whenDamaged) const;
    /// Makes of whatever throws one error with one line in the log.
    TakenOver makePlaceOrSay(const std::optional<std::filesystem::path>& legacyURL,
                             const std::filesystem::path& directory, Damaged whenDamaged) const;
    TakenOver carryOver(const std::filesystem::path& legacy, const std::filesystem::path& store,
                        Damaged whenDamaged) const;
    /// What can be read, in the place of the staged copy. `record`: what the legacy store's lock
    /// says of it.
    store::SalvageReport salvage(const std::filesystem::path& staged,
                                 const std::filesystem::path& legacy,
                                 const std::optional<store::StoreLock::Record>& record) const;

    base::LogSink* m_sink;
    base::Logger m_log;
};

} // namespace korvex::storage
