#pragma once

#include <chrono>
#include <filesystem>
#include <string>

namespace korvex::store {

/// Says where a store lies and what may be done with it.
struct ModelConfiguration {
    enum class Missing { create, refuse };
    enum class Older { upgrade, refuse };

    /// An empty path: the store lives in memory and ends with its container.
    std::filesystem::path file = {};
    /// Where this is false, the store is read and never written, beside whoever else writes to it.
    bool allowsSave = true;
    Missing whenMissing = Missing::create;
    /// What becomes of a store that an older version of the schema has written. To upgrade it takes
    /// as long as to copy it, and it is kept beside as it was.
    Older whenOlder = Older::refuse;
    /// How long a step waits for another program's before it gives up with `busy`, and then as long
    /// again for a writer that does not know our lock.
    std::chrono::milliseconds lockTimeout{10'000};
    /// With what the store is kept in step elsewhere; empty for a store of this machine alone.
    std::string cloudContainerIdentifier = {};

    bool isInMemory() const { return file.empty(); }
};

} // namespace korvex::store
