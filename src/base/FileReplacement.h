#pragma once

#include "base/FileDescriptor.h"

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>
#include <system_error>

namespace korvex::base {

/// New contents for a file, all or nothing: written beside it, synced, renamed over it. A symbolic
/// link stays one, its target is replaced; the permissions stay, and a new file is its owner's
/// alone. What is not committed is removed with the object; what a killed program left of the same
/// file is removed by the next one that stages it. One thread at a time.
class StagedFile {
public:
    StagedFile() = default;
    ~StagedFile();
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    /// Missing folders are made for good, with this mode less the user's mask; where it is absent
    /// they are missed. Once.
    [[nodiscard]] std::error_code open(const std::filesystem::path& file,
                                       std::optional<mode_t> folderMode = 0777);
    /// Appends.
    [[nodiscard]] std::error_code write(std::string_view contents);
    /// Puts what was written on the disk, and out of the memory of the system: who reads `path`
    /// then sees what the disk has.
    [[nodiscard]] std::error_code sync();
    /// Gives the file its contents, synced, for good. After a failure it is as it was, or has them
    /// and might lose them in a power cut. A file that is to be kept fails it with `file_exists`,
    /// whenever it came.
    enum class Existing { replace, keep };
    [[nodiscard]] std::error_code commit(Existing existing = Existing::replace);

    /// Where the contents stand until they are committed.
    const std::filesystem::path& path() const { return m_staged; }

private:
    std::filesystem::path m_target;
    std::filesystem::path m_staged;
    /// Locked, so that nobody takes it for left behind.
    FileDescriptor m_file;
    /// How much was written, and how much of it is on its way to the disk.
    off_t m_written = 0;
    off_t m_started = 0;
};

/// The same of contents that are in memory. Any thread.
std::error_code replaceFile(const std::filesystem::path& file, std::string_view contents);

/// Renames a file over another one, for good. Any thread.
std::error_code moveFile(const std::filesystem::path& from, const std::filesystem::path& to);

/// The same where no file may stand: fails with `file_exists`.
std::error_code moveToNew(const std::filesystem::path& from, const std::filesystem::path& to);

/// Puts what was written to a file on the disk.
std::error_code syncFile(const std::filesystem::path& file);
/// Makes what was done in a folder last.
std::error_code syncFolder(const std::filesystem::path& folder);

/// Gives a file that is to be replaced another name as well, for good; where a file system knows no
/// second names it loses the first one. Fails where the new name is taken. Any thread.
std::error_code keepUnder(const std::filesystem::path& file, const std::filesystem::path& name);

/// Makes each folder on the way that is missing, for good, with this mode less the user's mask. Any
/// thread.
std::error_code makeFolders(const std::filesystem::path& folder, mode_t mode);

/// Follows a chain of symbolic links to what it leads to, whether that exists or not.
std::error_code followLinks(std::filesystem::path& file);

/// Removes what killed programs left of such targets in a folder, by their names; what is being
/// written stays. Any thread.
void removeLeftBehind(const std::filesystem::path& folder,
                      const std::function<bool(std::string_view target)>& isMeant);

} // namespace korvex::base
