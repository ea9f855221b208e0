#pragma once

#include "base/Uuid.h"
#include "model/EntryPlacement.h"
#include "ui/entries/EntryListView.h"

#include <optional>

class QMimeData;

namespace korvex::ui {

class AttachmentActions;
class AttachmentDropMark;

/// What is dragged out of the list's attachments, and what is dropped on its entries: an attachment
/// of this store moves to the place where it is let go, files and pictures are attached. A mark
/// shows where it would go. Main thread.
class AttachmentDrag final : public QObject {
    Q_OBJECT

public:
    AttachmentDrag(EntryListModel& model, EntryListView& view, AttachmentActions& actions,
                   store::ModelContext& context, const Theme& theme);

    /// Drags this attachment until it is let go. Does nothing when its chip is not shown any more.
    void drag(const model::Entry& entry, const base::Uuid& id);
    /// Takes what happens while something is dragged over the list or an editor in it: any of the
    /// four events of a drag, with its position in the viewport of the list. True when it is dealt
    /// with; what has nothing to do with attachments is left to others.
    bool filter(QEvent& event, const QPoint& position);

Q_SIGNALS:
    /// Files were dropped on an entry that is not stored yet.
    void droppedOnDraft(const QMimeData* offered);

private:
    /// An attachment of an entry of this store.
    struct Source {
        model::Entry* entry;
        base::Uuid attachment;
    };
    /// A row, and where among its attachments.
    struct Target {
        int row;
        std::optional<base::Uuid> relativeTo;
        model::EntryPlacement placement = model::EntryPlacement::after;
        QRect chip;
    };

    /// Absent for whatever else is dragged.
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
    AttachmentDropMark* m_dropMark;
    /// What is over the list is files or an attachment.
    bool m_isDragWanted = false;
};

} // namespace korvex::ui
