#include "ui/workspace/ProgramName.h"

#include "app/StoreLocation.h"
#include "ui/kit/words/FolderText.h"

namespace korvex::ui {

namespace {

const auto kProgram = QStringLiteral("Korvex");

/// The program last: else the window system would add it once more.
QString programOf(const std::filesystem::path& folder) {
    return QStringLiteral("%1 – %2").arg(folderText(folder), kProgram);
}

} // namespace

QString programName(const Workspace& workspace) {
    const auto& file = workspace.context.container().configuration().file;
    return workspace.isUsersOwn ? kProgram : programOf(file.parent_path());
}

QString programName(const std::filesystem::path& dataDirectory) {
    return app::isUsersOwn(dataDirectory) ? kProgram : programOf(dataDirectory);
}

} // namespace korvex::ui
