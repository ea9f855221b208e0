#pragma once

#include <QString>
#include <QStringList>

#include <filesystem>
#include <functional>
#include <vector>

class QWidget;

namespace korvex::ui {

/// Asks the user for files or a folder, in the desktop's own dialog where it has one.
struct FileQuestion {
    enum class Kind { fileToWrite, fileToRead, filesToRead, folder };

    QString title;
    Kind kind;
    /// Where the dialog opens: a folder that is there and answers, for it is looked at from the
    /// main thread. Empty for the user's documents.
    QString folder = {};
    /// Of a file to write, as it is proposed.
    QString name = {};
    /// As Qt writes them, such as "Pictures (*.png)"; the first one is chosen at the beginning.
    QStringList filters = {};

    using Receive = std::function<void(const std::vector<std::filesystem::path>&)>;
    /// Asks in a dialog of this widget's window; afterwards the keyboard is on the widget again, or
    /// where it was if that takes none. `receive` is called while the widget lives, with what was
    /// chosen, as it was chosen; never where nothing was.
    void ask(QWidget& asker, Receive receive) const;
};

} // namespace korvex::ui
