#include "store/OlderTable.h"

#include "store/ChecksumFunction.h"
#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/TableSql.h"

#include <algorithm>
#include <cassert>
#include <map>

namespace korvex::store {

namespace {

/// One type on its way through the versions.
class Course {
public:
    Course(const RecordType& type, const MigrationPlan& plan) : m_type(type) {
        for (const auto& each : plan.types) {
            if (each.name == type.name) {
                m_fields.assign(each.fields.begin(), each.fields.end());
            }
        }
    }

    /// From here on the values are followed: this is the version that the store has.
    void begin() {
        m_stored = m_fields;
        for (const auto& field : m_fields) {
            m_values[field.name] = "{" + std::string(field.name) + "}";
        }
    }

    void pass(const MigrationStage& stage) {
        for (const auto& change : stage.changes) {
            if (change.type == m_type.name) {
                apply(change);
            }
        }
        auto values = m_values;
        for (const auto& assignment : stage.assignments) {
            if (assignment.type == m_type.name) {
                values[assignment.field] = resolved(
                    assignment.expression, [&](auto name) { return "(" + m_values[name] + ")"; });
            }
        }
        m_values = std::move(values);
    }

    OlderTable end() const {
        OlderTable table{.type = &m_type, .fields = m_stored, .values = {}};
        for (const auto& field : m_type.fields) {
            const auto found = m_values.find(field.name);
            assert(found != m_values.end()); // or the plan does not lead to the current version
            table.values.push_back(field.kind == FieldKind::externalBytes ? std::string()
                                                                          : found->second);
        }
        return table;
    }

private:
    void apply(const FieldChange& change) {
        const auto& name = change.field.name;
        if (change.kind == FieldChange::Kind::removed) {
            std::erase_if(m_fields, [&](const StoredField& field) { return field.name == name; });
            m_values.erase(name);
            return;
        }
        m_fields.push_back(change.field);
        m_values[name] = tableSql::emptyValue(change.field.kind);
    }

    const RecordType& m_type;
    std::vector<StoredField> m_fields;
    std::vector<StoredField> m_stored;
    std::map<std::string_view, std::string> m_values;
};

OlderTable currentTable(const RecordType& type) {
    OlderTable table{.type = &type, .fields = {}, .values = {}};
    for (const auto& field : type.fields) {
        table.fields.push_back({field.name, field.kind});
        table.values.push_back(field.kind == FieldKind::externalBytes
                                   ? std::string()
                                   : "{" + std::string(field.name) + "}");
    }
    return table;
}

} // namespace

std::set<std::string, std::less<>> columnsOf(sqlite3* database, std::string_view table) {
    std::set<std::string, std::less<>> columns;
    Statement each(database, "SELECT name FROM pragma_table_info(?)");
    each.bind(0, table);
    while (each.step()) {
        columns.emplace(each.text(0));
    }
    return columns;
}

bool OlderTable::has(std::string_view field) const {
    return std::any_of(fields.begin(), fields.end(),
                       [&](const StoredField& each) { return each.name == field; });
}

std::vector<StoredField> OlderTable::rowFields() const {
    auto result = fields;
    std::erase_if(result, [](const auto& each) { return each.kind == FieldKind::externalBytes; });
    return result;
}

std::vector<OlderTable> olderTables(const Schema& schema, std::int32_t version) {
    std::vector<OlderTable> tables;
    for (const auto* type : schema.types) {
        if (version == schema.version.number) {
            tables.push_back(currentTable(*type));
            continue;
        }
        if (!schema.migrations) {
            throw StoreError(StoreErrorCase::olderVersion);
        }
        const auto& plan = *schema.migrations;
        Course course(*type, plan);
        auto isKnown = plan.oldest == version;
        if (isKnown) {
            course.begin();
        }
        for (const auto& stage : plan.stages) {
            course.pass(stage);
            if (stage.to == version) {
                isKnown = true;
                course.begin();
            }
        }
        if (!isKnown) {
            throw StoreError(StoreErrorCase::olderVersion);
        }
        tables.push_back(course.end());
    }
    return tables;
}

bool hasTables(sqlite3* database, const std::vector<OlderTable>& tables) {
    const auto has = [&](const std::string& table, const std::vector<std::string_view>& wanted) {
        const auto columns = columnsOf(database, table);
        return std::all_of(wanted.begin(), wanted.end(),
                           [&](std::string_view name) { return columns.contains(name); });
    };
    const auto hasTable = [&](const OlderTable& table) {
        std::vector<std::string_view> columns{"version", "checksum"};
        for (const auto& field : table.fields) {
            if (field.kind != FieldKind::externalBytes) {
                columns.push_back(field.name);
            } else if (!has(std::string(table.type->name) + "." + std::string(field.name),
                            {"owner", "checksum", "bytes"})) {
                return false;
            }
        }
        return has(std::string(table.type->name), columns);
    };
    return has("StoreInfo", {"storeID"}) && has("ChangeLog", {"revision", "changes"}) &&
           // Not every store has one.
           (columnsOf(database, "Replacement").empty() ||
            has("Replacement", {"revision", "note"})) &&
           std::all_of(tables.begin(), tables.end(), hasTable);
}

bool hasTablesOfAnyVersion(sqlite3* database, const Schema& schema) {
    return std::any_of(
        schema.history.begin(), schema.history.end(), [&](const SchemaVersion& version) {
            const auto leadsHere =
                version.number == schema.version.number ||
                (schema.migrations && version.number >= schema.migrations->oldest);
            return leadsHere && hasTables(database, olderTables(schema, version.number));
        });
}

RowReading::RowReading(sqlite3* database, const OlderTable& table) {
    const auto append = [](std::string& list, const std::string& each) {
        list += (list.empty() ? "" : ", ") + each;
    };
    for (const auto index : tableSql::rowFields(*table.type)) {
        fields.push_back({table.type->fields[index].name, table.type->fields[index].kind});
        append(values, resolved(table.values[index], tableSql::quoted));
    }
    std::string stored;
    for (const auto& each : table.rowFields()) {
        append(stored, tableSql::quoted(each.name));
    }
    addChecksumFunction(database, "storedChecksum", table.type->name, table.rowFields());
    addChecksumFunction(database, kNewChecksum, table.type->name, fields);
    isSound = "checksum = storedChecksum(" + stored + ")";
}

std::string resolved(std::string_view expression,
                     const std::function<std::string(std::string_view)>& column) {
    std::string result;
    while (!expression.empty()) {
        const auto open = expression.find('{');
        result += expression.substr(0, open);
        if (open == std::string_view::npos) {
            break;
        }
        const auto close = expression.find('}', open);
        assert(close != std::string_view::npos);
        result += column(expression.substr(open + 1, close - open - 1));
        expression.remove_prefix(close + 1);
    }
    return result;
}

std::vector<RowCount> countRows(sqlite3* database, const Schema& schema, const TablePart& part) {
    std::vector<RowCount> found;
    for (const auto& table : olderTables(schema, StoreFile::version(database, schema))) {
        const RowReading reading(database, table);
        const auto name = tableSql::quoted(table.type->name);
        std::string where;
        // So much of the largest and the rest of the smallest: no step on the way overflows.
        const auto begin = [&](std::int64_t index) {
            const auto share = [&](const char* end, std::int64_t times) {
                return "(SELECT " + std::string(end) + "(rowid) FROM " + name + ") / " +
                       std::to_string(part.count) + " * " + std::to_string(times);
            };
            return share("max", index) + " + " + share("min", part.count - index);
        };
        if (part.index > 0) {
            where = " WHERE rowid >= " + begin(part.index);
        }
        if (part.index + 1 < part.count) {
            where += (where.empty() ? " WHERE" : " AND") + (" rowid < " + begin(part.index + 1));
        }
        auto sql = "SELECT count(*), count(*) FILTER (WHERE NOT " + reading.isSound + ") FROM ";
        sql.append(name).append(" NOT INDEXED").append(where);
        Statement count(database, sql);
        while (count.step()) {
            found.push_back({count.integer(0), count.integer(1)});
        }
    }
    return found;
}

} // namespace korvex::store
