#include "ui/overview/TodoGroupView.h"

#include <QContextMenuEvent>
#include <QMouseEvent>

namespace korvex::ui {

namespace {

constexpr int kBottomMargin = 24;

} // namespace

TodoGroupView::TodoGroupView(TodoGroupModel& model, const Workspace& workspace, const Theme& theme,
                             QWidget* parent)
    : LazyListView(parent),
      m_model(model),
      m_theme(theme),
      m_delegate(new TodoGroupDelegate(model, workspace, theme, this)),
      m_leaving(new LeavingRows(*this)) {
    setFrameShape(NoFrame);
    setMouseTracking(true);
    setBottomMargin(kBottomMargin);
    setItemDelegate(m_delegate);
    setModel(&model);
    connect(m_leaving, &LeavingRows::moved, this, [this](const model::Entry& entry) {
        if (const int row = m_model.rowOf(entry); row >= 0) {
            measureAgain(row);
        }
    });
    connect(&theme, &Theme::changed, this, &TodoGroupView::applyTheme);
    applyTheme();
}

void TodoGroupView::setCurrentRow(int row) {
    const auto index = m_model.index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    // The first todo brings the heading along.
    scrollTo(row == 1 ? m_model.index(0, 0) : index);
    scrollTo(index);
}

int TodoGroupView::nearestTodo(int row) const {
    for (int below = std::max(row, 0); below < m_model.rowCount(); ++below) {
        if (!m_model.isHeading(below)) {
            return below;
        }
    }
    for (int above = std::min(row, m_model.rowCount()) - 1; above >= 0; --above) {
        if (!m_model.isHeading(above)) {
            return above;
        }
    }
    return -1;
}

QRect TodoGroupView::detailRect(int row) const {
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    const auto local = laidOut.detail().isEmpty() ? laidOut.text() : laidOut.detail();
    return {viewport()->mapToGlobal(rect.topLeft() + local.topLeft()), local.size()};
}

QRect TodoGroupView::globalRect(int row) const {
    const auto rect = visualRect(m_model.index(row, 0));
    return {viewport()->mapToGlobal(rect.topLeft()), rect.size()};
}

void TodoGroupView::forgetLabels() {
    m_delegate->forgetAll();
    measureAllAgain();
}

void TodoGroupView::setBoardNames(const QStringList& names) {
    if (m_delegate->setBoardNames(names)) {
        measureAllAgain();
    }
}

void TodoGroupView::entriesChanged(const std::unordered_set<base::Uuid>& ids) {
    for (const int row : measuredRows()) {
        const auto* const entry = m_model.entry(row);
        if (entry && ids.contains(entry->id())) {
            m_model.touch(row);
        }
    }
}

void TodoGroupView::animateLeaving(const model::Entry& entry, std::function<void()> done) {
    m_leaving->start(entry, std::move(done));
}

int TodoGroupView::measuredHeight(int row) {
    return m_leaving->height(m_model.entry(row), m_delegate->height(row, viewport()->width()));
}

int TodoGroupView::estimatedHeight(int row) const {
    // Without a look at the todo: most texts need one line, and a list may be very long.
    return m_model.isHeading(row) ? TodoGroupRow::headingHeight(m_theme)
                                  : TodoGroupRow::lowestHeight(m_theme);
}

void TodoGroupView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                const QList<int>& roles) {
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        m_delegate->forget(row);
    }
    LazyListView::dataChanged(topLeft, bottomRight, roles);
}

QModelIndex TodoGroupView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const auto wanted = LazyListView::moveCursor(action, modifiers);
    if (!wanted.isValid() || !m_model.isHeading(wanted.row())) {
        return wanted;
    }
    const bool isUpwards = wanted.row() < currentRow();
    for (int row = wanted.row() - 1; isUpwards && row >= 0; --row) {
        if (!m_model.isHeading(row)) {
            return m_model.index(row, 0);
        }
    }
    return m_model.index(nearestTodo(wanted.row()), 0);
}

void TodoGroupView::keyPressEvent(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const int row = currentRow();
    if (row < 0 || m_model.isHeading(row)) {
        LazyListView::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (modifiers == Qt::ControlModifier) {
            Q_EMIT toggleRequested(row);
        } else if (modifiers == Qt::NoModifier) {
            Q_EMIT openRequested(row);
        }
        return;
    case Qt::Key_Space:
        Q_EMIT toggleRequested(row);
        return;
    case Qt::Key_Delete:
        Q_EMIT deletionRequested(row);
        return;
    case Qt::Key_D:
        if (modifiers == Qt::ControlModifier) {
            Q_EMIT scheduleRequested(row);
            return;
        }
        break;
    default:
        break;
    }
    LazyListView::keyPressEvent(event);
}

void TodoGroupView::mousePressEvent(QMouseEvent* event) {
    const auto position = event->position().toPoint();
    m_pressedRow = indexAt(position).row();
    m_pressedZone = zoneAt(m_pressedRow, position);
    if (m_pressedZone != Zone::none) {
        LazyListView::mousePressEvent(event);
    }
}

void TodoGroupView::mouseReleaseEvent(QMouseEvent* event) {
    LazyListView::mouseReleaseEvent(event);
    const auto position = event->position().toPoint();
    const int row = indexAt(position).row();
    if (event->button() != Qt::LeftButton || row != m_pressedRow ||
        zoneAt(row, position) != m_pressedZone) {
        return;
    }
    if (m_pressedZone == Zone::circle) {
        Q_EMIT toggleRequested(row);
    } else if (m_pressedZone == Zone::detail) {
        Q_EMIT scheduleRequested(row);
    }
}

void TodoGroupView::mouseDoubleClickEvent(QMouseEvent* event) {
    const auto position = event->position().toPoint();
    const int row = indexAt(position).row();
    const auto zone = zoneAt(row, position);
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (zone == Zone::row) {
        m_pressedRow = -1;
        Q_EMIT openRequested(row);
    } else {
        mousePressEvent(event); // two quick ticks are two ticks
    }
}

void TodoGroupView::mouseMoveEvent(QMouseEvent* event) {
    const auto position = event->position().toPoint();
    const int row = indexAt(position).row();
    const auto zone = zoneAt(row, position);
    setHoveredRow(zone == Zone::none ? -1 : row);
    const bool isPressable = zone == Zone::circle || zone == Zone::detail;
    viewport()->setCursor(isPressable ? Qt::PointingHandCursor : Qt::ArrowCursor);
    // Nothing is dragged here, and a drag over the rows chooses none.
    if (event->buttons() == Qt::NoButton) {
        LazyListView::mouseMoveEvent(event);
    }
}

void TodoGroupView::contextMenuEvent(QContextMenuEvent* event) {
    const bool isByKeyboard = event->reason() == QContextMenuEvent::Keyboard;
    const int row = isByKeyboard ? currentRow() : indexAt(event->pos()).row();
    if (row < 0 || m_model.isHeading(row)) {
        return;
    }
    const auto rect = globalRect(row);
    Q_EMIT menuRequested(row,
                         isByKeyboard ? rect.bottomLeft() + QPoint(40, 0) : event->globalPos());
}

void TodoGroupView::leaveEvent(QEvent* event) {
    setHoveredRow(-1);
    LazyListView::leaveEvent(event);
}

void TodoGroupView::focusInEvent(QFocusEvent* event) {
    LazyListView::focusInEvent(event);
    const bool isByTab =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    const bool hasCurrent = currentIndex().isValid() && !m_model.isHeading(currentRow());
    const int row = hasCurrent ? currentRow() : isByTab ? nearestTodo(visibleRows().first) : -1;
    if (row >= 0) {
        setCurrentRow(row);
    }
    viewport()->update();
}

TodoGroupView::Zone TodoGroupView::zoneAt(int row, const QPoint& position) const {
    if (row < 0 || m_model.isHeading(row)) {
        return Zone::none;
    }
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    const auto local = position - rect.topLeft();
    const int margin = m_theme.scaled(6);
    const auto isOn = [&](const QRect& place) {
        return !place.isEmpty() && place.adjusted(-margin, -margin, margin, margin).contains(local);
    };
    if (isOn(laidOut.circle())) {
        return Zone::circle;
    }
    const bool isSchedule = m_model.detail() == TodoGroupModel::Detail::due;
    return isSchedule && isOn(laidOut.detail()) ? Zone::detail : Zone::row;
}

void TodoGroupView::setHoveredRow(int row) {
    if (m_delegate->hoveredRow() != row) {
        m_delegate->setHoveredRow(row);
        viewport()->update();
    }
}

void TodoGroupView::applyTheme() {
    auto own = palette();
    own.setColor(QPalette::Base, m_theme.colors().content);
    setPalette(own);
    forgetLabels();
}

} // namespace korvex::ui
