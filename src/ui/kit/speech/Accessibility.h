#pragma once

#include <QAccessible>

class QLineEdit;
class QString;
class QWidget;

namespace korvex::ui {

/// What screen readers are told of the windows' own controls, where Qt cannot know it. Main thread.
namespace Accessibility {

/// Lets lists that are `RowSpeech` be shown as such. For their constructors; more calls do nothing.
void install();
/// Says what a widget is: an alert, a dialog, an item of a list. For the constructor of who makes
/// it.
void setRole(QWidget& widget, QAccessible::Role role);
/// Names the button that empties a field; Qt has no word for it.
void nameClearButton(QLineEdit& field, const QString& name);
/// Names an alert by what it says, which is read out as soon as it is in sight.
void say(QWidget& alert, const QString& message);

} // namespace Accessibility

} // namespace korvex::ui
