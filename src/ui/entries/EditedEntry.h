#pragma once

#include "base/Bytes.h"
#include "model/Entry.h"

#include <QCoreApplication>

#include <optional>
#include <string>

namespace korvex::ui {

/// What is under edit on a board's page, if anything: a stored entry or the draft of a new one; and
/// what the store had of it when its editor was filled last. Main thread.
class EditedEntry final {
    Q_DECLARE_TR_FUNCTIONS(EditedEntry)

public:
    bool isOpen() const { return m_target != Target::none; }
    bool isStored() const { return m_target == Target::stored; }
    bool isDraft() const { return m_target == Target::draft; }
    model::EntryType type() const { return m_type; }
    bool isTodo() const { return m_type == model::EntryType::todo; }
    /// The entry in the store. Null for a draft until it is created, and for an entry whose text
    /// was deleted.
    model::Entry* entry() const { return m_entry; }

    void open(model::Entry& entry);
    void openDraft(model::EntryType type);
    void close();

    /// The draft was stored as this entry. It counts as a draft until `becomeStored`.
    void setCreated(model::Entry& entry) { m_entry = &entry; }
    void becomeStored() { m_target = Target::stored; }
    /// The entry was stored in the same editing: emptied, it is as if it had never been.
    bool isNew() const { return m_isNew; }
    /// What is edited counts as the draft of a new entry from now on, of the same type.
    void becomeDraft() { openDraft(m_type); }

    /// Keeps what the store has of the entry now, for `isChangedInStore`; an entry that is gone
    /// from the store is let go.
    void remember();
    /// Whether the store has another text by now.
    bool isChangedInStore() const;
    /// Whether the entry can go on being edited where it is: nobody has deleted, completed or moved
    /// it, or made it another type.
    bool isStillOn(const model::Board* board) const;
    /// All entries of the store were replaced, as by an import, in this program or in another: one
    /// that is gone was not deleted for its own sake.
    enum class Replaced { no, here, elsewhere };
    void setReplaced(Replaced replaced) { m_replaced = replaced; }
    Replaced replaced() const { return m_replaced; }
    /// What has become of one that cannot, and so of its text, in words for the user.
    QString whatBecameOfIt() const;

private:
    enum class Target { none, stored, draft };

    Target m_target = Target::none;
    model::EntryType m_type = model::EntryType::todo;
    bool m_isNew = false;
    Replaced m_replaced = Replaced::no;
    model::Entry* m_entry = nullptr;
    std::string m_storedContent;
    std::optional<base::Bytes> m_storedText;
};

} // namespace korvex::ui
