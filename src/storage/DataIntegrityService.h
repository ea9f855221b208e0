#pragma once

#include "base/Instant.h"
#include "base/Log.h"
#include "base/Uuid.h"
#include "storage/RepairReport.h"
#include "store/ModelContext.h"

#include <functional>

namespace korvex::storage {

/// Brings the metadata of a store into a state that a backup may have, without a change to any
/// word; formatted text or attachments that nobody can read are moved to a file beside the store. A
/// value over its context, which must outlive it. The context's thread.
class DataIntegrityService {
public:
    DataIntegrityService(store::ModelContext& context, base::LogSink& log);

    enum class SaveChanges { no, yes };
    enum class NormalizeOrdering { no, yes };
    enum class Contents { leave, read };
    struct Request {
        /// With `no` the caller saves, within its own step.
        SaveChanges saveChanges = SaveChanges::yes;
        /// Boards and the entries of each are numbered from 0 without gaps.
        NormalizeOrdering normalizeOrdering = NormalizeOrdering::yes;
        /// With `leave` formatted texts and attachments are known to be readable.
        Contents contents = Contents::read;
        /// For an Inbox that has to be made.
        base::Instant now;
        /// Called at the end for each board that another takes the place of: once that is saved,
        /// unless it is the caller who saves.
        std::function<void(const base::Uuid& from, const base::Uuid& to)> onMergedBoard = {};
    };
    /// Reads the values that can be wrong; a sound store is not locked, and no records are made of
    /// its entries. Entries are judged as they are stored, so the context must not have changed
    /// any. Throws StoreError and rolls the context back, what its caller has pending too.
    RepairReport repair(const Request& request) const;
    /// What that would do; nothing is changed. Throws StoreError.
    RepairReport inspect(const Request& request) const;

private:
    struct Seen;
    Seen look(const Request& request) const;
    RepairReport apply(Seen seen, const Request& request) const;

    store::ModelContext* m_context;
    base::LogSink* m_sink;
    base::Logger m_log;
};

} // namespace korvex::storage
