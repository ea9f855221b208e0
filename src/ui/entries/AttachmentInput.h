#pragma once

#include "model/EntryPlacement.h"
#include "ui/attachments/AttachmentClipboard.h"
#include "ui/attachments/AttachmentPreview.h"
#include "ui/entries/EntryListView.h"

#include <optional>

class QDropEvent;
class QHelpEvent;

namespace korvex::ui {

class AttachmentActions;
class AttachmentDropMark;

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
    struct Target {
        int row;
        std::optional<base::Uuid> relativeTo;
        model::EntryPlacement placement = model::EntryPlacement::after;
        QRect chip;
    };

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
    void startDrag();

    /// `position` is one of the viewport of the list.
    bool filterDrag(QEvent& event, const QPoint& position);
    /// An attachment of an entry of this store; absent for whatever else is dragged.
    struct Source {
        model::Entry* entry;
        base::Uuid attachment;
    };
    std::optional<Source> sourceOf(const QMimeData& data) const;
    std::optional<Target> targetAt(const QPoint& position,
                                   const std::optional<Source>& source) const;
    void mark(const std::optional<Target>& target);
    void drop(const QMimeData& data, const Target& target);

    EntryListModel& m_model;
    EntryListView& m_view;
    AttachmentActions& m_actions;
    store::ModelContext& m_context;
    const Theme& m_theme;
    AttachmentPreview m_preview;
    AttachmentDropMark* m_dropMark;
    AttachmentMarks m_marks;
    /// Where a chip was pressed, until it is let go or dragged.
    std::optional<EntryChips::Chip> m_pressed;
    QPoint m_pressedAt;
    /// What is over the list is files or an attachment.
    bool m_isDragWanted = false;
};

} // namespace korvex::ui
