#include "ui/kit/speech/AccessibleList.h"

#include <QAbstractItemView>
#include <QPointer>
#include <QWindow>

#include <algorithm>

namespace korvex::ui {

namespace {

/// Rows that are gone are forgotten when there are this many more than the list has.
constexpr qsizetype kForgotten = 100;

class AccessibleRow final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    AccessibleRow(AccessibleList& list, const QPersistentModelIndex& index)
        : m_view(&list.view()), m_speech(list.speech()), m_index(index) {}

    int row() const { return m_index.row(); }

    bool isValid() const override { return m_view && m_index.isValid(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_view ? m_view->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(m_view);
    }
    int childCount() const override {
        return isValid() && m_speech.rowInEditing() == row() ? 1 : 0;
    }
    QAccessibleInterface* child(int index) const override {
        return index == 0 && childCount() == 1
                   ? QAccessible::queryAccessibleInterface(m_view->viewport())
                   : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return childCount() == 1 && child && child->object() == m_view->viewport() ? 0 : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        auto* const content = child(0);
        return content ? content->childAt(x, y) : nullptr;
    }

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name) {
            const auto name = m_index.data(Qt::AccessibleTextRole).toString();
            return name.isEmpty() ? m_index.data(Qt::DisplayRole).toString() : name;
        }
        return kind == QAccessible::Description
                   ? m_index.data(Qt::AccessibleDescriptionRole).toString()
                   : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        if (!isValid()) {
            return {};
        }
        const auto place = m_view->visualRect(m_index);
        return {m_view->viewport()->mapToGlobal(place.topLeft()), place.size()};
    }
    /// Who reads the screen may ask for a row that has just gone, or whose list has.
    QAccessible::Role role() const override {
        return isValid() ? m_speech.roleOf(row()) : QAccessible::ListItem;
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        const auto flags = m_index.flags();
        state.selectable = flags.testFlag(Qt::ItemIsSelectable);
        state.focusable = state.selectable;
        state.selected = m_view->selectionModel()->isSelected(m_index);
        state.focused = m_view->hasFocus() && m_view->currentIndex() == m_index;
        state.checkable = flags.testFlag(Qt::ItemIsUserCheckable);
        state.checked = m_index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
        state.invisible = !m_view->isVisible();
        state.offscreen = !m_view->viewport()->rect().intersects(m_view->visualRect(m_index));
        m_speech.addState(row(), state);
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override {
        QStringList names;
        for (const auto& action : actions()) {
            names.append(action.name);
        }
        return names;
    }
    QString localizedActionName(const QString& name) const override { return name; }
    void doAction(const QString& name) override {
        const auto offered = actions();
        const auto wanted =
            std::find_if(offered.begin(), offered.end(),
                         [&](const RowSpeech::Action& action) { return action.name == name; });
        if (wanted != offered.end()) {
            wanted->perform();
        }
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    std::vector<RowSpeech::Action> actions() const {
        return isValid() ? m_speech.actionsOf(row()) : std::vector<RowSpeech::Action>();
    }

    QPointer<QAbstractItemView> m_view;
    RowSpeech& m_speech;
    QPersistentModelIndex m_index;
};

RowSpeech* speechOf(QAbstractItemView* view) {
    return dynamic_cast<RowSpeech*>(view);
}

} // namespace

AccessibleList* AccessibleList::of(QAbstractItemView& view) {
    auto* const speech = speechOf(&view);
    return speech ? new AccessibleList(view, *speech) : nullptr;
}

AccessibleList::AccessibleList(QAbstractItemView& view, RowSpeech& speech)
    : QAccessibleWidget(&view, QAccessible::List), m_speech(speech) {}

AccessibleList::~AccessibleList() {
    for (const auto id : std::as_const(m_rows)) {
        QAccessible::deleteAccessibleInterface(id);
    }
}

QAbstractItemView& AccessibleList::view() const {
    return *static_cast<QAbstractItemView*>(widget());
}

int AccessibleList::childCount() const {
    return view().model() ? view().model()->rowCount() : 0;
}

QAccessibleInterface* AccessibleList::child(int row) const {
    if (row < 0 || row >= childCount()) {
        return nullptr;
    }
    const QPersistentModelIndex index(view().model()->index(row, 0));
    if (const auto known = m_rows.constFind(index); known != m_rows.constEnd()) {
        return QAccessible::accessibleInterface(*known);
    }
    forgetRowsThatAreGone();
    auto* const fresh = new AccessibleRow(const_cast<AccessibleList&>(*this), index);
    m_rows.insert(index, QAccessible::registerAccessibleInterface(fresh));
    return fresh;
}

void AccessibleList::forgetRowsThatAreGone() const {
    if (m_rows.size() < childCount() + kForgotten) {
        return;
    }
    m_rows.removeIf([](const auto& each) {
        const auto isGone = !each.key().isValid();
        if (isGone) {
            QAccessible::deleteAccessibleInterface(each.value());
        }
        return isGone;
    });
}

int AccessibleList::indexOfChild(const QAccessibleInterface* child) const {
    const auto* const row = dynamic_cast<const AccessibleRow*>(child);
    return row && row->isValid() ? row->row() : -1;
}

QAccessibleInterface* AccessibleList::childAt(int x, int y) const {
    return child(view().indexAt(view().viewport()->mapFromGlobal(QPoint(x, y))).row());
}

QAccessibleInterface* AccessibleList::focusChild() const {
    return view().hasFocus() ? child(view().currentIndex().row()) : QAccessibleWidget::focusChild();
}

AccessibleRowContent* AccessibleRowContent::of(QWidget& widget) {
    auto* const view = qobject_cast<QAbstractItemView*>(widget.parentWidget());
    const bool isViewport = view && view->viewport() == &widget && speechOf(view);
    return isViewport ? new AccessibleRowContent(widget, *view) : nullptr;
}

AccessibleRowContent::AccessibleRowContent(QWidget& viewport, QAbstractItemView& view)
    : QAccessibleWidget(&viewport, QAccessible::Grouping), m_view(view) {}

QAccessibleInterface* AccessibleRowContent::parent() const {
    auto* const list = QAccessible::queryAccessibleInterface(&m_view);
    const auto row = speechOf(&m_view)->rowInEditing();
    return row < 0 ? list : list->child(row);
}

} // namespace korvex::ui
