#pragma once

#include "backup/BackupDocument.h"
#include "base/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string_view>

namespace korvex::backup::BackupFileIO {

/// Told, often, how many more bytes of a file are done. What it throws ends the work.
using Advance = std::function<void(std::size_t bytes)>;

/// The one byte form of a document: JSON without blanks, the keys of each object in ascending
/// order, absent fields left out; bytes of a text that are no UTF-8 become the replacement
/// character. Throws `tooLarge`, and `invalidDocument` for a date that is no finite number.
base::Bytes encode(const BackupDocument& document);
/// The same in pieces, in order, without having all of it in memory. Throws `tooLarge` also after
/// some.
void encode(const BackupDocument& document, const std::function<void(std::string_view)>& sink);
/// Reads what `encode` writes, lenient only where a document of another version may differ: unknown
/// keys are passed over, null is absent. Throws `tooLarge` (judged by the length alone) and
/// otherwise `invalidDocument`. Validates no more than the form.
BackupDocument decode(std::span<const std::uint8_t> bytes, const Advance& advance = {});
/// Whether `decode` would give just this document, without making another one. False too for what
/// it would not read.
bool holds(std::span<const std::uint8_t> bytes, const BackupDocument& document,
           const Advance& advance = {});

/// A regular file's bytes. Throws `tooLarge` before anything of a larger file is read,
/// `invalidDocument` for what is no regular file, and std::filesystem::filesystem_error.
base::Bytes readFile(const std::filesystem::path& file, const Advance& advance = {});
/// The same in two steps: what is open is read whatever becomes of its name meanwhile.
base::FileDescriptor openFile(const std::filesystem::path& file);
base::Bytes readFile(const base::FileDescriptor& open, const std::filesystem::path& file,
                     const Advance& advance = {});

} // namespace korvex::backup::BackupFileIO
