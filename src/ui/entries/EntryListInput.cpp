#include "ui/entries/EntryListView.h"
#include "ui/kit/theme/Direction.h"
#include "ui/text/Links.h"

#include <QApplication>
#include <QDragMoveEvent>
#include <QMouseEvent>

namespace korvex::ui {

namespace {

/// A character that begins a text; Space alone does not.
bool isTyping(const QKeyEvent& event) {
    const auto text = event.text();
    constexpr auto kCommands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    return !text.isEmpty() && (text.front().isPrint() || text.front().isSurrogate()) &&
           text.front() != QLatin1Char(' ') && (event.modifiers() & kCommands) == 0;
}

} // namespace

void EntryListView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control) {
        updateCursor(viewport()->mapFromGlobal(QCursor::pos()), Qt::ControlModifier);
    }
    if (isTyping(*event) || event->matches(QKeySequence::Paste)) {
        if (m_model.isReadOnly()) {
            event->ignore();
        } else if (isTyping(*event)) {
            Q_EMIT typed(event->text());
        } else {
            Q_EMIT pasteRequested();
        }
        return;
    }
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const auto row = currentRow();
    const auto isEntry = row >= 0 && m_model.entry(row) && !m_model.isReadOnly();
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (row >= 0 && modifiers == Qt::ControlModifier && isEntry) {
            Q_EMIT toggleRequested(row);
        } else if (row >= 0 && modifiers == Qt::NoModifier) {
            activate(row);
        }
        return;
    case Qt::Key_F2:
        if (isEntry) {
            Q_EMIT editRequested(row, -1);
        }
        return;
    case Qt::Key_Space:
        if (!isTick(*event)) {
            return;
        }
        if (isEntry) {
            Q_EMIT toggleRequested(row);
        } else if (row >= 0) {
            activate(row);
        }
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (row >= 0 && m_model.kind(row) == EntryRowKind::completedHeading &&
            m_model.isCompletedExpanded() == (stepOf(event->key()) < 0)) {
            Q_EMIT completedToggled();
        } else if (row >= 0) {
            m_tables.step(row, event->key() == Qt::Key_Right ? 1 : -1);
        }
        return;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (modifiers == Qt::AltModifier) {
            if (isEntry) {
                Q_EMIT moveRequested(row, event->key() == Qt::Key_Up ? -1 : 1);
            }
            return;
        }
        break;
    default:
        break;
    }
    RowListView::keyPressEvent(event);
}

void EntryListView::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control) {
        updateCursor(viewport()->mapFromGlobal(QCursor::pos()), Qt::NoModifier);
    }
    RowListView::keyReleaseEvent(event);
}

void EntryListView::inputMethodEvent(QInputMethodEvent* event) {
    // Until it is committed, the text is the input method's own affair: an editor that opened now
    // would end the composition.
    event->accept();
    if (!event->commitString().isEmpty() && !m_model.isReadOnly()) {
        Q_EMIT typed(event->commitString());
    }
}

void EntryListView::activate(int row) {
    switch (m_model.kind(row)) {
    case EntryRowKind::entry:
        Q_EMIT editRequested(row, -1);
        break;
    case EntryRowKind::newTodo:
        Q_EMIT newTodoRequested();
        break;
    case EntryRowKind::completedHeading:
        Q_EMIT completedToggled();
        break;
    case EntryRowKind::draft:
    case EntryRowKind::completed:
        break;
    }
}

void EntryListView::mousePressEvent(QMouseEvent* event) {
    m_pressedAt = event->position().toPoint();
    RowListView::mousePressEvent(event);
}

void EntryListView::clicked(int row, RowPart part, const QMouseEvent& event) {
    const auto isEntry = m_model.entry(row) != nullptr;
    const auto position = event.position().toPoint();
    if (part == RowPart::sign && isEntry) {
        Q_EMIT toggleRequested(row);
    } else if (part == RowPart::label) {
        Q_EMIT scheduleRequested(row);
    } else if (!isEntry) {
        activate(row);
    } else if (part == RowPart::body && m_hits.isText(row) &&
               (position - m_pressedAt).manhattanLength() < QApplication::startDragDistance()) {
        if (event.modifiers() == Qt::NoModifier) {
            Q_EMIT editRequested(row, m_hits.caretAt(row, position));
        } else if (event.modifiers() == Qt::ControlModifier) {
            openLink(m_hits.linkAt(position));
        }
    }
}

void EntryListView::doubleClicked(int row, const QPoint& position) {
    if (m_model.kind(row) == EntryRowKind::entry) {
        Q_EMIT editRequested(row, m_hits.caretAt(row, position));
    }
}

void EntryListView::wheelEvent(QWheelEvent* event) {
    if (m_tables.follow(*event)) {
        event->accept();
    } else {
        RowListView::wheelEvent(event);
    }
}

void EntryListView::startDrag(Qt::DropActions) {
    const auto row = currentRow();
    if (row < 0 || m_model.kind(row) != EntryRowKind::entry || row == editedRow()) {
        return;
    }
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(currentIndex());
    option.state = QStyle::State_Enabled | QStyle::State_Selected;
    option.state.setFlag(QStyle::State_MouseOver, row == hoveredRow());
    m_reordering.drag(row, m_delegate->picture(option, currentIndex(), devicePixelRatioF()),
                      option.rect.topLeft() + m_delegate->layout(row).box().topLeft());
}

void EntryListView::dragEnterEvent(QDragEnterEvent* event) {
    if (EntryReordering::take(*event)) {
        setState(DraggingState);
    } else {
        event->ignore();
    }
}

void EntryListView::dragMoveEvent(QDragMoveEvent* event) {
    m_reordering.follow(*event);
    if (event->isAccepted()) {
        startAutoScroll();
    }
}

void EntryListView::dragLeaveEvent(QDragLeaveEvent*) {
    m_reordering.leave();
    endDrag();
}

void EntryListView::dropEvent(QDropEvent* event) {
    const auto drop = m_reordering.drop(*event);
    endDrag();
    if (drop && drop->entry) {
        Q_EMIT dropped(*drop->entry, *drop->place);
    } else if (drop) {
        Q_EMIT textDropped(event->mimeData(), drop->place);
    }
}

void EntryListView::endDrag() {
    stopAutoScroll();
    setState(NoState);
}

} // namespace korvex::ui
