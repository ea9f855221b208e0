#include "services/RecordWriter.h"

#include "base/Digest.h"
#include "model/ServiceErrors.h"
#include "store/ModelContainer.h"

namespace korvex::services {

using model::EntryServiceError;
using model::EntryServiceErrorCase;

void RecordWriter::validateWritableStore() const {
    if (!m_context->container().allowsSave()) {
        throw EntryServiceError(EntryServiceErrorCase::readOnlyStore);
    }
}

void RecordWriter::refuseUnavailable() {
    throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
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
