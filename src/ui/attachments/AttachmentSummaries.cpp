#include "ui/attachments/AttachmentSummaries.h"

#include "ui/kit/words/Refusal.h"

namespace korvex::ui {

AttachmentSummaries::AttachmentSummaries(store::ModelContext& context)
    : m_changes(context.didChange().connect([this](const store::ChangeSet& changes) {
          for (const auto* const ids : {&changes.updated, &changes.deleted}) {
              for (const auto& id : *ids) {
                  m_known.erase(id);
              }
          }
      })) {}

const services::AttachmentList& AttachmentSummaries::of(const model::Entry& entry) const {
    const auto found = m_known.find(entry.id());
    if (found != m_known.end() && found->second.updatedAt == entry.updatedAt()) {
        return found->second.list;
    }
    Known known{.updatedAt = entry.updatedAt(), .list = {}};
    if (refusal([&] { known.list = services::attachmentsOf(entry); })) {
        known.list.isDamaged = true;
    }
    return m_known.insert_or_assign(entry.id(), std::move(known)).first->second.list;
}

} // namespace korvex::ui
