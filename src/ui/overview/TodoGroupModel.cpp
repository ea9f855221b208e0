#include "ui/overview/TodoGroupModel.h"

#include "ui/boards/BoardLabel.h"
#include "ui/kit/RowDiff.h"
#include "ui/kit/Text.h"
#include "ui/todos/RowText.h"

#include <algorithm>
#include <utility>

namespace korvex::ui {

namespace {

/// With more steps than this the rows change all at once.
constexpr std::size_t kMaximumSteps = 60;

} // namespace

TodoGroupModel::TodoGroupModel(const Workspace& workspace, Detail detail, QObject* parent)
    : QAbstractListModel(parent), m_workspace(workspace), m_detail(detail) {}

int TodoGroupModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant TodoGroupModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const int row = index.row();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return text(row);
    case Qt::AccessibleDescriptionRole:
        return accessibleDescription(row);
    case Qt::CheckStateRole:
        return isHeading(row)              ? QVariant()
               : entry(row)->isCompleted() ? QVariant(Qt::Checked)
                                           : QVariant(Qt::Unchecked);
    default:
        return {};
    }
}

Qt::ItemFlags TodoGroupModel::flags(const QModelIndex& index) const {
    auto result = QAbstractListModel::flags(index);
    if (index.isValid() && index.row() < rowCount()) {
        result.setFlag(Qt::ItemIsSelectable, !isHeading(index.row()));
        result.setFlag(Qt::ItemIsUserCheckable, !isHeading(index.row()));
    }
    return result;
}

void TodoGroupModel::setGroups(const std::vector<TodoGroup>& groups, Extent extent) {
    std::vector<Row> wanted;
    std::size_t total = groups.size();
    for (const auto& group : groups) {
        total += group.entries.size();
    }
    wanted.reserve(total);
    Headings headings;
    for (const auto& group : groups) {
        headings.emplace(group.key, Heading{group.title, group.isUrgent, group.entries.size()});
        wanted.push_back({nullptr, group.key});
        for (auto* const each : group.entries) {
            wanted.push_back({each, group.key});
        }
    }
    placeHeld(wanted);
    if (extent == Extent::most || !applySteps(wanted, headings)) {
        m_headings.merge(Headings(headings)); // for who asks before the rows have changed
        applyAtOnce(std::move(wanted));
    }
    m_headings = std::move(headings);
}

void TodoGroupModel::holdInPlace(const model::Entry& entry) {
    letMove(entry);
    m_held.push_back(&entry);
}

void TodoGroupModel::placeHeld(std::vector<Row>& wanted) const {
    std::vector<int> shown;
    for (const auto* const each : m_held) {
        shown.push_back(rowOf(*each));
    }
    // From the top: then what stands above is in its place already.
    std::sort(shown.begin(), shown.end());
    for (const int row : shown) {
        if (row < 0) {
            continue;
        }
        const auto place =
            std::find(wanted.begin(), wanted.end(), m_rows[static_cast<std::size_t>(row)]);
        // The nearest row above it that stays; at last, the heading.
        auto above = wanted.end();
        for (int i = row - 1; i >= 0 && above == wanted.end() && place != wanted.end(); --i) {
            above = std::find(wanted.begin(), wanted.end(), m_rows[static_cast<std::size_t>(i)]);
        }
        if (above == wanted.end()) {
            continue;
        }
        if (above < place) {
            std::rotate(above + 1, place, place + 1);
        } else {
            std::rotate(place, place + 1, above + 1);
        }
    }
}

bool TodoGroupModel::applySteps(const std::vector<Row>& wanted, const Headings& headings) {
    const auto keys = [](const std::vector<Row>& rows) {
        std::vector<RowKey> result;
        result.reserve(rows.size());
        for (const auto& row : rows) {
            result.push_back({row.entry ? 0 : 1 + row.headingKey, row.entry});
        }
        return result;
    };
    const auto steps = fewRowSteps(keys(m_rows), keys(wanted), kMaximumSteps);
    if (!steps) {
        return false;
    }
    // Rows of old and new headings stand side by side between the steps.
    const auto before = m_headings;
    for (const auto& [key, heading] : headings) {
        m_headings.insert_or_assign(key, heading);
    }
    for (const auto& step : *steps) {
        const int last = step.first + step.count - 1;
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
    m_rows = wanted; // a todo may stand under another heading without having moved
    for (int row = 0; row < rowCount(); ++row) {
        if (!isHeading(row)) {
            continue;
        }
        const int key = m_rows[static_cast<std::size_t>(row)].headingKey;
        if (const auto old = before.find(key); old != before.end() && old->second != heading(row)) {
            touch(row);
        }
    }
    return true;
}

void TodoGroupModel::applyAtOnce(std::vector<Row> wanted) {
    Q_EMIT layoutAboutToBeChanged();
    const auto before = std::exchange(m_rows, std::move(wanted));
    const auto persistent = persistentIndexList(); // of what is current or selected: a few
    for (const auto& old : persistent) {
        const auto* const shown = before[static_cast<std::size_t>(old.row())].entry;
        const int row = shown ? rowOf(*shown) : -1;
        changePersistentIndex(old, row < 0 ? QModelIndex() : index(row, 0));
    }
    Q_EMIT layoutChanged();
}

void TodoGroupModel::touch(int row) {
    Q_EMIT dataChanged(index(row, 0), index(row, 0));
}

int TodoGroupModel::rowOf(const model::Entry& entry) const {
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&](const Row& row) { return row.entry == &entry; });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

QString TodoGroupModel::text(int row) const {
    if (isHeading(row)) {
        return heading(row).title;
    }
    return previewOf(entry(row)->content());
}

QString TodoGroupModel::completionText(int row) const {
    const auto completedAt = entry(row)->completedAt();
    return entry(row)->isCompleted() && completedAt
               ? toQString(m_workspace.dates.formats().shortTime(*completedAt))
               : QString();
}

QString TodoGroupModel::accessibleDescription(int row) const {
    if (isHeading(row)) {
        return tr("Heading, %n todo(s)", nullptr, static_cast<int>(heading(row).count));
    }
    const auto& todo = *entry(row);
    QStringList parts{todo.isCompleted() ? tr("Completed") : tr("Open")};
    if (m_detail == Detail::completion) {
        parts.append({completionText(row), heading(row).title});
    }
    parts.append(toQString(todo.schedule().accessibilityLabel(todo.isCompleted(), m_workspace.now(),
                                                              m_workspace.dates.formats())));
    if (const auto* const board = todo.board()) {
        parts.append(tr("Board: %1").arg(boardLabel(*board)));
    }
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace korvex::ui
