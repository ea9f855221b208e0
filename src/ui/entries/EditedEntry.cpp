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

QString EditedEntry::whatBecameOfIt() const {
    const auto what =
        isTodo() ? !m_entry->isLive()       ? tr("Another program deleted this todo meanwhile.")
                   : m_entry->isCompleted() ? tr("Another program completed this todo meanwhile.")
                   : m_entry->type() != m_type
                       ? tr("Another program made a text of this todo meanwhile.")
                       : tr("Another program moved this todo to another board meanwhile.")
        : !m_entry->isLive()        ? tr("Another program deleted this text meanwhile.")
        : m_entry->type() != m_type ? tr("Another program made a todo of this text meanwhile.")
                                    : tr("Another program moved this text to another board "
                                         "meanwhile.");
    const auto next =
        isTodo() ? tr("What you typed is not stored yet. It becomes a new todo when you go on.")
                 : tr("What you typed is not stored yet. It becomes a new text when you go on.");
    return what + QLatin1Char(' ') + next;
}

} // namespace korvex::ui
