#pragma once

#include "store/Announcements.h"
#include "store/FetchDescriptor.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"
#include "store/PendingRecords.h"
#include "store/RecordTables.h"
#include "store/StoreConnection.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace korvex::store {

/// The workings of a ModelContext: it reads, keeps what is pending, merges what others saved, and
/// saves. Main thread.
class ContextCore {
public:
    explicit ContextCore(ModelContainer& container);

    ModelContainer& container() const { return m_container; }

    // Reading.
    Record* find(const RecordType& type, const base::Uuid& id);
    void fetch(const RecordType& type, const FetchDescriptor& descriptor,
               const std::function<void(Record&)>& sink);
    void fetchValues(const RecordType& type, const std::vector<std::size_t>& fields,
                     const Condition& condition,
                     const std::function<void(std::span<const Value>)>& sink);
    void visit(const RecordType& type, const Condition& condition,
               const std::function<void(const Record&)>& sink);
    std::size_t count(const RecordType& type, const Condition& condition);
    Record* stored(const Record& record);
    /// The owner that a record refers to. What was an owner once may be a shell by now whose record
    /// came back in another row, as after a restore: then it is looked up again, by its identifier.
    Record* ownerOf(Record& record);
    void loadOwned(Record& owner);
    std::optional<base::Bytes> readExternal(const Record& record, std::size_t field);

    // Pending changes.
    void insert(std::unique_ptr<Record> record);
    void remove(Record& record);
    void noteChanged(Record& record);
    const PendingRecords& pending() const { return m_pending; }
    /// Asks the store nothing: a refusal of the store is what mostly leads here.
    void rollback() noexcept;

    // The store.
    /// In a step of a context that has no records: what `ContentReplacement` is made of.
    void removeAllRows(std::string note);
    void writeRow(Record& detached);
    void save();
    void refresh();
    /// A step holds the write lock and a transaction, and starts with a refresh. Steps nest;
    /// signals wait for the end of the outermost one.
    void beginStep();
    void endStep() noexcept;
    void afterStep(std::function<void()> work);

    void processPendingChanges();
    base::Signal<const ChangeSet&> didChange;

private:
    TypeStatements& statements(std::size_t index) {
        return m_container.connection().statements(index);
    }

    /// "`what` WHERE condition", with the condition's values bound.
    Statement prepare(const std::string& what, const RecordType& type, const Condition& condition);
    /// The record of a row: the one in memory, else a new one read from the row. Rows and
    /// identifiers are given away again: what is in memory under either and is not this row's
    /// record is gone from the store.
    Record& materialize(std::size_t index, const Statement& row);
    /// What is told with the next announcement: in the middle of a read nobody may be told.
    void displace(std::size_t index, Record& record);
    void resolveOwner(Record& record);
    /// Null where the owner was not read yet: then `ownerOf` reads it when it is asked for.
    Record* ownerInMemory(const Record& record);
    void announce(ChangeSet changes, Announcements::Cause cause);

    // ContextRefresh.cpp
    void refreshRow(std::size_t index, std::int64_t rowid, ChangeSet& changes);
    void refreshEverything(std::size_t index, ChangeSet& changes);
    void mergeRow(std::size_t index, const Statement& row, Record& record);
    void goneFromStore(Record& record, ChangeSet& changes);
    bool isWatched(std::size_t index, const Statement& row);

    // ContextSave.cpp
    std::vector<RowChange> writePending(std::int64_t revision);
    void writeInserted(std::size_t index, Record& record, std::int64_t revision);
    void writeChanged(std::size_t index, Record& record, std::int64_t revision);
    ChangeSet settlePending(std::int64_t revision);

    ModelContainer& m_container;
    RecordTables m_tables;
    PendingRecords m_pending;
    /// The owner that was looked up last: rows mostly come owner by owner.
    Record* m_lastOwner = nullptr;
    /// The store's revision that the records in memory show.
    std::int64_t m_revision = 0;
    int m_stepDepth = 0;
    /// Where the step has taken all rows out of the store: what makes that last.
    std::optional<Replacement> m_replacement;
    Announcements m_announcements;
};

} // namespace korvex::store
