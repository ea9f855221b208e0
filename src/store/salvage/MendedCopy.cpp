#include "store/salvage/MendedCopy.h"

#include "store/SoleHold.h"
#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/salvage/DamagedRows.h"
#include "store/salvage/JournalPages.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace korvex::store {

namespace {

constexpr std::chrono::milliseconds kWait{2};
/// Which bytes of a database's file SQLite locks: for a connection's life, in the mode with a
/// journal.
constexpr off_t kLockedFrom = 0x40000000;
constexpr off_t kLockedBytes = 512;

/// Of a copy: in one go, and where the disk does not give that.
constexpr std::size_t kPiece = 1 << 20;
constexpr std::size_t kSector = 4096;

/// How many times as long a file that was cut may have been: its header may be damaged, too.
constexpr std::uint64_t kMostGrowth = 1'000;

constexpr std::size_t kVersionInHeader = 60;
constexpr std::size_t kApplicationIDInHeader = 68;

/// Whether the first page was written by this system.
bool isOurs(const base::Bytes& page) {
    return std::equal(StoreFile::kMagic.begin(), StoreFile::kMagic.end(), page.begin()) &&
           numberAt(page, kApplicationIDInHeader, 4) == StoreFile::kApplicationID;
}

} // namespace

bool copyReadable(const base::FileDescriptor& source, const std::filesystem::path& copy,
                  const Ticker& ticker) {
    const base::FileDescriptor target(
        ::open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    struct stat status {};
    if (!target.isOpen() || ::fstat(source.get(), &status) != 0 ||
        ::ftruncate(target.get(), status.st_size) != 0) {
        throwSystemError(errno);
    }
    std::vector<char> piece(kPiece);
    auto isWhole = true;
    auto wanted = kPiece;
    for (off_t at = 0; at < status.st_size;) {
        ticker.tick();
        const auto size = ::pread(source.get(), piece.data(), wanted, at);
        if (size == 0) {
            return false;
        }
        if (size > 0) {
            const auto written =
                ::pwrite(target.get(), piece.data(), static_cast<std::size_t>(size), at);
            if (written != size) {
                throwSystemError(written < 0 ? errno : ENOSPC);
            }
            at += size;
        } else if (errno == EIO) {
            // From its beginning, a sector at a time.
            at += wanted == kSector ? off_t{kSector} - at % off_t{kSector} : 0;
            isWhole = isWhole && wanted != kSector;
            wanted = kSector;
        } else if (errno != EINTR) {
            throwSystemError(errno);
        }
        wanted = at % off_t{kPiece} == 0 && size > 0 ? kPiece : wanted;
    }
    return isWhole;
}

namespace {

/// That the header names, where there is such a one.
std::optional<std::int32_t> versionOf(const base::Bytes& page, const Schema& schema) {
    const auto number = static_cast<std::int32_t>(numberAt(page, kVersionInHeader, 4));
    const auto isOne = std::any_of(schema.history.begin(), schema.history.end(),
                                   [&](const auto& each) { return each.number == number; });
    return isOurs(page) && isOne ? std::optional(number) : std::nullopt;
}

/// What follows the header is of the tables' making.
base::Bytes headerOf(base::Bytes page) {
    page.resize(StoreFile::kHeaderBytes);
    return page;
}

} // namespace

MendedCopy::MendedCopy(const StoreFile& file, const Schema& schema,
                       std::chrono::milliseconds patience, Ticker& ticker)
    : m_file(file),
      m_schema(schema),
      m_ticker(ticker),
      m_layouts(storeLayouts(schema)),
      m_copy(file.stagingName()) {
    holdAlone(patience);
    try {
        copy();
        if (opensWithItsHeader() || opensWithNewHeader()) {
            findLooseTrees();
        } else if (!opensWithNewFirstPage()) {
            throw StoreError(StoreErrorCase::nothingReadable);
        }
    } catch (...) {
        m_database.reset();
        m_file.removeStaging();
        throw;
    }
}

MendedCopy::~MendedCopy() {
    m_database.reset();
    m_file.removeStaging();
}

void MendedCopy::holdAlone(std::chrono::milliseconds patience) {
    m_held = base::FileDescriptor(::open(m_file.path().c_str(), O_RDWR | O_CLOEXEC));
    if (!m_held.isOpen()) {
        throwSystemError(errno);
    }
    const auto deadline = std::chrono::steady_clock::now() + patience;
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = kLockedFrom;
    lock.l_len = kLockedBytes;
    while (::fcntl(m_held.get(), F_OFD_SETLK, &lock) != 0) {
        if (errno != EAGAIN && errno != EACCES) {
            throwSystemError(errno);
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            throw StoreError(StoreErrorCase::busy, holdersOf(m_file.path()));
        }
        std::this_thread::sleep_for(kWait);
    }
}

/// Of a store that was killed just before another took its place it has its later name.
base::FileDescriptor MendedCopy::openJournal(const char* suffix) const {
    for (const auto& of : {m_file.path(), m_file.keptName("damaged")}) {
        base::FileDescriptor journal(::open((of.native() + suffix).c_str(), O_RDONLY | O_CLOEXEC));
        if (journal.isOpen()) {
            return journal;
        }
        if (errno != ENOENT) {
            throwSystemError(errno);
        }
    }
    return {};
}

void MendedCopy::copy() {
    m_mayLackTables = !copyReadable(m_held, m_copy, m_ticker);
    const auto journal = openJournal(StoreFile::kJournal);
    const JournalPages committed(journal, m_ticker);
    m_pages.emplace(m_copy, committed.pageSize());
    if (const auto former = openJournal(StoreFile::kRollback); former.isOpen()) {
        const auto isWhole = copyReadable(former, m_copy.native() + StoreFile::kRollback, m_ticker);
        m_mayLackTables = m_mayLackTables || !isWhole;
        rollBack();
    }
    committed.writeTo(*m_pages);
    m_mayLackTables = m_mayLackTables || !committed.isWhole();
    if (const auto first = m_pages->read(1); isOurs(first)) {
        // SQLite opens nothing of a file that ends before one of its tables begins.
        const auto most = std::uint64_t{m_pages->count()} * kMostGrowth;
        m_pages->growTo(
            static_cast<std::uint32_t>(std::min<std::uint64_t>(pageCount(first), most)));
    }
}

void MendedCopy::open() {
    m_database.reset();
    try {
        m_database = std::make_unique<SQLite::Database>(m_copy.string(), SQLite::OPEN_READWRITE);
    } catch (const SQLite::Exception& error) {
        throwSqliteError(nullptr, error.getExtendedErrorCode());
    }
    m_ticker.accompany(handle());
    for (const auto* sql : {"PRAGMA synchronous = OFF", "PRAGMA journal_mode = MEMORY"}) {
        Statement statement(handle(), sql);
        while (statement.step()) {
        }
    }
}

/// What a killed program had begun to write past the journal, which SQLite takes back where it
/// opens the file.
void MendedCopy::rollBack() {
    const auto first = m_pages->read(1);
    const auto stranger = firstPage(m_layouts.front(), m_pages->size(), m_pages->count(), 2);
    m_pages->write(1, stranger);
    try {
        open();
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
    }
    m_database.reset();
    const auto after = m_pages->read(1);
    constexpr auto kHeader = StoreFile::kHeaderBytes;
    if (std::equal(after.begin() + kHeader, after.end(), stranger.begin() + kHeader)) {
        m_pages->write(1, first); // it was not among what was written
    }
}

/// Where a page that leads to others is damaged, those are still there.
void MendedCopy::findLooseTrees() {
    if (!areComplete(handle(), m_tables)) {
        m_looseTrees = {
            .roots = m_pages->roots(m_ticker), .areTablesKnown = true, .areExternalsKnown = true};
        std::erase_if(m_looseTrees.roots, [free = m_pages->freePages()](std::uint32_t page) {
            return free.contains(page);
        });
    }
}

/// Only its header, which is lost, would say of which version it is.
bool MendedCopy::hasNewerColumns() const {
    std::set<std::string> known{"rowid", "version", "checksum"};
    for (const auto& version : m_schema.history) {
        for (const auto& table : olderTables(m_schema, version.number)) {
            for (const auto& field : table.rowFields()) {
                known.emplace(field.name);
            }
        }
    }
    return std::any_of(m_tables.begin(), m_tables.end(), [&](const OlderTable& table) {
        const auto columns = columnsOf(handle(), table.type->name);
        return !std::includes(known.begin(), known.end(), columns.begin(), columns.end());
    });
}

bool MendedCopy::opensWithItsHeader() {
    auto header = headerOf(m_pages->read(1));
    if (!isOurs(header)) {
        return false;
    }
    setPageCount(header, m_pages->count());
    m_pages->write(1, header);
    try {
        open();
        m_tables = olderTables(m_schema, StoreFile::version(handle(), m_schema));
        return hasTables(handle(), m_tables);
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
        return false;
    }
}

bool MendedCopy::opensWithNewHeader() {
    const auto former = headerOf(m_pages->read(1));
    // A table whose column has lost its name may look like that of an older version.
    const auto known = versionOf(former, m_schema);
    m_pages->write(1, headerOf(firstPage(m_layouts.front(), m_pages->size(), m_pages->count(), 2)));
    try {
        open();
        for (auto at = m_schema.history.rbegin(); at != m_schema.history.rend(); ++at) {
            m_tables = olderTables(m_schema, at->number);
            if (known.value_or(at->number) == at->number && hasTables(handle(), m_tables)) {
                if (hasNewerColumns()) {
                    throw StoreError(StoreErrorCase::newerVersion);
                }
                return true;
            }
        }
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
    }
    m_database.reset();
    m_pages->write(1, former);
    return false;
}

bool MendedCopy::opensWithNewFirstPage() {
    m_database.reset();
    const auto& pages = *m_pages;
    const auto isKnownToBeOurs = isOurs(pages.read(1));
    const auto roots = pages.roots(m_ticker);
    const auto none = std::max(pages.count(), 1U) + 1;
    pages.write(none, emptyTablePage(pages.size()));
    const auto find = [&](const StoreLayout& layout) {
        m_database.reset();
        pages.write(1, firstPage(layout, pages.size(), none, none));
        open();
        m_tables = olderTables(m_schema, layout.version);
        return TableRoots(handle(), layout, m_tables, roots, none, m_ticker);
    };
    const StoreLayout* best = nullptr;
    std::int64_t most = 0;
    auto mayLack = false;
    for (const auto& layout : m_layouts) {
        const auto found = find(layout);
        const auto isWhole = found.areAllFound() && found.otherRows() == 0 && found.areComplete();
        if (isWhole || found.soundRows() > most) {
            most = found.soundRows();
            best = &layout;
            mayLack = !found.areCertain() || !found.areComplete();
        }
        if (isWhole) {
            m_mayLackTables = m_mayLackTables || mayLack;
            m_looseTrees = {.roots = roots,
                            .areTablesKnown = true,
                            .areExternalsKnown = found.areExternalsKnown()};
            return true;
        }
    }
    if (!best && !isKnownToBeOurs) {
        return false;
    }
    m_mayLackTables = m_mayLackTables || mayLack || !best;
    find(best ? *best : m_layouts.front());
    m_looseTrees.roots = roots;
    return true;
}

} // namespace korvex::store
