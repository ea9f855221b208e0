#include "ui/entries/EditedEntry.h"

namespace korvex::ui {

void EditedEntry::open(model::Entry& entry) {
    m_target = Target::stored;
    m_type = entry.type();
    m_isNew = false;
    m_replaced = Replaced::no;
    m_entry = &entry;
}

void EditedEntry::openDraft(model::EntryType type) {
    m_target = Target::draft;
    m_type = type;
    m_isNew = true;
    m_replaced = Replaced::no;
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
    struct Words {
        QString deleted, replaced, replacedElsewhere, madeOther, moved, next;
    };
    const auto words =
        isTodo()
            ? Words{.deleted = tr("Another program deleted this todo meanwhile."),
                    .replaced = tr("This todo has been replaced meanwhile."),
                    .replacedElsewhere = tr("Another program has replaced this todo meanwhile."),
                    .madeOther = tr("Another program made a text of this todo meanwhile."),
                    .moved = tr("Another program moved this todo to another board meanwhile."),
                    .next = tr("What you typed is not stored yet. It becomes a new todo when you "
                               "go on.")}
            : Words{.deleted = tr("Another program deleted this text meanwhile."),
                    .replaced = tr("This text has been replaced meanwhile."),
                    .replacedElsewhere = tr("Another program has replaced this text meanwhile."),
                    .madeOther = tr("Another program made a todo of this text meanwhile."),
                    .moved = tr("Another program moved this text to another board meanwhile."),
                    .next = tr("What you typed is not stored yet. It becomes a new text when you "
                               "go on.")};
    const auto what = [&] {
        if (!m_entry->isLive()) {
            return m_replaced == Replaced::no     ? words.deleted
                   : m_replaced == Replaced::here ? words.replaced
                                                  : words.replacedElsewhere;
        }
        if (m_entry->type() != m_type) {
            return words.madeOther;
        }
        return m_entry->isCompleted() ? tr("Another program completed this todo meanwhile.")
                                      : words.moved;
    };
    return what() + QLatin1Char(' ') + words.next;
}

} // namespace korvex::ui
