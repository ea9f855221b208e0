#include "ui/AccessibleTree.h"

#include <QMetaEnum>
#include <QWidget>

#include <algorithm>

namespace korvex::tests {

namespace {

std::string nameOf(QAccessible::Role role) {
    const auto* const key = QMetaEnum::fromType<QAccessible::Role>().valueToKey(role);
    return key ? key : "role " + std::to_string(role);
}

std::string describe(QAccessibleInterface& object) {
    std::string result = nameOf(object.role());
    if (const auto name = object.text(QAccessible::Name); !name.isEmpty()) {
        result += ": " + name.toStdString();
    } else if (object.object()) {
        result += std::string(" of a ") + object.object()->metaObject()->className();
    }
    return result;
}

/// Qt's own fields have parts that only they are asked for.
bool isPartOfField(QAccessibleInterface& parent) {
    return parent.role() == QAccessible::SpinBox || parent.role() == QAccessible::ComboBox ||
           parent.role() == QAccessible::ScrollBar;
}

} // namespace

AccessibleTree::AccessibleTree(QObject& window) {
    if (auto* const root = QAccessible::queryAccessibleInterface(&window)) {
        m_window = root->rect();
        visit(*root, nullptr, 0);
    }
}

QAccessibleInterface* AccessibleTree::find(QAccessible::Role role, const QString& name) const {
    const auto found = std::find_if(m_objects.begin(), m_objects.end(), [&](auto* object) {
        return object->role() == role && object->text(QAccessible::Name) == name;
    });
    return found == m_objects.end() ? nullptr : *found;
}

void AccessibleTree::visit(QAccessibleInterface& object, QAccessibleInterface* parent, int depth) {
    if (parent && (object.state().invisible || isPartOfField(*parent))) {
        return;
    }
    m_objects.push_back(&object);
    m_text += std::string(static_cast<std::size_t>(depth), ' ') + describe(object) + '\n';
    check(object, parent);
    for (int i = 0; i < object.childCount(); ++i) {
        auto* const child = object.child(i);
        if (!child) {
            m_problems.push_back(describe(object) + ": child " + std::to_string(i) + " is missing");
            continue;
        }
        if (object.indexOfChild(child) != i && !child->state().invisible) {
            m_problems.push_back(describe(object) + " does not know its child " + describe(*child));
        }
        visit(*child, &object, depth + 1);
    }
}

void AccessibleTree::check(QAccessibleInterface& object, QAccessibleInterface* parent) {
    const auto role = object.role();
    const auto state = object.state();
    const auto complain = [&](const char* what) {
        m_problems.push_back(describe(object) + ' ' + what);
    };
    const bool isVague = role == QAccessible::NoRole || role == QAccessible::Client;
    const bool hasName = !object.text(QAccessible::Name).isEmpty();
    if (role == QAccessible::NoRole) {
        complain("has no role");
    }
    // A list has the keyboard for its rows; what takes it for another is no control itself.
    const auto* const widget = qobject_cast<QWidget*>(object.object());
    const bool isControl = state.focusable && !(widget && widget->focusProxy());
    if (isControl && isVague) {
        complain("can be reached and does not say what it is");
    }
    if ((isControl || role == QAccessible::AlertMessage || role == QAccessible::Dialog ||
         role == QAccessible::Button || role == QAccessible::List) &&
        !hasName) {
        complain("has no name");
    }
    if (isControl && !state.offscreen && !object.rect().intersects(m_window)) {
        complain("can be reached and is not to be seen");
    }
    if (parent && object.parent() != parent) {
        complain(("is not a child of " + describe(*parent)).c_str());
    }
    if (role == QAccessible::ListItem && parent && parent->role() != QAccessible::List) {
        complain("is an item of no list");
    }
}

} // namespace korvex::tests
