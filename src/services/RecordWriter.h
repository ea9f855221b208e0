#pragma once

#include "base/Error.h"
#include "base/Log.h"
#include "store/ModelContext.h"

#include <concepts>
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
    /// The board or entry, read again by its identifier: whoever holds one that was deleted and
    /// came back holds a shell. Throws `readOnlyStore`, and `entryUnavailable` for one that is not
    /// stored or not any more, or that is another context's.
    template <std::derived_from<store::Record> Record>
    Record& persisted(const Record& given) const {
        validateWritableStore();
        return required(m_context->stored(given));
    }
    template <std::derived_from<store::Record> Record>
    Record& persisted(const base::Uuid& id) const {
        validateWritableStore();
        return persisted(required(m_context->find<Record>(id)));
    }

    /// Makes the change and saves it. Whatever fails, all of it is taken back: created records
    /// leave the context and their board, every other record gets its former fields and place.
    void change(const std::function<void()>& makeChange) const;

    /// One line about one record, whose identifier is masked.
    void logDone(std::string_view what, const base::Uuid& id) const;

    /// Throws `entryUnavailable`.
    [[noreturn]] static void refuseUnavailable();

private:
    template <typename Record>
    static Record& required(Record* record) {
        if (!record) {
            refuseUnavailable();
        }
        return *record;
    }

    store::ModelContext* m_context;
    base::Logger m_log;
    FailureLine m_failureLine;
};

} // namespace korvex::services
