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

private:
    void open(int row, const QPoint& globalPosition);
    void addOpenItems(QMenu& menu, int row);
    /// The entry is null for a draft.
    void addAttachmentItems(QMenu& menu, model::Entry* entry);

    EntryActions::Parts m_parts;
    EntryActions& m_actions;
};

} // namespace korvex::ui
