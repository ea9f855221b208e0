#include "ui/entries/EntryItemDelegate.h"

#include "ui/todos/TodoPainting.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>

namespace korvex::ui {

namespace {

/// Some screens full of todos.
constexpr int kKeptLayouts = 300;
constexpr int kCornerRadius = 6;

} // namespace

EntryItemDelegate::EntryItemDelegate(const EntryListModel& model, const Workspace& workspace,
                                     const Theme& theme, QObject* parent)
    : QStyledItemDelegate(parent),
      m_model(model),
      m_workspace(workspace),
      m_theme(theme),
      m_layouts(kKeptLayouts) {}

void EntryItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    const auto& colors = m_theme.colors();
    const int row = index.row();
    const auto kind = m_model.kind(row);
    const auto& laidOut = layout(row, option.rect.width());
    const bool isHovered = row == m_hoveredRow;
    const bool isCurrent = option.state.testFlag(QStyle::State_Selected);
    const bool hasFocus = option.state.testFlag(QStyle::State_HasFocus);

    painter->save();
    painter->setClipRect(option.rect);
    painter->translate(option.rect.topLeft());
    painter->setRenderHint(QPainter::Antialiasing);
    const bool isActive = option.state.testFlag(QStyle::State_Active);
    if (kind == EntryListModel::RowKind::draft || row == m_editedRow) {
        // The editor stands here; under it are the attachments.
        const int editor = option.rect.height() - laidOut.height();
        paintChips(*painter, laidOut, laidOut.chipsTopLeft() + QPoint(0, editor), isActive);
        painter->restore();
        return;
    }
    auto ground = colors.content;
    if (isCurrent || isHovered) {
        QPainterPath box;
        box.addRoundedRect(laidOut.box(), kCornerRadius, kCornerRadius);
        ground = isCurrent && isActive ? colors.selection : colors.hover;
        painter->fillPath(box, ground);
    }
    if (hasFocus) {
        painter->setPen(QPen(colors.accent, 1.5));
        painter->drawRoundedRect(QRectF(laidOut.box()).adjusted(0.75, 0.75, -0.75, -0.75),
                                 kCornerRadius, kCornerRadius);
    }

    paintChips(*painter, laidOut, laidOut.chipsTopLeft(), isActive);
    if (auto* const formatted = laidOut.formatted()) {
        painter->translate(laidOut.text().topLeft());
        formatted->color(m_workspace.code, look());
        formatted->paint(*painter, look(), ground);
        painter->restore();
        return;
    }
    paintSign(*painter, laidOut.sign(), row, isHovered);
    const auto* const entry = m_model.entry(row);
    const bool isQuiet = !entry || entry->isCompleted();
    painter->setPen(isQuiet ? colors.secondaryText : colors.text);
    laidOut.textLayout().draw(painter, laidOut.text().topLeft());

    if (!laidOut.due().isEmpty()) {
        const auto color = laidOut.dueLabel().isOverdue ? colors.danger : colors.secondaryText;
        TodoPainting::drawDueLabel(*painter, laidOut.due(), laidOut.dueLabel(), color, m_theme);
    } else if (!laidOut.scheduleButton().isEmpty() && (isHovered || isCurrent) &&
               !m_model.isReadOnly()) {
        TodoPainting::drawIcon(*painter, QStringLiteral("calendar-plus"), colors.secondaryText,
                               laidOut.scheduleButton());
    }
    painter->restore();
}

void EntryItemDelegate::paintChips(QPainter& painter, const EntryRowLayout& laidOut,
                                   const QPoint& topLeft, bool isActive) const {
    if (!laidOut.chips()) {
        return;
    }
    auto marks = m_marks;
    marks.isActive = isActive;
    painter.save();
    painter.translate(topLeft);
    laidOut.chips()->paint(painter, m_theme, marks);
    painter.restore();
}

void EntryItemDelegate::paintSign(QPainter& painter, const QRect& rect, int row,
                                  bool isHovered) const {
    const auto& colors = m_theme.colors();
    switch (m_model.kind(row)) {
    case EntryListModel::RowKind::entry:
    case EntryListModel::RowKind::completed: {
        const auto* const entry = m_model.entry(row);
        if (entry->isTodo()) {
            TodoPainting::drawCircle(painter, rect, entry->isCompleted(),
                                     isHovered && !m_model.isReadOnly(), colors);
        }
        return;
    }
    case EntryListModel::RowKind::newTodo:
        TodoPainting::drawIcon(painter, QStringLiteral("plus"), colors.secondaryText, rect);
        return;
    case EntryListModel::RowKind::completedHeading:
        TodoPainting::drawIcon(painter,
                               m_model.isCompletedExpanded() ? QStringLiteral("caret-down")
                                                             : QStringLiteral("caret-right"),
                               colors.secondaryText, rect);
        return;
    case EntryListModel::RowKind::draft:
        return;
    }
}

QSize EntryItemDelegate::sizeHint(const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const {
    return {option.rect.width(), layout(index.row(), option.rect.width()).height()};
}

const EntryRowLayout& EntryItemDelegate::layout(int row, int width) const {
    const auto* const key = keyOf(row);
    if (const auto* const known = m_layouts.object(key); known && known->width() == width) {
        return *known;
    }
    auto* const made = new EntryRowLayout(m_model, row, width, m_workspace, m_theme, look());
    m_layouts.insert(key, made, std::min(made->cost(), kKeptLayouts)); // takes it over
    return *made;
}

const TextLook& EntryItemDelegate::look() const {
    if (!m_look) {
        m_look.emplace(m_theme);
    }
    return *m_look;
}

void EntryItemDelegate::forget(int row) const {
    m_layouts.remove(keyOf(row));
}

void EntryItemDelegate::forgetAll() const {
    m_layouts.clear();
    m_look.reset();
}

/// An entry is one object as long as it lives; the few other rows are told apart by their kind.
const void* EntryItemDelegate::keyOf(int row) const {
    static constexpr std::array<char, 8> kKinds{};
    const auto* const entry = m_model.entry(row);
    return entry ? static_cast<const void*>(entry)
                 : &kKinds[static_cast<std::size_t>(m_model.kind(row))];
}

} // namespace korvex::ui
