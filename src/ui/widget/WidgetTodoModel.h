#pragma once

#include "model/Entry.h"
#include "schedule/ScheduleClock.h"
#include "ui/kit/lists/RowModel.h"
#include "ui/todos/DueLabel.h"

#include <vector>

namespace korvex::ui {

/// The rows of a widget: open todos, and among them those whose ticks are still seen. Main thread.
class WidgetTodoModel final : public RowModel<model::Entry*> {
    Q_OBJECT

public:
    WidgetTodoModel(const schedule::ScheduleClock& clock, const DateTexts& dates,
                    QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    void setTodos(std::vector<model::Entry*> todos);
    /// Keeps a todo where it stands, whatever becomes of it, until `letGo`.
    void hold(model::Entry& entry);
    void letGo(const model::Entry& entry) { std::erase(m_held, &entry); }
    /// What the row shows has changed.
    using RowModel::touch;

    model::Entry& entry(int row) const { return *at(row); }
    /// -1 when no row shows the todo.
    int rowOf(const model::Entry& entry) const;
    QString text(int row) const;
    DueLabel dueLabel(int row) const;

private:
    QString accessibleDescription(int row) const;

    const schedule::ScheduleClock& m_clock;
    const DateTexts& m_dates;
    std::vector<model::Entry*> m_held;
};

} // namespace korvex::ui
