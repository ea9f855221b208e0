#pragma once

#include <QString>

#include <filesystem>
#include <functional>

class QWidget;

namespace korvex::ui {

/// Asks the user for a file or folder, in a dialog of this widget's window. `receive` is called
/// while the widget lives, with what was chosen; never where nothing was.
namespace FileQuestion {

using Receive = std::function<void(const std::filesystem::path&)>;

void backupToWrite(QWidget& asker, const QString& name, Receive receive);
void backupToRead(QWidget& asker, Receive receive);
void folder(QWidget& asker, const QString& title, Receive receive);

} // namespace FileQuestion

} // namespace korvex::ui
