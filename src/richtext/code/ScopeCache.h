#pragma once

#include "richtext/code/CodeSyntax.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace korvex::richtext {

/// Code in a language, by which it is known again: its digest, not its text.
struct CodeKey {
    std::uint64_t digest = 0;
    std::size_t length = 0;
    std::string language;

    static CodeKey of(std::u16string_view code, std::string_view language);
    bool operator==(const CodeKey&) const = default;
};

/// Remembers the colours of the pieces of code that were asked for last. For one thread.
class ScopeCache {
public:
    /// The limit counts UTF-16 units of code; a stretch of colour counts as the units that take as
    /// much memory.
    explicit ScopeCache(std::size_t maximumUnits) : m_maximumUnits(maximumUnits) {}

    /// Null when the piece is not known, or not any more. Valid until the next call that is not
    /// const.
    const std::vector<ScopeRun>* find(const CodeKey& key);
    /// What has not been asked for longest makes room. A piece over the limit is kept alone.
    void insert(CodeKey key, std::vector<ScopeRun> scopes);

private:
    struct Entry {
        CodeKey key;
        std::vector<ScopeRun> scopes;
    };
    struct Hash {
        std::size_t operator()(const CodeKey& key) const noexcept {
            return static_cast<std::size_t>(key.digest) ^ std::hash<std::string>{}(key.language);
        }
    };

    static std::size_t unitsOf(const Entry& entry);

    std::size_t m_maximumUnits;
    std::size_t m_units = 0;
    /// What was asked for last comes first.
    std::list<Entry> m_entries;
    std::unordered_map<CodeKey, std::list<Entry>::iterator, Hash> m_places;
};

} // namespace korvex::richtext
