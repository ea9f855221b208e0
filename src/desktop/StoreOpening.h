#pragma once

#include "base/Log.h"
#include "base/Uuid.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <chrono>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace korvex::desktop {

/// Prepares and opens the store (`storage::StoreStart`) on a thread of its own and reads the board
/// that the window will show first: that takes about as long as to come to terms with the window
/// system, which the main thread does meanwhile. Nothing of the store is used by both: it is the
/// other thread's until `take`.
class StoreOpening {
public:
    /// What is to be shown of the store at once.
    struct FirstView {
        /// A board with its entries; Quick Entry shows none.
        bool isBoard = true;
        /// The one that was shown last, if any was.
        std::optional<base::Uuid> board = {};
    };
    /// `log` must outlive this and may be written from the other thread.
    StoreOpening(std::filesystem::path file, FirstView view, base::LogSink& log);

    struct Opened {
        std::unique_ptr<store::ModelContainer> container;
        /// After the container, which must outlive it.
        std::unique_ptr<store::ModelContext> context;
        /// Boards that another took the place of: the preferences are to name that one.
        std::vector<std::pair<base::Uuid, base::Uuid>> mergedBoards;
        /// What the user should know of the start, in full sentences.
        std::vector<std::string> notices;
    };
    /// Whether `take` need not wait, at the latest after this long.
    bool isDoneWithin(std::chrono::milliseconds patience) const {
        return m_opened.wait_for(patience) != std::future_status::timeout;
    }
    /// Waits for the store. Once. Throws the Error that it could not be opened for: a
    /// LegacyStoreError where that is the store of an older program, a plain one with what helps
    /// where anything does.
    Opened take() { return m_opened.get(); }

private:
    std::future<Opened> m_opened;
};

} // namespace korvex::desktop
