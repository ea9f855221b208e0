#include "ui/entries/EntryListView.h"

#include "ui/entries/RowEditor.h"
#include "ui/kit/RowDrag.h"
#include "ui/text/Links.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

namespace korvex::ui {

namespace {

constexpr int kBottomMargin = 24;

} // namespace

EntryListView::EntryListView(EntryListModel& model, const Workspace& workspace, const Theme& theme,
                             QWidget* parent)
    : LazyListView(parent),
      m_model(model),
      m_theme(theme),
      m_delegate(new EntryItemDelegate(model, workspace, theme, this)),
      m_leaving(new LeavingRows(*this)) {
    setFrameShape(NoFrame);
    setMouseTracking(true);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(DragDrop);
    setAutoScroll(true);
    setBottomMargin(kBottomMargin);
    setItemDelegate(m_delegate);
    setModel(&model);
    setAccessibleName(tr("Entries"));
    connect(m_leaving, &LeavingRows::moved, this, [this](const model::Entry& entry) {
        if (const int row = m_model.rowOf(entry); row >= 0) {
            measureAgain(row);
        }
    });
    connect(&theme, &Theme::changed, this, &EntryListView::applyTheme);
    // Colours move nothing: rows in sight take them up while they are painted.
    m_codeArrivals = workspace.code.arrived().connect([this] { viewport()->update(); });
    applyTheme();
}

EntryListView::~EntryListView() = default;

void EntryListView::placeEditor(RowEditor& editor, int row) {
    m_editor = &editor;
    const int before = editedRow();
    m_editedIndex = m_model.index(row, 0);
    if (before >= 0 && before != row) {
        measureAgain(before);
    }
    setCurrentRow(row);
    measureAgain(row);
    m_editor->show();
    scrollTo(m_editedIndex);
    Q_EMIT editorPlaced(m_editor);
}

void EntryListView::revealInEditor(const QRect& part) {
    const auto wanted = part.translated(m_editor->pos());
    auto* const bar = verticalScrollBar();
    if (wanted.top() < 0) {
        bar->setValue(bar->value() + wanted.top());
    } else if (wanted.bottom() >= viewport()->height()) {
        bar->setValue(bar->value() + wanted.bottom() + 1 - viewport()->height());
    }
}

void EntryListView::removeEditor() {
    const int row = editedRow();
    m_editedIndex = QPersistentModelIndex();
    if (m_editor) {
        m_editor->hide();
        m_editor = nullptr;
    }
    if (row >= 0) {
        measureAgain(row);
    }
}

int EntryListView::editedRow() const {
    return m_editedIndex.isValid() ? m_editedIndex.row() : -1;
}

void EntryListView::setCurrentRow(int row) {
    const auto index = m_model.index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    scrollTo(index);
}

void EntryListView::showRow(int row) {
    setCurrentRow(row);
    scrollTo(m_model.index(row, 0), PositionAtCenter);
}

QRect EntryListView::scheduleAnchor(int row) const {
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    const auto local = laidOut.due().isEmpty() ? laidOut.scheduleButton() : laidOut.due();
    return {viewport()->mapToGlobal(rect.topLeft() + local.topLeft()), local.size()};
}

QRect EntryListView::globalRect(int row) const {
    const auto rect = visualRect(m_model.index(row, 0));
    return {viewport()->mapToGlobal(rect.topLeft()), rect.size()};
}

void EntryListView::forgetLabels() {
    m_delegate->forgetAll();
    measureAllAgain();
}

void EntryListView::animateLeaving(const model::Entry& entry, std::function<void()> done) {
    m_leaving->start(entry, std::move(done));
}

int EntryListView::measuredHeight(int row) {
    if (m_editor && row == editedRow()) {
        return m_editor->neededHeight(viewport()->width()) + chipsExtent(row);
    }
    return m_leaving->height(m_model.entry(row),
                             m_delegate->layout(row, viewport()->width()).height());
}

int EntryListView::estimatedHeight(int row) const {
    if (!m_estimate || m_estimate->width() != viewport()->width()) {
        m_estimate.emplace(viewport()->width(), m_theme);
    }
    return m_estimate->height(m_model, row);
}

void EntryListView::rowsPlaced() {
    if (m_editor && m_editedIndex.isValid()) {
        const auto rect =
            visualRect(m_editedIndex).adjusted(0, 0, 0, -chipsExtent(m_editedIndex.row()));
        if (m_editor->geometry() != rect) {
            m_editor->setGeometry(rect);
        }
    }
}

void EntryListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                const QList<int>& roles) {
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        m_delegate->forget(row);
    }
    LazyListView::dataChanged(topLeft, bottomRight, roles);
}

void EntryListView::paintEvent(QPaintEvent* event) {
    m_delegate->setEditedRow(editedRow());
    LazyListView::paintEvent(event);
    if (m_dropTarget) {
        const auto rect = visualRect(m_model.index(m_dropTarget->row, 0));
        QPainter painter(viewport());
        paintDropLine(painter, rect,
                      m_dropTarget->placement == model::EntryPlacement::before ? Qt::TopEdge
                                                                               : Qt::BottomEdge,
                      16, m_theme.colors().accent);
    }
}

void EntryListView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control) {
        updateCursor(viewport()->mapFromGlobal(QCursor::pos()), Qt::ControlModifier);
    }
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const int row = currentRow();
    const bool isEntry = row >= 0 && m_model.entry(row) && !m_model.isReadOnly();
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
        if (isEntry) {
            Q_EMIT toggleRequested(row);
        } else if (row >= 0) {
            activate(row);
        }
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (row >= 0 && m_model.kind(row) == EntryListModel::RowKind::completedHeading &&
            m_model.isCompletedExpanded() == (event->key() == Qt::Key_Left)) {
            Q_EMIT completedToggled();
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
    LazyListView::keyPressEvent(event);
}

void EntryListView::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control) {
        updateCursor(viewport()->mapFromGlobal(QCursor::pos()), Qt::NoModifier);
    }
    LazyListView::keyReleaseEvent(event);
}

void EntryListView::activate(int row) {
    switch (m_model.kind(row)) {
    case EntryListModel::RowKind::entry:
        Q_EMIT editRequested(row, -1);
        break;
    case EntryListModel::RowKind::newTodo:
        Q_EMIT newTodoRequested();
        break;
    case EntryListModel::RowKind::completedHeading:
        Q_EMIT completedToggled();
        break;
    case EntryListModel::RowKind::draft:
    case EntryListModel::RowKind::completed:
        break;
    }
}

void EntryListView::mousePressEvent(QMouseEvent* event) {
    const auto position = event->position().toPoint();
    m_pressedRow = indexAt(position).row();
    m_pressedZone = m_pressedRow < 0 ? Zone::none : zoneAt(m_pressedRow, position);
    m_pressedAt = position;
    LazyListView::mousePressEvent(event);
}

void EntryListView::mouseReleaseEvent(QMouseEvent* event) {
    LazyListView::mouseReleaseEvent(event);
    const auto position = event->position().toPoint();
    const int row = indexAt(position).row();
    const auto zone = row < 0 ? Zone::none : zoneAt(row, position);
    if (event->button() != Qt::LeftButton || row != m_pressedRow || zone != m_pressedZone) {
        return;
    }
    switch (zone) {
    case Zone::sign:
        if (m_model.entry(row)) {
            Q_EMIT toggleRequested(row);
            break;
        }
        activate(row);
        break;
    case Zone::schedule:
        Q_EMIT scheduleRequested(row);
        break;
    case Zone::row:
        if (!m_model.entry(row)) {
            activate(row);
        } else if (isText(row) &&
                   (position - m_pressedAt).manhattanLength() < QApplication::startDragDistance()) {
            if (event->modifiers() == Qt::NoModifier) {
                Q_EMIT editRequested(row, caretAt(row, position));
            } else if (event->modifiers() == Qt::ControlModifier) {
                openLink(linkAt(position));
            }
        }
        break;
    case Zone::chip:
    case Zone::none:
        break;
    }
}

void EntryListView::mouseDoubleClickEvent(QMouseEvent* event) {
    const auto position = event->position().toPoint();
    const auto index = indexAt(position);
    m_pressedRow = -1;
    if (!index.isValid() || event->button() != Qt::LeftButton) {
        return;
    }
    if (zoneAt(index.row(), position) == Zone::row &&
        m_model.kind(index.row()) == EntryListModel::RowKind::entry) {
        Q_EMIT editRequested(index.row(), caretAt(index.row(), position));
    }
}

void EntryListView::mouseMoveEvent(QMouseEvent* event) {
    const auto position = event->position().toPoint();
    const auto index = indexAt(position);
    setHoveredRow(index.row());
    updateCursor(position, event->modifiers());
    // A press on the circle or the label is no beginning of a drag.
    if (m_pressedZone == Zone::row || event->buttons() == Qt::NoButton) {
        LazyListView::mouseMoveEvent(event);
    }
}

void EntryListView::contextMenuEvent(QContextMenuEvent* event) {
    const bool isByKeyboard = event->reason() == QContextMenuEvent::Keyboard;
    const int row = isByKeyboard ? currentRow() : indexAt(event->pos()).row();
    if (row < 0 || !m_model.entry(row)) {
        return;
    }
    const auto rect = globalRect(row);
    Q_EMIT menuRequested(row,
                         isByKeyboard ? rect.bottomLeft() + QPoint(40, 0) : event->globalPos());
}

void EntryListView::leaveEvent(QEvent* event) {
    setHoveredRow(-1);
    LazyListView::leaveEvent(event);
}

void EntryListView::focusInEvent(QFocusEvent* event) {
    LazyListView::focusInEvent(event);
    if (!currentIndex().isValid() && m_model.rowCount() > 0 &&
        (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)) {
        setCurrentRow(visibleRows().first);
    }
    if (currentIndex().isValid()) {
        selectionModel()->select(currentIndex(), QItemSelectionModel::ClearAndSelect);
    }
    viewport()->update();
}

EntryListView::Zone EntryListView::zoneAt(int row, const QPoint& position) const {
    if (chipAt(position)) {
        return Zone::chip;
    }
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    const auto local = position - rect.topLeft();
    const int margin = m_theme.scaled(6);
    if (isText(row) || (m_model.isReadOnly() && m_model.entry(row))) {
        return Zone::row;
    }
    if (laidOut.sign().adjusted(-margin, -margin, margin, margin).contains(local)) {
        return Zone::sign;
    }
    const auto schedule = laidOut.due().isEmpty() ? laidOut.scheduleButton() : laidOut.due();
    if (!schedule.isEmpty() &&
        schedule.adjusted(-margin, -margin, margin, margin).contains(local)) {
        return Zone::schedule;
    }
    return Zone::row;
}

bool EntryListView::isText(int row) const {
    return m_model.kind(row) == EntryListModel::RowKind::entry && !m_model.entry(row)->isTodo();
}

int EntryListView::caretAt(int row, const QPoint& position) const {
    const auto rect = visualRect(m_model.index(row, 0));
    return m_delegate->layout(row, rect.width()).cursorAt(position - rect.topLeft());
}

QString EntryListView::linkAt(const QPoint& position) const {
    const auto index = indexAt(position);
    if (!index.isValid() || !isText(index.row())) {
        return {};
    }
    const auto rect = visualRect(index);
    return m_delegate->layout(index.row(), rect.width()).linkAt(position - rect.topLeft());
}

void EntryListView::updateCursor(const QPoint& position, Qt::KeyboardModifiers modifiers) {
    const int row = indexAt(position).row();
    const auto zone = row < 0 ? Zone::none : zoneAt(row, position);
    const bool isOnLink =
        zone == Zone::row && modifiers == Qt::ControlModifier && !linkAt(position).isEmpty();
    const bool isPressable =
        zone == Zone::sign || zone == Zone::schedule || zone == Zone::chip || isOnLink;
    viewport()->setCursor(isPressable ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void EntryListView::setHoveredRow(int row) {
    if (m_delegate->hoveredRow() != row) {
        m_delegate->setHoveredRow(row);
        viewport()->update();
    }
}

void EntryListView::applyTheme() {
    auto own = palette();
    own.setColor(QPalette::Base, m_theme.colors().content);
    setPalette(own);
    m_estimate.reset();
    m_delegate->forgetAll();
    measureAllAgain();
}

} // namespace korvex::ui
