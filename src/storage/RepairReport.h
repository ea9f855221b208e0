#pragma once

#include <cstddef>
#include <map>
#include <string_view>

namespace korvex::storage {

/// What a repair found to be wrong.
enum class RepairKind {
    doubledSystemBoards,
    boardMarks,
    boardNames,
    boardLooks,
    boardOrder,
    entriesWithoutBoard,
    entriesOfMergedBoards,
    entryTypes,
    completion,
    schedules,
    dates,
    entryOrder,
    unreadableTexts,
    unreadableAttachments,
};

/// That it is so, in English, for a list of counts: "Entries whose board is missing".
std::string_view findingOf(RepairKind kind);
/// What was done about it, in English, for a list of counts: "Entries moved to the Inbox, whose
/// board was missing".
std::string_view titleOf(RepairKind kind);
/// The key of that count for programs: "entriesWithoutBoard".
std::string_view rawValue(RepairKind kind);

/// How many values of each kind were repaired; what is not in it was sound.
struct RepairReport {
    std::map<RepairKind, std::size_t> repaired;
    /// Boards and entries whose identifier cannot be read. Two of them pass for one record, so
    /// nothing is changed in such a store before `repairStore` has saved them.
    std::size_t damaged = 0;

    /// Nothing is to be changed.
    bool isEmpty() const { return repaired.empty(); }
    std::size_t count() const {
        std::size_t count = 0;
        for (const auto& [kind, number] : repaired) {
            count += number;
        }
        return count;
    }
};

} // namespace korvex::storage
