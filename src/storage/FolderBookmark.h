#pragma once

#include "base/Bytes.h"
#include "base/FileDescriptor.h"
#include "base/Uuid.h"

#include <filesystem>
#include <optional>
#include <span>

namespace korvex::storage {

/// A folder held open: what is done by its `path` is done in this very folder, though it be renamed
/// or another file system be mounted over it meanwhile. A folder that is removed takes nothing
/// more, and its file system stays mounted while it is held.
class HeldFolder {
public:
    /// Opens a folder by a path, or by its name in `parent`, where it may be no symbolic link to
    /// one. Throws std::filesystem::filesystem_error.
    explicit HeldFolder(const std::filesystem::path& folder);
    HeldFolder(const HeldFolder& parent, const std::filesystem::path& name);

    /// Means the folder in this process only.
    std::filesystem::path path() const;
    int descriptor() const { return m_folder.get(); }
    /// Whether both hold the same folder.
    bool is(const HeldFolder& other) const;
    /// What was made, renamed and removed in it is so for good. Throws
    /// std::filesystem::filesystem_error.
    void sync() const;

private:
    base::FileDescriptor m_folder;
    std::filesystem::path m_name;
};

/// A folder that the user has chosen, so that it is known again: its path, and an identifier that
/// stands in a marker file in it. A path alone would do with any folder that later stands there,
/// such as the empty one that a disk was mounted on.
class FolderBookmark {
public:
    static constexpr const char* kMarkerName = ".korvex-backup-folder";

    /// Marks the folder, or takes the mark that it has: several installations may share one. Throws
    /// AutomaticBackupError `notSaved`.
    static FolderBookmark make(const std::filesystem::path& folder);

    /// The form in which settings keep it (docs/formats/settings.md).
    base::Bytes bytes() const;
    /// Absent for what `bytes` does not write.
    static std::optional<FolderBookmark> ofBytes(std::span<const std::uint8_t> bytes);
    /// The same for who cannot do without. Throws AutomaticBackupError `unknownFolder`.
    static FolderBookmark read(std::span<const std::uint8_t> bytes);

    /// Where the folder was when it was chosen.
    const std::filesystem::path& path() const { return m_path; }

    /// The folder, if it is still there and the same. Throws AutomaticBackupError `chooseAgain`.
    HeldFolder open() const;

private:
    FolderBookmark(std::filesystem::path path, base::Uuid marker)
        : m_path(std::move(path)), m_marker(marker) {}

    std::filesystem::path m_path;
    base::Uuid m_marker;
};

} // namespace korvex::storage
