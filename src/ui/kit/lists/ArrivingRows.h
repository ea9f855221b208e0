#pragma once

#include <QPersistentModelIndex>
#include <QVariantAnimation>

#include <vector>

class QAbstractItemView;

namespace korvex::ui {

/// Rows that have just come among those of a list: they appear by and by, in their places at once,
/// for as long as the style animates widgets. Where it does not, they are simply there. Main
/// thread.
class ArrivingRows final {
public:
    explicit ArrivingRows(QAbstractItemView& view);

    /// Those from `first` to `last`, of which a screen has room for. What was still appearing is
    /// there now.
    void add(const QModelIndex& first, const QModelIndex& last);
    /// How much of a row is seen, of 0 to 1.
    double opacityOf(const QModelIndex& index) const;

private:
    /// Has them drawn again, and nothing else.
    void update();

    QAbstractItemView& m_view;
    QVariantAnimation m_animation;
    std::vector<QPersistentModelIndex> m_rows;
};

} // namespace korvex::ui
