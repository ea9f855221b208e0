#include "model/SchemaVersions.h"

#include "model/Board.h"
#include "model/Entry.h"

#include <array>

namespace korvex::model {

namespace {

using Name = std::string_view;

constexpr std::array<Name, 7> kBoardV10{"id",        "name",     "createdAt", "updatedAt",
                                        "sortOrder", "isSystem", "entries"};
constexpr std::array<Name, 9> kBoardV11{
    "id",       "name",          "createdAt",        "updatedAt",        "sortOrder",
    "isSystem", "storedEntries", "systemIdentifier", "mergedIntoBoardID"};
constexpr std::array<Name, 10> kBoardV14{
    "id",       "name",          "createdAt",        "updatedAt",         "sortOrder",
    "isSystem", "storedEntries", "systemIdentifier", "mergedIntoBoardID", "icon"};
constexpr std::array<Name, 11> kBoardV15{
    "id",       "name",          "createdAt",        "updatedAt",         "sortOrder",
    "isSystem", "storedEntries", "systemIdentifier", "mergedIntoBoardID", "icon",
    "iconColor"};
constexpr std::array<Name, 12> kBoardV16{
    "id",        "name",          "createdAt",        "updatedAt",         "sortOrder",
    "isSystem",  "storedEntries", "systemIdentifier", "mergedIntoBoardID", "icon",
    "iconColor", "isArchived"};

constexpr std::array<Name, 10> kEntryV10{"id",          "type",      "content",   "richTextData",
                                         "createdAt",   "updatedAt", "sortOrder", "isCompleted",
                                         "completedAt", "board"};
constexpr std::array<Name, 11> kEntryBridge{
    "id",        "type",        "content",     "richTextData", "createdAt",   "updatedAt",
    "sortOrder", "isCompleted", "completedAt", "board",        "typeRawValue"};
constexpr std::array<Name, 10> kEntryV11{"id",          "typeRawValue", "content",   "richTextData",
                                         "createdAt",   "updatedAt",    "sortOrder", "isCompleted",
                                         "completedAt", "board"};
constexpr std::array<Name, 13> kEntryV12{"id",          "typeRawValue", "content",   "richTextData",
                                         "createdAt",   "updatedAt",    "sortOrder", "isCompleted",
                                         "completedAt", "board",        "dueDay",    "dueDate",
                                         "reminderDate"};
constexpr std::array<Name, 14> kEntryV13{
    "id",        "typeRawValue", "content",      "richTextData",  "createdAt",
    "updatedAt", "sortOrder",    "isCompleted",  "completedAt",   "board",
    "dueDay",    "dueDate",      "reminderDate", "attachmentData"};
constexpr std::array<Name, 15> kEntryV17{
    "id",        "typeRawValue", "content",      "richTextData",   "createdAt",
    "updatedAt", "sortOrder",    "isCompleted",  "completedAt",    "board",
    "dueDay",    "dueDate",      "reminderDate", "attachmentData", "dueStartDate"};

// The numbers leave room for a version between two.
constexpr std::array kVersions{
    store::SchemaVersion{"KorvexSchemaV10", 100}, store::SchemaVersion{"KorvexSchemaBridge", 105},
    store::SchemaVersion{"KorvexSchemaV11", 110}, store::SchemaVersion{"KorvexSchemaV12", 120},
    store::SchemaVersion{"KorvexSchemaV13", 130}, store::SchemaVersion{"KorvexSchemaV14", 140},
    store::SchemaVersion{"KorvexSchemaV15", 150}, store::SchemaVersion{"KorvexSchemaV16", 160},
    store::SchemaVersion{"KorvexSchemaV17", 170},
};

constexpr std::array kHistory{
    SchemaVersionFields{kVersions[0], kBoardV10, kEntryV10},
    SchemaVersionFields{kVersions[1], kBoardV10, kEntryBridge},
    SchemaVersionFields{kVersions[2], kBoardV11, kEntryV11},
    SchemaVersionFields{kVersions[3], kBoardV11, kEntryV12},
    SchemaVersionFields{kVersions[4], kBoardV11, kEntryV13},
    SchemaVersionFields{kVersions[5], kBoardV14, kEntryV13},
    SchemaVersionFields{kVersions[6], kBoardV15, kEntryV13},
    SchemaVersionFields{kVersions[7], kBoardV16, kEntryV13},
    SchemaVersionFields{kVersions[8], kBoardV16, kEntryV17},
};

} // namespace

std::span<const SchemaVersionFields> schemaHistory() {
    return kHistory;
}

const store::Schema& currentSchema() {
    static const std::array types{&Board::recordType(), &Entry::recordType()};
    static const store::Schema schema{
        .version = kVersions.back(), .history = kVersions, .types = types};
    return schema;
}

} // namespace korvex::model
