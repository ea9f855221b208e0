#include "services/FoldedTexts.h"

#include "services/OrderKey.h"

#include <tsl/robin_set.h>

#include <algorithm>
#include <functional>
#include <string>

namespace korvex::services {

using model::Entry;

namespace {

/// An identifier that begins with this byte, and then zeros.
base::Uuid firstOf(std::size_t part) {
    base::Uuid id;
    id.bytes[0] = static_cast<std::uint8_t>(part);
    return id;
}

void sortUnique(std::vector<base::Uuid>& ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

void append(const std::vector<base::Uuid>& ids, std::vector<base::Uuid>& to) {
    to.insert(to.end(), ids.begin(), ids.end());
}

} // namespace

FoldedTexts::FoldedTexts(store::ModelContext& context, const base::TextFolding& folding)
    : m_context(context),
      m_folding(folding),
      m_changes(context.didChange().connect([this](const auto& changes) { note(changes); })) {}

std::string_view FoldedTexts::folded(const Entry& entry) {
    const auto number = numberOf(entry.id());
    setText(number, entry.content());
    return m_texts.text(number);
}

void FoldedTexts::update() {
    loadParts(kParts);
    auto ids = m_stale;
    append(m_pending, ids);
    append(pending(), ids);
    takeIn(ids);
    if (m_mayHaveUnannounced) {
        takeIn(unannounced());
    }
    m_stale.clear();
    m_mayHaveUnannounced = false;
    m_pending = pending();
}

bool FoldedTexts::prepare(std::chrono::steady_clock::duration atMost) {
    const auto end = std::chrono::steady_clock::now() + atMost;
    while (m_loadedParts < kParts && std::chrono::steady_clock::now() < end) {
        loadParts(m_loadedParts + 1);
    }
    return m_loadedParts < kParts;
}

std::span<const FoldedTexts::Number> FoldedTexts::entriesInOrder(const base::Uuid& boardID) {
    const auto known = m_boardNumbers.find(boardID);
    if (known == m_boardNumbers.end()) {
        return {};
    }
    if (!m_boards[known->second].isInOrder) {
        putInOrder(known->second);
    }
    return m_boards[known->second].numbers;
}

void FoldedTexts::note(const store::ChangeSet& changes) {
    if (m_numbers.empty() && m_loadedParts == 0) {
        return;
    }
    append(changes.inserted, m_stale);
    append(changes.updated, m_stale);
    append(changes.deleted, m_stale);
    const auto isElsewhere = changes.origin == store::ChangeSet::Origin::elsewhere;
    m_mayHaveUnannounced = m_mayHaveUnannounced || isElsewhere;
    // Each entry that others changed is a question to the store of its own: of many it is cheaper
    // to ask for all. And nobody may ever search again.
    constexpr std::size_t kFew = 1000;
    const auto bound = kFew + (isElsewhere ? m_numbers.size() / 8 : m_numbers.size() * 2);
    if (m_stale.size() > bound) {
        sortUnique(m_stale);
        if (m_stale.size() > bound) {
            forgetAll();
        }
    }
}

void FoldedTexts::forgetAll() {
    m_texts.clear();
    m_slots.clear();
    m_freeNumbers.clear();
    m_numbers.clear();
    m_boards.clear();
    m_boardNumbers.clear();
    m_loadedParts = 0;
    m_stale.clear();
    m_mayHaveUnannounced = false;
}

void FoldedTexts::loadParts(std::size_t end) {
    if (m_loadedParts >= end) {
        return;
    }
    using store::FieldReference;
    std::vector<store::Condition> bounds;
    if (m_loadedParts > 0) {
        bounds.push_back(FieldReference{Entry::idField} >= firstOf(m_loadedParts));
    }
    if (end < kParts) {
        bounds.push_back(FieldReference{Entry::idField} < firstOf(end));
    }
    m_context.fetchValues<Entry>(
        {Entry::idField, Entry::contentField, Entry::boardField, Entry::sortOrderField,
         Entry::createdAtField},
        bounds.empty() ? store::Condition() : store::Condition::all(std::move(bounds)),
        [&](std::span<const store::Value> row) {
            const auto number = numberOf(std::get<base::Uuid>(row[0]));
            setText(number, std::get<std::string>(row[1]));
            setPlace(number, {.board = store::isAbsent(row[2])
                                           ? std::nullopt
                                           : std::optional(std::get<base::Uuid>(row[2])),
                              .sortOrder = std::get<std::int64_t>(row[3]),
                              .createdAt = {std::get<double>(row[4])}});
        });
    m_loadedParts = end;
}

void FoldedTexts::takeIn(const std::vector<base::Uuid>& ids) {
    for (const auto& id : ids) {
        if (const auto* entry = m_context.find<Entry>(id)) {
            put(*entry);
        } else {
            remove(id);
        }
    }
}

std::vector<base::Uuid> FoldedTexts::pending() const {
    std::vector<base::Uuid> ids;
    if (m_context.hasChanges()) {
        for (const auto& records : {m_context.insertedRecords(), m_context.changedRecords(),
                                    m_context.deletedRecords()}) {
            for (const auto* record : records) {
                ids.push_back(record->id());
            }
        }
    }
    return ids;
}

std::vector<base::Uuid> FoldedTexts::unannounced() {
    if (!m_context.hasChanges() && m_context.count<Entry>() == m_numbers.size()) {
        return {};
    }
    tsl::robin_set<base::Uuid> stored;
    std::vector<base::Uuid> ids;
    m_context.fetchValues<Entry>({Entry::idField}, {}, [&](std::span<const store::Value> row) {
        const auto& id = std::get<base::Uuid>(row[0]);
        stored.insert(id);
        if (!m_numbers.contains(id)) {
            ids.push_back(id);
        }
    });
    for (const auto& [id, number] : m_numbers) {
        if (!stored.contains(id)) {
            ids.push_back(id);
        }
    }
    return ids;
}

FoldedTexts::Number FoldedTexts::numberOf(const base::Uuid& id) {
    const auto [known, isNew] = m_numbers.try_emplace(id, 0);
    if (!isNew) {
        return known->second;
    }
    Number number = 0;
    if (m_freeNumbers.empty()) {
        number = static_cast<Number>(m_slots.size());
        m_slots.emplace_back();
    } else {
        number = m_freeNumbers.back();
        m_freeNumbers.pop_back();
    }
    m_slots[number] = {.id = id, .isUsed = true};
    known.value() = number;
    return number;
}

void FoldedTexts::setText(Number number, std::string_view content) {
    auto& slot = m_slots[number];
    const auto hash = std::hash<std::string_view>()(content);
    if (m_texts.contains(number) && slot.contentHash == hash &&
        slot.contentLength == content.size()) {
        return;
    }
    m_folding.appendFolded(content, m_texts.open(content.size()));
    m_texts.close(number);
    slot.contentHash = hash;
    slot.contentLength = static_cast<std::uint32_t>(content.size());
}

void FoldedTexts::setPlace(Number number, const Place& place) {
    auto& slot = m_slots[number];
    const auto board = place.board ? boardNumber(*place.board) : kNowhere;
    if (slot.board == board && slot.sortOrder == place.sortOrder &&
        slot.createdAt == place.createdAt) {
        return;
    }
    if (slot.board != board) {
        if (slot.board != kNowhere) {
            m_boards[slot.board].isInOrder = false;
        }
        if (board != kNowhere) {
            m_boards[board].numbers.push_back(number);
        }
    }
    slot.board = board;
    slot.sortOrder = place.sortOrder;
    slot.createdAt = place.createdAt;
    if (board != kNowhere) {
        m_boards[board].isInOrder = false;
    }
}

void FoldedTexts::put(const Entry& entry) {
    const auto number = numberOf(entry.id());
    setText(number, entry.content());
    setPlace(
        number,
        {.board = entry.boardID(), .sortOrder = entry.sortOrder(), .createdAt = entry.createdAt()});
}

void FoldedTexts::remove(const base::Uuid& id) {
    const auto known = m_numbers.find(id);
    if (known == m_numbers.end()) {
        return;
    }
    const auto number = known->second;
    m_numbers.erase(known);
    m_texts.remove(number);
    setPlace(number, {.board = std::nullopt, .sortOrder = 0, .createdAt = {}});
    m_slots[number] = {};
    m_freeNumbers.push_back(number);
}

std::uint32_t FoldedTexts::boardNumber(const base::Uuid& id) {
    const auto [known, isNew] =
        m_boardNumbers.try_emplace(id, static_cast<std::uint32_t>(m_boards.size()));
    if (isNew) {
        m_boards.emplace_back();
    }
    return known->second;
}

void FoldedTexts::putInOrder(std::uint32_t board) {
    auto& numbers = m_boards[board].numbers;
    std::erase_if(numbers, [&](Number number) { return m_slots[number].board != board; });
    const auto isBefore = [&](Number left, Number right) { return isOrdered(left, right); };
    if (!std::is_sorted(numbers.begin(), numbers.end(), isBefore) && !placeByNumbers(numbers)) {
        std::sort(numbers.begin(), numbers.end(), isBefore);
    }
    // Who left and came back is there twice.
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    m_boards[board].isInOrder = true;
}

/// The services number a board's entries from 0 in steps of 1: then each knows its place.
bool FoldedTexts::placeByNumbers(std::vector<Number>& numbers) const {
    std::vector<Number> placed(numbers.size(), kNowhere);
    for (const auto number : numbers) {
        const auto place = static_cast<std::uint64_t>(m_slots[number].sortOrder);
        if (place >= placed.size() || placed[place] != kNowhere) {
            return false;
        }
        placed[place] = number;
    }
    numbers = std::move(placed);
    return true;
}

bool FoldedTexts::isOrdered(Number left, Number right) const {
    const auto& a = m_slots[left];
    const auto& b = m_slots[right];
    return OrderKey{a.sortOrder, a.createdAt, a.id} < OrderKey{b.sortOrder, b.createdAt, b.id};
}

} // namespace korvex::services
