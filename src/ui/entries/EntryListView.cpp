#include "ui/entries/EntryListView.h"

#include "ui/entries/RowEditor.h"

#include <QApplication>
#include <QScrollBar>

namespace korvex::ui {

EntryListView::EntryListView(EntryListModel& model, richtext::CodeHighlighter& code,
                             const Theme& theme, QWidget* parent)
    : RowListView(theme, parent),
      m_model(model),
      m_delegate(new EntryItemDelegate(model, code, theme, this)),
      m_leaving(*this, [&model](const model::Entry& entry) { return model.rowOf(entry); }),
      m_chips(model, *this, *m_delegate),
      m_hits(model, *this, *m_delegate),
      m_tables(m_hits, *this, *m_delegate, theme),
      m_reordering(model, *this, theme) {
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(DragDrop);
    setAutoScroll(true);
    setItemDelegate(m_delegate);
    setModel(&model);
    setAccessibleName(tr("Entries"));
    // Colours move nothing: rows in sight take them up while they are painted.
    m_codeArrivals = code.arrived().connect([this] { viewport()->update(); });
    applyTheme();
}

EntryListView::~EntryListView() = default;

void EntryListView::placeEditor(RowEditor& editor, int row) {
    m_editor = &editor;
    const auto before = editedRow();
    m_editedIndex = m_model.index(row, 0);
    if (before >= 0 && before != row) {
        measureAgain(before);
    }
    setCurrentRow(row);
    if (row >= 0) {
        measureAgain(row);
    }
    m_editor->show();
    scrollTo(m_editedIndex);
    Q_EMIT editorPlaced(m_editor);
}

void EntryListView::revealInEditor(const QRect& part) {
    const auto wanted = part.translated(m_editor->pos());
    auto* const bar = verticalScrollBar();
    const int end = viewport()->height() - m_coveredFoot;
    const auto hasRoom = wanted.height() <= end;
    // From far away it comes with what is around it.
    if (hasRoom && wanted.bottom() < 0) {
        bar->setValue(bar->value() + wanted.top() - std::min(end / 3, end - wanted.height()));
    } else if (hasRoom && wanted.top() >= end) {
        bar->setValue(bar->value() + wanted.bottom() + 1 - std::max(end * 2 / 3, wanted.height()));
    } else if (wanted.top() < 0) {
        bar->setValue(bar->value() + wanted.top());
    } else if (wanted.bottom() >= end) {
        // Of what is higher than the room, the top.
        bar->setValue(bar->value() + std::min(wanted.bottom() + 1 - end, wanted.top()));
    }
}

void EntryListView::coverFoot(int height) {
    if (height == m_coveredFoot) {
        return;
    }
    const auto isTypedInSight = editedRow() >= 0 && m_editor->isCaretInSight();
    m_coveredFoot = height;
    setBottomMargin(std::max(footRoom(), height + theme().space(Space::wide)));
    updateGeometries();
    if (isTypedInSight) {
        m_editor->reveal();
    }
}

void EntryListView::removeEditor() {
    const auto row = editedRow();
    m_editedIndex = QPersistentModelIndex();
    if (m_editor) {
        if (m_editor->owns(QApplication::focusWidget())) {
            setFocus(Qt::OtherFocusReason); // or Qt would give the keyboard to whatever is next
        }
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

void EntryListView::showRow(int row) {
    setCurrentRow(row);
    scrollTo(m_model.index(row, 0), PositionAtCenter);
}

QRect EntryListView::scheduleAnchor(int row) const {
    const auto place = visualRect(m_model.index(row, 0));
    return globalRect(RowFrame::of(theme()).anchorOf(m_hits.scheduleOf(row), place));
}

int EntryListView::measuredHeight(int row) {
    if (m_editor && row == editedRow()) {
        return m_editor->neededHeight(room()) + m_chips.extent(row);
    }
    const auto* const entry = m_model.entry(row);
    const auto& laidOut = m_delegate->layout(row);
    m_tables.measured(entry, laidOut);
    return m_leaving.height(entry, laidOut.height());
}

EntryRowRoom EntryListView::room() const {
    const auto place = column();
    // From right to left a table has its room at the other side, where no field can scroll to.
    return {.width = place.width,
            .most = isRightToLeft() ? place.width : viewport()->width() - place.left};
}

int EntryListView::widthOf(int row) const {
    if (m_editor && row == editedRow()) {
        return m_editor->widthIn(room());
    }
    // Between two steps of the model a row may be asked for that has just gone.
    const auto* const entry = row < m_model.rowCount() ? m_model.entry(row) : nullptr;
    const auto [width, most] = room();
    return std::clamp(m_tables.wholeWidth(entry), width, most);
}

void EntryListView::resizeEvent(QResizeEvent* event) {
    const auto before = m_delegate->room();
    m_delegate->setRoom(room());
    RowListView::resizeEvent(event);
    // In the same column a wide table may need its scroll bar now, or need it no more.
    if (editedRow() >= 0 && before.most != m_delegate->room().most) {
        measureAgain(editedRow());
    }
}

int EntryListView::estimatedHeight(int row) const {
    if (!m_estimate || m_estimate->width() != measuredWidth()) {
        m_estimate.emplace(measuredWidth(), theme(), m_delegate->look());
    }
    return m_estimate->height(m_model, row);
}

double EntryListView::opacityOf(const QModelIndex& index) const {
    return m_leaving.opacity(m_model.entry(index.row())) * RowListView::opacityOf(index);
}

void EntryListView::rowsPlaced() {
    RowListView::rowsPlaced();
    if (m_editor && m_editedIndex.isValid()) {
        const auto rect =
            visualRect(m_editedIndex).adjusted(0, 0, 0, -m_chips.extent(m_editedIndex.row()));
        m_editor->setSurroundings(
            {.above = rect.top() + verticalOffset(), .coveredFoot = m_coveredFoot});
        if (m_editor->geometry() != rect) {
            m_editor->setGeometry(rect);
        }
        m_editor->placeInSight();
    }
}

void EntryListView::forgetLayouts() {
    m_estimate.reset();
    m_tables.forget();
    m_delegate->setRoom(room());
    m_delegate->forgetAll();
}

void EntryListView::paintEvent(QPaintEvent* event) {
    m_delegate->setEditedRow(editedRow());
    RowListView::paintEvent(event);
    m_reordering.paint();
}

void EntryListView::focusInEvent(QFocusEvent* event) {
    RowListView::focusInEvent(event);
    if (!currentIndex().isValid() && m_model.rowCount() > 0 && isByTab(*event)) {
        setCurrentRow(visibleRows().first);
    }
    if (currentIndex().isValid()) {
        selectionModel()->select(currentIndex(), QItemSelectionModel::ClearAndSelect);
    }
    setAttribute(Qt::WA_InputMethodEnabled);
    viewport()->update();
}

void EntryListView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    RowListView::currentChanged(current, previous);
    setAttribute(Qt::WA_InputMethodEnabled); // which QAbstractItemView asks the row for
}

QAccessible::Role EntryListView::roleOf(int row) const {
    return m_model.kind(row) == EntryRowKind::newTodo ? QAccessible::Button : QAccessible::ListItem;
}

void EntryListView::addState(int row, QAccessible::State& state) const {
    if (m_model.kind(row) == EntryRowKind::completedHeading) {
        state.expandable = true;
        state.expanded = m_model.isCompletedExpanded();
        state.collapsed = !state.expanded;
    }
}

std::vector<RowSpeech::Action> EntryListView::actionsOf(int row) {
    const auto* const entry = m_model.entry(row);
    if (!entry) {
        return {{m_model.kind(row) == EntryRowKind::newTodo ? tr("New todo")
                 : m_model.isCompletedExpanded()            ? tr("Collapse")
                                                            : tr("Expand"),
                 [this, row] { activate(row); }}};
    }
    if (m_model.isReadOnly()) {
        return {};
    }
    std::vector<Action> actions;
    const auto toggle = [this, row] { Q_EMIT toggleRequested(row); };
    if (entry->isTodo()) {
        actions.push_back({entry->isCompleted() ? tr("Restore") : tr("Complete"), toggle});
    }
    if (m_model.isEditable(row)) {
        actions.push_back({tr("Edit"), [this, row] { Q_EMIT editRequested(row, -1); }});
    }
    if (entry->isOpenTodo()) {
        actions.push_back({tr("Schedule"), [this, row] { Q_EMIT scheduleRequested(row); }});
    }
    return actions;
}

RowPart EntryListView::partAt(int row, const QPoint& position) const {
    if (m_chips.at(position)) {
        return RowPart::chip;
    }
    if (m_hits.isText(row) || (m_model.isReadOnly() && m_model.entry(row))) {
        return RowPart::body;
    }
    if (isOn(m_hits.signOf(row), position)) {
        return RowPart::sign;
    }
    return isOn(m_hits.scheduleOf(row), position) ? RowPart::label : RowPart::body;
}

RowListView::Tip EntryListView::tipAt(int row, const QPoint& position) const {
    const auto* const entry = m_model.entry(row);
    const auto place = entry && !m_hits.isText(row) ? m_hits.scheduleOf(row) : QRect();
    return isOn(place, position) ? Tip{m_model.dueLabel(*entry).reminder, place} : Tip();
}

bool EntryListView::isPressable(const QPoint& position, Qt::KeyboardModifiers modifiers) const {
    const auto isOnLink = modifiers == Qt::ControlModifier &&
                          partUnder(position) == RowPart::body &&
                          !m_hits.linkAt(position).isEmpty();
    return isOnLink || RowListView::isPressable(position, modifiers);
}

} // namespace korvex::ui
