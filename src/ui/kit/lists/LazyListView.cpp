#include "ui/kit/lists/LazyListView.h"

#include "ui/kit/lists/RowScrolling.h"
#include "ui/kit/speech/Accessibility.h"

#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <cstdlib>

namespace korvex::ui {

LazyListView::LazyListView(QWidget* parent) : QListView(parent) {
    Accessibility::install();
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
}

void LazyListView::setModel(QAbstractItemModel* newModel) {
    if (model()) {
        model()->disconnect(this);
    }
    QListView::setModel(newModel);
    forgetAllHeights();
    if (!newModel) {
        return;
    }
    connect(newModel, &QAbstractItemModel::rowsRemoved, this,
            [this](const QModelIndex&, int first, int last) { rowsRemoved(first, last); });
    connect(newModel, &QAbstractItemModel::rowsMoved, this,
            [this](const QModelIndex&, int first, int last, const QModelIndex&, int destination) {
                rowsMoved(first, last, destination);
            });
    connect(newModel, &QAbstractItemModel::layoutAboutToBeChanged, this,
            [this] { m_anchorIndex = model()->index(m_anchor.row, 0); });
    connect(newModel, &QAbstractItemModel::layoutChanged, this, [this] {
        if (m_anchorIndex.isValid()) {
            m_anchor.row = m_anchorIndex.row();
        }
        m_anchorIndex = QPersistentModelIndex();
        measureAllAgain();
    });
}

QRect LazyListView::visualRect(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= m_heights.count()) {
        return {};
    }
    const auto top = static_cast<int>(m_heights.top(index.row())) - verticalOffset();
    return {column().left, top, widthOf(index.row()), m_heights.height(index.row())};
}

QModelIndex LazyListView::indexAt(const QPoint& point) const {
    const auto index = indexBeside(point.y());
    return visualRect(index).contains(point) ? index : QModelIndex();
}

QModelIndex LazyListView::indexBeside(int y) const {
    const auto place = std::int64_t{y} + verticalOffset();
    if (!model() || m_heights.count() != model()->rowCount() || place < 0 ||
        place >= m_heights.total()) {
        return {};
    }
    return model()->index(m_heights.rowAt(place), 0);
}

void LazyListView::scrollTo(const QModelIndex& index, ScrollHint hint) {
    if (!index.isValid() || index.row() >= m_heights.count()) {
        return;
    }
    const auto row = index.row();
    const auto height = exactHeight(row);
    const auto top = visualRect(index).top();
    const auto wanted = RowScrolling::wantedTop(hint, top, height, viewport()->height());
    if (wanted != top) {
        settle({row, wanted});
    }
}

void LazyListView::scrollToRows(int first, int last) {
    scrollTo(model()->index(last, 0));
    scrollTo(model()->index(first, 0));
}

void LazyListView::doItemsLayout() {
    // Not QListView's, which would ask for the size of every row.
    QAbstractItemView::doItemsLayout();
}

void LazyListView::reset() {
    QListView::reset();
    forgetAllHeights();
    settle({0, 0});
}

void LazyListView::measureAgain(int row) {
    m_heights.forget(row);
    settle(m_anchor);
}

void LazyListView::measureAllAgain() {
    forgetAllHeights();
    settle(m_anchor);
}

std::pair<int, int> LazyListView::visibleRows() const {
    if (m_heights.count() == 0) {
        return {-1, -1};
    }
    const auto top = std::int64_t{verticalOffset()};
    return {m_heights.rowAt(top), m_heights.rowAt(top + viewport()->height() - 1)};
}

std::vector<int> LazyListView::measuredRows() const {
    std::vector<int> rows;
    for (int row = 0; row < m_heights.count(); ++row) {
        if (m_heights.isMeasured(row)) {
            rows.push_back(row);
        }
    }
    return rows;
}

void LazyListView::keyPressEvent(QKeyEvent* event) {
    const auto isLetter = !event->text().isEmpty() && event->text().front().isPrint();
    if (isLetter || event->key() == Qt::Key_Escape) {
        event->ignore();
    } else if ((event->modifiers() & ~Qt::KeypadModifier) != 0 || !scrollsInside(event->key())) {
        QListView::keyPressEvent(event);
    }
}

bool LazyListView::scrollsInside(int key) {
    const auto place = visualRect(currentIndex());
    const auto step = RowScrolling::stepInside(
        key, place.top(), place.height(), viewport()->height(), verticalScrollBar()->singleStep());
    verticalScrollBar()->setValue(verticalScrollBar()->value() + step);
    return step != 0;
}

QModelIndex LazyListView::moveCursor(CursorAction action, Qt::KeyboardModifiers) {
    const auto count = m_heights.count();
    if (count == 0) {
        return {};
    }
    const auto current = currentIndex();
    const auto row = current.isValid() ? current.row() : visibleRows().first;
    if (!current.isValid() && action != MoveHome && action != MoveEnd) {
        return model()->index(row, 0);
    }
    const auto onPage = [&](int direction) {
        const auto y = m_heights.top(row) + std::int64_t{direction} * viewport()->height();
        const auto there = m_heights.rowAt(y);
        return there == row ? row + direction : there;
    };
    auto next = row;
    switch (action) {
    case MoveUp:
    case MovePrevious:
        next = row - 1;
        break;
    case MoveDown:
    case MoveNext:
        next = row + 1;
        break;
    case MoveHome:
        next = 0;
        break;
    case MoveEnd:
        next = count - 1;
        break;
    case MovePageUp:
        next = onPage(-1);
        break;
    case MovePageDown:
        next = onPage(1);
        break;
    case MoveLeft:
    case MoveRight:
        break;
    }
    return model()->index(std::clamp(next, 0, count - 1), 0);
}

int LazyListView::verticalOffset() const {
    return verticalScrollBar()->value();
}

void LazyListView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) {
    const auto index = indexBeside(rect.top());
    selectionModel()->select(index.isValid() ? QItemSelection(index, index) : QItemSelection(),
                             command);
}

QRegion LazyListView::visualRegionForSelection(const QItemSelection& selection) const {
    QRegion region;
    for (const auto& range : selection) {
        const auto [first, last] = visibleRows();
        for (int row = std::max(first, range.top()); row <= std::min(last, range.bottom()); ++row) {
            region += visualRect(model()->index(row, 0));
        }
    }
    return region;
}

QModelIndexList LazyListView::selectedIndexes() const {
    return selectionModel() ? selectionModel()->selectedIndexes() : QModelIndexList();
}

void LazyListView::updateGeometries() {
    if (!m_isSettling) {
        settle(m_anchor);
    }
}

void LazyListView::scrollContentsBy(int, int dy) {
    if (m_isSettling) {
        return;
    }
    // As far as the old anchor would still be near, it is what must move by exactly `dy`; after a
    // jump the row that is now at the top is.
    if (m_anchor.row >= 0 && m_anchor.row < m_heights.count() &&
        std::abs(dy) < viewport()->height()) {
        settle({m_anchor.row, m_anchor.y + dy});
    } else {
        settle(anchorAtTop());
    }
}

void LazyListView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.widget = this;
    const auto [first, last] = visibleRows();
    for (int row = std::max(first, 0); row <= last; ++row) {
        const auto index = model()->index(row, 0);
        option.rect = visualRect(index);
        if (!option.rect.intersects(event->rect())) {
            continue;
        }
        option.state = stateOf(index);
        painter.setOpacity(opacityOf(index));
        itemDelegate()->paint(&painter, option, index);
    }
}

QStyle::State LazyListView::stateOf(const QModelIndex& index) const {
    QStyle::State state = QStyle::State_Enabled;
    state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
    state.setFlag(QStyle::State_HasFocus, hasFocus() && index == currentIndex());
    state.setFlag(QStyle::State_Active, hasFocus());
    return state;
}

void LazyListView::resizeEvent(QResizeEvent* event) {
    QAbstractItemView::resizeEvent(event);
    if (m_measuredWidth != column().width) {
        measureAllAgain();
    } else {
        settle(m_anchor);
    }
}

void LazyListView::focusInEvent(QFocusEvent* event) {
    QListView::focusInEvent(event);
    m_announcer.focused();
}

void LazyListView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QAbstractItemView::currentChanged(current, previous);
    m_announcer.currentChanged();
}

void LazyListView::selectionChanged(const QItemSelection& selected,
                                    const QItemSelection& deselected) {
    QAbstractItemView::selectionChanged(selected, deselected);
    if (!selected.isEmpty()) {
        m_announcer.selected(selected.first().top());
    }
}

void LazyListView::rowsInserted(const QModelIndex& parent, int first, int last) {
    auto anchor = m_anchor;
    m_heights.insert(first, last - first + 1, [this](int row) { return estimatedHeight(row); });
    // At the very top new rows are to be seen; further down they must not push away what is read.
    if (verticalOffset() != 0 || first != 0) {
        anchor.rowsInserted(first, last);
    }
    QAbstractItemView::rowsInserted(parent, first, last);
    settle(anchor);
}

void LazyListView::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
    // Not QListView's, which would lay out all rows anew.
    QAbstractItemView::rowsAboutToBeRemoved(parent, first, last);
}

void LazyListView::rowsRemoved(int first, int last) {
    auto anchor = m_anchor;
    anchor.rowsRemoved(first, last);
    m_heights.remove(first, last - first + 1);
    settle(anchor);
}

void LazyListView::rowsMoved(int first, int last, int destination) {
    auto anchor = m_anchor;
    m_heights.move(first, last - first + 1, destination);
    if (anchor.isAmong(first, last)) {
        anchor = anchorAtTop();
    } else {
        anchor.rowsMoved(first, last, destination);
    }
    settle(anchor);
}

void LazyListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                               const QList<int>& roles) {
    const auto anchor = m_anchor;
    for (int row = topLeft.row(); row <= bottomRight.row() && row < m_heights.count(); ++row) {
        m_heights.forget(row);
    }
    QAbstractItemView::dataChanged(topLeft, bottomRight, roles);
    settle(anchor);
    m_announcer.changed(topLeft.row(), bottomRight.row());
}

void LazyListView::settle(RowAnchor anchor) {
    if (m_isSettling || !model() || m_heights.count() != model()->rowCount()) {
        return;
    }
    const QScopedValueRollback settling(m_isSettling, true);
    if (m_heights.count() == 0) {
        m_anchor = {};
        setScrolling();
        verticalScrollBar()->setValue(0);
    } else {
        anchor.row = std::clamp(anchor.row, 0, m_heights.count() - 1);
        // The ends of the list may not let the anchor stay; then other rows come in sight.
        for (int attempt = 0; attempt < 4; ++attempt) {
            measureAround(anchor);
            setScrolling();
            const auto wanted = m_heights.top(anchor.row) - anchor.y;
            verticalScrollBar()->setValue(static_cast<int>(
                std::clamp<std::int64_t>(wanted, 0, verticalScrollBar()->maximum())));
            const auto y = static_cast<int>(m_heights.top(anchor.row)) - verticalOffset();
            if (y == anchor.y) {
                break;
            }
            anchor.y = y;
        }
        m_anchor = anchorAtTop();
    }
    viewport()->update();
    rowsPlaced();
}

RowAnchor LazyListView::anchorAtTop() const {
    const auto row = m_heights.rowAt(verticalOffset());
    return {row, row < 0 ? 0 : static_cast<int>(m_heights.top(row)) - verticalOffset()};
}

int LazyListView::exactHeight(int row) {
    if (!m_heights.isMeasured(row)) {
        m_heights.setMeasured(row, measuredHeight(row));
    }
    return m_heights.height(row);
}

void LazyListView::measureAround(const RowAnchor& anchor) {
    auto y = anchor.y;
    for (int row = anchor.row; row < m_heights.count() && y < viewport()->height(); ++row) {
        y += exactHeight(row);
    }
    y = anchor.y;
    for (int row = anchor.row - 1; row >= 0 && y > 0; --row) {
        y -= exactHeight(row);
    }
}

void LazyListView::setScrolling() {
    const auto content = m_heights.total() + m_bottomMargin;
    verticalScrollBar()->setSingleStep(fontMetrics().height() * 2);
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setRange(
        0, static_cast<int>(std::max<std::int64_t>(0, content - viewport()->height())));
}

void LazyListView::forgetAllHeights() {
    m_measuredWidth = column().width;
    m_heights.reset(model() ? model()->rowCount() : 0,
                    [this](int row) { return estimatedHeight(row); });
}

} // namespace korvex::ui
