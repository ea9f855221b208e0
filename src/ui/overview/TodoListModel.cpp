#include "ui/overview/TodoListModel.h"

#include "ui/boards/BoardLabel.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/RowText.h"

#include <algorithm>

namespace korvex::ui {

TodoListModel::TodoListModel(const schedule::ScheduleClock& clock, const DateTexts& dates,
                             Detail detail, QObject* parent)
    : RowModel(parent), m_clock(clock), m_dates(dates), m_detail(detail) {}

QVariant TodoListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const auto row = index.row();
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

Qt::ItemFlags TodoListModel::flags(const QModelIndex& index) const {
    auto result = QAbstractListModel::flags(index);
    if (index.isValid() && index.row() < rowCount()) {
        result.setFlag(Qt::ItemIsSelectable, !isHeading(index.row()));
        result.setFlag(Qt::ItemIsUserCheckable, !isHeading(index.row()));
    }
    return result;
}

void TodoListModel::setGroups(const std::vector<TodoGroup>& groups, Extent extent) {
    std::vector<Row> wanted;
    auto total = groups.size();
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
    if (extent == Extent::most || !showBySteps(wanted, headings)) {
        m_headings.merge(Headings(headings)); // for who asks before the rows have changed
        showAtOnce(std::move(wanted));
    }
    m_headings = std::move(headings);
}

void TodoListModel::holdInPlace(const model::Entry& entry) {
    letMove(entry);
    m_held.push_back(&entry);
}

void TodoListModel::placeHeld(std::vector<Row>& wanted) const {
    std::vector<int> shown;
    for (const auto* const each : m_held) {
        shown.push_back(rowOf(*each));
    }
    // From the top: then what stands above is in its place already.
    std::sort(shown.begin(), shown.end());
    for (const auto row : shown) {
        if (row >= 0) {
            keepPlace(row, wanted);
        }
    }
}

bool TodoListModel::showBySteps(const std::vector<Row>& wanted, const Headings& headings) {
    const auto steps = fewStepsTo(wanted);
    if (!steps) {
        return false;
    }
    // Rows of old and new headings stand side by side between the steps.
    const auto before = m_headings;
    for (const auto& [key, heading] : headings) {
        m_headings.insert_or_assign(key, heading);
    }
    applySteps(*steps, wanted);
    // A todo may stand under another heading without having moved.
    takeOver(wanted, [&](const Row&, const Row& row) {
        const auto old = row.entry ? before.end() : before.find(row.headingKey);
        return old != before.end() && old->second != m_headings.at(row.headingKey);
    });
    return true;
}

void TodoListModel::showAtOnce(std::vector<Row> wanted) {
    applyAtOnce(std::move(wanted),
                [this](const Row& old) { return old.entry ? rowOf(*old.entry) : -1; });
}

int TodoListModel::rowOf(const model::Entry& entry) const {
    return firstRow([&](const Row& row) { return row.entry == &entry; });
}

QString TodoListModel::text(int row) const {
    if (isHeading(row)) {
        return heading(row).title;
    }
    return shownText(*entry(row));
}

DueLabel TodoListModel::detailLabel(int row) const {
    if (m_detail == Detail::completion) {
        return {.text = completionText(row)};
    }
    const auto isSaid = m_headings.at(at(row).headingKey).isUrgent;
    return dueLabelOf(*entry(row), m_clock.now(), m_dates,
                      isSaid ? OverdueWord::no : OverdueWord::yes);
}

QString TodoListModel::completionText(int row) const {
    const auto completedAt = entry(row)->completedAt();
    return entry(row)->isCompleted() && completedAt && completedAt->isValid()
               ? toQString(m_dates.formats().shortTime(*completedAt))
               : QString();
}

QString TodoListModel::accessibleDescription(int row) const {
    if (isHeading(row)) {
        return tr("%Ln todo(s)", nullptr, static_cast<int>(heading(row).count));
    }
    const auto& todo = *entry(row);
    QStringList parts{todo.isCompleted() ? tr("Completed") : tr("Open")};
    if (m_detail == Detail::completion) {
        parts.append({completionText(row), heading(row).title});
    }
    parts.append(toQString(
        todo.schedule().accessibilityLabel(todo.isCompleted(), m_clock.now(), m_dates.formats())));
    if (const auto* const board = todo.board()) {
        parts.append(tr("Board: %1").arg(boardLabel(*board)));
    }
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace korvex::ui
