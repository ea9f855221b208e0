#pragma once

#include "store/RecordType.h"

#include <span>
#include <string>
#include <vector>

namespace korvex::store::tableSql {

/// The bookkeeping columns before a record's own fields in every row the store reads.
inline constexpr int kRowidColumn = 0;
inline constexpr int kVersionColumn = 1;
inline constexpr int kChecksumColumn = 2;
inline constexpr int kFirstFieldColumn = 3;

/// A name, quoted for SQL.
std::string quoted(std::string_view name);
/// The side table of a field of external bytes.
std::string externalTable(const RecordType& type, const Field& field);
/// What creates it, where it is not there yet.
std::string createExternal(const RecordType& type, const Field& field);

/// The fields that stand in the record's own row, by index.
std::vector<std::size_t> rowFields(const RecordType& type);

/// A column as a table is made with it: its name, its type, and whether it may be absent.
std::string columnDefinition(std::string_view name, FieldKind kind);

/// The value, in SQL, of a field that nobody has given one: absent; 0, false or empty where it
/// cannot be.
std::string emptyValue(FieldKind kind);

/// What creates the tables and indexes of one record type, those that are not there yet.
std::vector<std::string> createStatements(const RecordType& type);
/// What creates all of a new store: those of each type, after the tables that every store has, its
/// identity and the log of changes.
std::vector<std::string> createAllStatements(std::span<const RecordType* const> types);

/// "SELECT rowid, version, checksum, fields…, whether there are external bytes… FROM type"; a
/// condition can be appended.
std::string select(const RecordType& type);
std::string insert(const RecordType& type);
/// An UPDATE that sets the given fields, the version and the checksum of the row with a rowid and a
/// version.
std::string update(const RecordType& type, const std::vector<std::size_t>& fields);

} // namespace korvex::store::tableSql
