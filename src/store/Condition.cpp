#include "store/Condition.h"

#include "store/Record.h"
#include "store/TableSql.h"

#include <algorithm>
#include <cassert>

namespace korvex::store {

namespace {

std::string_view sqlOperator(Condition::Comparison comparison) {
    switch (comparison) {
    case Condition::Comparison::equal:
        return " = ?";
    case Condition::Comparison::notEqual:
        return " <> ?";
    case Condition::Comparison::less:
        return " < ?";
    case Condition::Comparison::lessOrEqual:
        return " <= ?";
    case Condition::Comparison::greater:
        return " > ?";
    case Condition::Comparison::greaterOrEqual:
        return " >= ?";
    }
    assert(false);
    return {};
}

bool holds(const Value& left, Condition::Comparison comparison, const Value& right) {
    // As in SQL, nothing compares with an absent value.
    if (isAbsent(left) || isAbsent(right)) {
        return false;
    }
    switch (comparison) {
    case Condition::Comparison::equal:
        return left == right;
    case Condition::Comparison::notEqual:
        return left != right;
    case Condition::Comparison::less:
        return left < right;
    case Condition::Comparison::lessOrEqual:
        return left <= right;
    case Condition::Comparison::greater:
        return left > right;
    case Condition::Comparison::greaterOrEqual:
        return left >= right;
    }
    assert(false);
    return false;
}

std::string quoted(std::string_view column) {
    return "\"" + std::string(column) + "\"";
}

std::string presence(const RecordType& type, const Field& field) {
    return field.kind == FieldKind::externalBytes
               ? "rowid IN (SELECT owner FROM " + tableSql::externalTable(type, field) + ")"
               : "(" + quoted(field.name) + " IS NOT NULL)";
}

} // namespace

Condition Condition::compare(std::size_t field, Comparison comparison, Value value) {
    Condition condition;
    condition.m_kind = Kind::comparison;
    condition.m_field = field;
    condition.m_comparison = comparison;
    condition.m_value = std::move(value);
    return condition;
}

Condition Condition::isPresent(std::size_t field) {
    Condition condition;
    condition.m_kind = Kind::present;
    condition.m_field = field;
    return condition;
}

Condition Condition::isAbsent(std::size_t field) {
    Condition condition;
    condition.m_kind = Kind::absent;
    condition.m_field = field;
    return condition;
}

Condition Condition::all(std::vector<Condition> operands) {
    Condition condition;
    condition.m_kind = Kind::all;
    condition.m_operands = std::move(operands);
    return condition;
}

Condition Condition::any(std::vector<Condition> operands) {
    Condition condition;
    condition.m_kind = Kind::any;
    condition.m_operands = std::move(operands);
    return condition;
}

Condition Condition::negation(Condition operand) {
    Condition condition;
    condition.m_kind = Kind::negation;
    condition.m_operands.push_back(std::move(operand));
    return condition;
}

bool Condition::matches(const Record& record) const {
    const auto matchesRecord = [&](const Condition& each) { return each.matches(record); };
    switch (m_kind) {
    case Kind::always:
        return true;
    case Kind::comparison:
        return holds(record.value(m_field), m_comparison, m_value);
    case Kind::present:
        return !store::isAbsent(record.value(m_field));
    case Kind::absent:
        return store::isAbsent(record.value(m_field));
    case Kind::all:
        return std::all_of(m_operands.begin(), m_operands.end(), matchesRecord);
    case Kind::any:
        return std::any_of(m_operands.begin(), m_operands.end(), matchesRecord);
    case Kind::negation:
        return !m_operands.front().matches(record);
    }
    assert(false);
    return false;
}

std::string Condition::sql(const RecordType& type, std::vector<Value>& bindings) const {
    const auto joined = [&](std::string_view separator, std::string_view whenEmpty) {
        if (m_operands.empty()) {
            return std::string(whenEmpty);
        }
        std::string text = "(";
        for (std::size_t i = 0; i < m_operands.size(); ++i) {
            if (i > 0) {
                text += separator;
            }
            text += m_operands[i].sql(type, bindings);
        }
        return text + ")";
    };
    switch (m_kind) {
    case Kind::always:
        return "1";
    case Kind::comparison:
        bindings.push_back(m_value);
        return quoted(type.fields[m_field].name) + std::string(sqlOperator(m_comparison));
    case Kind::present:
        return presence(type, type.fields[m_field]);
    case Kind::absent:
        return "NOT " + presence(type, type.fields[m_field]);
    case Kind::all:
        return joined(" AND ", "1");
    case Kind::any:
        return joined(" OR ", "0");
    case Kind::negation:
        // A comparison with an absent field is unknown to SQL; here it is false.
        return "NOT ifnull(" + m_operands.front().sql(type, bindings) + ", 0)";
    }
    assert(false);
    return {};
}

} // namespace korvex::store
