#include "cli/output/EntryOutput.h"

#include "cli/output/DueLabels.h"
#include "cli/output/Json.h"
#include "cli/session/Session.h"

namespace korvex::cli {

void printRecord(Session& session, const model::Entry& entry) {
    if (session.wantsJson()) {
        DueLabels labels(session);
        Json(session.output()).entry(entry, labels);
    }
}

void printRecords(Session& session, std::span<model::Entry* const> entries) {
    if (session.wantsJson()) {
        DueLabels labels(session);
        Json(session.output()).entries(entries, labels);
    }
}

void printCreated(Session& session, const model::Entry& entry) {
    printRecord(session, entry);
    if (!session.wantsJson()) {
        session.output().write(entry.id().text());
        session.output().put('\n');
    }
}

void printCreated(Session& session, std::span<model::Entry* const> entries) {
    if (session.wantsJson()) {
        printRecords(session, entries);
        return;
    }
    for (const auto* entry : entries) {
        printCreated(session, *entry);
    }
}

} // namespace korvex::cli
