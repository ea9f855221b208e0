#pragma once

#include "model/Entry.h"
#include "schedule/ScheduleClock.h"
#include "ui/kit/lists/RowModel.h"
#include "ui/todos/DueLabel.h"

#include <span>
#include <unordered_map>
#include <vector>

namespace korvex::ui {

/// A heading and the todos under it.
struct TodoGroup {
    /// Tells the groups of a list apart and stays with a group while its todos change; 0 or more.
    int key = 0;
    QString title;
    bool isUrgent = false;
    std::span<model::Entry* const> entries;
};

/// A row of such a list: a heading, or a todo under the heading with the same key.
struct TodoListRow {
    /// Null for a heading.
    model::Entry* entry = nullptr;
    int headingKey = 0;

    RowKey key() const { return {entry ? 0 : 1 + headingKey, entry}; }
    bool operator==(const TodoListRow&) const = default;
};

/// The rows of a page that lists todos of all boards: headings, each followed by its todos. Main
/// thread.
class TodoListModel final : public RowModel<TodoListRow> {
    Q_OBJECT

public:
    /// What a row tells of its todo besides text and board.
    enum class Detail { due, completion };
    /// How much differs between two states of the list. Few rows change by steps, with which
    /// selection and scroll position stay and views keep what they know; where most may change, the
    /// list changes at once.
    enum class Extent { few, most };
    struct Heading {
        QString title;
        bool isUrgent = false;
        std::size_t count = 0;

        bool operator==(const Heading&) const = default;
    };

    TodoListModel(const schedule::ScheduleClock& clock, const DateTexts& dates, Detail detail,
                  QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    Detail detail() const { return m_detail; }
    /// No todo may be in two groups.
    void setGroups(const std::vector<TodoGroup>& groups, Extent extent = Extent::few);
    /// Keeps a todo where it stands in its group, whatever its place would be, until `letMove`.
    void holdInPlace(const model::Entry& entry);
    void letMove(const model::Entry& entry) { std::erase(m_held, &entry); }
    /// What rows show of their todos has changed.
    using RowModel::touch;

    bool isHeading(int row) const { return !entry(row); }
    const Heading& heading(int row) const { return m_headings.at(at(row).headingKey); }
    /// The todo of a row; null for a heading.
    model::Entry* entry(int row) const { return at(row).entry; }
    /// The row that shows the todo; -1 when none does.
    int rowOf(const model::Entry& entry) const;
    /// The text of the row as it is shown.
    QString text(int row) const;
    /// What the row of a todo tells besides text and board.
    DueLabel detailLabel(int row) const;

private:
    using Row = TodoListRow;
    using Headings = std::unordered_map<int, Heading>;

    /// Puts the held todos among the wanted rows where they stand among the shown ones.
    void placeHeld(std::vector<Row>& wanted) const;
    /// Shows the wanted rows step by step. Returns false when that would be too many steps; then
    /// nothing has happened.
    bool showBySteps(const std::vector<Row>& wanted, const Headings& headings);
    void showAtOnce(std::vector<Row> wanted);
    /// The moment of completion as the row tells it, which is empty for an open todo.
    QString completionText(int row) const;
    QString accessibleDescription(int row) const;

    const schedule::ScheduleClock& m_clock;
    const DateTexts& m_dates;
    Detail m_detail;
    Headings m_headings;
    std::vector<const model::Entry*> m_held;
};

} // namespace korvex::ui
