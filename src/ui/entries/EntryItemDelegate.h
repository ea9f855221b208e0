#pragma once

#include "ui/entries/EntryRowLayout.h"

#include <QCache>
#include <QStyledItemDelegate>

#include <optional>

namespace korvex::ui {

/// Draws the rows of a board's page and measures them. Keeps the layouts of the rows that were
/// drawn last and no others: fewer of them where they are large.
class EntryItemDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    EntryItemDelegate(const EntryListModel& model, const Workspace& workspace, const Theme& theme,
                      QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Valid until the next call of any function of this class.
    const EntryRowLayout& layout(int row, int width) const;
    void forget(int row) const;
    void forgetAll() const;

    /// The row under the pointer, -1 for none.
    void setHoveredRow(int row) { m_hoveredRow = row; }
    int hoveredRow() const { return m_hoveredRow; }
    /// The row in whose place an editor stands: only its attachments are drawn, at its foot. -1 for
    /// none.
    void setEditedRow(int row) { m_editedRow = row; }
    void setMarks(const AttachmentMarks& marks) { m_marks = marks; }
    const AttachmentMarks& marks() const { return m_marks; }

private:
    const TextLook& look() const;
    const void* keyOf(int row) const;
    void paintChips(QPainter& painter, const EntryRowLayout& laidOut, const QPoint& topLeft,
                    bool isActive) const;
    void paintSign(QPainter& painter, const QRect& rect, int row, bool isHovered) const;

    const EntryListModel& m_model;
    const Workspace& m_workspace;
    const Theme& m_theme;
    int m_hoveredRow = -1;
    int m_editedRow = -1;
    AttachmentMarks m_marks;
    /// Made when it is first needed: a board may hold no formatted text.
    mutable std::optional<TextLook> m_look;
    mutable QCache<const void*, EntryRowLayout> m_layouts;
};

} // namespace korvex::ui
