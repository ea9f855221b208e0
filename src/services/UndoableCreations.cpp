#include "base/Digest.h"
#include "model/ServiceErrors.h"
#include "services/UndoableChanges.h"

namespace korvex::services {

using model::Entry;

namespace {

std::uint64_t checksumOf(const std::string& text) {
    return base::checksum({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::uint64_t checksumOf(const std::optional<base::Bytes>& bytes) {
    return bytes ? base::checksum(*bytes) : 0;
}

/// Of all that a person writes into an entry or attaches to it.
std::uint64_t wordsOf(const Entry& entry) {
    std::uint64_t words = 0;
    for (const auto each : {checksumOf(entry.content()), checksumOf(entry.richTextData()),
                            checksumOf(entry.attachmentData())}) {
        words = words * 31 + each;
    }
    return words;
}

} // namespace

void UndoableChanges::registerCreation(std::string_view name,
                                       std::span<Entry* const> created) const {
    if (!m_undoManager) {
        return;
    }
    std::vector<Created> known;
    std::vector<base::Uuid> ids;
    for (const auto* const entry : created) {
        known.push_back({.id = entry->id(), .words = wordsOf(*entry)});
        ids.push_back(entry->id());
    }
    registerUndo(
        name, sizeof(Created) * known.size(), std::move(ids),
        [known = std::move(known), name](const auto& self) { self.takeBackCreation(name, known); });
}

void UndoableChanges::takeBackCreation(std::string_view name,
                                       std::span<const Created> created) const {
    const store::LockedStep step(m_writer.context());
    std::vector<Entry*> entries;
    for (const auto& each : created) {
        entries.push_back(&m_writer.persisted<Entry>(each.id));
        if (wordsOf(*entries.back()) != each.words) {
            throw model::EntryServiceError(model::EntryServiceErrorCase::entryUnavailable);
        }
    }
    remove(name, entries);
}

void UndoableChanges::asOneStep(std::string_view name, const std::function<void()>& work) const {
    std::optional<UndoManager::Group> group;
    if (m_undoManager) {
        group.emplace(*m_undoManager, std::string(name));
    }
    work();
}

} // namespace korvex::services
