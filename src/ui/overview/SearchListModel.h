#pragma once

#include "schedule/ScheduleClock.h"
#include "services/SearchService.h"
#include "ui/overview/SearchLine.h"
#include "ui/todos/DueLabel.h"
#include "ui/workspace/DateTexts.h"

#include <QAbstractListModel>
#include <QCache>

#include <optional>
#include <string>
#include <vector>

namespace korvex::ui {

/// What one row of the search's page shows.
struct SearchRow {
    SearchLine line;
    /// The name of its icon in our set.
    QString icon;
    QString kind;
    QString boardName;
    DueLabel due;
    QString dueDescription;
    bool isBoard = false;
    bool isTodo = false;
    bool isCompleted = false;
    bool isArchived = false;
};

/// What was found, row by row. A row is made when it is first shown: whatever the number of rows, a
/// search costs what the search itself costs.
class SearchListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    SearchListModel(services::SearchService& search, const base::TextFolding& folding,
                    const schedule::ScheduleClock& clock, const DateTexts& dates,
                    QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Finds other rows. Throws what the store throws; then it shows what it showed.
    void search(const QString& query);
    void clear();

    const model::Board& board(int row) const { return m_results.board(at(row)); }
    bool isBoard(int row) const { return id(row).kind == services::SearchResult::ID::Kind::board; }
    /// The entry of a row; null for a row that is a board. May throw what the store throws.
    const model::Entry* entry(int row) const { return m_results.entry(at(row)); }
    /// Whether it is a todo that can be completed or restored: on an archived board none can.
    bool isTickable(int row) const { return this->row(row).isTodo && !board(row).isArchived(); }
    /// Whether the row above is of another board.
    bool beginsBoard(int row) const { return row == 0 || &board(row - 1) != &board(row); }
    /// Valid until the next call for another row, or of any function that is not const.
    const SearchRow& row(int row) const;
    services::SearchResult::ID id(int row) const { return m_results.id(at(row)); }
    /// The row that shows this result; -1 when it is not among them.
    int rowOf(const services::SearchResult::ID& id) const;

    /// "Now" has moved: rows are made anew when they are drawn.
    void forgetLabels();

private:
    static std::size_t at(int row) { return static_cast<std::size_t>(row); }
    SearchRow made(int row) const;

    services::SearchService& m_search;
    const base::TextFolding& m_folding;
    const schedule::ScheduleClock& m_clock;
    const DateTexts& m_dates;
    services::SearchResults m_results;
    std::vector<std::string> m_terms;
    mutable QCache<int, SearchRow> m_rows;
};

} // namespace korvex::ui
