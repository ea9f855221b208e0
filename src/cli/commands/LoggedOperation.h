#pragma once

#include "cli/session/Session.h"
#include "cli/terminal/CommandLineError.h"
#include "storage/BackupFile.h"
#include "storage/Work.h"

namespace korvex::cli {

/// A failure of what is done with the store's backups is told, and logged too.
template <typename Operation>
auto logged(Session& session, Operation operation) {
    try {
        return operation();
    } catch (const storage::Cancelled&) {
        throw;
    } catch (const CommandLineError&) {
        throw; // it was not tried
    } catch (const base::Error& error) {
        storage::logFailure(session.environment().log, error);
        throw;
    }
}

} // namespace korvex::cli
