#pragma once

#include "ui/boards/BoardListModel.h"
#include "ui/kit/theme/Theme.h"

#include <QStyledItemDelegate>

namespace korvex::ui {

/// Draws the boards of the sidebar and edits their names in place.
class BoardItemDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    BoardItemDelegate(const BoardListModel& model, const Theme& theme, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

Q_SIGNALS:
    /// A name was typed; whoever listens stores it.
    void renamed(korvex::model::Board* board, const QString& name) const;

private:
    QRect boxOf(const QRect& row) const;

    const BoardListModel& m_model;
    const Theme& m_theme;
};

} // namespace korvex::ui
