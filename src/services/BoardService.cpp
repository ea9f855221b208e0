#include "services/BoardService.h"

#include "base/Digest.h"
#include "base/Text.h"
#include "model/BoardIcon.h"
#include "model/Entry.h"
#include "store/ModelContainer.h"

#include <algorithm>
#include <set>

namespace korvex::services {

using model::Board;
using model::BoardServiceError;
using model::BoardServiceErrorCase;
using model::EntryServiceError;
using model::EntryServiceErrorCase;

namespace {

constexpr std::string_view kInbox = "inbox";
/// Older stores call the Inbox so.
constexpr std::string_view kLegacyToday = "today";
constexpr std::string_view kInboxName = "Inbox";

[[noreturn]] void refuse(BoardServiceErrorCase which) {
    throw BoardServiceError(which);
}
[[noreturn]] void refuse(EntryServiceErrorCase which) {
    throw EntryServiceError(which);
}

/// What the name of a system board without an identifier says about it.
std::optional<std::string> impliedIdentifier(const Board& board) {
    if (board.name() == "Today") {
        return std::string(kLegacyToday);
    }
    if (board.name() == kInboxName) {
        return std::string(kInbox);
    }
    return std::nullopt;
}

std::string normalized(std::string_view name) {
    const auto trimmed = base::trimmed(name);
    if (trimmed.empty()) {
        refuse(BoardServiceErrorCase::emptyName);
    }
    return std::string(trimmed);
}

void refuseSystemBoard(const Board& board) {
    if (board.isSystem()) {
        refuse(BoardServiceErrorCase::protectedBoard);
    }
}

bool needsRepair(const std::vector<Board*>& boards) {
    bool hasInbox = false;
    for (const Board* board : boards) {
        const auto& identifier = board->systemIdentifier();
        if (identifier == kLegacyToday ||
            (board->isSystem() && !identifier && impliedIdentifier(*board))) {
            return true;
        }
        hasInbox = hasInbox || identifier == kInbox;
    }
    return !hasInbox;
}

} // namespace

BoardService::BoardService(store::ModelContext& context, ReminderReconciling& reminders,
                           base::LogSink& log)
    : m_modelContext(&context), m_reminders(&reminders), m_log(log, "BoardService") {}

void BoardService::initializeDefaultBoards(base::Instant now, SaveChanges saveChanges) {
    // Nearly every start finds nothing to do, and then takes no lock.
    if (!needsRepair(m_modelContext->fetch<Board>())) {
        return;
    }
    const store::LockedStep step(*m_modelContext);
    const auto boards = m_modelContext->fetch<Board>();
    if (!needsRepair(boards)) {
        return;
    }
    bool hasInbox = false;
    for (Board* board : boards) {
        if (board->isSystem() && !board->systemIdentifier()) {
            board->setSystemIdentifier(impliedIdentifier(*board));
        }
        if (board->systemIdentifier() == kLegacyToday) {
            board->setSystemIdentifier(std::string(kInbox));
            board->setName(std::string(kInboxName));
            board->setIsSystem(true);
        }
        hasInbox = hasInbox || board->systemIdentifier() == kInbox;
    }
    if (!hasInbox) {
        m_modelContext->insert(std::make_unique<Board>(model::BoardFields{
            .id = base::Uuid::random(),
            .name = std::string(kInboxName),
            .createdAt = now,
            .updatedAt = now,
            .isSystem = true,
            .systemIdentifier = std::string(kInbox),
        }));
    }
    if (saveChanges == SaveChanges::yes) {
        save();
    }
    if (!hasInbox) {
        m_log.info("Initialized default boards");
    }
}

Board* BoardService::inboxBoard() const {
    for (Board* board : boards()) {
        if (board->systemIdentifier() == kInbox || board->systemIdentifier() == kLegacyToday) {
            return board;
        }
    }
    return nullptr;
}

std::vector<Board*> BoardService::boards() const {
    return visibleBoards(m_modelContext->fetch<Board>());
}

std::vector<Board*> BoardService::visibleBoards(std::vector<Board*> boards) {
    std::sort(boards.begin(), boards.end(),
              [](const Board* left, const Board* right) { return ordered(*left, *right); });
    std::set<std::string_view> seen;
    std::erase_if(boards, [&](const Board* board) {
        if (const auto& identifier = board->systemIdentifier()) {
            return !seen.insert(*identifier == kLegacyToday ? kInbox
                                                            : std::string_view(*identifier))
                        .second;
        }
        return board->mergedIntoBoardID().has_value();
    });
    return boards;
}

std::vector<Board*> BoardService::activeBoards(std::vector<Board*> boards) {
    auto active = visibleBoards(std::move(boards));
    std::erase_if(active, [](const Board* board) { return board->isArchived(); });
    return active;
}

bool BoardService::ordered(const Board& left, const Board& right) {
    if (left.sortOrder() != right.sortOrder()) {
        return left.sortOrder() < right.sortOrder();
    }
    if (left.createdAt() != right.createdAt()) {
        return left.createdAt() < right.createdAt();
    }
    return left.id() < right.id();
}

Board* BoardService::board(const base::Uuid& id) const {
    return m_modelContext->find<Board>(id);
}

Board& BoardService::createBoard(std::string_view name, base::Instant now) {
    auto boardName = normalized(name);
    const store::LockedStep step(*m_modelContext);
    validateWritableStore();
    std::int64_t sortOrder = 0;
    for (const Board* board : m_modelContext->fetch<Board>()) {
        sortOrder = std::max(sortOrder, board->sortOrder() + 1);
    }
    Board& board = m_modelContext->insert(std::make_unique<Board>(model::BoardFields{
        .id = base::Uuid::random(),
        .name = std::move(boardName),
        .createdAt = now,
        .updatedAt = now,
        .sortOrder = sortOrder,
    }));
    save();
    m_log.info("Created board with identifier " + base::maskHash(board.id().text()));
    return board;
}

void BoardService::renameBoard(Board& board, std::string_view name, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    validateOwnership(board);
    auto boardName = normalized(name);
    if (board.isSystem() && !board.systemIdentifier()) {
        board.setSystemIdentifier(impliedIdentifier(board));
    }
    board.setName(std::move(boardName));
    board.setUpdatedAt(now);
    save();
    m_log.info("Renamed board with identifier " + base::maskHash(board.id().text()));
}

void BoardService::setArchived(bool archived, Board& board, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    refuseSystemBoard(board);
    validateOwnership(board);
    board.setIsArchived(archived);
    board.setUpdatedAt(now);
    save();
    m_reminders->requestReconcile();
}

void BoardService::deleteBoard(Board& board) {
    const store::LockedStep step(*m_modelContext);
    refuseSystemBoard(board);
    validateOwnership(board);
    std::vector<base::Uuid> entryIDs;
    for (model::Entry* entry : board.entries()) {
        entryIDs.push_back(entry->id());
        m_modelContext->remove(*entry);
    }
    const base::Uuid id = board.id();
    m_modelContext->remove(board);
    save();
    m_reminders->removePending(entryIDs);
    m_reminders->requestReconcile();
    m_log.info("Deleted board with identifier " + base::maskHash(id.text()));
}

void BoardService::setIcon(std::optional<std::string_view> icon, Board& board, base::Instant now) {
    if (icon && !model::boardIcon(*icon)) {
        refuse(BoardServiceErrorCase::invalidIcon);
    }
    const store::LockedStep step(*m_modelContext);
    validateOwnership(board);
    board.setIcon(icon ? std::optional(std::string(*icon)) : std::nullopt);
    board.setUpdatedAt(now);
    save();
}

void BoardService::setIconColor(std::optional<std::string_view> color, Board& board,
                                base::Instant now) {
    if (color && !model::boardIconColor(*color)) {
        refuse(BoardServiceErrorCase::invalidIconColor);
    }
    const store::LockedStep step(*m_modelContext);
    validateOwnership(board);
    board.setIconColor(color ? std::optional(std::string(*color)) : std::nullopt);
    board.setUpdatedAt(now);
    save();
}

void BoardService::reorderBoards(std::span<Board* const> boards, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    for (const Board* board : boards) {
        validateOwnership(*board);
    }
    const std::set<const Board*> given(boards.begin(), boards.end());
    const auto current = this->boards();
    // As many, and the same ones: a list with a board twice is out of date too.
    if (boards.size() != current.size() ||
        given != std::set<const Board*>(current.begin(), current.end())) {
        refuse(EntryServiceErrorCase::entryUnavailable);
    }
    std::int64_t position = 0;
    for (Board* board : boards) {
        if (board->sortOrder() != position) {
            board->setSortOrder(position);
            board->setUpdatedAt(now);
        }
        ++position;
    }
    save();
}

void BoardService::moveBoard(const base::Uuid& id, const base::Uuid& relativeTo,
                             model::EntryPlacement placement, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    auto all = boards();
    auto active = activeBoards(all);
    const auto find = [&](const base::Uuid& wanted) {
        return std::find_if(active.begin(), active.end(),
                            [&](const Board* board) { return board->id() == wanted; });
    };
    const auto moved = find(id);
    if (moved == active.end() || find(relativeTo) == active.end()) {
        refuse(EntryServiceErrorCase::entryUnavailable);
    }
    if (id == relativeTo) {
        return;
    }
    Board* board = *moved;
    active.erase(moved);
    auto place = find(relativeTo);
    if (placement == model::EntryPlacement::after) {
        ++place;
    }
    active.insert(place, board);
    auto next = active.begin();
    for (Board*& each : all) {
        if (!each->isArchived()) {
            each = *next;
            ++next;
        }
    }
    reorderBoards(all, now);
}

void BoardService::sortBoardsByName(Direction direction, const base::NameOrder& order,
                                    base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    auto all = boards();
    const Board* inbox = inboxBoard();
    std::sort(all.begin(), all.end(), [&](const Board* left, const Board* right) {
        if ((left == inbox) != (right == inbox)) {
            return left == inbox;
        }
        const int compared = order.compare(left->name(), right->name());
        if (compared != 0) {
            return direction == Direction::ascending ? compared < 0 : compared > 0;
        }
        return left->id() < right->id();
    });
    reorderBoards(all, now);
}

void BoardService::validateWritableStore() const {
    if (!m_modelContext->container().allowsSave()) {
        refuse(EntryServiceErrorCase::readOnlyStore);
    }
}

void BoardService::validateOwnership(const Board& board) const {
    validateWritableStore();
    if (!board.isLive() || !m_modelContext->isStored(board)) {
        refuse(EntryServiceErrorCase::entryUnavailable);
    }
}

void BoardService::save() {
    try {
        m_modelContext->save();
    } catch (const base::Error&) {
        m_modelContext->rollback();
        m_log.error("Board persistence failed; rolled back");
        throw;
    }
}

} // namespace korvex::services
