#include "store/ChangeLog.h"

namespace korvex::store {

ChangeLog::ChangeLog(sqlite3* database)
    : m_newest(database, "SELECT ifnull(max(revision), 0) FROM ChangeLog"),
      m_append(database, "INSERT INTO ChangeLog(revision, changes) VALUES(?, ?)"),
      m_since(database, "SELECT revision, changes FROM ChangeLog WHERE revision > ? "
                        "ORDER BY revision"),
      m_prune(database, "DELETE FROM ChangeLog WHERE revision <= ?") {}

std::int64_t ChangeLog::newestRevision() {
    std::int64_t revision = 0;
    while (m_newest.step()) {
        revision = m_newest.integer(0);
    }
    return revision;
}

void ChangeLog::append(std::int64_t revision, const std::vector<RowChange>& changes) {
    if (changes.size() > kMaximumRows) {
        appendEverything(revision);
        return;
    }
    const auto encoded = encode(changes);
    m_append.bind(1, std::span<const std::uint8_t>(encoded));
    runAppend(revision);
}

void ChangeLog::appendEverything(std::int64_t revision) {
    m_append.bindAbsent(1);
    runAppend(revision);
}

void ChangeLog::keepReplacement(sqlite3* database, const Replacement& replacement) {
    Statement(database, "CREATE TABLE IF NOT EXISTS "
                        "Replacement(revision INTEGER NOT NULL, note TEXT NOT NULL)")
        .run();
    Statement(database, "DELETE FROM Replacement").run();
    Statement insert(database, "INSERT INTO Replacement(revision, note) VALUES(?, ?)");
    insert.bind(0, replacement.revision);
    insert.bind(1, std::string_view(replacement.note));
    insert.run();
}

std::optional<Replacement> ChangeLog::lastReplacement(sqlite3* database) {
    auto isKept = false;
    // Made by the first replacement.
    Statement table(database, "SELECT 1 FROM sqlite_master WHERE name = 'Replacement'");
    while (table.step()) {
        isKept = true;
    }
    std::optional<Replacement> last;
    if (isKept) {
        Statement row(database, "SELECT revision, note FROM Replacement");
        while (row.step()) {
            last = {.revision = row.integer(0), .note = std::string(row.text(1))};
        }
    }
    return last;
}

void ChangeLog::runAppend(std::int64_t revision) {
    m_append.bind(0, revision);
    m_append.run();
    if (revision % kPruneEvery == 0) {
        m_prune.bind(0, revision - kKeptRevisions);
        m_prune.run();
    }
}

std::optional<std::vector<RowChange>> ChangeLog::changesSince(std::int64_t revision) {
    std::vector<RowChange> changes;
    auto expected = revision;
    bool isComplete = true;
    m_since.bind(0, revision);
    while (m_since.step()) {
        ++expected;
        isComplete = isComplete && m_since.integer(0) == expected && !m_since.isAbsent(1) &&
                     decode(m_since.bytes(1), changes);
    }
    return isComplete ? std::optional(std::move(changes)) : std::nullopt;
}

base::Bytes ChangeLog::encode(const std::vector<RowChange>& changes) {
    base::Bytes bytes;
    bytes.reserve(changes.size() * 3);
    std::int64_t previous = 0;
    for (const auto& change : changes) {
        bytes.push_back(change.type);
        const auto difference =
            static_cast<std::uint64_t>(change.rowid) - static_cast<std::uint64_t>(previous);
        const auto sign = static_cast<std::int64_t>(difference) < 0 ? ~std::uint64_t{0} : 0;
        auto zigzag = (difference << 1U) ^ sign;
        while (zigzag >= 0x80) {
            bytes.push_back(static_cast<std::uint8_t>(zigzag | 0x80U));
            zigzag >>= 7U;
        }
        bytes.push_back(static_cast<std::uint8_t>(zigzag));
        previous = change.rowid;
    }
    return bytes;
}

bool ChangeLog::decode(std::span<const std::uint8_t> bytes, std::vector<RowChange>& changes) {
    std::uint64_t previous = 0;
    std::size_t at = 0;
    while (at < bytes.size()) {
        const auto type = bytes[at++];
        std::uint64_t zigzag = 0;
        unsigned shift = 0;
        bool isDone = false;
        while (at < bytes.size() && shift < 64 && !isDone) {
            const auto group = bytes[at++];
            zigzag |= static_cast<std::uint64_t>(group & 0x7fU) << shift;
            shift += 7;
            isDone = group < 0x80;
        }
        if (!isDone) {
            return false;
        }
        previous += (zigzag >> 1U) ^ (~(zigzag & 1U) + 1);
        changes.push_back({type, static_cast<std::int64_t>(previous)});
    }
    return true;
}

} // namespace korvex::store
