#include "services/RecordWriter.h"

#include "base/Digest.h"
#include "model/ServiceErrors.h"
#include "store/ModelContainer.h"

namespace korvex::services {

using model::EntryServiceError;
using model::EntryServiceErrorCase;

namespace {

template <typename T>
T& found(store::ModelContext& context, const base::Uuid& id) {
    auto* const record = context.find<T>(id);
    if (!record) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
    return *record;
}

} // namespace

void RecordWriter::validateWritableStore() const {
    if (!m_context->container().allowsSave()) {
        throw EntryServiceError(EntryServiceErrorCase::readOnlyStore);
    }
}

void RecordWriter::validateStored(const store::Record& record) const {
    validateWritableStore();
    if (!record.isLive() || !m_context->isStored(record)) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
}

void RecordWriter::validateBoard(const model::Board& board) const {
    validateStored(board);
}

model::Entry& RecordWriter::persisted(model::Entry& entry) const {
    validateStored(entry);
    return entry;
}

model::Board& RecordWriter::board(const base::Uuid& id) const {
    return found<model::Board>(*m_context, id);
}

model::Entry& RecordWriter::entry(const base::Uuid& id) const {
    return found<model::Entry>(*m_context, id);
}

void RecordWriter::change(const std::function<void()>& makeChange) const {
    auto isMade = false;
    try {
        makeChange();
        isMade = true;
        m_context->save();
    } catch (const base::Error& error) {
        m_context->rollback();
        if (isMade) {
            m_log.error(m_failureLine(error));
        }
        throw;
    } catch (...) {
        m_context->rollback();
        throw;
    }
}

void RecordWriter::logDone(std::string_view what, const base::Uuid& id) const {
    if (m_log.accepts(base::LogLevel::info)) {
        m_log.info(std::string(what) + " with identifier " + base::maskHash(id.text()));
    }
}

} // namespace korvex::services
