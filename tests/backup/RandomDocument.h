#pragma once

#include "backup/BackupDocument.h"

#include <cstdint>
#include <random>

namespace korvex::backup {

/// Makes documents of everything that one can hold and a file can say; few of them are valid. The
/// same seed gives the same documents.
class RandomDocument {
public:
    explicit RandomDocument(std::uint64_t seed) : m_random(seed) {}

    BackupDocument next();

private:
    std::size_t below(std::size_t limit);
    bool oneIn(std::size_t count) { return below(count) == 0; }
    base::Uuid identifier();
    std::string text();
    base::Bytes bytes();
    base::Instant instant();
    std::int64_t integer();
    template <typename Value>
    std::optional<Value> maybe(Value (RandomDocument::*make)());
    bool boolean() { return oneIn(2); }

    std::mt19937_64 m_random;
};

} // namespace korvex::backup
