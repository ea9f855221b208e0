#pragma once

#include "store/ChangeSet.h"
#include "store/Record.h"

#include <functional>
#include <vector>

namespace korvex::store {

/// What the next save of a context writes, in the order in which it was asked for.
struct PendingRecords {
    std::vector<Record*> inserted;
    /// Everything that was changed once since the last save: some of it is as it was before by now,
    /// or deleted.
    std::vector<Record*> touched;
    std::vector<Record*> deleted;

    bool isEmpty() const;
    /// Whether a record of this type is among them: what the store has of it is not the last word.
    bool concern(const RecordType& type) const;
    /// Whether the store does not have the record as it is now.
    static bool isPending(const Record& record);
    /// Calls `visit` with each record of the type that is inserted or changed.
    void visit(const RecordType& type, const std::function<void(Record&)>& visit) const;
    /// Those of `touched` that differ from what is stored.
    std::vector<Record*> changed() const;
    ChangeSet changeSet() const;
};

} // namespace korvex::store
