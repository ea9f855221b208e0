#include "store/TableSql.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace korvex::store::tableSql {

namespace {

std::string_view columnType(FieldKind kind) {
    switch (kind) {
    case FieldKind::uuid:
        return "BLOB NOT NULL";
    case FieldKind::optionalUuid:
    case FieldKind::reference:
    case FieldKind::optionalBytes:
        return "BLOB";
    case FieldKind::text:
        return "TEXT NOT NULL";
    case FieldKind::optionalText:
        return "TEXT";
    case FieldKind::integer:
    case FieldKind::boolean:
        return "INTEGER NOT NULL";
    case FieldKind::optionalInteger:
        return "INTEGER";
    case FieldKind::date:
        return "REAL NOT NULL";
    case FieldKind::optionalDate:
        return "REAL";
    case FieldKind::externalBytes:
        break;
    }
    assert(false);
    return {};
}

} // namespace

std::string quoted(std::string_view name) {
    return "\"" + std::string(name) + "\"";
}

std::string columnDefinition(std::string_view name, FieldKind kind) {
    return tableSql::quoted(name) + " " + std::string(columnType(kind));
}

std::string emptyValue(FieldKind kind) {
    switch (kind) {
    case FieldKind::uuid:
        return "x'00000000000000000000000000000000'";
    case FieldKind::text:
        return "''";
    case FieldKind::integer:
    case FieldKind::boolean:
        return "0";
    case FieldKind::date:
        return "0.0";
    case FieldKind::optionalUuid:
    case FieldKind::reference:
    case FieldKind::optionalText:
    case FieldKind::optionalBytes:
    case FieldKind::optionalInteger:
    case FieldKind::optionalDate:
    case FieldKind::externalBytes:
        return "NULL";
    }
    assert(false);
    return {};
}

std::string externalTable(const RecordType& type, const Field& field) {
    // Not the standard library's of this name, which a std::string would call.
    return tableSql::quoted(std::string(type.name) + "." + std::string(field.name));
}

std::string createExternal(const RecordType& type, const Field& field) {
    return "CREATE TABLE IF NOT EXISTS " + externalTable(type, field) +
           "(owner INTEGER PRIMARY KEY, checksum INTEGER NOT NULL, bytes BLOB NOT NULL)";
}

std::vector<std::size_t> rowFields(const RecordType& type) {
    std::vector<std::size_t> indexes;
    for (std::size_t i = 0; i < type.fields.size(); ++i) {
        if (type.fields[i].kind != FieldKind::externalBytes) {
            indexes.push_back(i);
        }
    }
    return indexes;
}

std::vector<std::string> createStatements(const RecordType& type) {
    std::string table = "CREATE TABLE IF NOT EXISTS " + quoted(type.name) +
                        "(rowid INTEGER PRIMARY KEY, version INTEGER NOT NULL, "
                        "checksum INTEGER NOT NULL";
    std::vector<std::string> others;
    for (std::size_t i = 0; i < type.fields.size(); ++i) {
        const auto& field = type.fields[i];
        if (field.kind == FieldKind::externalBytes) {
            others.push_back(createExternal(type, field));
            continue;
        }
        table += ", " + columnDefinition(field.name, field.kind);
        if (i == 0) {
            table += " UNIQUE";
        }
        if (field.index != Field::Index::none) {
            std::string index =
                "CREATE INDEX IF NOT EXISTS " +
                tableSql::quoted(std::string(type.name) + "_" + std::string(field.name)) + " ON " +
                quoted(type.name) + "(" + quoted(field.name) + ")";
            if (field.index == Field::Index::present) {
                index += " WHERE " + quoted(field.name) + " IS NOT NULL";
            }
            others.push_back(std::move(index));
        }
    }
    others.insert(others.begin(), table + ")");
    return others;
}

std::vector<std::string> createAllStatements(std::span<const RecordType* const> types) {
    std::vector<std::string> all{
        "CREATE TABLE StoreInfo(storeID BLOB NOT NULL)",
        "CREATE TABLE ChangeLog(revision INTEGER PRIMARY KEY, changes BLOB)",
    };
    for (const auto* type : types) {
        auto ofType = createStatements(*type);
        std::move(ofType.begin(), ofType.end(), std::back_inserter(all));
    }
    return all;
}

std::string select(const RecordType& type) {
    std::string sql = "SELECT rowid, version, checksum";
    for (const auto field : rowFields(type)) {
        sql += ", " + quoted(type.fields[field].name);
    }
    // Whether there are external bytes: most records have none, and then need not ask again. EXISTS
    // would open their table anew for each row.
    for (const auto& field : type.fields) {
        if (field.kind == FieldKind::externalBytes) {
            sql += ", " + quoted(type.name) + ".rowid IN (SELECT owner FROM " +
                   externalTable(type, field) + ")";
        }
    }
    return sql + " FROM " + quoted(type.name);
}

std::string insert(const RecordType& type) {
    std::string columns = "version, checksum";
    std::string places = "?, ?";
    for (const auto field : rowFields(type)) {
        columns += ", " + quoted(type.fields[field].name);
        places += ", ?";
    }
    return "INSERT INTO " + quoted(type.name) + "(" + columns + ") VALUES(" + places + ")";
}

std::string update(const RecordType& type, const std::vector<std::size_t>& fields) {
    std::string sql = "UPDATE " + quoted(type.name) + " SET version = ?, checksum = ?";
    for (const auto field : fields) {
        sql += ", " + quoted(type.fields[field].name) + " = ?";
    }
    return sql + " WHERE rowid = ? AND version = ?";
}

} // namespace korvex::store::tableSql
