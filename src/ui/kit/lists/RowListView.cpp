#include "ui/kit/lists/RowListView.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QToolTip>

#include <algorithm>
#include <chrono>

namespace korvex::ui {

namespace {

/// Who types words strikes Space sooner than this after a letter.
constexpr std::chrono::milliseconds kBetweenWords{1000};

} // namespace

RowListView::RowListView(const Theme& theme, QWidget* parent)
    : LazyListView(parent), m_theme(theme) {
    setFrameShape(NoFrame);
    setMouseTracking(true);
    connect(&theme, &Theme::changed, this, &RowListView::applyTheme);
}

void RowListView::setCurrentRow(int row) {
    const auto index = model()->index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    scrollTo(index);
}

bool RowListView::goTo(int row) {
    if (row >= 0) {
        setCurrentRow(row);
        setFocus();
    }
    return row >= 0;
}

int RowListView::pointedSign() const {
    return m_pointer && !m_isByKeys && partUnder(*m_pointer) == RowPart::sign
               ? indexAt(*m_pointer).row()
               : -1;
}

Column RowListView::column() const {
    // Of the whole list: a scroll bar that takes room of the viewport moves no row.
    const auto column = Column::of(width(), m_theme);
    const auto left = std::max(0, column.left - viewport()->x());
    const auto end = std::min(viewport()->width(), column.end() - viewport()->x());
    return {.left = left, .width = std::max(0, end - left)};
}

QRect RowListView::globalRect(const QRect& part) const {
    return {viewport()->mapToGlobal(part.topLeft()), part.size()};
}

void RowListView::forgetLabels() {
    forgetLayouts();
    measureAllAgain();
}

void RowListView::applyTheme() {
    auto own = palette();
    own.setColor(QPalette::Base, m_theme.colors().content);
    setPalette(own);
    setBottomMargin(footRoom());
    forgetLabels();
}

int RowListView::footRoom() const {
    return m_theme.space(Space::vast) + m_theme.extent(Extent::control) +
           2 * m_theme.space(Space::medium);
}

RowPart RowListView::partUnder(const QPoint& position) const {
    const auto index = indexAt(position);
    return canBeChosen(index) ? partAt(index.row(), position) : RowPart::none;
}

bool RowListView::isOn(const QRect& place, const QPoint& local) const {
    const auto margin = m_theme.space(Space::medium);
    return !place.isEmpty() && place.adjusted(-margin, -margin, margin, margin).contains(local);
}

bool RowListView::isPressable(const QPoint& position, Qt::KeyboardModifiers) const {
    const auto part = partUnder(position);
    return part != RowPart::none && part != RowPart::body;
}

bool RowListView::canBeChosen(const QModelIndex& index) const {
    return index.isValid() && index.flags().testFlag(Qt::ItemIsSelectable);
}

void RowListView::follow(const QMouseEvent& event) {
    m_pointer = event.position().toPoint();
    m_isByKeys = false;
    showPointed(event.modifiers());
}

void RowListView::rowsPlaced() {
    if (m_pointer) {
        showPointed(QGuiApplication::keyboardModifiers());
    }
}

void RowListView::showPointed(Qt::KeyboardModifiers modifiers) {
    const auto index = indexAt(*m_pointer);
    setHoveredRow(canBeChosen(index) ? index.row() : -1);
    updateCursor(*m_pointer, modifiers);
}

void RowListView::updateCursor(const QPoint& position, Qt::KeyboardModifiers modifiers) {
    viewport()->setCursor(isPressable(position, modifiers) ? Qt::PointingHandCursor
                                                           : Qt::ArrowCursor);
}

void RowListView::setHoveredRow(int row) {
    if (m_hoveredRow != row) {
        m_hoveredRow = row;
        viewport()->update();
    }
}

bool RowListView::isByTab(const QFocusEvent& event) {
    return event.reason() == Qt::TabFocusReason || event.reason() == Qt::BacktabFocusReason;
}

QStyle::State RowListView::stateOf(const QModelIndex& index) const {
    auto state = LazyListView::stateOf(index);
    state.setFlag(QStyle::State_MouseOver, index.row() == m_hoveredRow);
    return state;
}

double RowListView::opacityOf(const QModelIndex& index) const {
    return m_arriving.opacityOf(index);
}

void RowListView::rowsInserted(const QModelIndex& parent, int first, int last) {
    LazyListView::rowsInserted(parent, first, last);
    // What a list begins with is there at once, as is what fills the screen.
    constexpr int kMost = 12;
    if (isVisible() && last - first < std::min(kMost, model()->rowCount() - 1)) {
        m_arriving.add(model()->index(first, 0), model()->index(last, 0));
    }
}

void RowListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                              const QList<int>& roles) {
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        forgetLayout(row);
    }
    LazyListView::dataChanged(topLeft, bottomRight, roles);
}

void RowListView::mousePressEvent(QMouseEvent* event) {
    const auto position = event->position().toPoint();
    const auto index = indexAt(position);
    m_pointer = position;
    m_isByKeys = false;
    m_pressed = index;
    m_pressedPart = partUnder(position);
    // A press would make even a row current that cannot be chosen.
    if (!index.isValid() || canBeChosen(index)) {
        LazyListView::mousePressEvent(event);
    }
}

void RowListView::mouseReleaseEvent(QMouseEvent* event) {
    LazyListView::mouseReleaseEvent(event);
    const auto position = event->position().toPoint();
    const auto index = indexAt(position);
    const auto part = partUnder(position);
    if (event->button() == Qt::LeftButton && part != RowPart::none && index == m_pressed &&
        part == m_pressedPart) {
        clicked(index.row(), part, *event);
    }
}

void RowListView::mouseDoubleClickEvent(QMouseEvent* event) {
    const auto position = event->position().toPoint();
    const auto part = partUnder(position);
    const auto index = indexAt(position);
    // Another row may have come under the pointer since the first press.
    const auto isOfTheSame = index == m_pressed && part == m_pressedPart;
    if (event->button() == Qt::LeftButton && part == RowPart::sign && !isOfTheSame) {
        mousePressEvent(event);
        return;
    }
    forgetPress();
    if (event->button() == Qt::LeftButton && part == RowPart::body) {
        doubleClicked(index.row(), position);
    }
}

void RowListView::mouseMoveEvent(QMouseEvent* event) {
    follow(*event);
    if (event->buttons() == Qt::NoButton || isDragBegun(m_pressedPart)) {
        LazyListView::mouseMoveEvent(event);
    }
}

void RowListView::contextMenuEvent(QContextMenuEvent* event) {
    const auto isByKeyboard = event->reason() == QContextMenuEvent::Keyboard;
    const auto row = isByKeyboard ? currentRow() : indexAt(event->pos()).row();
    if (row < 0 || !hasMenu(row)) {
        event->ignore();
        return;
    }
    const auto seen = visualRect(model()->index(row, 0)).intersected(viewport()->rect());
    Q_EMIT menuRequested(row, isByKeyboard ? viewport()->mapToGlobal(seen.center())
                                           : event->globalPos());
}

void RowListView::leaveEvent(QEvent* event) {
    m_pointer.reset();
    setHoveredRow(-1);
    LazyListView::leaveEvent(event);
}

bool RowListView::event(QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        m_isByKeys = true;
        const auto typed = static_cast<QKeyEvent*>(event)->text();
        if (!typed.isEmpty() && typed.front().isPrint() && !typed.front().isSpace()) {
            m_sinceLetter.start();
        }
    }
    return LazyListView::event(event);
}

bool RowListView::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) {
        return LazyListView::viewportEvent(event);
    }
    const auto& help = static_cast<const QHelpEvent&>(*event);
    const auto row = indexAt(help.pos()).row();
    const auto tip = row < 0 ? Tip() : tipAt(row, help.pos());
    if (tip.text.isEmpty()) {
        QToolTip::hideText();
        event->ignore();
    } else {
        QToolTip::showText(help.globalPos(), tip.text, viewport(), tip.place);
    }
    return true;
}

bool RowListView::isTick(const QKeyEvent& event) const {
    return event.key() == Qt::Key_Space && !event.isAutoRepeat() &&
           (event.modifiers() & ~Qt::KeypadModifier) == 0 &&
           (!m_sinceLetter.isValid() || m_sinceLetter.hasExpired(kBetweenWords.count()));
}

} // namespace korvex::ui
