#pragma once

#include "store/Value.h"

#include <cstddef>
#include <string>
#include <vector>

namespace korvex::store {

class Record;
struct RecordType;

/// Which records a fetch takes: comparisons of fields with values, joined by and, or, not. An
/// absent field compares with nothing. A value; evaluated by SQLite for what is stored and in
/// memory for what a context has changed.
class Condition {
public:
    enum class Comparison { equal, notEqual, less, lessOrEqual, greater, greaterOrEqual };

    /// Takes every record.
    Condition() = default;
    static Condition compare(std::size_t field, Comparison comparison, Value value);
    static Condition isPresent(std::size_t field);
    static Condition isAbsent(std::size_t field);

    static Condition all(std::vector<Condition> operands);
    static Condition any(std::vector<Condition> operands);
    static Condition negation(Condition operand);

    bool matches(const Record& record) const;
    /// The SQL expression; appends the values to bind, in order, to `bindings`.
    std::string sql(const RecordType& type, std::vector<Value>& bindings) const;

private:
    enum class Kind { always, comparison, present, absent, all, any, negation };

    Kind m_kind = Kind::always;
    std::size_t m_field = 0;
    Comparison m_comparison = Comparison::equal;
    Value m_value;
    std::vector<Condition> m_operands;
};

inline Condition operator&&(Condition left, Condition right) {
    return Condition::all({std::move(left), std::move(right)});
}
inline Condition operator||(Condition left, Condition right) {
    return Condition::any({std::move(left), std::move(right)});
}
inline Condition operator!(Condition operand) {
    return Condition::negation(std::move(operand));
}

/// A field to compare: `FieldReference{Entry::isCompletedField} == Value{std::int64_t{0}}`.
struct FieldReference {
    std::size_t index;

    Condition operator==(Value value) const {
        return Condition::compare(index, Condition::Comparison::equal, std::move(value));
    }
    Condition operator!=(Value value) const {
        return Condition::compare(index, Condition::Comparison::notEqual, std::move(value));
    }
    Condition operator<(Value value) const {
        return Condition::compare(index, Condition::Comparison::less, std::move(value));
    }
    Condition operator<=(Value value) const {
        return Condition::compare(index, Condition::Comparison::lessOrEqual, std::move(value));
    }
    Condition operator>(Value value) const {
        return Condition::compare(index, Condition::Comparison::greater, std::move(value));
    }
    Condition operator>=(Value value) const {
        return Condition::compare(index, Condition::Comparison::greaterOrEqual, std::move(value));
    }
};

} // namespace korvex::store
