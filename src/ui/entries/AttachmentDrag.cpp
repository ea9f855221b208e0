#include "ui/entries/AttachmentDrag.h"

#include "ui/attachments/AttachmentActions.h"
#include "ui/attachments/AttachmentClipboard.h"
#include "ui/entries/AttachmentDropMark.h"
#include "ui/kit/lists/RowDrag.h"
#include "ui/text/OfferedFiles.h"

#include <QDrag>
#include <QDropEvent>
#include <QPainter>

#include <utility>

namespace korvex::ui {

AttachmentDrag::AttachmentDrag(EntryListModel& model, EntryListView& view,
                               AttachmentActions& actions, store::ModelContext& context,
                               const Theme& theme)
    : m_model(model),
      m_view(view),
      m_actions(actions),
      m_context(context),
      m_theme(theme),
      m_dropMark(new AttachmentDropMark(theme, view.viewport())) {}

void AttachmentDrag::drag(const model::Entry& entry, const base::Uuid& id) {
    const auto shown = m_view.chips().of(m_model.rowOf(entry));
    const auto index = shown ? shown->chips->indexOf(id) : -1;
    if (index < 0) {
        return;
    }
    const auto scale = m_view.devicePixelRatioF();
    const auto rect = shown->chips->rect(index);
    QPixmap picture(rect.size() * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-rect.topLeft());
    shown->chips->paintChip(painter, m_theme, index, {});
    painter.end();

    auto* const drag = new QDrag(&m_view);
    drag->setMimeData(m_actions.dragged(entry, id).release());
    drag->setPixmap(picture);
    // Beside the pointer, where it hides nothing of the place that it would go to.
    const auto beside = m_theme.space(Space::large);
    drag->setHotSpot({-beside, -beside});
    // Never as a move: a file manager would believe that it may take the file away.
    drag->exec(Qt::CopyAction);
    mark(std::nullopt);
}

bool AttachmentDrag::filter(QEvent& event, const QPoint& position) {
    if (event.type() == QEvent::DragLeave) {
        mark(std::nullopt);
        m_view.stopAutoScroll();
        return std::exchange(m_isDragWanted, false);
    }
    auto& drop = static_cast<QDropEvent&>(event);
    const auto source = sourceOf(*drop.mimeData());
    if (event.type() != QEvent::DragMove) {
        m_isDragWanted = source || !offeredFiles(*drop.mimeData()).empty();
    }
    if (!m_isDragWanted) {
        return false;
    }
    const auto target = targetAt(position, source);
    if (event.type() == QEvent::DragEnter) {
        acceptAsCopy(drop);
        return true;
    }
    const auto isAccepted = target && acceptAsCopy(drop);
    if (!isAccepted) {
        drop.ignore();
    }
    if (event.type() == QEvent::DragMove) {
        mark(isAccepted ? target : std::nullopt);
        m_view.startAutoScroll();
        return true;
    }
    m_isDragWanted = false;
    mark(std::nullopt);
    m_view.stopAutoScroll();
    if (isAccepted) {
        this->drop(*drop.mimeData(), *target);
    }
    return true;
}

std::optional<AttachmentDrag::Source> AttachmentDrag::sourceOf(const QMimeData& data) const {
    const auto dragged = draggedAttachment(data);
    auto* const entry = dragged ? m_context.find<model::Entry>(dragged->entry) : nullptr;
    return entry ? std::optional(Source{entry, dragged->attachment}) : std::nullopt;
}

std::optional<AttachmentDrag::Target>
AttachmentDrag::targetAt(const QPoint& position, const std::optional<Source>& source) const {
    const auto row = m_view.indexBeside(position.y()).row();
    if (row < 0 || m_model.isReadOnly()) {
        return std::nullopt;
    }
    Target target{.row = row};
    if (!m_model.entry(row)) {
        // What is written there can be stored; it has no place among chips yet.
        const auto isDraft = m_model.kind(row) == EntryRowKind::draft;
        return isDraft && !source ? std::optional(target) : std::nullopt;
    }
    const auto chip = source ? m_view.chips().at(position) : std::nullopt;
    if (!chip || !chip->id) {
        return target;
    }
    if (*chip->id == source->attachment) {
        return std::nullopt; // it is there already
    }
    target.relativeTo = chip->id;
    target.chip = chip->rect;
    target.placement = position.x() < chip->rect.center().x() ? model::EntryPlacement::before
                                                              : model::EntryPlacement::after;
    return target;
}

void AttachmentDrag::mark(const std::optional<Target>& target) {
    if (!target) {
        m_dropMark->hide();
        return;
    }
    std::optional<QRect> place;
    if (target->relativeTo) {
        const auto apart = m_theme.space(Space::small);
        const auto width = m_theme.space(Space::hair);
        const auto x = target->placement == model::EntryPlacement::before
                           ? target->chip.left() - apart
                           : target->chip.right() + 1 + apart - width;
        place = QRect(x, target->chip.top(), width, target->chip.height());
    }
    m_dropMark->mark(m_view.visualRect(m_model.index(target->row, 0)), place);
}

void AttachmentDrag::drop(const QMimeData& data, const Target& target) {
    auto* const entry = m_model.entry(target.row);
    if (!entry) {
        Q_EMIT droppedOnDraft(&data);
        return;
    }
    if (m_view.editedRow() < 0) {
        m_view.setCurrentRow(target.row);
    }
    if (const auto source = sourceOf(data)) {
        m_actions.move(source->attachment, *source->entry, *entry, target.relativeTo,
                       target.placement);
    } else {
        m_actions.attachOffered(data, *entry);
    }
}

} // namespace korvex::ui
