#include "ui/widget/WidgetTodoModel.h"

#include "ui/kit/words/Text.h"
#include "ui/todos/RowText.h"

#include <algorithm>
#include <utility>

namespace korvex::ui {

WidgetTodoModel::WidgetTodoModel(const schedule::ScheduleClock& clock, const DateTexts& dates,
                                 QObject* parent)
    : RowModel(parent), m_clock(clock), m_dates(dates) {}

QVariant WidgetTodoModel::data(const QModelIndex& index, int role) const {
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
        return entry(row).isCompleted() ? Qt::Checked : Qt::Unchecked;
    default:
        return {};
    }
}

Qt::ItemFlags WidgetTodoModel::flags(const QModelIndex& index) const {
    auto result = QAbstractListModel::flags(index);
    result.setFlag(Qt::ItemIsUserCheckable, index.isValid());
    return result;
}

void WidgetTodoModel::setTodos(std::vector<model::Entry*> todos) {
    std::vector<int> held;
    for (const auto* const each : m_held) {
        if (const auto row = each->isLive() ? rowOf(*each) : -1; row >= 0) {
            held.push_back(row);
        }
    }
    std::sort(held.begin(), held.end());
    // Where nothing that stays is above them, they stand at the top.
    for (auto row = held.rbegin(); row != held.rend(); ++row) {
        if (std::find(todos.begin(), todos.end(), at(*row)) == todos.end()) {
            todos.insert(todos.begin(), at(*row));
        }
    }
    // From the top: then what stands above is in its place already.
    for (const auto row : held) {
        keepPlace(row, todos);
    }
    if (const auto steps = fewStepsTo(todos)) {
        applySteps(*steps, todos);
    } else {
        applyAtOnce(std::move(todos), [this](model::Entry* old) { return rowOf(*old); });
    }
}

void WidgetTodoModel::hold(model::Entry& entry) {
    letGo(entry);
    m_held.push_back(&entry);
}

int WidgetTodoModel::rowOf(const model::Entry& entry) const {
    return firstRow([&](const model::Entry* each) { return each == &entry; });
}

QString WidgetTodoModel::text(int row) const {
    return shownText(entry(row));
}

DueLabel WidgetTodoModel::dueLabel(int row) const {
    return dueLabelOf(entry(row), m_clock.now(), m_dates);
}

QString WidgetTodoModel::accessibleDescription(int row) const {
    const auto& todo = entry(row);
    QStringList parts{todo.isCompleted() ? tr("Completed") : tr("Open")};
    if (const auto schedule = todo.schedule(); !schedule.isEmpty()) {
        parts.append(toQString(
            schedule.accessibilityLabel(todo.isCompleted(), m_clock.now(), m_dates.formats())));
    }
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace korvex::ui
