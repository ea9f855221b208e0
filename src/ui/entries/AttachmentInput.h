#pragma once

#include "ui/attachments/AttachmentClipboard.h"
#include "ui/attachments/AttachmentPreview.h"
#include "ui/entries/AttachmentDrag.h"

#include <optional>

class QHelpEvent;

namespace korvex::ui {

/// Pointer, keyboard, and what is dragged, where it concerns the attachments in the list: a chip is
/// chosen by a click or from its row with the Right key, opened by a double click or Return, looked
/// at with Space, moved with Alt+Left and Alt+Right or by dragging, removed with Delete. What is
/// dropped on a row, or pasted while it is current, is attached to its entry. Main thread.
class AttachmentInput final : public QObject {
    Q_OBJECT

public:
    AttachmentInput(EntryListModel& model, EntryListView& view, AttachmentActions& actions,
                    store::ModelContext& context, const Theme& theme);

Q_SIGNALS:
    /// Files were dropped on an entry that is not stored yet.
    void droppedOnDraft(const QMimeData* offered);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool filterPointer(QEvent& event);
    bool filterKey(const QKeyEvent& event);
    bool handleChipKey(const QKeyEvent& event, model::Entry& entry);
    bool enterChips(int row);
    void step(int row, int direction);
    bool press(const QMouseEvent& event);
    bool move(const QMouseEvent& event);
    bool showTip(const QHelpEvent& event);
    void togglePreview();
    void select(const std::optional<base::Uuid>& id);
    void setHovered(const std::optional<base::Uuid>& id);
    /// The entry of the current row; null unless one of its chips is selected.
    model::Entry* entryOfSelected() const;
    QRect selectedRect() const;
    void openMenu(model::Entry& entry, const base::Uuid& id, const QPoint& globalPosition);

    EntryListModel& m_model;
    EntryListView& m_view;
    AttachmentActions& m_actions;
    AttachmentPreview m_preview;
    AttachmentDrag m_drag;
    AttachmentMarks m_marks;
    /// Where a chip was pressed, until it is let go or dragged.
    std::optional<EntryChips::Chip> m_pressed;
    QPoint m_pressedAt;
};

} // namespace korvex::ui
