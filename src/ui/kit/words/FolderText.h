#pragma once

#include "ui/kit/words/Text.h"

#include <QDir>

namespace korvex::ui {

/// The folder as its user calls it: "~/Backups" in the home folder.
inline QString folderText(const std::filesystem::path& folder) {
    const auto path = toFileName(folder);
    const auto home = QDir::homePath() + QLatin1Char('/');
    return path.startsWith(home) ? QStringLiteral("~/") + path.mid(home.size()) : path;
}

} // namespace korvex::ui
