#pragma once

#include <QAccessible>

#include <string>
#include <vector>

namespace korvex::tests {

/// What a screen reader finds, walking from a window down through all that is to be seen.
class AccessibleTree {
public:
    explicit AccessibleTree(QObject& window);

    /// What is wrong with the tree, a line each: a control without a name or a role, one that can
    /// be reached and not be seen, a child that its parent does not know.
    const std::vector<std::string>& problems() const { return m_problems; }
    /// "Button: New board" of every object, with one space in front for each one it is in.
    const std::string& text() const { return m_text; }
    /// The first object with this role and name; null when there is none.
    QAccessibleInterface* find(QAccessible::Role role, const QString& name) const;

private:
    void visit(QAccessibleInterface& object, QAccessibleInterface* parent, int depth);
    void check(QAccessibleInterface& object, QAccessibleInterface* parent);

    QRect m_window;
    std::vector<QAccessibleInterface*> m_objects;
    std::vector<std::string> m_problems;
    std::string m_text;
};

} // namespace korvex::tests
