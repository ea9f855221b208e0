#pragma once

#include "base/Signal.h"
#include "store/ChangeSet.h"
#include "store/FetchDescriptor.h"
#include "store/Record.h"

#include <functional>
#include <memory>
#include <span>
#include <type_traits>
#include <vector>

namespace korvex::store {

class ContextCore;
class ModelContainer;

/// A unit of work over a store: an identity map, pending changes, save and rollback. A new context
/// sees the saved state only. Main thread; the container must outlive it.
class ModelContext {
public:
    explicit ModelContext(ModelContainer& container);
    ~ModelContext();
    ModelContext(const ModelContext&) = delete;
    ModelContext& operator=(const ModelContext&) = delete;

    ModelContainer& container() const;

    /// Records as this context sees them: stored ones, with its own pending changes.
    template <typename T>
    std::vector<T*> fetch(const FetchDescriptor& descriptor = {}) {
        std::vector<T*> result;
        fetchRecords(T::recordType(), descriptor,
                     [&](Record& record) { result.push_back(static_cast<T*>(&record)); });
        return result;
    }
    /// How many records match, pending changes included.
    template <typename T>
    std::size_t count(const Condition& condition = {}) {
        return countRecords(T::recordType(), condition);
    }
    /// The values of some fields of the stored records that match, in no order, without making
    /// records of them: for questions about many. Own pending changes are not seen.
    template <typename T>
    void fetchValues(const std::vector<std::size_t>& fields, const Condition& condition,
                     const std::function<void(std::span<const Value>)>& sink) {
        fetchRecordValues(T::recordType(), fields, condition, sink);
    }
    /// Shows `sink` each stored record that matches, in no order, without keeping any: it is good
    /// until `sink` returns, and of its relationships only the identifiers. Own pending changes are
    /// not seen.
    template <typename T>
    void visit(const Condition& condition, const std::function<void(const T&)>& sink) {
        visitRecords(T::recordType(), condition,
                     [&](const Record& record) { sink(static_cast<const T&>(record)); });
    }
    /// The record with this identifier, or null.
    template <typename T>
    T* find(const base::Uuid& id) {
        return static_cast<T*>(findRecord(T::recordType(), id));
    }
    /// The record that the store itself holds under the identifier of `record` now: another object
    /// where that one is a shell whose record came back. Null for one that is gone or was never
    /// saved, and for a record of another context.
    template <typename T>
    T* stored(const T& record) {
        return static_cast<T*>(storedRecord(record));
    }

    /// Takes the record over; it is stored at the next save.
    template <typename T>
    T& insert(std::unique_ptr<T> record) {
        T& reference = *record;
        insertRecord(std::move(record));
        return reference;
    }
    /// Deletes the record and all that it owns at the next save.
    void remove(Record& record);

    bool hasChanges() const;
    std::vector<Record*> insertedRecords() const;
    std::vector<Record*> deletedRecords() const;
    std::vector<Record*> changedRecords() const;

    /// Writes the changed columns of the changed records in one transaction under the store's write
    /// lock. `hasChanges` is cleared only once the transaction is durable. Changes that others
    /// saved meanwhile are merged in first, field by field: this context's changed fields win.
    /// Throws StoreError and leaves everything pending; `conflict` when a changed record was
    /// deleted.
    void save();
    /// Gives every field its stored value, forgets insertions, takes back deletions. Works also
    /// while the store cannot be read.
    void rollback() noexcept;

    /// Takes in what other contexts and processes saved. Cheap when nothing was. Own pending
    /// changes stay. A record deleted elsewhere stops being live, unless it has pending changes:
    /// then the next save reports it.
    void refresh();

    /// Runs `work`, which must not throw, when nobody waits for this context any more: at the end
    /// of the step that is under way, after its lock is released and its changes are told; at once
    /// when there is none.
    void afterStep(std::function<void()> work);

    /// Tells observers what is pending, before it is saved.
    void processPendingChanges();

    /// Emitted after a save, a refresh that brought something, a rollback, or
    /// `processPendingChanges`; during a step, at its end. Observers must not throw.
    base::Signal<const ChangeSet&>& didChange();

    /// For the store's own sources.
    ContextCore& core() const { return *m_core; }

private:
    void fetchRecords(const RecordType& type, const FetchDescriptor& descriptor,
                      const std::function<void(Record&)>& sink);
    void fetchRecordValues(const RecordType& type, const std::vector<std::size_t>& fields,
                           const Condition& condition,
                           const std::function<void(std::span<const Value>)>& sink);
    void visitRecords(const RecordType& type, const Condition& condition,
                      const std::function<void(const Record&)>& sink);
    std::size_t countRecords(const RecordType& type, const Condition& condition);
    Record* findRecord(const RecordType& type, const base::Uuid& id);
    Record* storedRecord(const Record& record);
    void insertRecord(std::unique_ptr<Record> record);

    std::unique_ptr<ContextCore> m_core;
};

/// Several reads of one state of the store, from here to the end of the scope, whatever others save
/// meanwhile. Throws StoreError. Nothing may be saved within.
class ReadingStep {
public:
    explicit ReadingStep(ModelContainer& container);
    ~ReadingStep();
    ReadingStep(const ReadingStep&) = delete;
    ReadingStep& operator=(const ReadingStep&) = delete;

private:
    struct Scope;
    std::unique_ptr<Scope> m_scope;
};

/// One step of a service: holds the store's write lock from here to the end of the scope, with the
/// context refreshed, so that what is checked is what is changed. Steps nest. On a store that may
/// only be read it just refreshes. Throws StoreError (`busy`, `inputOutput`).
class LockedStep {
public:
    explicit LockedStep(ModelContext& context);
    ~LockedStep();
    LockedStep(const LockedStep&) = delete;
    LockedStep& operator=(const LockedStep&) = delete;

private:
    ModelContext& m_context;
};

} // namespace korvex::store
