#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace korvex::store {

class Record;

/// How a field is held in memory (the type behind its offset) and in its column.
enum class FieldKind {
    uuid,            ///< base::Uuid, BLOB of 16 bytes
    optionalUuid,    ///< std::optional<base::Uuid>
    text,            ///< std::string, UTF-8
    optionalText,    ///< std::optional<std::string>
    optionalBytes,   ///< std::optional<base::Bytes>, in the record's row
    integer,         ///< std::int64_t
    optionalInteger, ///< std::optional<std::int64_t>
    boolean,         ///< bool
    date,            ///< base::Instant, REAL
    optionalDate,    ///< std::optional<base::Instant>
    /// std::optional<base::Uuid> naming the record's owner (the to-one side of a relationship).
    reference,
    /// store::ExternalBytes: bytes in a table of their own, read when first asked for, so that a
    /// change of the row beside them does not rewrite them.
    externalBytes,
};

struct Field {
    std::string_view name;
    FieldKind kind;
    /// Where the value lies in the record's field struct (`Record::fieldStorage`).
    std::size_t offset;
    /// The column's index in SQL, for lookups; each index costs every write of the field.
    enum class Index { none, all, present } index = Index::none;
};

/// One kind of record: its name, which is its table's, and its fields in declared order. Field 0 is
/// the identifier. Types are constants; records, contexts and schemas point to them. Types that
/// refer to each other do so by function, since neither can be made before the other.
struct RecordType {
    std::string_view name;
    std::span<const Field> fields;
    std::unique_ptr<Record> (*make)();
    /// The to-one side: which field refers to a record of which type. At most one per type.
    std::optional<std::size_t> ownerField = std::nullopt;
    const RecordType& (*ownerType)() = nullptr;
    /// The to-many side, inverse of `ownerField` over there: deleting the owner deletes these.
    const RecordType& (*ownedType)() = nullptr;
};

} // namespace korvex::store
