#include "schedule/CompletedCriteria.h"

#include "model/Board.h"
#include "services/SearchService.h"

#include <algorithm>

namespace korvex::schedule {

CompletedCriteria::CompletedCriteria(const CompletedFilter& filter, base::Instant now,
                                     const base::Calendar& calendar, services::FoldedTexts& texts)
    : m_filter(filter),
      m_texts(texts),
      m_days(calendar),
      m_interval(filter.interval(now, calendar)) {
    for (auto& term : services::SearchService::foldedTerms(filter.query, texts.folding())) {
        m_terms.emplace_back(std::move(term));
    }
}

std::optional<EntryKey> CompletedCriteria::keyOf(const model::Entry& entry) {
    if (!entry.isCompletedTodo() || !isInPeriod(entry) || !isOnBoard(entry) ||
        !hasSchedule(entry)) {
        return std::nullopt;
    }
    // On a board as `services::ordered` has it.
    auto key = keyOnBoards(entry);
    key.createdAt = orderedBits(entry.createdAt());
    // One whose moment is not known goes last, though its day is that of its last change.
    key.moment = orderedBitsFromLatest(entry.completedAt().value_or(base::Instant::distantPast()));
    return key;
}

bool CompletedCriteria::isInPeriod(const model::Entry& entry) const {
    const auto completedAt = entry.completedAt();
    return !m_interval || (completedAt && m_interval->contains(*completedAt));
}

bool CompletedCriteria::isOnBoard(const model::Entry& entry) const {
    if (m_filter.boardID && entry.boardID() != m_filter.boardID) {
        return false;
    }
    const auto* board = entry.board();
    switch (m_filter.boardStatus) {
    case CompletedFilter::BoardStatus::any:
        return true;
    case CompletedFilter::BoardStatus::active:
        return board && !board->isArchived();
    case CompletedFilter::BoardStatus::archived:
        return board && board->isArchived();
    }
    return false;
}

bool CompletedCriteria::hasSchedule(const model::Entry& entry) {
    const auto hasDue = entry.dueDay() || entry.dueDate();
    switch (m_filter.schedule) {
    case CompletedFilter::Schedule::any:
        return true;
    case CompletedFilter::Schedule::hadDueDate:
        return hasDue;
    case CompletedFilter::Schedule::noDueDate:
        return !hasDue;
    case CompletedFilter::Schedule::late:
        return isLate(entry);
    }
    return false;
}

bool CompletedCriteria::isLate(const model::Entry& entry) {
    const auto completedAt = entry.completedAt();
    if (!completedAt || !completedAt->isValid()) {
        return false;
    }
    if (const auto day = entry.dueDay()) {
        return m_days.isAfter(*completedAt, *day);
    }
    return entry.dueDate() && *completedAt > *entry.dueDate();
}

bool CompletedCriteria::matchesQuery(const model::Entry& entry) const {
    if (m_terms.empty()) {
        return true;
    }
    const auto text = m_texts.folded(entry);
    return std::all_of(m_terms.begin(), m_terms.end(),
                       [&](const base::Needle& term) { return term.isIn(text); });
}

std::uint64_t dayKey(const model::Entry& entry, DayCache& days) {
    return orderedBitsFromLatest(days.startOfDay(completionDate(entry)));
}

CompletedTodoGroup emptyDayGroup(std::uint64_t key) {
    return {.date = instantOfBitsFromLatest(key), .entries = {}};
}

} // namespace korvex::schedule
