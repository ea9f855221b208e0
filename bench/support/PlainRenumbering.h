#pragma once

#include "support/PlainSqlite.h"

namespace korvex::bench {

/// Numbers rows of a store's entries anew, one by one, as the simplest good program would.
class PlainRenumbering {
public:
    explicit PlainRenumbering(const PlainDatabase& database)
        : m_update(database, "UPDATE Entry SET sortOrder = ? WHERE rowid = ?") {}

    /// From `first` to `last`, in the transaction that is open.
    void run(std::int64_t first, std::int64_t last, std::int64_t number) {
        for (auto row = first; row <= last; ++row, ++number) {
            m_update.bind(1, number);
            m_update.bind(2, row);
            m_update.run();
        }
    }

private:
    PlainStatement m_update;
};

} // namespace korvex::bench
