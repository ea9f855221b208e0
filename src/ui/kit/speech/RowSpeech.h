#pragma once

#include <QAccessible>
#include <QPersistentModelIndex>
#include <QString>

#include <functional>
#include <vector>

class QAbstractItemView;

namespace korvex::ui {

/// What a list tells of its rows to who cannot see them, besides their texts and check states,
/// which are the model's. A view that is one is shown to screen readers as a list of such rows, and
/// what is edited in a row stands in that row (see `Accessibility`).
class RowSpeech {
public:
    /// Something that can be done with a row.
    struct Action {
        QString name;
        std::function<void()> perform;
    };

    virtual ~RowSpeech() = default;

    virtual QAccessible::Role roleOf(int) const { return QAccessible::ListItem; }
    /// What is special about the row, added to what all rows tell.
    virtual void addState(int, QAccessible::State&) const {}
    /// What can be done with it now; the first is what pressing it does.
    virtual std::vector<Action> actionsOf(int) { return {}; }
    /// The row that is edited in its place; -1 for none.
    virtual int rowInEditing() const { return -1; }
};

/// Tells screen readers what happens in a list, as far as its view does not: where the keyboard is,
/// and that the current row was ticked. Main thread.
class RowAnnouncer {
public:
    explicit RowAnnouncer(QAbstractItemView& view) : m_view(view) {}

    /// The current row is another one.
    void currentChanged();
    /// The keyboard has come to the list: told after Qt has told that the list itself has it.
    void focused();
    /// The row is selected now.
    void selected(int row);
    /// These rows may look different.
    void changed(int first, int last);

private:
    void tell(QAccessible::Event what, int row);
    bool isChecked() const;

    QAbstractItemView& m_view;
    /// The state that was told of the current row.
    bool m_wasChecked = false;
};

} // namespace korvex::ui
