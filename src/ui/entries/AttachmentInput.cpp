#include "ui/entries/AttachmentInput.h"

#include "base/ByteSize.h"
#include "ui/attachments/AttachmentActions.h"
#include "ui/entries/RowEditor.h"
#include "ui/kit/words/Text.h"
#include "ui/text/OfferedFiles.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTextEdit>
#include <QToolTip>

#include <algorithm>

namespace korvex::ui {

AttachmentInput::AttachmentInput(EntryListModel& model, EntryListView& view,
                                 AttachmentActions& actions, store::ModelContext& context,
                                 const Theme& theme)
    : m_model(model),
      m_view(view),
      m_actions(actions),
      m_preview(theme, view),
      m_drag(model, view, actions, context, theme) {
    view.installEventFilter(this);
    view.viewport()->installEventFilter(this);
    connect(&view, &EntryListView::editorPlaced, this, [this](RowEditor* editor) {
        editor->input().viewport()->removeEventFilter(this); // it may have come before
        editor->input().viewport()->installEventFilter(this);
    });
    connect(view.selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        select(std::nullopt);
        m_preview.hide();
    });
    connect(view.verticalScrollBar(), &QScrollBar::valueChanged, &m_preview,
            &AttachmentPreview::hide);
    connect(&m_drag, &AttachmentDrag::droppedOnDraft, this, &AttachmentInput::droppedOnDraft);
}

bool AttachmentInput::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &m_view) {
        if (event->type() == QEvent::KeyPress) {
            return filterKey(static_cast<const QKeyEvent&>(*event));
        }
        if (event->type() == QEvent::ContextMenu) {
            const auto* const entry = entryOfSelected();
            if (entry &&
                static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) {
                openMenu(*m_model.entry(m_view.currentRow()), *m_marks.selected,
                         selectedRect().bottomLeft());
                return true;
            }
        }
        return false;
    }
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::DragLeave:
    case QEvent::Drop: {
        const auto* const area = qobject_cast<QWidget*>(watched);
        const auto position = event->type() == QEvent::DragLeave
                                  ? QPoint()
                                  : static_cast<QDropEvent*>(event)->position().toPoint();
        return m_drag.filter(*event, area == m_view.viewport()
                                         ? position
                                         : area->mapTo(m_view.viewport(), position));
    }
    default:
        return watched == m_view.viewport() && filterPointer(*event);
    }
}

bool AttachmentInput::filterPointer(QEvent& event) {
    switch (event.type()) {
    case QEvent::MouseButtonPress:
        return press(static_cast<const QMouseEvent&>(event));
    case QEvent::MouseMove:
        return move(static_cast<const QMouseEvent&>(event));
    case QEvent::MouseButtonRelease:
        return std::exchange(m_pressed, std::nullopt).has_value();
    case QEvent::MouseButtonDblClick: {
        const auto& mouse = static_cast<const QMouseEvent&>(event);
        const auto chip = m_view.chips().at(mouse.position().toPoint());
        if (chip && chip->id && mouse.button() == Qt::LeftButton) {
            m_actions.open(*chip->entry, *chip->id);
        }
        return chip.has_value();
    }
    case QEvent::ContextMenu: {
        const auto& menu = static_cast<const QContextMenuEvent&>(event);
        const auto chip = m_view.chips().at(menu.pos());
        if (chip && chip->id && menu.reason() == QContextMenuEvent::Mouse) {
            openMenu(*chip->entry, *chip->id, menu.globalPos());
            return true;
        }
        return false;
    }
    case QEvent::ToolTip:
        return showTip(static_cast<const QHelpEvent&>(event));
    case QEvent::Leave:
        setHovered(std::nullopt);
        return false;
    default:
        return false;
    }
}

bool AttachmentInput::press(const QMouseEvent& event) {
    const auto position = event.position().toPoint();
    const auto chip = m_view.chips().at(position);
    m_preview.hide();
    if (!chip) {
        select(std::nullopt);
        return false;
    }
    const auto row = m_view.indexAt(position).row();
    if (row != m_view.editedRow()) {
        m_view.setCurrentRow(row);
    }
    select(chip->id);
    m_pressed = chip;
    m_pressedAt = position;
    return true;
}

bool AttachmentInput::move(const QMouseEvent& event) {
    const auto position = event.position().toPoint();
    const auto chip = m_view.chips().at(position);
    setHovered(chip ? chip->id : std::nullopt);
    if (!m_pressed) {
        return false;
    }
    if (m_pressed->id && event.buttons().testFlag(Qt::LeftButton) &&
        (position - m_pressedAt).manhattanLength() >= QApplication::startDragDistance()) {
        const auto dragged = *std::exchange(m_pressed, std::nullopt);
        setHovered(std::nullopt);
        m_drag.drag(*dragged.entry, *dragged.id);
    }
    return true;
}

bool AttachmentInput::showTip(const QHelpEvent& event) {
    const auto chip = m_view.chips().at(event.pos());
    if (!chip || !chip->id) {
        return false;
    }
    if (m_preview.isShown() ||
        m_preview.show(*chip->entry, *chip->id, m_view.globalRect(chip->rect))) {
        return true;
    }
    const auto& list = m_model.attachments(m_view.indexAt(event.pos()).row()).attachments;
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const auto& each) { return each.id == *chip->id; });
    if (found != list.end()) {
        // Plain text whatever the name looks like.
        QToolTip::showText(event.globalPos(),
                           QStringLiteral("<span>%1</span>")
                               .arg((shownFilename(found->filename) + QStringLiteral(" · ") +
                                     toQString(base::sizeText(found->size)))
                                        .toHtmlEscaped()),
                           m_view.viewport(), chip->rect);
    }
    return true;
}

void AttachmentInput::setHovered(const std::optional<base::Uuid>& id) {
    if (m_marks.hovered != id) {
        m_marks.hovered = id;
        m_preview.hide();
        m_view.chips().setMarks(m_marks);
    }
}

void AttachmentInput::select(const std::optional<base::Uuid>& id) {
    if (m_marks.selected != id) {
        m_marks.selected = id;
        m_view.chips().setMarks(m_marks);
    }
}

model::Entry* AttachmentInput::entryOfSelected() const {
    const auto shown = m_marks.selected ? m_view.chips().of(m_view.currentRow()) : std::nullopt;
    return shown && shown->chips->indexOf(*m_marks.selected) >= 0
               ? m_model.entry(m_view.currentRow())
               : nullptr;
}

/// Where the selected chip lies on the screen.
QRect AttachmentInput::selectedRect() const {
    const auto shown = m_view.chips().of(m_view.currentRow());
    const auto rect =
        shown->chips->rect(shown->chips->indexOf(*m_marks.selected)).translated(shown->topLeft);
    return m_view.globalRect(rect);
}

bool AttachmentInput::filterKey(const QKeyEvent& event) {
    const auto row = m_view.currentRow();
    auto* const current = row < 0 ? nullptr : m_model.entry(row);
    // Keys that an editor does not want come this way too.
    if (!current || !m_view.hasFocus()) {
        return false;
    }
    if (event.matches(QKeySequence::Paste) && !m_model.isReadOnly()) {
        const auto* const offered = QApplication::clipboard()->mimeData();
        if (offered && isForAttaching(*offered)) {
            m_actions.attachOffered(*offered, *current);
            return true;
        }
        return false;
    }
    if (auto* const entry = entryOfSelected()) {
        return handleChipKey(event, *entry);
    }
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    return event.key() == Qt::Key_Right && modifiers == Qt::NoModifier && enterChips(row);
}

bool AttachmentInput::enterChips(int row) {
    const auto shown = m_view.chips().of(row);
    if (!shown || !shown->chips->idOf(0)) {
        return false;
    }
    select(shown->chips->idOf(0));
    return true;
}

bool AttachmentInput::handleChipKey(const QKeyEvent& event, model::Entry& entry) {
    const auto id = *m_marks.selected;
    const auto row = m_view.currentRow();
    if (event.matches(QKeySequence::Copy)) {
        m_actions.copy(entry, id);
        return true;
    }
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const auto direction = event.key() == Qt::Key_Left ? -1 : event.key() == Qt::Key_Right ? 1 : 0;
    if (direction != 0 && modifiers == Qt::AltModifier) {
        if (m_model.isReadOnly()) {
            return true;
        }
        m_actions.moveBy(direction, id, entry);
        return true;
    }
    if (modifiers != Qt::NoModifier) {
        return false;
    }
    if (direction != 0) {
        step(row, direction);
        return true;
    }
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        m_actions.open(entry, id);
        return true;
    case Qt::Key_Space:
        togglePreview();
        return true;
    case Qt::Key_Delete: {
        if (m_model.isReadOnly()) {
            return true;
        }
        const auto index = m_view.chips().of(row)->chips->indexOf(id);
        m_actions.remove(entry, id);
        if (const auto left = m_view.chips().of(row); !entryOfSelected() && left) {
            select(left->chips->idOf(std::min(index, left->chips->count() - 1)));
        }
        return true;
    }
    case Qt::Key_Escape:
        select(std::nullopt);
        m_preview.hide();
        return true;
    default:
        return false;
    }
}

/// Left of the first chip is the row itself.
void AttachmentInput::step(int row, int direction) {
    const auto* const chips = m_view.chips().of(row)->chips;
    const auto next = chips->indexOf(*m_marks.selected) + direction;
    m_preview.hide();
    if (next < 0) {
        select(std::nullopt);
    } else if (next < chips->count()) {
        select(chips->idOf(next));
    }
}

void AttachmentInput::togglePreview() {
    if (m_preview.isShown()) {
        m_preview.hide();
    } else {
        m_preview.show(*m_model.entry(m_view.currentRow()), *m_marks.selected, selectedRect());
    }
}

void AttachmentInput::openMenu(model::Entry& entry, const base::Uuid& id,
                               const QPoint& globalPosition) {
    m_preview.hide();
    auto* const menu = new QMenu(&m_view);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    m_actions.addItems(*menu, entry, id, AttachmentActions::ShowKeys::yes);
    menu->popup(globalPosition);
}

} // namespace korvex::ui
