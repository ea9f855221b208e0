#pragma once

#include "model/Entry.h"
#include "ui/workspace/Workspace.h"

#include <QAbstractListModel>

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

/// The rows of a page that lists todos of all boards: headings, each followed by its todos. Main
/// thread.
class TodoGroupModel final : public QAbstractListModel {
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

    TodoGroupModel(const Workspace& workspace, Detail detail, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    Detail detail() const { return m_detail; }
    /// No todo may be in two groups.
    void setGroups(const std::vector<TodoGroup>& groups, Extent extent = Extent::few);
    /// Keeps a todo where it stands in its group, whatever its place would be, until `letMove`.
    void holdInPlace(const model::Entry& entry);
    void letMove(const model::Entry& entry) { std::erase(m_held, &entry); }
    /// What a row shows of its todo has changed.
    void touch(int row);

    bool isHeading(int row) const { return !entry(row); }
    const Heading& heading(int row) const {
        return m_headings.at(m_rows[static_cast<std::size_t>(row)].headingKey);
    }
    /// Null for a heading.
    model::Entry* entry(int row) const { return m_rows[static_cast<std::size_t>(row)].entry; }
    /// -1 when no row shows it.
    int rowOf(const model::Entry& entry) const;
    /// Text as it is shown: one over the limit is cut to its preview.
    QString text(int row) const;
    /// The completion's moment as the row tells it; empty for an open todo.
    QString completionText(int row) const;

private:
    struct Row {
        /// Null for a heading.
        model::Entry* entry = nullptr;
        int headingKey = 0;

        bool operator==(const Row&) const = default;
    };
    using Headings = std::unordered_map<int, Heading>;

    /// Puts the held todos among the wanted rows where they stand among the shown ones.
    void placeHeld(std::vector<Row>& wanted) const;
    /// False when that would be too many steps; then nothing has happened.
    bool applySteps(const std::vector<Row>& wanted, const Headings& headings);
    void applyAtOnce(std::vector<Row> wanted);
    QString accessibleDescription(int row) const;

    const Workspace& m_workspace;
    Detail m_detail;
    std::vector<Row> m_rows;
    Headings m_headings;
    std::vector<const model::Entry*> m_held;
};

} // namespace korvex::ui
