#include "base/Digest.h"
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

} // namespace

std::uint64_t UndoableChanges::textOf(const Entry& entry) {
    return checksumOf(entry.content()) * 31 + checksumOf(entry.richTextData());
}

void UndoableChanges::registerCreation(std::string_view name, std::span<Entry* const> created,
                                       EditingSession* session) const {
    if (!m_undoManager) {
        return;
    }
    std::vector<Created> known;
    std::vector<base::Uuid> ids;
    for (const auto* const entry : created) {
        known.push_back({.id = entry->id(),
                         .text = std::make_shared<std::uint64_t>(textOf(*entry)),
                         .attachments = checksumOf(entry->attachmentData())});
        ids.push_back(entry->id());
    }
    const auto text = known.front().text;
    const auto cost = sizeof(Created) * known.size();
    const auto id = registerUndo(name, cost, std::move(ids),
                                 [known = std::move(known), name](const auto& self, base::Instant) {
                                     self.takeBackCreation(name, known);
                                 });
    if (session) {
        *session = {.id = id, .step = {}, .createdText = text};
    }
}

void UndoableChanges::registerEdit(const Undoable& edit, EntryChange change,
                                   std::uint64_t textBefore) const {
    auto& session = *edit.session;
    const auto* const latest = m_undoManager->nextUndo();
    if (latest && latest->id == session.id && !m_undoManager->canRedo()) {
        // What another has written in between is theirs: the step must not take it for its own.
        if (const auto created = session.createdText.lock(); created && *created == textBefore) {
            *created = textOf(*edit.entries.front());
            return;
        }
        const auto known = session.step.lock();
        if (auto joined = known ? known->followedBy(change) : std::nullopt) {
            *known = std::move(*joined);
            if (known->isNothing()) {
                m_undoManager->withdraw(session.id);
            }
            return;
        }
    }
    const auto step = std::make_shared<EntryChange>(std::move(change));
    const auto id = registerUndo(edit.name, step->cost(), {step->id()},
                                 [step, name = edit.name](const auto& self, auto now) {
                                     self.takeBack(name, {step.get(), 1}, now);
                                 });
    session = {.id = id, .step = step, .createdText = {}};
}

void UndoableChanges::takeBackCreation(std::string_view name,
                                       std::span<const Created> created) const {
    const store::LockedStep step(m_writer.context());
    std::vector<Entry*> entries;
    for (const auto& each : created) {
        if (auto* const entry = remaining(each.id)) {
            if (textOf(*entry) != *each.text ||
                checksumOf(entry->attachmentData()) != each.attachments) {
                RecordWriter::refuseUnavailable();
            }
            entries.push_back(entry);
        }
    }
    // Where the rest of the step gives words back to the entry that these came from, it does.
    if (entries.empty() && !m_undoManager->isPartOfStep()) {
        RecordWriter::refuseUnavailable();
    }
    m_undoManager->leaveOut(created.size() - entries.size());
    if (!entries.empty()) {
        remove(name, entries);
    }
}

void UndoableChanges::asOneStep(std::string_view name, const std::function<void()>& work) const {
    std::optional<UndoManager::Group> group;
    if (m_undoManager) {
        group.emplace(*m_undoManager, std::string(name));
    }
    work();
}

} // namespace korvex::services
