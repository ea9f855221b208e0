#include "storage/FolderBookmark.h"

#include "base/FileReplacement.h"
#include "base/SmallFile.h"
#include "base/Text.h"
#include "storage/AutomaticBackupError.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <system_error>

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;

constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

constexpr std::array<std::uint8_t, 8> kMagic{'K', 'V', 'X', 'F', 'L', 'D', 'R', '1'};
constexpr std::size_t kMarkerOffset = kMagic.size();
constexpr std::size_t kPathOffset = kMarkerOffset + sizeof(base::Uuid::bytes);

/// More than an identifier, for who wrote one by hand.
constexpr std::size_t kMaximumMarkerBytes = 4096;

[[noreturn]] void fail(const char* what, const fs::path& folder) {
    throw fs::filesystem_error(what, folder, {errno, std::generic_category()});
}

std::optional<base::Uuid> markerOf(const std::optional<std::string>& text) {
    return text ? base::Uuid::parse(base::trimmed(*text)) : std::nullopt;
}

std::optional<base::Uuid> markerIn(const HeldFolder& folder) {
    return markerOf(
        base::readSmallFile(folder.path() / FolderBookmark::kMarkerName, kMaximumMarkerBytes));
}

/// Gives the folder a mark, for good, unless it has got one meanwhile: who was told of that must
/// find it again. `before`: what is no mark, which is replaced, or `not_found`.
std::error_code mark(const fs::path& file, fs::file_type before) {
    using Existing = base::StagedFile::Existing;
    const auto text = base::Uuid::random().text() + "\n";
    base::StagedFile staged;
    auto error = staged.open(file, std::nullopt);
    error = error ? error : staged.write(text);
    if (error) {
        return error;
    }
    // It says nothing, and who shares the folder has to read it. Where that cannot be said, as on
    // file systems without permissions, it is of use to this user all the same.
    const auto share = [](const fs::path& mark) {
        std::error_code ignored;
        fs::permissions(mark, fs::perms::group_read | fs::perms::others_read, fs::perm_options::add,
                        ignored);
    };
    share(staged.path());
    error = before == fs::file_type::not_found ? staged.commit(Existing::keep)
                                               : std::make_error_code(std::errc::not_supported);
    if (error == std::errc::file_exists) {
        return {};
    }
    // Not every file system can keep what is there: then the last one of two holds.
    for (const auto reason :
         {std::errc::not_supported, std::errc::invalid_argument, std::errc::operation_not_permitted,
          std::errc::function_not_supported}) {
        if (error == reason) {
            error = staged.commit(Existing::replace);
            if (!error) {
                share(file); // it has the permissions of the one before
            }
            return error;
        }
    }
    return error;
}

struct stat statusOf(const HeldFolder& folder) {
    struct stat status {};
    if (::fstat(folder.descriptor(), &status) != 0) {
        fail("stat", folder.path());
    }
    return status;
}

} // namespace

HeldFolder::HeldFolder(const fs::path& folder)
    : m_folder(::open(folder.c_str(), kFolder)), m_name(folder) {
    if (!m_folder.isOpen()) {
        fail("open", folder);
    }
}

HeldFolder::HeldFolder(const HeldFolder& parent, const fs::path& name)
    : m_folder(::openat(parent.descriptor(), name.c_str(), kFolder | O_NOFOLLOW)), m_name(name) {
    if (!m_folder.isOpen()) {
        fail("open", name);
    }
}

fs::path HeldFolder::path() const {
    return "/proc/self/fd/" + std::to_string(m_folder.get());
}

bool HeldFolder::is(const HeldFolder& other) const {
    const auto mine = statusOf(*this);
    const auto theirs = statusOf(other);
    return mine.st_dev == theirs.st_dev && mine.st_ino == theirs.st_ino;
}

void HeldFolder::sync() const {
    // Not every file system has folders that can be synced.
    if (::fsync(m_folder.get()) != 0 && errno != EINVAL) {
        fail("fsync", m_name);
    }
}

FolderBookmark FolderBookmark::make(const fs::path& folder) {
    const auto refuse = [] { return AutomaticBackupError(AutomaticBackupErrorCase::notSaved); };
    try {
        const auto path = fs::absolute(folder).lexically_normal();
        const HeldFolder held(path);
        auto marker = markerIn(held);
        if (!marker) {
            // One that is there and cannot be read now may be that of other installations.
            const auto file = held.path() / kMarkerName;
            const auto type = fs::symlink_status(file).type();
            const auto text = type == fs::file_type::regular
                                  ? base::readSmallFile(file, kMaximumMarkerBytes)
                                  : std::nullopt;
            if (type != fs::file_type::not_found && !text) {
                throw refuse();
            }
            // By now it may be that of another program.
            marker = markerOf(text);
            if (!marker && mark(file, type)) {
                throw refuse();
            }
            // That of another program, if one was quicker.
            marker = markerIn(held);
        }
        if (!marker) {
            throw refuse();
        }
        return {path, *marker};
    } catch (const fs::filesystem_error&) {
        throw refuse();
    }
}

base::Bytes FolderBookmark::bytes() const {
    const auto& path = m_path.native();
    base::Bytes bytes(kMagic.begin(), kMagic.end());
    bytes.insert(bytes.end(), m_marker.bytes.begin(), m_marker.bytes.end());
    bytes.insert(bytes.end(), path.begin(), path.end());
    return bytes;
}

std::optional<FolderBookmark> FolderBookmark::ofBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() <= kPathOffset || !std::equal(kMagic.begin(), kMagic.end(), bytes.begin())) {
        return std::nullopt;
    }
    base::Uuid marker;
    const auto path = bytes.subspan(kPathOffset);
    std::copy_n(bytes.begin() + kMarkerOffset, marker.bytes.size(), marker.bytes.begin());
    return FolderBookmark(std::string(path.begin(), path.end()), marker);
}

FolderBookmark FolderBookmark::read(std::span<const std::uint8_t> bytes) {
    if (auto bookmark = ofBytes(bytes)) {
        return *std::move(bookmark);
    }
    throw AutomaticBackupError(AutomaticBackupErrorCase::unknownFolder);
}

HeldFolder FolderBookmark::open() const {
    try {
        HeldFolder folder(m_path);
        if (markerIn(folder) == m_marker) {
            return folder;
        }
    } catch (const fs::filesystem_error&) {
        // Whatever the reason, the folder cannot be had.
    }
    throw AutomaticBackupError(AutomaticBackupErrorCase::chooseAgain);
}

} // namespace korvex::storage
