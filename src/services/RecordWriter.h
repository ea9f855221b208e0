#pragma once

#include "base/Error.h"
#include "base/Log.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "store/ModelContext.h"

#include <functional>
#include <string>
#include <string_view>

namespace korvex::services {

/// What every service does alike with the records of its context: it checks before a change, and
/// saves the change whole or not at all. A value over its context, which must outlive it. The
/// checks throw EntryServiceError and StoreError, and hold only within a `store::LockedStep`. Main
/// thread.
class RecordWriter {
public:
    /// What the log says of a change that could not be saved.
    using FailureLine = std::string (*)(const base::Error& error);

    RecordWriter(store::ModelContext& context, const base::Logger& log, FailureLine failureLine)
        : m_context(&context), m_log(log), m_failureLine(failureLine) {}

    store::ModelContext& context() const { return *m_context; }
    const base::Logger& log() const { return m_log; }

    /// Throws `readOnlyStore`.
    void validateWritableStore() const;
    /// Throws `readOnlyStore`, and `entryUnavailable` for one that is not stored or not any more.
    void validateBoard(const model::Board& board) const;
    /// The same of an entry, which it returns.
    model::Entry& persisted(model::Entry& entry) const;
    /// The record of this identifier; throws `entryUnavailable` for one that is not there.
    model::Board& board(const base::Uuid& id) const;
    model::Entry& entry(const base::Uuid& id) const;

    /// Makes the change and saves it. Whatever fails, all of it is taken back: created records
    /// leave the context and their board, every other record gets its former fields and place.
    void change(const std::function<void()>& makeChange) const;

    /// One line about one record, whose identifier is masked.
    void logDone(std::string_view what, const base::Uuid& id) const;

private:
    void validateStored(const store::Record& record) const;

    store::ModelContext* m_context;
    base::Logger m_log;
    FailureLine m_failureLine;
};

} // namespace korvex::services
