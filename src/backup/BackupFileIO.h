#pragma once

#include "backup/BackupDocument.h"

#include <cstdint>
#include <filesystem>
#include <span>

namespace korvex::backup::BackupFileIO {

/// The one byte form of a document: JSON without blanks, the keys of each object in ascending
/// order, absent fields left out; bytes of a text that are no UTF-8 become the replacement
/// character. Throws `tooLarge`, and `invalidDocument` for a date that is no finite number.
base::Bytes encode(const BackupDocument& document);
/// Reads what `encode` writes, lenient only where a document of another version may differ: unknown
/// keys are passed over, null is absent. Throws `tooLarge` (judged by the length alone) and
/// otherwise `invalidDocument`. Validates no more than the form.
BackupDocument decode(std::span<const std::uint8_t> bytes);

/// A regular file's bytes. Throws `tooLarge` before anything of a larger file is read,
/// `invalidDocument` for what is no regular file, and std::filesystem::filesystem_error.
base::Bytes readFile(const std::filesystem::path& file);

} // namespace korvex::backup::BackupFileIO
