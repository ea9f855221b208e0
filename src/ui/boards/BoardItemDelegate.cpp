#include "ui/boards/BoardItemDelegate.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/lists/RowGround.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QLineEdit>
#include <QPainter>

namespace korvex::ui {

namespace {

constexpr int kSideMargin = 8;
constexpr int kPadding = 8;
constexpr int kIconSize = 18;

} // namespace

BoardItemDelegate::BoardItemDelegate(const BoardListModel& model, const Theme& theme,
                                     QObject* parent)
    : QStyledItemDelegate(parent), m_model(model), m_theme(theme) {}

void BoardItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    const auto& colors = m_theme.colors();
    const auto& board = *m_model.board(index.row());
    const auto box = option.rect.adjusted(kSideMargin, 1, -kSideMargin, -1);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    auto state = option.state;
    state.setFlag(QStyle::State_HasFocus,
                  state.testFlag(QStyle::State_HasFocus) && state.testFlag(QStyle::State_Selected));
    paintRowGround(*painter, box, state, colors.sidebar, m_theme);

    const auto size = m_theme.scaled(kIconSize);
    const QRect icon(box.left() + kPadding, box.center().y() - size / 2 + 1, size, size);
    IconSet::draw(*painter, boardIconName(board.iconSystemName()), iconColorOf(board, colors),
                  mirrored(icon, box));

    const auto count = m_model.openTodoCount(index.row());
    const auto countText = count > 0 ? QString::number(count) : QString();
    const QFontMetrics metrics(m_theme.font());
    const auto countWidth = metrics.horizontalAdvance(countText);
    painter->setFont(m_theme.font());
    painter->setPen(colors.secondaryText);
    painter->drawText(mirrored(box.adjusted(0, 0, -kPadding, 0), box),
                      Qt::AlignRight | Qt::AlignVCenter, countText);
    auto name = nameRect(option.rect);
    name.setRight(name.right() - countWidth - (countWidth > 0 ? kPadding : 0));
    painter->setPen(colors.text);
    painter->drawText(mirrored(name, option.rect), Qt::AlignLeft | Qt::AlignVCenter,
                      metrics.elidedText(index.data().toString(), Qt::ElideRight, name.width()));
    painter->restore();
}

QSize BoardItemDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    const int height =
        std::max(QFontMetrics(m_theme.font()).lineSpacing(), m_theme.scaled(kIconSize));
    return {0, height + 10 + m_theme.rowDistance() / 2};
}

QWidget* BoardItemDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                         const QModelIndex&) const {
    auto* const field = new QLineEdit(parent);
    field->setFrame(false);
    field->setFont(m_theme.font());
    field->setAutoFillBackground(true);
    field->setAccessibleName(tr("Name of the board"));
    return field;
}

void BoardItemDelegate::setModelData(QWidget* editor, QAbstractItemModel*,
                                     const QModelIndex& index) const {
    const auto name = static_cast<QLineEdit*>(editor)->text();
    if (name != index.data(Qt::EditRole).toString()) {
        Q_EMIT renamed(m_model.board(index.row()), name);
    }
}

void BoardItemDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                             const QModelIndex&) const {
    editor->setGeometry(mirrored(nameRect(option.rect).adjusted(-3, 4, 0, -4), option.rect));
}

QRect BoardItemDelegate::nameRect(const QRect& row) const {
    const auto left = kSideMargin + kPadding + m_theme.scaled(kIconSize) + kPadding;
    return row.adjusted(left, 0, -kSideMargin - kPadding, 0);
}

} // namespace korvex::ui
