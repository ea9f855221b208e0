#pragma once

#include "base/FileDescriptor.h"
#include "model/EntryAttachment.h"

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace korvex::services {

/// `stem` + `addition` + `extension` of a filename, cut at a character's end to what file systems
/// take.
std::string fittingFilename(std::string_view filename, std::string_view addition = {});

/// Creates a file in an open folder, fills it and returns it, still open. Throws
/// std::filesystem::filesystem_error that names `path`, and leaves no file then.
base::FileDescriptor writeNewFile(int folder, const std::string& name, ::mode_t mode,
                                  const base::Bytes& bytes, const std::filesystem::path& path);

} // namespace korvex::services
