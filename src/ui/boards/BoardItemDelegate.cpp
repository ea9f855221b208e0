#include "ui/boards/BoardItemDelegate.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/boards/NamedRow.h"
#include "ui/kit/theme/Direction.h"

#include <QLineEdit>
#include <QLocale>

namespace korvex::ui {

BoardItemDelegate::BoardItemDelegate(const BoardListModel& model, const Theme& theme,
                                     QObject* parent)
    : QStyledItemDelegate(parent), m_model(model), m_theme(theme) {}

void BoardItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    const auto& colors = m_theme.colors();
    const auto& board = *m_model.board(index.row());
    auto state = option.state;
    state.setFlag(QStyle::State_HasFocus,
                  state.testFlag(QStyle::State_HasFocus) && state.testFlag(QStyle::State_Selected));
    const auto count = m_model.openTodoCount(index.row());
    const NamedRow row{.icon = boardIconName(board.iconSystemName()),
                       .iconColor = iconColorOf(board, colors),
                       .name = index.data().toString(),
                       .note = count > 0 ? QLocale().toString(count) : QString()};
    row.paint(*painter, boxOf(option.rect), state, m_theme);
}

QSize BoardItemDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {0, NamedRow::height(m_theme)};
}

QWidget* BoardItemDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                         const QModelIndex&) const {
    auto* const field = new QLineEdit(parent);
    field->setFont(m_theme.font());
    field->setAutoFillBackground(true);
    field->setAccessibleName(tr("Name of the board"));
    return field;
}

/// The list asks for this whenever anything of the board changes, as by another program: a name
/// that is being typed stays, one that nobody has touched follows.
void BoardItemDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    auto* const field = static_cast<QLineEdit*>(editor);
    const auto name = index.data(Qt::EditRole).toString();
    if (!field->isModified() && field->text() != name) {
        field->setText(name);
        field->selectAll();
    }
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
    const auto box = boxOf(option.rect);
    const auto around = m_theme.space(Space::hair);
    auto place = box.adjusted(0, around, -around, -around);
    place.setLeft(NamedRow::nameRect(box, m_theme).left() - NamedRow::fieldMargin(m_theme));
    editor->setGeometry(mirrored(place, option.rect));
}

QRect BoardItemDelegate::boxOf(const QRect& row) const {
    return NamedRow::box(row, m_theme.space(Space::medium), m_theme);
}

} // namespace korvex::ui
