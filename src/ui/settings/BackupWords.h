#pragma once

#include "storage/BackupFile.h"
#include "ui/workspace/DateTexts.h"

#include <QString>

namespace korvex::ui {

/// "Nov 22, 2026, 4:15 PM", or its like.
QString momentText(base::Instant moment, const DateTexts& dates);
/// "3 boards, 12 entries"
QString contentsText(const storage::BackupSummary& backup);

} // namespace korvex::ui
