#include "storage/DataIntegrityService.h"

#include "base/Error.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "services/BoardService.h"
#include "services/EntryNumbering.h"
#include "services/OrderKey.h"
#include "storage/SoundValues.h"
#include "storage/UnreadableContents.h"
#include "store/ModelContainer.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace korvex::storage {

namespace {

using model::Board;
using model::Entry;

/// How often a store that others write to meanwhile is looked at anew before they have to wait.
constexpr int kLooks = 3;

/// The numbers of a board's entries.
struct EntryNumbers {
    std::vector<std::int64_t> active;
    std::vector<std::int64_t> completed;
};

/// Whether they are the numbers from `first` on, each once, in whatever order.
bool areDense(const std::vector<std::int64_t>& numbers, std::size_t first) {
    std::vector<bool> seen(numbers.size());
    for (const auto number : numbers) {
        const auto place = static_cast<std::uint64_t>(number) - first;
        if (place >= seen.size() || seen[place]) {
            return false;
        }
        seen[place] = true;
    }
    return true;
}

/// What is wrong in a store, and what it is to become.
struct Findings {
    std::vector<model::BoardFields> boards;
    MergedBoards newlyMerged;
    /// Only those that are not sound.
    std::vector<EntryValues> entries;
    /// Entries that belong on another board than they are on; in their order on each.
    struct Move {
        std::optional<base::Uuid> from;
        services::OrderKey order;
        base::Uuid to;

        bool operator<(const Move& other) const {
            return std::tie(from, order) < std::tie(other.from, other.order);
        }
    };
    std::vector<Move> moves;
    /// For entries without a board, where there is no Inbox yet: then nothing of this is right.
    bool needsInbox = false;
    /// Boards whose entries are not dense, or will not be.
    std::set<base::Uuid> unordered;
    std::vector<UnreadableContent> unreadable;
    RepairReport report;
};

constexpr std::array<std::size_t, 12> kEntryFields{
    Entry::idField,           Entry::typeRawValueField, Entry::createdAtField,
    Entry::updatedAtField,    Entry::sortOrderField,    Entry::isCompletedField,
    Entry::completedAtField,  Entry::dueDayField,       Entry::dueDateField,
    Entry::dueStartDateField, Entry::reminderDateField, Entry::boardField,
};

template <typename Value>
std::optional<Value> optionalOf(const store::Value& value) {
    const auto* const present = std::get_if<Value>(&value);
    return present ? std::optional(*present) : std::nullopt;
}

std::optional<base::Instant> instantOf(const store::Value& value) {
    const auto seconds = optionalOf<double>(value);
    return seconds ? std::optional(base::Instant{*seconds}) : std::nullopt;
}

/// `values` are those of `kEntryFields`; what is absent though it must not be is as a record has
/// it.
void read(std::span<const store::Value> values, EntryValues& entry) {
    entry.id = optionalOf<base::Uuid>(values[0]).value_or(base::Uuid{});
    entry.type = optionalOf<std::string>(values[1]).value_or(std::string());
    entry.createdAt = instantOf(values[2]).value_or(base::Instant{});
    entry.updatedAt = instantOf(values[3]).value_or(base::Instant{});
    entry.sortOrder = optionalOf<std::int64_t>(values[4]).value_or(0);
    entry.isCompleted = optionalOf<std::int64_t>(values[5]).value_or(0) != 0;
    entry.completedAt = instantOf(values[6]);
    entry.schedule = {.dueDay = optionalOf<std::int64_t>(values[7]),
                      .dueDate = instantOf(values[8]),
                      .dueStartDate = instantOf(values[9]),
                      .reminderDate = instantOf(values[10])};
    entry.board = optionalOf<base::Uuid>(values[11]);
}

class Look {
public:
    Look(store::ModelContext& context, DataIntegrityService::NormalizeOrdering normalizeOrdering)
        : m_context(context),
          m_isOrdering(normalizeOrdering == DataIntegrityService::NormalizeOrdering::yes) {}

    Findings findings() {
        lookAtBoards();
        lookAtEntries();
        if (m_findings.report.damaged > 0) {
            Findings nothing;
            nothing.report.damaged = m_findings.report.damaged;
            return nothing;
        }
        for (const auto& [board, numbers] : m_numbers) {
            if (!areDense(numbers.active, 0) ||
                !areDense(numbers.completed, numbers.active.size())) {
                m_findings.unordered.insert(board);
            }
        }
        if (!m_isOrdering) {
            m_findings.unordered.clear();
        }
        if (!m_findings.unordered.empty()) {
            m_findings.report.repaired[RepairKind::entryOrder] = m_findings.unordered.size();
        }
        return std::move(m_findings);
    }

private:
    void lookAtBoards() {
        auto& boards = m_findings.boards;
        for (const auto* const board : m_context.fetch<Board>()) {
            if (hasIdentifier<Board>(board->id())) {
                boards.push_back(board->fields());
            } else {
                ++m_findings.report.damaged;
            }
        }
        makeSound(boards, m_isOrdering ? BoardNumbers::dense : BoardNumbers::asTheyAre, m_merged,
                  m_findings.newlyMerged, m_findings.report);
        for (const auto& board : boards) {
            m_numbers.emplace(board.id, EntryNumbers());
            if (board.systemIdentifier) {
                m_inbox = board.id;
            }
        }
    }

    void lookAtEntries() {
        EntryValues stored;
        m_context.fetchValues<Entry>({kEntryFields.begin(), kEntryFields.end()}, {},
                                     [&](std::span<const store::Value> values) {
                                         read(values, stored);
                                         lookAt(stored);
                                     });
    }

    void lookAt(const EntryValues& stored) {
        if (!hasIdentifier<Entry>(stored.id)) {
            ++m_findings.report.damaged;
            return;
        }
        auto sound = stored;
        makeSound(sound, m_findings.report);
        const auto board = boardFor(stored.board);
        if (board && board == stored.board) {
            auto& numbers = numbersOf(*board);
            (sound.isCompleted ? numbers.completed : numbers.active).push_back(sound.sortOrder);
        } else {
            m_findings.moves.push_back({.from = stored.board,
                                        .order = {sound.sortOrder, sound.createdAt, sound.id},
                                        .to = board.value_or(base::Uuid())});
            m_findings.needsInbox = m_findings.needsInbox || !board;
        }
        if (!(sound == stored)) {
            m_findings.entries.push_back(std::move(sound));
        }
    }

    /// What is none reads as the nil identifier, and is not found by it.
    template <typename T>
    bool hasIdentifier(const base::Uuid& id) {
        return id != base::Uuid() ||
               m_context.count<T>(store::FieldReference{T::idField} == store::Value{id}) == 1;
    }

    /// Where an entry belongs that stands on `board`; absent for an Inbox that is to be made.
    std::optional<base::Uuid> boardFor(const std::optional<base::Uuid>& board) {
        if (!board || !m_numbers.contains(*board)) {
            ++m_findings.report.repaired[RepairKind::entriesWithoutBoard];
            return m_inbox;
        }
        const auto merged = m_merged.find(*board);
        if (merged == m_merged.end()) {
            return board;
        }
        ++m_findings.report.repaired[RepairKind::entriesOfMergedBoards];
        return merged->second;
    }

    EntryNumbers& numbersOf(const base::Uuid& board) {
        // Entries mostly come board by board.
        if (!m_last || m_last->first != board) {
            m_last = &*m_numbers.find(board);
        }
        return m_last->second;
    }

    store::ModelContext& m_context;
    bool m_isOrdering;
    Findings m_findings;
    MergedBoards m_merged;
    std::optional<base::Uuid> m_inbox;
    std::map<base::Uuid, EntryNumbers> m_numbers;
    std::pair<const base::Uuid, EntryNumbers>* m_last = nullptr;
};

void setUnreadable(std::vector<UnreadableContent> unreadable, Findings& findings) {
    findings.unreadable = std::move(unreadable);
    for (const auto& content : findings.unreadable) {
        ++findings.report.repaired[content.kind];
    }
}

void apply(const model::BoardFields& fields, Board& board) {
    board.setName(fields.name);
    board.setCreatedAt(fields.createdAt);
    board.setUpdatedAt(fields.updatedAt);
    board.setSortOrder(fields.sortOrder);
    board.setIsSystem(fields.isSystem);
    board.setIsArchived(fields.isArchived);
    board.setIcon(fields.icon);
    board.setIconColor(fields.iconColor);
    board.setSystemIdentifier(fields.systemIdentifier);
    board.setMergedIntoBoardID(fields.mergedIntoBoardID);
}

void apply(const EntryValues& values, Entry& entry) {
    entry.setType(model::entryType(values.type));
    entry.setCreatedAt(values.createdAt);
    entry.setUpdatedAt(values.updatedAt);
    entry.setIsCompleted(values.isCompleted);
    entry.setCompletedAt(values.completedAt);
    entry.setSchedule(values.schedule);
}

void apply(Findings& findings, store::ModelContext& context) {
    for (const auto& fields : findings.boards) {
        if (auto* const board = context.find<Board>(fields.id)) {
            apply(fields, *board);
        }
    }
    for (const auto& values : findings.entries) {
        if (auto* const entry = context.find<Entry>(values.id)) {
            apply(values, *entry);
        }
    }
    std::sort(findings.moves.begin(), findings.moves.end());
    std::vector<services::PlacedEntry> places;
    for (const auto& move : findings.moves) {
        auto* const entry = context.find<Entry>(move.order.id);
        auto* const board = context.find<Board>(move.to);
        if (entry && board) {
            places.push_back({.entry = entry, .board = board});
        }
    }
    services::putInPlace(places);
    for (const auto& id : findings.unordered) {
        if (const auto* const board = context.find<Board>(id)) {
            services::normalizeSortOrder(*board);
        }
    }
    for (const auto& content : findings.unreadable) {
        setAside(content, context);
    }
}

} // namespace

DataIntegrityService::DataIntegrityService(store::ModelContext& context, base::LogSink& log)
    : m_context(&context), m_sink(&log), m_log(log, "DataIntegrity") {}

struct DataIntegrityService::Seen {
    Findings findings;
    /// Of the store that was looked at, or an earlier one.
    std::int64_t revision = 0;
};

DataIntegrityService::Seen DataIntegrityService::look(const Request& request) const {
    Seen seen{.revision = m_context->container().revision()};
    m_context->refresh();
    const store::ReadingStep step(m_context->container());
    auto& findings = seen.findings;
    findings = Look(*m_context, request.normalizeOrdering).findings();
    if (request.contents == Contents::read && findings.report.damaged == 0) {
        setUnreadable(unreadableContents(*m_context, *m_sink), findings);
    }
    return seen;
}

RepairReport DataIntegrityService::inspect(const Request& request) const {
    return look(request).findings.report;
}

RepairReport DataIntegrityService::repair(const Request& request) const {
    auto seen = look(request);
    if (seen.findings.report.damaged > 0) {
        m_log.warning(std::to_string(seen.findings.report.damaged) +
                      " records have no identifier that can be read");
    }
    // To read all contents takes long, so it is done without the lock as long as others leave time
    // for that.
    for (int left = kLooks; !seen.findings.report.isEmpty(); --left) {
        {
            const store::LockedStep step(*m_context);
            const auto isSame = m_context->container().revision() == seen.revision;
            if (isSame || left == 0) {
                return apply(isSame ? std::move(seen) : look(request), request);
            }
        }
        seen = look(request);
    }
    return seen.findings.report;
}

RepairReport DataIntegrityService::apply(Seen seen, const Request& request) const {
    auto& findings = seen.findings;
    if (findings.report.isEmpty()) {
        return findings.report;
    }
    try {
        if (findings.needsInbox) {
            services::NoReminders reminders;
            services::NoWidgets widgets;
            services::BoardService(*m_context, reminders, widgets, *m_sink)
                .initializeDefaultBoards(request.now, services::BoardService::SaveChanges::no);
            auto unreadable = std::move(findings.unreadable);
            findings = Look(*m_context, request.normalizeOrdering).findings();
            setUnreadable(std::move(unreadable), findings);
        }
        storage::apply(findings, *m_context);
        if (request.saveChanges == SaveChanges::yes) {
            m_context->save();
        }
    } catch (const base::Error&) {
        m_context->rollback();
        m_log.error("Integrity repair could not be saved");
        throw;
    }
    m_log.info("Repaired " + std::to_string(findings.report.count()) +
               " inconsistent metadata values; preserved entry contents");
    if (request.onMergedBoard) {
        for (const auto& [from, to] : findings.newlyMerged) {
            request.onMergedBoard(from, to);
        }
    }
    return std::move(findings.report);
}

} // namespace korvex::storage
