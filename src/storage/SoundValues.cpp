#include "storage/SoundValues.h"

#include "base/DayArithmetic.h"
#include "base/Text.h"
#include "model/BoardIcon.h"
#include "model/EntryType.h"
#include "services/OrderKey.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace korvex::storage {

namespace {

using model::BoardFields;

constexpr const char* kUntitled = "Untitled";

template <typename Value>
void set(Value& value, Value sound, RepairKind kind, RepairReport& report) {
    if (!(value == sound)) {
        value = std::move(sound);
        ++report.repaired[kind];
    }
}

/// What is left of two dates when one of them is none: the other; of two that are none, nothing.
void makeDatesSound(base::Instant& createdAt, base::Instant& updatedAt, RepairReport& report) {
    const auto created = createdAt;
    const auto orElse = [](base::Instant instant, base::Instant other) {
        return instant.isValid() ? instant : other.isValid() ? other : base::Instant{};
    };
    set(createdAt, orElse(createdAt, updatedAt), RepairKind::dates, report);
    set(updatedAt, orElse(updatedAt, created), RepairKind::dates, report);
}

bool isKnown(const std::optional<std::string>& identifier) {
    return identifier == model::kInboxIdentifier || identifier == model::kLegacyInboxIdentifier;
}

void makeMarksSound(BoardFields& board, RepairReport& report) {
    auto identifier = isKnown(board.systemIdentifier) ? board.systemIdentifier : std::nullopt;
    if (board.isSystem && !board.systemIdentifier) {
        // Older stores know their system boards by name.
        const auto implied = model::impliedSystemIdentifier(board.name);
        identifier = implied ? std::optional(std::string(*implied)) : std::nullopt;
    }
    const auto isSystem = identifier.has_value();
    set(board.systemIdentifier, std::move(identifier), RepairKind::boardMarks, report);
    set(board.isSystem, isSystem, RepairKind::boardMarks, report);
    if (isSystem) {
        set(board.isArchived, false, RepairKind::boardMarks, report);
    }
}

/// In their order: the first one of a system board is the one that is shown.
void mergeDoubled(std::vector<BoardFields>& boards, MergedBoards& newlyMerged,
                  RepairReport& report) {
    const BoardFields* inbox = nullptr;
    for (auto& board : boards) {
        if (!board.systemIdentifier) {
            continue;
        }
        if (!inbox) {
            inbox = &board;
            set(board.mergedIntoBoardID, std::optional<base::Uuid>(), RepairKind::boardMarks,
                report);
            continue;
        }
        board.systemIdentifier.reset();
        board.isSystem = false;
        board.mergedIntoBoardID = inbox->id;
        newlyMerged.emplace(board.id, inbox->id);
        ++report.repaired[RepairKind::doubledSystemBoards];
    }
}

/// A board that was merged leads to one that was not.
void followMerged(std::vector<BoardFields>& boards, MergedBoards& merged, RepairReport& report) {
    std::map<base::Uuid, std::optional<base::Uuid>> next;
    for (const auto& board : boards) {
        next.emplace(board.id, board.mergedIntoBoardID);
    }
    const auto lastOf = [&](const base::Uuid& id) -> std::optional<base::Uuid> {
        auto at = next.find(id);
        for (std::size_t steps = 0; steps <= boards.size() && at != next.end(); ++steps) {
            if (!at->second) {
                return at->first;
            }
            at = next.find(*at->second);
        }
        return std::nullopt;
    };
    for (auto& board : boards) {
        if (board.mergedIntoBoardID) {
            // One that leads nowhere would hide its entries.
            const auto last = lastOf(board.id);
            set(board.mergedIntoBoardID, last, RepairKind::boardMarks, report);
            if (last) {
                merged.emplace(board.id, *last);
            }
        }
    }
}

bool isBefore(const BoardFields& left, const BoardFields& right) {
    return services::OrderKey{left.sortOrder, left.createdAt, left.id} <
           services::OrderKey{right.sortOrder, right.createdAt, right.id};
}

} // namespace

void makeSound(std::vector<BoardFields>& boards, BoardNumbers numbers, MergedBoards& merged,
               MergedBoards& newlyMerged, RepairReport& report) {
    std::sort(boards.begin(), boards.end(), isBefore);
    for (auto& board : boards) {
        makeDatesSound(board.createdAt, board.updatedAt, report);
        makeMarksSound(board, report);
        if (base::trimmed(board.name).empty()) {
            set(board.name, std::string(board.isSystem ? "Inbox" : kUntitled),
                RepairKind::boardNames, report);
        }
        if (board.icon && !model::boardIcon(*board.icon)) {
            set(board.icon, std::optional<std::string>(), RepairKind::boardLooks, report);
        }
        if (board.iconColor && !model::boardIconColor(*board.iconColor)) {
            set(board.iconColor, std::optional<std::string>(), RepairKind::boardLooks, report);
        }
    }
    mergeDoubled(boards, newlyMerged, report);
    followMerged(boards, merged, report);
    if (numbers == BoardNumbers::dense) {
        // Those that are hidden come last: one before the Inbox would take its place.
        std::stable_partition(boards.begin(), boards.end(), [](const BoardFields& board) {
            return !board.mergedIntoBoardID.has_value();
        });
        std::int64_t place = 0;
        for (auto& board : boards) {
            set(board.sortOrder, place, RepairKind::boardOrder, report);
            ++place;
        }
    }
}

void makeSound(EntryValues& entry, RepairReport& report) {
    const auto type = model::entryType(entry.type);
    const auto isTodo = type == model::EntryType::todo;
    set(entry.type, std::string(model::rawValue(type)), RepairKind::entryTypes, report);
    makeDatesSound(entry.createdAt, entry.updatedAt, report);

    auto isCompleted = entry.isCompleted && isTodo;
    set(entry.isCompleted, isCompleted, RepairKind::completion, report);
    auto completedAt = isCompleted ? entry.completedAt : std::nullopt;
    if (isCompleted && !(completedAt && completedAt->isValid())) {
        completedAt = entry.updatedAt;
    }
    set(entry.completedAt, completedAt, RepairKind::completion, report);

    auto schedule = entry.schedule;
    for (auto* instant : {&schedule.dueDate, &schedule.dueStartDate, &schedule.reminderDate}) {
        // A text may keep a schedule that makes no sense, but none that cannot be written.
        if (*instant && !(isTodo ? (*instant)->isValid() : std::isfinite((*instant)->seconds))) {
            instant->reset();
        }
    }
    if (isTodo) {
        if (schedule.dueDay && !base::noonInUtc(*schedule.dueDay)) {
            schedule.dueDay.reset();
        }
        // The day is what was shown.
        if (schedule.dueDay) {
            schedule.dueDate.reset();
        }
        if (!schedule.dueDate ||
            (schedule.dueStartDate && *schedule.dueStartDate >= *schedule.dueDate)) {
            schedule.dueStartDate.reset();
        }
    }
    set(entry.schedule, schedule, RepairKind::schedules, report);
}

} // namespace korvex::storage
