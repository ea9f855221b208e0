#pragma once

#include "base/Bytes.h"
#include "base/FileLock.h"
#include "base/Log.h"
#include "storage/Work.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace korvex::storage {

/// The folder in which a store is kept as it was before it was replaced, held for as long as this
/// lives: no other program replaces that store or takes that back meanwhile.
///
/// The store itself keeps which file has what its last replacement replaced (`identity`, written in
/// the transaction of the replacement). So nothing is guessed after a kill, and the file that is
/// named is not given up before the store has been replaced once more, for good. Any thread, one at
/// a time.
class RecoveryFolder {
public:
    /// What the store names, if anything: `ModelContainer::replacementNote`.
    using Named = std::optional<std::string>;
    /// A file with all that is in it.
    struct Kept {
        std::filesystem::path file;
        base::Bytes contents;
    };
    /// Beside the recovery snapshot `file`, or that itself: the one that the store names, wherever
    /// it stands just now. Holds nothing: another program may go on there. Throws FileError and
    /// Cancelled.
    static std::optional<Kept> find(const std::filesystem::path& file, const Named& named,
                                    Work& work);

    enum class Missing { make, refuse };
    /// `file` is the recovery snapshot. Throws RestoreError `running` when another one holds the
    /// folder for longer than the patience, and FileError. Where there is no folder, and none is to
    /// be made: RestoreError `nothingToTakeBack`.
    RecoveryFolder(const std::filesystem::path& file, Missing missing,
                   std::chrono::milliseconds patience = kPatience);
    /// What was written beside the snapshot to take a restore back goes, unless the store may name
    /// it. The snapshot that an import has written stays.
    ~RecoveryFolder();
    RecoveryFolder(const RecoveryFolder&) = delete;
    RecoveryFolder& operator=(const RecoveryFolder&) = delete;

    /// What tells a snapshot's file from any other.
    static std::string identity(std::span<const std::uint8_t> contents);

    /// Where a program was killed when it had taken a restore back and not tidied up, that is done
    /// now. Throws FileError, as all that follow, and Cancelled.
    void settle(const Named& named, Work& work);
    /// The snapshot is about to be written over the one that is there, which is kept beside it
    /// until the store is replaced. Where the new one is to be written.
    const std::filesystem::path& makeRoom(const Named& named, Work& work);
    /// The same while a restore is taken back: then both have to be there.
    const std::filesystem::path& makeRoomBeside();
    /// The new one is about to be written. One beside the snapshot goes with this until it is
    /// saved, also where it has its name already and only the folder could not be synced.
    void beginWriting() { m_isOurs = m_isBeside && !m_wasBeside; }

    /// From here on the store may name the file that was written.
    void beginSaving() { m_isOurs = false; }
    /// It was not saved after all.
    void saveFailed() { beginWriting(); }
    /// The store names it: it becomes the snapshot, and all others go. Where it stands: in the
    /// place of the snapshot, unless it could not be moved there.
    std::filesystem::path saved(const base::Logger& log);

    static constexpr std::chrono::seconds kPatience{2};

private:
    std::filesystem::path m_file;
    /// A snapshot of what a restore brought, before that is taken back.
    std::filesystem::path m_beside;
    /// The snapshot before the one that an import has written.
    std::filesystem::path m_former;
    base::FileLock m_lock;
    /// Whether the new one is written beside the snapshot, and whether one stood there before.
    bool m_isBeside = false;
    bool m_wasBeside = false;
    /// What stands beside is made here, and the store does not name it.
    bool m_isOurs = false;
};

} // namespace korvex::storage
