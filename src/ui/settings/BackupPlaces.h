#pragma once

#include "app/UserDefaults.h"
#include "ui/workspace/FolderLook.h"
#include "ui/workspace/Workspace.h"

#include <QString>

#include <filesystem>
#include <functional>

class QWidget;

namespace korvex::ui {

/// Where backups are written and read: asks the user, beginning where that was last. `receive` is
/// called with what was chosen, while the asking widget lives. Main thread; the workspace outlives
/// it.
class BackupPlaces {
public:
    explicit BackupPlaces(const Workspace& workspace)
        : m_defaults(workspace.defaults), m_look(workspace.threads, workspace.runLoop) {}

    using Receive = std::function<void(const std::filesystem::path&)>;
    /// `name` is proposed. What is received is as it was typed, see `completed`.
    void fileToWrite(QWidget& asker, const QString& name, Receive receive);
    void fileToRead(QWidget& asker, Receive receive);
    void folder(QWidget& asker, const QString& title, Receive receive);

    /// The file to be written where this was chosen: what was typed without the extension of a
    /// backup gets it, unless there is a file of one of the two names, for nobody was asked about
    /// any other than that one. Any thread: it looks into the folder.
    static std::filesystem::path completed(std::filesystem::path chosen);

private:
    void askForFile(FileQuestion question, QWidget& asker, Receive receive);
    void ask(FileQuestion question, QWidget& asker, Receive receive);
    QString lastFolder() const;
    void remember(const std::filesystem::path& folder) const;

    app::UserDefaults& m_defaults;
    FolderLook m_look;
};

} // namespace korvex::ui
