#include "ui/entries/DraftKeeping.h"

#include "base/Utf16.h"
#include "model/Board.h"
#include "ui/kit/words/Refusal.h"

namespace korvex::ui {

void DraftKeeping::begin() {
    m_id.reset();
    m_kept.reset();
    m_after.reset();
}

bool DraftKeeping::keep() {
    if (m_editors.current().isBlank()) {
        return true;
    }
    if (!m_id) {
        m_id = base::Uuid::random();
    }
    auto words = draft();
    if (m_kept) {
        words.typedAt = m_kept->typedAt;
    }
    if (words == m_kept) {
        return true; // it is tried again and again, and the disk is perhaps what is slow
    }
    words.typedAt = m_clock.now();
    if (m_folder.write(words)) {
        return false;
    }
    m_kept = std::move(words);
    return true;
}

void DraftKeeping::forget() {
    if (m_id) {
        m_folder.remove(*m_id);
        m_id.reset();
        m_kept.reset();
    }
}

richtext::AttributedString DraftKeeping::textOf(const app::Draft& draft) const {
    return draft.type == model::EntryType::todo
               ? richtext::RichTextSerializer::plainRichText(draft.content)
               : m_serializer.richText(draft.richTextData, draft.content);
}

app::Draft DraftKeeping::draft() const {
    const auto text = m_editors.current().text();
    app::Draft draft{.id = m_id ? *m_id : base::Uuid::random(),
                     .type = m_edited.type(),
                     .board = m_model.board()->id(),
                     .edited = {},
                     .after = predecessor(),
                     .typedAt = m_clock.now(),
                     .content = base::utf8(text.text()),
                     .richTextData = {}};
    if (const auto* const entry = m_edited.entry()) {
        // Where the store holds another's words too, no state of it is the one that was typed into.
        draft.edited = {entry->id(), m_edited.isChangedInStore() ? base::Instant::distantPast()
                                                                 : entry->updatedAt()};
    }
    if (!m_edited.isTodo()) {
        // Formats that cannot be written are no reason to lose the words.
        static_cast<void>(refusal([&] { draft.richTextData = m_serializer.encode(text); }));
    }
    return draft;
}

std::optional<base::Uuid> DraftKeeping::predecessor() const {
    const auto row = m_edited.isStored() && m_edited.entry() ? m_model.rowOf(*m_edited.entry())
                                                             : m_model.rowOf(EntryRowKind::draft);
    if (row < 0) {
        return m_after;
    }
    const auto* const above = m_model.openEntryAbove(row);
    return above ? std::optional(above->id()) : std::nullopt;
}

} // namespace korvex::ui
