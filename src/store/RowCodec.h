#pragma once

#include "store/Record.h"
#include "store/Statement.h"

#include <cstdint>
#include <vector>

namespace korvex::store {

/// Carries values between a record's fields and the columns of its row.
class RowCodec {
public:
    explicit RowCodec(const RecordType& type);

    /// Fills every field from a row of `tableSql::select`; external bytes become unread, or absent
    /// where there are none. Changes no bookkeeping.
    void readRow(const Statement& row, Record& record) const;
    /// The value of one field in such a row.
    Value readField(const Statement& row, std::size_t field) const;
    std::int64_t version(const Statement& row) const;
    std::uint64_t checksum(const Statement& row) const;
    std::int64_t rowid(const Statement& row) const;
    base::Uuid identifier(const Statement& row) const;

    void bindField(Statement& statement, int index, const Record& record, std::size_t field) const;
    /// Binds version, checksum and all fields to `tableSql::insert`.
    void bindRow(Statement& statement, const Record& record, std::int64_t version) const;

    /// The checksum over all fields in the row, in declared order: presence, length or number,
    /// bytes.
    std::uint64_t checksum(const Record& record) const;
    /// The same of what the store holds, where fields are changed here.
    std::uint64_t originalChecksum(const Record& record) const;

private:
    struct Column {
        std::size_t field;
        FieldKind kind;
        int column;
    };
    template <typename Append>
    std::uint64_t checksumOf(Append&& append) const;

    const RecordType* m_type;
    std::vector<Column> m_columns;
    /// Where a row says whether there are external bytes.
    std::vector<Column> m_externals;
    /// The column of each field in a row; -1 for one that does not stand there.
    std::vector<int> m_columnOfField;
    mutable std::vector<std::uint8_t> m_scratch;
};

} // namespace korvex::store
