#include "ui/kit/speech/Accessibility.h"

#include "ui/kit/speech/AccessibleList.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QAction>
#include <QLineEdit>

namespace korvex::ui {

namespace {

constexpr const char* kRoleProperty = "korvexAccessibleRole";

/// A widget that was told what it is. A button stays one that can be pressed, whatever it looks
/// like to the reader.
class AccessibleControl final : public QAccessibleWidget {
public:
    AccessibleControl(QWidget* widget, QAccessible::Role role) : QAccessibleWidget(widget, role) {}

    QString text(QAccessible::Text kind) const override {
        auto result = QAccessibleWidget::text(kind);
        if (result.isEmpty() && kind == QAccessible::Name && button()) {
            result = button()->text();
        }
        return result;
    }
    QAccessible::State state() const override {
        auto result = QAccessibleWidget::state();
        if (button() && button()->isCheckable()) {
            result.selectable = true;
            result.selected = button()->isChecked();
        }
        return result;
    }
    QStringList actionNames() const override {
        auto names = QAccessibleWidget::actionNames();
        if (button() && button()->isEnabled()) {
            names.prepend(pressAction());
        }
        return names;
    }
    void doAction(const QString& name) override {
        if (button() && name == pressAction()) {
            button()->click();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    QAbstractButton* button() const { return qobject_cast<QAbstractButton*>(widget()); }
};

QAccessibleInterface* make(const QString&, QObject* object) {
    auto* const widget = qobject_cast<QWidget*>(object);
    if (!widget) {
        return nullptr;
    }
    if (const auto role = widget->property(kRoleProperty); role.isValid()) {
        return new AccessibleControl(widget, static_cast<QAccessible::Role>(role.toInt()));
    }
    if (auto* const view = qobject_cast<QAbstractItemView*>(widget)) {
        return AccessibleList::of(*view);
    }
    return AccessibleRowContent::of(*widget);
}

} // namespace

void Accessibility::setRole(QWidget& widget, QAccessible::Role role) {
    widget.setProperty(kRoleProperty, static_cast<int>(role));
    install();
    // Qt asks what a widget is with the first event about it, which may have been its name, and
    // keeps the answer.
    auto* const former = QAccessible::queryAccessibleInterface(&widget);
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(former));
}

void Accessibility::install() {
    QAccessible::installFactory(make); // which Qt remembers once
}

void Accessibility::nameClearButton(QLineEdit& field, const QString& name) {
    field.setClearButtonEnabled(true);
    if (auto* const clear = field.findChild<QAction*>(QStringLiteral("_q_qlineeditclearaction"))) {
        clear->setText(name);
    }
}

void Accessibility::say(QWidget& alert, const QString& message) {
    alert.setAccessibleName(message);
    if (!message.isEmpty() && QAccessible::isActive()) {
        QAccessibleEvent event(&alert, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace korvex::ui
