#pragma once

#include "richtext/code/CodeHighlighter.h"
#include "ui/entries/EntryRowLayout.h"
#include "ui/entries/EntryRowRoom.h"
#include "ui/kit/lists/RowLayouts.h"

#include <QPixmap>
#include <QStyledItemDelegate>

#include <optional>
#include <unordered_map>
#include <vector>

namespace korvex::ui {

/// Draws the rows of a board's page and measures them.
class EntryItemDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    EntryItemDelegate(const EntryListModel& model, richtext::CodeHighlighter& code,
                      const Theme& theme, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// What a row looks like while it is dragged, on a screen with so many dots to a pixel.
    QPixmap picture(QStyleOptionViewItem option, const QModelIndex& index, qreal scale) const;

    /// For what width rows are laid out, and how far what is wide in one of them may reach.
    void setRoom(const EntryRowRoom& room) { m_room = room; }
    const EntryRowRoom& room() const { return m_room; }
    const TextLook& look() const;
    /// Valid until the next call of any function of this class.
    const EntryRowLayout& layout(int row) const;
    void forget(int row) const { m_layouts.forget(subjectOf(row)); }
    void forgetAll() const;
    /// Moves what is seen of the tables of a row that are too wide for it: of all of them, or only
    /// of the one under a point of the row. False where there is nothing to move.
    bool scrollTables(int row, int by, std::optional<QPointF> under = std::nullopt) const;

    /// The row in whose place an editor stands: only its attachments are drawn, at its foot. -1 for
    /// none.
    void setEditedRow(int row) { m_editedRow = row; }
    void setMarks(const AttachmentMarks& marks) { m_marks = marks; }
    const AttachmentMarks& marks() const { return m_marks; }

private:
    const void* subjectOf(int row) const;
    void paintChips(QPainter& painter, const EntryRowLayout& laidOut, const QPoint& topLeft,
                    QStyle::State state) const;
    void paintPlain(QPainter& painter, const EntryRowLayout& laidOut, int row,
                    QStyle::State state) const;
    void paintSign(QPainter& painter, const QRect& rect, int row, QStyle::State state) const;

    const EntryListModel& m_model;
    richtext::CodeHighlighter& m_code;
    const Theme& m_theme;
    EntryRowRoom m_room;
    int m_editedRow = -1;
    AttachmentMarks m_marks;
    /// Made when it is first needed: a board may hold no formatted text.
    mutable std::optional<TextLook> m_look;
    mutable RowLayouts<EntryRowLayout> m_layouts;
    /// How far wide tables were scrolled, which outlasts their layouts.
    mutable std::unordered_map<const void*, std::vector<int>> m_tableOffsets;
};

} // namespace korvex::ui
