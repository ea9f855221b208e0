#include "ui/boards/BoardListView.h"

#include "ui/boards/BoardItemDelegate.h"
#include "ui/boards/NamedRow.h"
#include "ui/boards/RowDragTypes.h"
#include "ui/kit/lists/RowDrag.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Shapes.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>

#include <utility>

namespace korvex::ui {

BoardListView::BoardListView(BoardListModel& model, const Theme& theme, QWidget* parent)
    : QListView(parent), m_model(model), m_theme(theme) {
    Accessibility::install();
    setFrameShape(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    setEditTriggers(EditKeyPressed);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(DragDrop);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    setAccessibleName(tr("Boards"));
    auto* const delegate = new BoardItemDelegate(model, theme, this);
    setItemDelegate(delegate);
    setModel(&model);
    connect(delegate, &BoardItemDelegate::renamed, this, &BoardListView::renamed);
    connect(delegate, &QAbstractItemDelegate::closeEditor, this,
            [this](QWidget*, QAbstractItemDelegate::EndEditHint hint) {
                if (hint == QAbstractItemDelegate::RevertModelCache) {
                    Q_EMIT renamingGivenUp();
                } else {
                    Q_EMIT renamingEnded();
                }
            });
    for (const auto signal :
         {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
        connect(&model, signal, this, [this] { updateGeometry(); });
    }
    connect(&theme, &Theme::changed, this, &BoardListView::applyTheme);
    applyTheme();
}

void BoardListView::setCurrentBoard(const model::Board& board) {
    const QSignalBlocker blocker(this);
    setCurrentIndex(m_model.index(m_model.rowOf(board), 0));
}

void BoardListView::clearChoice() {
    const QSignalBlocker blocker(this);
    setCurrentIndex({});
}

model::Board* BoardListView::currentBoard() const {
    return currentIndex().isValid() ? m_model.board(currentIndex().row()) : nullptr;
}

void BoardListView::rename(const model::Board& board, const QString& typed) {
    const auto index = m_model.index(m_model.rowOf(board), 0);
    scrollTo(index);
    edit(index);
    auto* const field = qobject_cast<QLineEdit*>(indexWidget(index));
    if (field && !typed.isEmpty()) {
        field->setText(typed);
        field->setModified(true);
        field->selectAll();
    }
}

void BoardListView::endRenaming() {
    const auto row = rowInEditing();
    if (auto* const field = row < 0 ? nullptr : indexWidget(m_model.index(row, 0))) {
        Q_EMIT itemDelegate()->commitData(field);
        Q_EMIT itemDelegate()->closeEditor(field);
    }
}

QSize BoardListView::sizeHint() const {
    const auto rowHeight = m_model.rowCount() > 0 ? sizeHintForRow(0) : 0;
    return {QListView::sizeHint().width(), rowHeight * m_model.rowCount() + 2};
}

void BoardListView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QListView::currentChanged(current, previous);
    if (current.isValid()) {
        Q_EMIT boardChosen(m_model.board(current.row()));
    }
}

/// When the shown board goes, its neighbour becomes current; nobody has chosen that.
void BoardListView::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    const QSignalBlocker blocker(this);
    QListView::rowsAboutToBeRemoved(parent, first, last);
}

void BoardListView::focusEnd(End end) {
    setFocus();
    if (!currentIndex().isValid() && m_model.rowCount() > 0) {
        setCurrentIndex(m_model.index(end == End::top ? 0 : m_model.rowCount() - 1, 0));
    }
}

void BoardListView::keyPressEvent(QKeyEvent* event) {
    const auto row = currentIndex().row();
    const bool isUp = event->key() == Qt::Key_Up;
    if ((isUp || event->key() == Qt::Key_Down) && event->modifiers() == Qt::AltModifier) {
        if (auto* const board = currentBoard()) {
            Q_EMIT moveRequested(board, isUp ? -1 : 1);
        }
        return;
    }
    if (isUp && row <= 0) {
        Q_EMIT leftUpwards();
        return;
    }
    if (event->key() == Qt::Key_Down && row == m_model.rowCount() - 1) {
        Q_EMIT leftDownwards();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Q_EMIT returnPressed();
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        event->ignore();
        return;
    }
    // QListView would search by letters; they may be another's shortcuts.
    if (event->text().isEmpty() || !event->text().front().isPrint()) {
        QListView::keyPressEvent(event);
    } else {
        event->ignore();
    }
}

void BoardListView::contextMenuEvent(QContextMenuEvent* event) {
    const auto isByKeyboard = event->reason() == QContextMenuEvent::Keyboard;
    const auto index = isByKeyboard ? currentIndex() : indexAt(event->pos());
    if (index.isValid()) {
        Q_EMIT menuRequested(m_model.board(index.row()),
                             isByKeyboard ? viewport()->mapToGlobal(visualRect(index).bottomLeft())
                                          : event->globalPos());
    }
}

void BoardListView::focusInEvent(QFocusEvent* event) {
    QListView::focusInEvent(event);
    m_announcer.focused();
}

std::vector<RowSpeech::Action> BoardListView::actionsOf(int row) {
    auto* const board = m_model.board(row);
    std::vector<Action> actions{{tr("Open"), [this, board] { Q_EMIT boardChosen(board); }}};
    if (m_model.index(row, 0).flags().testFlag(Qt::ItemIsEditable)) {
        actions.push_back({tr("Rename"), [this, board] { rename(*board); }});
    }
    return actions;
}

int BoardListView::rowInEditing() const {
    for (int row = 0; row < m_model.rowCount(); ++row) {
        if (indexWidget(m_model.index(row, 0))) {
            return row;
        }
    }
    return -1;
}

void BoardListView::startDrag(Qt::DropActions) {
    const auto* const board = currentBoard();
    if (!board) {
        return;
    }
    const auto rect = visualRect(currentIndex());
    auto* const drag = new QDrag(this);
    drag->setMimeData(rowDrag(kBoardDragType, board->id()));
    drag->setPixmap(viewport()->grab(rect));
    drag->setHotSpot(viewport()->mapFromGlobal(QCursor::pos()) - rect.topLeft());
    drag->exec(Qt::MoveAction);
    setDropTarget(std::nullopt);
}

void BoardListView::dragEnterEvent(QDragEnterEvent* event) {
    const auto& payload = *event->mimeData();
    if (isRowDrag(payload, kBoardDragType) || isRowDrag(payload, kEntryDragType)) {
        event->acceptProposedAction();
    } else {
        event->ignore();
    }
}

void BoardListView::dragMoveEvent(QDragMoveEvent* event) {
    const auto target = isRowDrag(*event->mimeData(), kBoardDragType)
                            ? dropTargetAt(event->position().toPoint())
                            : std::nullopt;
    setDropTarget(target);
    setEntryTarget(entryTargetAt(*event));
    event->setAccepted(target.has_value() || m_entryTarget >= 0);
}

void BoardListView::dragLeaveEvent(QDragLeaveEvent*) {
    setDropTarget(std::nullopt);
    setEntryTarget(-1);
}

void BoardListView::dropEvent(QDropEvent* event) {
    const auto target = dropTargetAt(event->position().toPoint());
    const auto board = draggedRow(*event->mimeData(), kBoardDragType);
    const auto entry = draggedRow(*event->mimeData(), kEntryDragType);
    const auto entryTarget = entryTargetAt(*event);
    setDropTarget(std::nullopt);
    setEntryTarget(-1);
    setState(NoState);
    if (board && target) {
        event->acceptProposedAction();
        Q_EMIT dropped(*board, m_model.board(target->row)->id(), target->placement);
    } else if (entry && entryTarget >= 0) {
        event->acceptProposedAction();
        Q_EMIT entryDropped(*entry, m_model.board(entryTarget));
    }
}

void BoardListView::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    paintEnds();
    if (m_dropTarget) {
        const auto rect = visualRect(m_model.index(m_dropTarget->row, 0));
        QPainter painter(viewport());
        paintDropLine(painter, rect,
                      m_dropTarget->placement == model::EntryPlacement::before ? Qt::TopEdge
                                                                               : Qt::BottomEdge,
                      m_theme.space(Space::medium), m_theme);
    }
    if (m_entryTarget >= 0 && m_entryTarget < m_model.rowCount()) {
        const auto box = NamedRow::box(visualRect(m_model.index(m_entryTarget, 0)),
                                       m_theme.space(Space::medium), m_theme);
        QPainter painter(viewport());
        Shapes::paintRing(painter, box, m_theme.radius(Radius::medium), m_theme.colors().accent);
    }
}

void BoardListView::scrollContentsBy(int dx, int dy) {
    QListView::scrollContentsBy(dx, dy);
    viewport()->update(); // the lines at the ends do not move along
}

/// A line where more boards are beyond the edge, so that a row that is cut is known as one.
void BoardListView::paintEnds() {
    const auto& bar = *verticalScrollBar();
    const auto& ground = *viewport();
    const auto side = m_theme.space(Space::medium);
    QPainter painter(viewport());
    for (const auto& [isCut, y] : {std::pair(bar.value() > bar.minimum(), 0),
                                   std::pair(bar.value() < bar.maximum(), ground.height() - 1)}) {
        if (isCut) {
            painter.fillRect(side, y, ground.width() - 2 * side, 1, m_theme.colors().hairline);
        }
    }
}

std::optional<BoardListView::DropTarget> BoardListView::dropTargetAt(const QPoint& position) const {
    const auto index = indexAt(position);
    if (!index.isValid()) {
        return m_model.rowCount() == 0 ? std::nullopt
                                       : std::optional(DropTarget{m_model.rowCount() - 1,
                                                                  model::EntryPlacement::after});
    }
    return DropTarget{index.row(), position.y() < visualRect(index).center().y()
                                       ? model::EntryPlacement::before
                                       : model::EntryPlacement::after};
}

void BoardListView::setDropTarget(std::optional<DropTarget> target) {
    m_dropTarget = target;
    viewport()->update();
}

int BoardListView::entryTargetAt(const QDropEvent& event) const {
    const auto entry = draggedRow(*event.mimeData(), kEntryDragType);
    const auto index = indexAt(event.position().toPoint());
    return entry && index.isValid() && m_model.canTake(*entry, index.row()) ? index.row() : -1;
}

void BoardListView::setEntryTarget(int row) {
    m_entryTarget = row;
    viewport()->update();
}

void BoardListView::applyTheme() {
    auto own = palette();
    own.setColor(QPalette::Base, m_theme.colors().sidebar);
    setPalette(own);
    scheduleDelayedItemsLayout();
    updateGeometry();
}

} // namespace korvex::ui
