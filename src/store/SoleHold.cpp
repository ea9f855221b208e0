#include "store/SoleHold.h"

#include "store/Statement.h"
#include "store/StoreError.h"

#include <thread>

namespace korvex::store {

namespace {

constexpr std::chrono::milliseconds kWait{2};

} // namespace

SoleHold::SoleHold(const StoreFile& file, std::chrono::milliseconds patience) {
    try {
        m_database =
            std::make_unique<SQLite::Database>(file.path().string(), SQLite::OPEN_READWRITE);
    } catch (const SQLite::Exception& error) {
        throwSqliteError(nullptr, error.getExtendedErrorCode());
    }
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!tryToTake()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            throw StoreError(StoreErrorCase::busy);
        }
        std::this_thread::sleep_for(kWait);
    }
}

bool SoleHold::tryToTake() {
    try {
        // Leaving the mode with a journal empties and removes it, and works for a sole connection
        // only. In the exclusive mode it keeps the lock of a transaction that has ended: nothing is
        // copied out of one that writes.
        Statement leave(handle(), "PRAGMA journal_mode = DELETE");
        while (leave.step()) {
            if (leave.text(0) != "delete") {
                return false;
            }
        }
        for (const auto* sql : {"PRAGMA locking_mode = EXCLUSIVE", "BEGIN EXCLUSIVE", "COMMIT"}) {
            Statement(handle(), sql).run();
        }
        return true;
    } catch (const StoreError& error) {
        if (error.which() == StoreErrorCase::busy) {
            return false;
        }
        throw;
    }
}

} // namespace korvex::store
