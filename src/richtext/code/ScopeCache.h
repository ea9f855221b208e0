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

/// The colours of the pieces of code that were asked for last. One thread.
class ScopeCache {
public:
    /// In UTF-16 units of code; a stretch of colour counts as the units that take its memory.
    explicit ScopeCache(std::size_t maximumUnits) : m_maximumUnits(maximumUnits) {}

    /// Null when it is not known (any more). Valid until the next call that is not const.
    const std::vector<ScopeRun>* find(const CodeKey& key);
    /// What has not been asked for longest makes room. A piece over the limit is kept alone.
    void insert(CodeKey key, std::vector<ScopeRun> scopes);

    std::size_t units() const { return m_units; }

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
    /// The last asked for comes first.
    std::list<Entry> m_entries;
    std::unordered_map<CodeKey, std::list<Entry>::iterator, Hash> m_places;
};

} // namespace korvex::richtext
