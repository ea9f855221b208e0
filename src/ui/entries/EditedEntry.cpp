#include "ui/entries/EditedEntry.h"

namespace korvex::ui {

void EditedEntry::open(model::Entry& entry) {
    m_target = Target::stored;
    m_type = entry.type();
    m_isNew = false;
    m_entry = &entry;
}

void EditedEntry::openDraft(model::EntryType type) {
    m_target = Target::draft;
    m_type = type;
    m_isNew = true;
    m_entry = nullptr;
}

void EditedEntry::close() {
    m_target = Target::none;
    m_isNew = false;
    m_entry = nullptr;
}

void EditedEntry::remember() {
    if (m_entry->isLive()) {
        m_storedContent = m_entry->content();
        m_storedText = m_entry->richTextData();
    } else {
        m_entry = nullptr;
    }
}

bool EditedEntry::isChangedInStore() const {
    return m_entry->content() != m_storedContent || m_entry->richTextData() != m_storedText;
}

bool EditedEntry::isStillOn(const model::Board* board) const {
    return m_entry->isLive() && !m_entry->isCompleted() && m_entry->type() == m_type &&
           m_entry->board() == board;
}

} // namespace korvex::ui
