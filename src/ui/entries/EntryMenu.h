#pragma once

#include "ui/entries/EntryActions.h"

class QMenu;

namespace korvex::ui {

/// The context menu of the rows on a board's page, and what an editor's menu holds of attachments.
/// Main thread.
class EntryMenu final : public QObject {
    Q_OBJECT

public:
    EntryMenu(const EntryActions::Parts& parts, EntryActions& actions);

    /// That of a row which shows an entry.
    void open(int row, const QPoint& globalPosition);

private:
    void addOpenItems(QMenu& menu, int row);
    /// The entry is null for a draft.
    void addAttachmentItems(QMenu& menu, model::Entry* entry);

    EntryActions::Parts m_parts;
    EntryActions& m_actions;
};

} // namespace korvex::ui
