#pragma once

#include "backup/BackupDocument.h"

#include <cstddef>

namespace korvex::bench {

inline constexpr std::size_t kBackupEntries = 100'000;
/// Their contents and formatted texts, in bytes. As a file it has 150 MB.
inline constexpr std::size_t kBackupContents = 100'000'000;

/// So many formatted texts on one board, with other identifiers each time.
backup::BackupDocument largeBackup();

} // namespace korvex::bench
