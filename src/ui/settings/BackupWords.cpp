#include "ui/settings/BackupWords.h"

#include "ui/kit/words/Text.h"

#include <QDir>

namespace korvex::ui {

namespace {

QString counted(const char* words, std::size_t count) {
    return QCoreApplication::translate("korvex::ui::BackupWords", words, nullptr,
                                       static_cast<int>(count));
}

} // namespace

QString momentText(base::Instant moment, const DateTexts& dates) {
    return toQString(dates.formats().dayAndShortTime(moment));
}

QString folderText(const std::filesystem::path& folder) {
    const auto path = toQString(folder.native());
    const auto home = QDir::homePath() + QLatin1Char('/');
    return path.startsWith(home) ? QStringLiteral("~/") + path.mid(home.size()) : path;
}

QString contentsText(const storage::BackupSummary& backup) {
    return QStringLiteral("%1, %2").arg(counted("%n board(s)", backup.boards),
                                        counted("%n (entry|entries)", backup.entries));
}

} // namespace korvex::ui
