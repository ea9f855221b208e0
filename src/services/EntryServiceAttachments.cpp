#include "services/EntryService.h"

#include "richtext/stored/EntryText.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace korvex::services {

using model::Entry;
using model::EntryAttachment;
using model::EntryServiceError;
using model::EntryServiceErrorCase;

namespace {

using Attachments = std::vector<EntryAttachment>;

/// Their bytes in the entry's memory are needed no longer.
Attachments takeAttachments(const Entry& entry) {
    auto attachments = EntryAttachment::decode(entry.attachmentData());
    entry.forgetAttachmentData();
    return attachments;
}

Attachments::iterator find(Attachments& attachments, const base::Uuid& id) {
    return std::find_if(attachments.begin(), attachments.end(),
                        [&](const EntryAttachment& each) { return each.id == id; });
}

/// Directly beside the attachment that is named, at the end when there is none of that name.
void insertBeside(EntryAttachment attachment, Attachments& into,
                  const std::optional<base::Uuid>& relativeTo, model::EntryPlacement placement) {
    auto place = relativeTo ? find(into, *relativeTo) : into.end();
    if (place != into.end() && placement == model::EntryPlacement::after) {
        ++place;
    }
    into.insert(place, std::move(attachment));
}

void setAttachments(Entry& entry, std::optional<base::Bytes> data, base::Instant now) {
    entry.setAttachmentData(std::move(data));
    entry.setUpdatedAt(now);
}

} // namespace

Entry& EntryService::persistedForAttaching(Entry& given) const {
    auto& entry = m_writer.persisted(given);
    if (!richtext::allowsAttachments(entry, m_serializer)) {
        throw EntryServiceError(EntryServiceErrorCase::headingAttachments);
    }
    return entry;
}

void EntryService::attachFiles(std::span<const std::filesystem::path> files, Entry& entry,
                               base::Instant now, const AttachmentReader& read) {
    {
        const store::LockedStep step(m_writer.context());
        persistedForAttaching(entry);
    }
    // Outside a step: while a slow disk is read, other programs write.
    attach(read(files), entry, now);
}

void EntryService::attach(std::vector<EntryAttachment> added, Entry& given, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    auto& entry = persistedForAttaching(given);
    if (added.empty()) {
        return;
    }
    auto attachments = takeAttachments(entry);
    attachments.insert(attachments.end(), std::make_move_iterator(added.begin()),
                       std::make_move_iterator(added.end()));
    auto data = EntryAttachment::encode(attachments);
    attachments.clear();
    m_changes.make(
        {.name = added.size() == 1 ? "Attach File" : "Attach Files", .entries = {&entry}},
        [&] { setAttachments(entry, std::move(data), now); });
    entry.forgetAttachmentData();
    m_writer.logDone("Attached files to entry", entry.id());
}

void EntryService::removeAttachment(const base::Uuid& id, Entry& given, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    auto& entry = m_writer.persisted(given);
    auto attachments = takeAttachments(entry);
    const auto removed = find(attachments, id);
    if (removed == attachments.end()) {
        return;
    }
    attachments.erase(removed);
    auto data = EntryAttachment::encode(attachments);
    m_changes.make({.name = "Remove Attachment", .entries = {&entry}},
                   [&] { setAttachments(entry, std::move(data), now); });
    entry.forgetAttachmentData();
    m_writer.logDone("Removed attachment of entry", entry.id());
}

void EntryService::moveAttachment(const base::Uuid& id, Entry& givenFrom, Entry& givenTo,
                                  const std::optional<base::Uuid>& relativeTo,
                                  model::EntryPlacement placement, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    auto& from = m_writer.persisted(givenFrom);
    auto& to = m_writer.persisted(givenTo);
    // What a heading has already may be put in another order.
    if (&from != &to) {
        persistedForAttaching(to);
    }
    auto source = takeAttachments(from);
    const auto found = find(source, id);
    if (found == source.end() || (&from == &to && relativeTo == id)) {
        return;
    }
    auto moved = std::move(*found);
    const auto index = found - source.begin();
    source.erase(found);
    if (&from == &to) {
        insertBeside(std::move(moved), source, relativeTo, placement);
        if (source[static_cast<std::size_t>(index)].id == id) {
            return;
        }
        auto data = EntryAttachment::encode(source);
        m_changes.make({.name = "Move Attachment", .entries = {&from}},
                       [&] { setAttachments(from, std::move(data), now); });
    } else {
        auto target = takeAttachments(to);
        insertBeside(std::move(moved), target, relativeTo, placement);
        auto targetData = EntryAttachment::encode(target);
        auto sourceData = EntryAttachment::encode(source);
        m_changes.make({.name = "Move Attachment", .entries = {&from, &to}}, [&] {
            setAttachments(from, std::move(sourceData), now);
            setAttachments(to, std::move(targetData), now);
        });
        to.forgetAttachmentData();
        m_writer.logDone("Attached files to entry", to.id());
    }
    from.forgetAttachmentData();
    m_writer.logDone("Moved attachment of entry", from.id());
}

} // namespace korvex::services
