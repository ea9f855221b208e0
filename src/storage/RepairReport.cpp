#include "storage/RepairReport.h"

namespace korvex::storage {

std::string_view findingOf(RepairKind kind) {
    switch (kind) {
    case RepairKind::doubledSystemBoards:
        return "System boards that are there more than once";
    case RepairKind::boardMarks:
        return "Marks of boards that contradict each other";
    case RepairKind::boardNames:
        return "Boards without a name";
    case RepairKind::boardLooks:
        return "Unknown icons and colors of boards";
    case RepairKind::boardOrder:
        return "Boards that are not numbered in order";
    case RepairKind::entriesWithoutBoard:
        return "Entries whose board is missing";
    case RepairKind::entriesOfMergedBoards:
        return "Entries on boards that were merged";
    case RepairKind::entryTypes:
        return "Unknown types of entries";
    case RepairKind::completion:
        return "Completions that contradict themselves";
    case RepairKind::schedules:
        return "Schedules that make no sense";
    case RepairKind::dates:
        return "Dates outside the calendar";
    case RepairKind::entryOrder:
        return "Boards whose entries are not numbered in order";
    case RepairKind::unreadableTexts:
        return "Formatted texts that cannot be read";
    case RepairKind::unreadableAttachments:
        return "Attachments that cannot be read";
    }
    return {};
}

std::string_view titleOf(RepairKind kind) {
    switch (kind) {
    case RepairKind::doubledSystemBoards:
        return "System boards merged into the first of them";
    case RepairKind::boardMarks:
        return "Marks of boards that contradicted each other";
    case RepairKind::boardNames:
        return "Names given to boards without one";
    case RepairKind::boardLooks:
        return "Unknown icons and colors of boards";
    case RepairKind::boardOrder:
        return "Places of boards in the sidebar";
    case RepairKind::entriesWithoutBoard:
        return "Entries moved to the Inbox, whose board was missing";
    case RepairKind::entriesOfMergedBoards:
        return "Entries moved from boards that were merged";
    case RepairKind::entryTypes:
        return "Unknown types of entries";
    case RepairKind::completion:
        return "Completions that contradicted themselves";
    case RepairKind::schedules:
        return "Schedules that made no sense";
    case RepairKind::dates:
        return "Dates outside the calendar";
    case RepairKind::entryOrder:
        return "Boards whose entries were numbered anew";
    case RepairKind::unreadableTexts:
        return "Formatted texts that could not be read, kept in files beside the store";
    case RepairKind::unreadableAttachments:
        return "Attachments that could not be read, kept in files beside the store";
    }
    return {};
}

std::string_view rawValue(RepairKind kind) {
    switch (kind) {
    case RepairKind::doubledSystemBoards:
        return "doubledSystemBoards";
    case RepairKind::boardMarks:
        return "boardMarks";
    case RepairKind::boardNames:
        return "boardNames";
    case RepairKind::boardLooks:
        return "boardLooks";
    case RepairKind::boardOrder:
        return "boardOrder";
    case RepairKind::entriesWithoutBoard:
        return "entriesWithoutBoard";
    case RepairKind::entriesOfMergedBoards:
        return "entriesOfMergedBoards";
    case RepairKind::entryTypes:
        return "entryTypes";
    case RepairKind::completion:
        return "completion";
    case RepairKind::schedules:
        return "schedules";
    case RepairKind::dates:
        return "dates";
    case RepairKind::entryOrder:
        return "entryOrder";
    case RepairKind::unreadableTexts:
        return "unreadableTexts";
    case RepairKind::unreadableAttachments:
        return "unreadableAttachments";
    }
    return {};
}

} // namespace korvex::storage
