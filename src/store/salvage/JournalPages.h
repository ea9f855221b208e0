#pragma once

#include "base/Bytes.h"
#include "base/FileDescriptor.h"
#include "store/salvage/Ticker.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

namespace korvex::store {

class DamagedPages;

/// What was committed to a journal of a database, page by page, read without SQLite. That would
/// remove a journal beside an empty file, trust the file's own first page before the journal's, and
/// put nothing into a file that is much shorter than the journal says.
class JournalPages {
public:
    /// Reads all of it; one that is not open has no pages. Whatever follows a page that is damaged,
    /// or that the disk does not give, counts for nothing, as to SQLite. The descriptor must
    /// outlive this.
    JournalPages(const base::FileDescriptor& journal, const Ticker& ticker);

    /// Absent where there is no journal, or its head is damaged.
    std::optional<std::size_t> pageSize() const;
    /// Whether the disk gave all of it.
    bool isWhole() const { return m_isWhole; }
    /// Each page as it was committed last, in a file that is no shorter than it was then. Throws
    /// StoreError.
    void writeTo(const DamagedPages& pages) const;

private:
    struct Sum {
        std::uint32_t first = 0;
        std::uint32_t second = 0;
        bool operator==(const Sum&) const = default;
    };
    /// False where the journal ends before.
    bool read(off_t from, base::Bytes& bytes);
    bool readHead();
    void readFrames(const Ticker& ticker);
    /// Goes on from the sum of what stands before.
    Sum sum(Sum before, const base::Bytes& bytes, std::size_t from, std::size_t size) const;
    static Sum sumAt(const base::Bytes& bytes, std::size_t offset);

    const base::FileDescriptor& m_journal;
    std::size_t m_pageSize = 0;
    /// Of the database, by the last commit.
    std::uint32_t m_pageCount = 0;
    bool m_isHighestFirst = false;
    bool m_isWhole = true;
    /// Of what was read so far.
    Sum m_sum;
    /// What each page of this journal, and not of one that stood in the file before, is marked by.
    base::Bytes m_salt;
    /// Where in the journal each page stands.
    std::map<std::uint32_t, off_t> m_places;
};

} // namespace korvex::store
