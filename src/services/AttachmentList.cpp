#include "services/AttachmentList.h"

#include <algorithm>

namespace korvex::services {

namespace {

/// Works on the entry's attachments; the entry keeps none of their bytes.
template <typename Work>
auto reading(const model::Entry& entry, Work&& work) {
    struct Forgetting {
        const model::Entry& entry;
        ~Forgetting() { entry.forgetAttachmentData(); }
    };
    const Forgetting forgetting{entry};
    return work(model::EntryAttachment::decode(entry.attachmentData()));
}

} // namespace

AttachmentList attachmentsOf(const model::Entry& entry) {
    try {
        return reading(entry, [](const std::vector<model::EntryAttachment>& attachments) {
            AttachmentList list;
            for (const auto& each : attachments) {
                list.attachments.push_back(
                    {.id = each.id, .filename = each.filename, .size = each.data.size()});
            }
            return list;
        });
    } catch (const model::AttachmentError&) {
        return {.isDamaged = true};
    }
}

std::optional<model::EntryAttachment> attachment(const model::Entry& entry, const base::Uuid& id) {
    return reading(
        entry,
        [&](std::vector<model::EntryAttachment> attachments)
            -> std::optional<model::EntryAttachment> {
            const auto found = std::find_if(attachments.begin(), attachments.end(),
                                            [&](const auto& each) { return each.id == id; });
            return found == attachments.end() ? std::nullopt : std::optional(std::move(*found));
        });
}

} // namespace korvex::services
