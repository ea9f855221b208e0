#include "store/FetchDescriptor.h"

#include "store/Record.h"
#include "store/TableSql.h"

namespace korvex::store {

bool FetchDescriptor::isBefore(const Record& left, const Record& right) const {
    for (const auto& key : order) {
        const auto a = left.value(key.field);
        const auto b = right.value(key.field);
        if (a != b) {
            return (a < b) == key.ascending;
        }
    }
    return false;
}

std::string FetchDescriptor::orderSql(const RecordType& type) const {
    std::string sql;
    for (const auto& key : order) {
        sql += (sql.empty() ? " ORDER BY " : ", ") + tableSql::quoted(type.fields[key.field].name) +
               (key.ascending ? "" : " DESC");
    }
    return sql;
}

} // namespace korvex::store
