#pragma once

#include "backup/BackupDocument.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <utility>

namespace korvex::backup {

/// A key of a JSON object and the member that it stands for.
template <typename Record, typename Value>
struct Field {
    std::string_view key;
    Value Record::*member;
};
template <typename Record, typename Value>
Field(std::string_view, Value Record::*) -> Field<Record, Value>;

/// The members of a record, in the order of their keys. An optional one may be absent, every other
/// one is required.
template <typename Record>
inline constexpr auto kFields = std::tuple<>();

template <>
inline constexpr auto kFields<BackupDocument> = std::tuple{
    Field{"appVersion", &BackupDocument::appVersion},
    Field{"boards", &BackupDocument::boards},
    Field{"entries", &BackupDocument::entries},
    Field{"exportedAt", &BackupDocument::exportedAt},
    Field{"schemaVersion", &BackupDocument::schemaVersion},
};

template <>
inline constexpr auto kFields<BackupDocument::BoardRecord> = [] {
    using Record = BackupDocument::BoardRecord;
    return std::tuple{
        Field{"createdAt", &Record::createdAt},
        Field{"icon", &Record::icon},
        Field{"iconColor", &Record::iconColor},
        Field{"id", &Record::id},
        Field{"isArchived", &Record::isArchived},
        Field{"isSystem", &Record::isSystem},
        Field{"name", &Record::name},
        Field{"sortOrder", &Record::sortOrder},
        Field{"systemIdentifier", &Record::systemIdentifier},
        Field{"updatedAt", &Record::updatedAt},
    };
}();

template <>
inline constexpr auto kFields<BackupDocument::EntryRecord> = [] {
    using Record = BackupDocument::EntryRecord;
    return std::tuple{
        Field{"attachmentData", &Record::attachmentData},
        Field{"boardID", &Record::boardID},
        Field{"completedAt", &Record::completedAt},
        Field{"content", &Record::content},
        Field{"createdAt", &Record::createdAt},
        Field{"dueDate", &Record::dueDate},
        Field{"dueDay", &Record::dueDay},
        Field{"dueStartDate", &Record::dueStartDate},
        Field{"id", &Record::id},
        Field{"isCompleted", &Record::isCompleted},
        Field{"reminderDate", &Record::reminderDate},
        Field{"richTextData", &Record::richTextData},
        Field{"sortOrder", &Record::sortOrder},
        Field{"type", &Record::type},
        Field{"updatedAt", &Record::updatedAt},
    };
}();

template <typename Record>
inline constexpr std::size_t kFieldCount = std::tuple_size_v<decltype(kFields<Record>)>;

template <typename Record>
constexpr bool areKeysSorted() {
    return std::apply(
        [](const auto&... fields) {
            std::string_view last;
            return ((std::exchange(last, fields.key) < fields.key) && ...);
        },
        kFields<Record>);
}
static_assert(areKeysSorted<BackupDocument>());
static_assert(areKeysSorted<BackupDocument::BoardRecord>());
static_assert(areKeysSorted<BackupDocument::EntryRecord>());

} // namespace korvex::backup
