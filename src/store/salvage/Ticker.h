#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <exception>
#include <functional>

namespace korvex::store {

/// How whoever waits for a salvage follows it. What either throws ends the work.
struct SalvageWatch {
    /// Told for each record that is read how many of its type were read before, and how many there
    /// are.
    std::function<void(std::size_t done, std::size_t of)> progress = {};
    /// Called often, also while nobody knows how much there is to read.
    std::function<void()> tick = {};
};

/// Has a salvage tick, within SQLite too: in a damaged file one statement may read for long.
class Ticker {
public:
    /// `watch` must outlive it.
    explicit Ticker(const SalvageWatch& watch) : m_watch(watch) {}
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

    void tick() const {
        if (m_watch.tick) {
            m_watch.tick();
        }
    }
    void progress(std::size_t done, std::size_t of) const;
    /// Statements on this connection tick. What that throws fails them, each that follows too, and
    /// is thrown by `rethrow`. This must outlive the connection.
    void accompany(sqlite3* database);
    void rethrow() const;

private:
    const SalvageWatch& m_watch;
    std::exception_ptr m_failure;
};

} // namespace korvex::store
