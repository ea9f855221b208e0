#include "store/salvage/Ticker.h"

namespace korvex::store {

namespace {

/// Of SQLite's own, about a tenth of a millisecond.
constexpr int kSteps = 1'000;

} // namespace

void Ticker::progress(std::size_t done, std::size_t of) const {
    if (m_watch.progress) {
        m_watch.progress(done, of);
    }
}

void Ticker::accompany(sqlite3* database) {
    if (!m_watch.tick) {
        return;
    }
    sqlite3_progress_handler(
        database, kSteps,
        [](void* ticker) {
            auto& self = *static_cast<Ticker*>(ticker);
            try {
                self.rethrow();
                self.tick();
                return 0;
            } catch (...) {
                self.m_failure = std::current_exception();
                return 1;
            }
        },
        this);
}

void Ticker::rethrow() const {
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
}

} // namespace korvex::store
