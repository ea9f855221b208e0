#include "ui/settings/BackupWords.h"

#include "ui/kit/words/Text.h"

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

QString contentsText(const storage::BackupSummary& backup) {
    return QStringLiteral("%1, %2").arg(counted("%Ln board(s)", backup.boards),
                                        counted("%Ln (entry|entries)", backup.entries));
}

} // namespace korvex::ui
