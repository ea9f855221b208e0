#pragma once

#include "store/Record.h"

#include <tsl/robin_map.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <vector>

namespace korvex::store {

/// The records that a context has in memory, at most one for each identifier. Tables are numbered
/// as their types stand in the schema. Main thread.
class RecordTables {
public:
    struct Table {
        const RecordType* type;
        tsl::robin_map<std::int64_t, Record*> byRowid;
        tsl::robin_map<base::Uuid, Record*> byIdentifier;

        /// The record of a row, or of an identifier, deleted ones too; null when none is in memory.
        Record* atRowid(std::int64_t rowid) const;
        Record* withIdentifier(const base::Uuid& id) const;
        /// Its row is not this record's any more, unless it is another's already.
        void forgetRow(const Record& record);
    };

    /// The types must outlive the tables.
    explicit RecordTables(std::span<const RecordType* const> types);

    std::size_t size() const { return m_tables.size(); }
    /// `type` must be one of the types that the tables were made for.
    std::size_t indexOf(const RecordType& type) const;
    Table& operator[](std::size_t index) { return m_tables[index]; }
    Table& of(const Record& record) { return m_tables[indexOf(record.storedType())]; }

    /// Owns the record from here on, and knows it by its identifier.
    Record& adopt(std::size_t index, std::unique_ptr<Record> record, ContextCore& context);
    /// The record stays as a shell that belongs to no context and no row any more.
    void forget(Record& record);

private:
    std::vector<Table> m_tables;
    /// Every record that was ever adopted: references stay good as long as the context lives.
    std::deque<std::unique_ptr<Record>> m_records;
};

/// These two keep the owner's list of what it owns in step with a record's `owner`, where that list
/// is loaded.
void linkToOwner(Record& record);
void unlinkFromOwner(Record& record);

} // namespace korvex::store
