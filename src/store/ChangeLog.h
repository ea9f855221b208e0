#pragma once

#include "base/Bytes.h"
#include "store/Statement.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvex::store {

/// One row that a save touched: which record type (its place in the schema) and which row.
struct RowChange {
    std::uint8_t type = 0;
    std::int64_t rowid = 0;
};

/// The save that last gave a store other contents as a whole, and what its maker has noted of that.
struct Replacement {
    std::int64_t revision = 0;
    std::string note;
};

/// What each save touched, so that other contexts and programs re-read just that. Kept in the store
/// for the newest revisions; whoever is further behind compares everything.
class ChangeLog {
public:
    /// A save of more rows than this is logged as "everything".
    static constexpr std::size_t kMaximumRows = 16'384;
    /// How many revisions are kept, at least; pruned a batch at a time.
    static constexpr std::int64_t kKeptRevisions = 512;
    static constexpr std::int64_t kPruneEvery = 128;

    explicit ChangeLog(sqlite3* database);

    /// The newest revision; 0 in a new store.
    std::int64_t newestRevision();
    /// Notes what a save touched; to be called in the write transaction of that save.
    void append(std::int64_t revision, const std::vector<RowChange>& changes);
    /// The same of a save that touched more than can be named.
    void appendEverything(std::int64_t revision);

    /// Keeps this instead of the one before; to be called in the transaction of that save.
    static void keepReplacement(sqlite3* database, const Replacement& replacement);
    /// Absent in a store of which that was never done.
    static std::optional<Replacement> lastReplacement(sqlite3* database);

    /// Everything touched after `revision`, rows perhaps named more than once; absent when the log
    /// does not reach back that far or cannot be read.
    std::optional<std::vector<RowChange>> changesSince(std::int64_t revision);

    /// The log's stored form: for each change the type, then the rowid as a difference to the one
    /// before, zigzag, in groups of seven bits.
    static base::Bytes encode(const std::vector<RowChange>& changes);
    /// False for bytes that `encode` does not write.
    static bool decode(std::span<const std::uint8_t> bytes, std::vector<RowChange>& changes);

private:
    /// With what is bound as the changes.
    void runAppend(std::int64_t revision);

    Statement m_newest;
    Statement m_append;
    Statement m_since;
    Statement m_prune;
};

} // namespace korvex::store
