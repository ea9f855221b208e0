#pragma once

#include "store/ExternalBytes.h"
#include "store/RecordType.h"
#include "store/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvex::store {

class ContextCore;
class Record;

/// A context's bookkeeping of one record. Only the store's own sources use it.
struct RecordState {
    enum class Phase { detached, inserted, stored, deleted };
    struct Original {
        std::size_t field;
        Value value;
    };

    ContextCore* context = nullptr;
    Phase phase = Phase::detached;
    std::int64_t rowid = 0;
    std::int64_t version = 0;
    /// That the row had when it was read.
    std::uint64_t checksum = 0;
    /// What it differs by from that of the row's values, which is more than nothing where those
    /// were damaged before; absent until the first save asks for it.
    std::optional<std::uint64_t> alteration;
    std::vector<Original> originals;
    /// Deleted in the store by someone else while it has pending changes here.
    bool isGoneFromStore = false;
    bool isListedAsChanged = false;
    bool ownedIsLoaded = false;
    Record* owner = nullptr;
    /// Where this record stands in its owner's `owned`, while that is loaded.
    std::size_t ownedIndex = 0;
    std::vector<Record*> owned;
};

/// One stored record in one context: an identity, compared by address. A context makes at most one
/// object per stored record and keeps it as long as it lives itself, so references stay good; a
/// record that was deleted, or whose insertion was rolled back, stays as a shell that says
/// `isLive() == false`. Main thread.
class Record {
public:
    virtual ~Record() = default;
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    const RecordType& storedType() const { return *m_type; }
    const base::Uuid& id() const;

    /// Belongs to a context and is not deleted there.
    bool isLive() const {
        return m_state.phase == RecordState::Phase::inserted ||
               m_state.phase == RecordState::Phase::stored;
    }
    /// Inserted and not saved yet.
    bool isInserted() const { return m_state.phase == RecordState::Phase::inserted; }
    /// A field differs from what is stored.
    bool hasChanges() const { return !m_state.originals.empty(); }
    bool isChanged(std::size_t field) const;

    /// A copy of a field, whatever its type. Reads external bytes from the store (may throw).
    Value value(std::size_t field) const;
    /// The same of what the store holds, when the field is changed here.
    Value originalValue(std::size_t field) const;
    /// Sets a field from a detached value of its kind.
    void setValue(std::size_t field, Value value);

    /// For the store's own sources: the bookkeeping, and the field's memory as its kind's type.
    RecordState& state() const { return m_state; }
    void* slot(std::size_t field) const {
        return static_cast<char*>(m_fields) + m_type->fields[field].offset;
    }

protected:
    Record(const RecordType& type, void* fields) : m_type(&type), m_fields(fields) {}

    /// What every setter calls: nothing happens when the value is the same, else the original is
    /// kept for rollback and merge, and the context is told.
    template <typename T>
    void assign(std::size_t field, T& slot, T value) {
        if (slot == value) {
            return;
        }
        willChange(field);
        slot = std::move(value);
        didChange(field);
    }
    const std::optional<base::Bytes>& externalBytes(std::size_t field) const;
    /// As if they had not been read, unless they are not what is stored.
    void forgetExternal(std::size_t field) const;
    void assignExternal(std::size_t field, std::optional<base::Bytes> bytes);

    /// The owner over the relationship, or null.
    Record* owner() const;
    void setOwner(Record* owner);
    /// The records that this one owns, in no particular order; read from the store when first asked
    /// for (may throw). Valid until the next change, insertion, deletion or refresh.
    const std::vector<Record*>& owned() const;
    /// Whether `owned` would read nothing.
    bool ownedIsLoaded() const { return m_state.ownedIsLoaded; }

private:
    void willChange(std::size_t field);
    void didChange(std::size_t field);

    const RecordType* m_type;
    void* m_fields;
    /// Mutable for `owned`, which loads on first use.
    mutable RecordState m_state;
};

} // namespace korvex::store
