#pragma once

#include "ui/kit/theme/Theme.h"
#include "ui/overview/SearchListModel.h"

#include <QStyledItemDelegate>

namespace korvex::ui {

/// Draws what was found, and knows where the parts of a row stand.
class SearchResultDelegate final : public QStyledItemDelegate {
public:
    SearchResultDelegate(const SearchListModel& model, const Theme& theme, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

    /// The height of a row above which nothing is left free.
    int plainHeight() const;
    /// What is left free above a row between those of two boards; a hairline is in its middle.
    int distanceAbove(int row) const;
    /// Where the circle or icon stands, from the row's top left corner.
    QRect signRect(int row, int width) const;

private:
    void paintLine(QPainter& painter, const SearchRow& row, const QRect& rect,
                   const QColor& ground) const;
    /// Paints where it stands, whether that is archived, and when it is due; what has no room is
    /// left out from behind.
    void paintNote(QPainter& painter, const SearchRow& row, int number, const QRect& rect) const;

    const SearchListModel& m_model;
    const Theme& m_theme;
};

} // namespace korvex::ui
