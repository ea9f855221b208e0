#pragma once

#include "ui/kit/lists/RowDiff.h"

#include <QAbstractListModel>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace korvex::ui {

/// The rows of a list that is told what they are to be. Where few differ, the model announces just
/// the steps between, so that selection, editors and scroll position stay. A `Row` points to what
/// it stands for, or is a value with `RowKey key() const`; two rows are equal when they stand for
/// the same, whatever it looks like by now. Main thread.
template <typename Row>
class RowModel : public QAbstractListModel {
public:
    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }

protected:
    using QAbstractListModel::QAbstractListModel;

    const std::vector<Row>& rows() const { return m_rows; }
    const Row& at(int row) const { return m_rows[static_cast<std::size_t>(row)]; }
    /// The number of the first row that `matches`; -1 when there is none.
    template <typename Matches>
    int firstRow(Matches&& matches) const {
        const auto found = std::find_if(m_rows.begin(), m_rows.end(), matches);
        return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
    }

    static std::vector<RowKey> keysOf(const std::vector<Row>& rows) {
        std::vector<RowKey> result;
        result.reserve(rows.size());
        for (const auto& row : rows) {
            if constexpr (std::is_pointer_v<Row>) {
                result.push_back({0, row});
            } else {
                result.push_back(row.key());
            }
        }
        return result;
    }

    /// Other rows altogether: nothing that is chosen stays so.
    void resetTo(std::vector<Row> wanted) {
        beginResetModel();
        m_rows = std::move(wanted);
        endResetModel();
    }

    /// The steps that lead to `wanted`; absent with so many that the rows are to change at once.
    std::optional<std::vector<RowStep>> fewStepsTo(const std::vector<Row>& wanted) const {
        constexpr std::size_t kMost = 60;
        return fewRowSteps(keysOf(m_rows), keysOf(wanted), kMost);
    }

    /// The steps of RowDiff that lead to `wanted`.
    void applySteps(const std::vector<RowStep>& steps, const std::vector<Row>& wanted) {
        for (const auto& step : steps) {
            const auto last = step.first + step.count - 1;
            switch (step.kind) {
            case RowStep::Kind::remove:
                beginRemoveRows({}, step.first, last);
                applyStep(step, m_rows, wanted);
                endRemoveRows();
                break;
            case RowStep::Kind::insert:
                beginInsertRows({}, step.first, last);
                applyStep(step, m_rows, wanted);
                endInsertRows();
                break;
            case RowStep::Kind::move:
                beginMoveRows({}, step.first, last, {}, step.destination);
                applyStep(step, m_rows, wanted);
                endMoveRows();
                break;
            }
        }
    }

    /// All rows change places at once. `placeOf` says where a row of before stands now, -1 for
    /// nowhere; it is asked of the few that a view remembers.
    template <typename PlaceOf>
    void applyAtOnce(std::vector<Row> wanted, PlaceOf&& placeOf) {
        Q_EMIT layoutAboutToBeChanged();
        const auto before = std::exchange(m_rows, std::move(wanted));
        const auto remembered = persistentIndexList();
        for (const auto& old : remembered) {
            const auto row = placeOf(before[static_cast<std::size_t>(old.row())]);
            changePersistentIndex(old, row < 0 ? QModelIndex() : index(row, 0));
        }
        Q_EMIT layoutChanged();
    }

    /// Takes over what rows hold besides what they stand for, after the steps that lead to
    /// `wanted`. `changed` is asked of each row as it was and as it is, and says whether it looks
    /// different now.
    template <typename Changed>
    void takeOver(std::vector<Row> wanted, Changed&& changed) {
        const auto before = std::exchange(m_rows, std::move(wanted));
        for (int row = 0; row < rowCount(); ++row) {
            if (changed(before[static_cast<std::size_t>(row)], at(row))) {
                touch(row);
            }
        }
    }

    /// The row stands for something else from now on; views keep what they know of it.
    void replace(int row, Row other) {
        m_rows[static_cast<std::size_t>(row)] = std::move(other);
        touch(row);
    }

    /// What the row shows has changed.
    void touch(int row) { Q_EMIT dataChanged(index(row, 0), index(row, 0)); }

    /// Puts the row that stands at `row` now behind the nearest one above it that stays, also in
    /// `wanted`, wherever that has it. For several rows it is to be called from the top.
    void keepPlace(int row, std::vector<Row>& wanted) const {
        const auto place = std::find(wanted.begin(), wanted.end(), at(row));
        auto above = wanted.end();
        for (int i = row - 1; i >= 0 && above == wanted.end() && place != wanted.end(); --i) {
            above = std::find(wanted.begin(), wanted.end(), at(i));
        }
        if (above == wanted.end()) {
            return;
        }
        if (above < place) {
            std::rotate(above + 1, place, place + 1);
        } else {
            std::rotate(place, place + 1, above + 1);
        }
    }

private:
    std::vector<Row> m_rows;
};

} // namespace korvex::ui
