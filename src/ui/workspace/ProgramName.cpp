#include "ui/workspace/ProgramName.h"

#include "ui/kit/words/FolderText.h"

namespace korvex::ui {

QString programName(const Workspace& workspace) {
    auto name = QStringLiteral("Korvex");
    if (workspace.isUsersOwn) {
        return name;
    }
    const auto& file = workspace.context.container().configuration().file;
    // The program last: else the window system would add it once more.
    return QStringLiteral("%1 – %2").arg(folderText(file.parent_path()), name);
}

} // namespace korvex::ui
