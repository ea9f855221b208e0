#pragma once

#include "base/Instant.h"
#include "base/Log.h"
#include "base/Uuid.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace korvex::storage {

/// A store that is ready to be worked with.
struct StartedStore {
    std::unique_ptr<store::ModelContainer> container;
    /// After the container, which must outlive it.
    std::unique_ptr<store::ModelContext> context;
    /// Boards that another took the place of: the preferences are to name that one.
    std::vector<std::pair<base::Uuid, base::Uuid>> mergedBoards;
    /// What the user should know of this start, in full sentences.
    std::vector<std::string> notices;
};

/// What a program that may prepare the store does with it at its start, in this order: prepares the
/// folder, opens the store, which upgrades or creates it, and repairs its metadata. The boards that
/// every store has come next, from the board service, and the preferences follow the boards that
/// were merged. They may have been read before all this, since they name a board only where it is
/// asked for.
///
/// The repair reads every entry, so it runs where something else than this build's services has
/// written to the store: after an upgrade, where the file has come from elsewhere, and where an
/// older build's rules of repair were the last. A start that needs none of it looks into the folder
/// and reads one marker: some twenty microseconds. The thread that calls it becomes the store's.
class StoreStart {
public:
    struct Request {
        std::filesystem::path storeFile;
        /// The store of older programs, where there may be one.
        std::optional<std::filesystem::path> legacyFile = std::nullopt;
        std::optional<std::string> cloudKitIdentifier = std::nullopt;
        base::Instant now;
    };
    /// Throws StoreError, SharedStoreError and LegacyStoreError. A repair that fails is logged and
    /// tried again at the next start. A damaged store opens as it is, where it does, and is not
    /// repaired: what is altered in it must stay known to be.
    static StartedStore open(const Request& request, base::LogSink& log);
};

} // namespace korvex::storage
