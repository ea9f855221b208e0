#include "richtext/code/ScopeCache.h"

#include "base/Digest.h"

#include <span>
#include <utility>

namespace korvex::richtext {

CodeKey CodeKey::of(std::u16string_view code, std::string_view language) {
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(code.data()),
                          code.size() * sizeof(char16_t));
    return {base::checksum(bytes), code.size(), std::string(language)};
}

std::size_t ScopeCache::unitsOf(const Entry& entry) {
    return entry.key.length + entry.scopes.size() * (sizeof(ScopeRun) / sizeof(char16_t));
}

const std::vector<ScopeRun>* ScopeCache::find(const CodeKey& key) {
    const auto place = m_places.find(key);
    if (place == m_places.end()) {
        return nullptr;
    }
    m_entries.splice(m_entries.begin(), m_entries, place->second);
    return &place->second->scopes;
}

void ScopeCache::insert(CodeKey key, std::vector<ScopeRun> scopes) {
    if (const auto known = m_places.find(key); known != m_places.end()) {
        m_units -= unitsOf(*known->second);
        m_entries.erase(known->second);
        m_places.erase(known);
    }
    m_entries.push_front({std::move(key), std::move(scopes)});
    m_places.emplace(m_entries.front().key, m_entries.begin());
    m_units += unitsOf(m_entries.front());
    while (m_units > m_maximumUnits && m_entries.size() > 1) {
        m_units -= unitsOf(m_entries.back());
        m_places.erase(m_entries.back().key);
        m_entries.pop_back();
    }
}

} // namespace korvex::richtext
