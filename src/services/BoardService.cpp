#include "services/BoardService.h"

#include "base/Text.h"
#include "model/BoardIcon.h"
#include "model/Entry.h"
#include "services/OrderKey.h"
#include "store/ModelContainer.h"

#include <algorithm>
#include <limits>
#include <set>

namespace korvex::services {

using model::Board;
using model::BoardServiceError;
using model::BoardServiceErrorCase;

namespace {

constexpr auto kInbox = model::kInboxIdentifier;
constexpr auto kLegacyInbox = model::kLegacyInboxIdentifier;
constexpr std::string_view kInboxName = "Inbox";

std::string notSaved(const base::Error&) {
    return "Board persistence failed; rolled back";
}

[[noreturn]] void refuse(BoardServiceErrorCase which) {
    throw BoardServiceError(which);
}

std::string normalizedName(std::string_view name) {
    const auto trimmed = base::trimmed(name);
    if (trimmed.empty()) {
        refuse(BoardServiceErrorCase::emptyName);
    }
    return std::string(trimmed);
}

/// What is stored of an icon that was chosen; throws `invalidIcon`.
std::optional<std::string> checkedIcon(std::optional<std::string_view> icon) {
    if (icon && !model::boardIcon(*icon)) {
        refuse(BoardServiceErrorCase::invalidIcon);
    }
    return icon ? std::optional(std::string(*icon)) : std::nullopt;
}

/// The same of a colour; throws `invalidIconColor`.
std::optional<std::string> checkedColor(std::optional<std::string_view> color) {
    if (color && !model::boardIconColor(*color)) {
        refuse(BoardServiceErrorCase::invalidIconColor);
    }
    return color ? std::optional(std::string(*color)) : std::nullopt;
}

/// Gives a system board without an identifier the one that its name implies.
void nameSystemBoard(Board& board) {
    if (board.isSystem() && !board.systemIdentifier()) {
        const auto implied = model::impliedSystemIdentifier(board.name());
        board.setSystemIdentifier(implied ? std::optional(std::string(*implied)) : std::nullopt);
    }
}

/// What older stores have for the Inbox becomes it.
Board& repaired(Board& board) {
    nameSystemBoard(board);
    if (board.systemIdentifier() == kLegacyInbox) {
        board.setSystemIdentifier(std::string(kInbox));
        board.setName(std::string(kInboxName));
        board.setIsSystem(true);
    }
    return board;
}

model::BoardFields newInbox(base::Instant now) {
    return {.id = base::Uuid::random(),
            .name = std::string(kInboxName),
            .createdAt = now,
            .updatedAt = now,
            .isSystem = true,
            .systemIdentifier = std::string(kInbox)};
}

std::vector<Board*> inOrder(std::vector<Board*> boards) {
    std::sort(boards.begin(), boards.end(),
              [](const Board* left, const Board* right) { return ordered(*left, *right); });
    return boards;
}

bool needsRepair(const std::vector<Board*>& boards) {
    auto hasInbox = false;
    for (const auto* const board : boards) {
        const auto& identifier = board->systemIdentifier();
        if (identifier == kLegacyInbox ||
            (board->isSystem() && !identifier && model::impliedSystemIdentifier(board->name()))) {
            return true;
        }
        hasInbox = hasInbox || identifier == kInbox;
    }
    return !hasInbox;
}

} // namespace

BoardService::BoardService(store::ModelContext& context, ReminderReconciling& reminders,
                           WidgetReloading& widgets, base::LogSink& log)
    : m_writer(context, base::Logger(log, "BoardService"), notSaved),
      m_listeners(context, reminders, widgets) {}

void BoardService::initializeDefaultBoards(base::Instant now, SaveChanges saveChanges) {
    // Nearly every start finds nothing to do, and then takes no lock.
    if (!needsRepair(m_writer.context().fetch<Board>())) {
        return;
    }
    const store::LockedStep step(m_writer.context());
    const auto boards = m_writer.context().fetch<Board>();
    if (!needsRepair(boards)) {
        return;
    }
    auto isMade = false;
    const auto repair = [&] {
        auto hasInbox = false;
        for (auto* const board : boards) {
            hasInbox = repaired(*board).systemIdentifier() == kInbox || hasInbox;
        }
        if (!hasInbox) {
            m_writer.context().insert(std::make_unique<Board>(newInbox(now)));
            isMade = true;
        }
    };
    if (saveChanges == SaveChanges::yes) {
        m_writer.change(repair);
    } else {
        repair();
    }
    if (isMade) {
        m_writer.log().info("Initialized default boards");
    }
}

bool BoardService::allowsChanges() const {
    return m_writer.context().container().allowsSave();
}

Board* BoardService::inboxBoard() const {
    return inboxBoard(boards());
}

Board* BoardService::inboxBoard(std::span<Board* const> boards) {
    for (auto* const board : boards) {
        if (board->systemIdentifier() == kInbox || board->systemIdentifier() == kLegacyInbox) {
            return board;
        }
    }
    return nullptr;
}

std::vector<Board*> BoardService::boards() const {
    return visibleBoards(m_writer.context().fetch<Board>());
}

std::vector<Board*> BoardService::visibleBoards(std::vector<Board*> all) {
    auto boards = inOrder(std::move(all));
    std::set<std::string_view> seen;
    std::erase_if(boards, [&](const Board* board) {
        if (const auto& identifier = board->systemIdentifier()) {
            return !seen.insert(*identifier == kLegacyInbox ? kInbox
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

Board* BoardService::board(const base::Uuid& id) const {
    return m_writer.context().find<Board>(id);
}

Board* BoardService::launchBoard(const std::optional<base::Uuid>& wanted) const {
    const auto active = activeBoards(m_writer.context().fetch<Board>());
    const auto found = std::find_if(active.begin(), active.end(),
                                    [&](const Board* board) { return board->id() == wanted; });
    return found != active.end() ? *found : inboxBoard();
}

Board& BoardService::persistedUserBoard(const Board& given) const {
    if (given.isSystem()) {
        refuse(BoardServiceErrorCase::protectedBoard);
    }
    auto& board = m_writer.persisted(given);
    if (board.isSystem()) {
        refuse(BoardServiceErrorCase::protectedBoard);
    }
    return board;
}

Board& BoardService::createBoard(std::string_view name, base::Instant now, const Look& look) {
    auto boardName = normalizedName(name);
    auto icon = checkedIcon(look.icon);
    auto color = checkedColor(look.color);
    const store::LockedStep step(m_writer.context());
    m_writer.validateWritableStore();
    Board* created = nullptr;
    m_writer.change([&] {
        created = &m_writer.context().insert(std::make_unique<Board>(model::BoardFields{
            .id = base::Uuid::random(),
            .name = std::move(boardName),
            .createdAt = now,
            .updatedAt = now,
            .sortOrder = nextSortOrder(now),
            .icon = std::move(icon),
            .iconColor = std::move(color),
        }));
    });
    m_writer.logDone("Created board", created->id());
    return *created;
}

std::int64_t BoardService::nextSortOrder(base::Instant now) const {
    const auto all = m_writer.context().fetch<Board>();
    std::optional<std::int64_t> last;
    for (const auto* const board : all) {
        last = std::max(last, std::optional(board->sortOrder()));
    }
    if (!last) {
        return 0;
    }
    if (*last < std::numeric_limits<std::int64_t>::max()) {
        return *last + 1;
    }
    // Only a store from elsewhere numbers so.
    number(boards(), now);
    return static_cast<std::int64_t>(all.size());
}

void BoardService::number(std::vector<Board*> visible, base::Instant now) const {
    const std::set<const Board*> isVisible(visible.begin(), visible.end());
    auto all = std::move(visible);
    for (auto* const board : inOrder(m_writer.context().fetch<Board>())) {
        if (!isVisible.contains(board)) {
            all.push_back(board);
        }
    }
    std::int64_t position = 0;
    for (auto* const board : all) {
        if (board->sortOrder() != position) {
            board->setSortOrder(position);
            board->setUpdatedAt(now);
        }
        ++position;
    }
}

void BoardService::renameBoard(Board& given, std::string_view name, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    auto& board = m_writer.persisted(given);
    auto boardName = normalizedName(name);
    m_writer.change([&] {
        nameSystemBoard(board);
        board.setName(std::move(boardName));
        board.setUpdatedAt(now);
    });
    m_writer.logDone("Renamed board", board.id());
}

void BoardService::setArchived(bool archived, Board& given, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    auto& board = persistedUserBoard(given);
    m_writer.change([&] {
        board.setIsArchived(archived);
        board.setUpdatedAt(now);
    });
    m_listeners.todosChanged();
}

void BoardService::deleteBoard(Board& given) {
    const store::LockedStep step(m_writer.context());
    auto& board = persistedUserBoard(given);
    std::vector<base::Uuid> entryIDs;
    const auto id = board.id();
    m_writer.change([&] {
        for (auto* const entry : board.entries()) {
            entryIDs.push_back(entry->id());
            m_writer.context().remove(*entry);
        }
        m_writer.context().remove(board);
    });
    m_listeners.todosChanged(entryIDs);
    m_writer.logDone("Deleted board", id);
}

void BoardService::setIcon(std::optional<std::string_view> icon, Board& given, base::Instant now) {
    auto checked = checkedIcon(icon);
    const store::LockedStep step(m_writer.context());
    auto& board = m_writer.persisted(given);
    m_writer.change([&] {
        board.setIcon(std::move(checked));
        board.setUpdatedAt(now);
    });
}

void BoardService::setIconColor(std::optional<std::string_view> color, Board& given,
                                base::Instant now) {
    auto checked = checkedColor(color);
    const store::LockedStep step(m_writer.context());
    auto& board = m_writer.persisted(given);
    m_writer.change([&] {
        board.setIconColor(std::move(checked));
        board.setUpdatedAt(now);
    });
}

void BoardService::reorderBoards(std::span<Board* const> given, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    std::vector<Board*> boards;
    for (const auto* const board : given) {
        boards.push_back(&m_writer.persisted(*board));
    }
    const auto current = this->boards();
    // As many, and the same ones: a list with a board twice is out of date too.
    if (boards.size() != current.size() ||
        std::set(boards.begin(), boards.end()) != std::set(current.begin(), current.end())) {
        RecordWriter::refuseUnavailable();
    }
    m_writer.change([&] { number(std::move(boards), now); });
}

void BoardService::moveBoard(const base::Uuid& id, const base::Uuid& relativeTo,
                             model::EntryPlacement placement, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    auto all = boards();
    auto active = activeBoards(all);
    const auto find = [&](const base::Uuid& wanted) {
        return std::find_if(active.begin(), active.end(),
                            [&](const Board* board) { return board->id() == wanted; });
    };
    const auto moved = find(id);
    if (moved == active.end() || find(relativeTo) == active.end()) {
        RecordWriter::refuseUnavailable();
    }
    if (id == relativeTo) {
        return;
    }
    auto* const board = *moved;
    active.erase(moved);
    auto place = find(relativeTo);
    if (placement == model::EntryPlacement::after) {
        ++place;
    }
    active.insert(place, board);
    auto next = active.begin();
    for (auto*& each : all) {
        if (!each->isArchived()) {
            each = *next;
            ++next;
        }
    }
    reorderBoards(all, now);
}

void BoardService::sortBoardsByName(Direction direction, const base::NameOrder& order,
                                    base::Instant now) {
    const store::LockedStep step(m_writer.context());
    auto all = boards();
    const auto* const inbox = inboxBoard();
    std::sort(all.begin(), all.end(), [&](const Board* left, const Board* right) {
        if ((left == inbox) != (right == inbox)) {
            return left == inbox;
        }
        const auto compared = order.compare(left->name(), right->name());
        if (compared != 0) {
            return direction == Direction::ascending ? compared < 0 : compared > 0;
        }
        return left->id() < right->id();
    });
    reorderBoards(all, now);
}

} // namespace korvex::services
