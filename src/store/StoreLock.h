#pragma once

#include "base/FileDescriptor.h"
#include "base/Uuid.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>

namespace korvex::store {

/// The write lock that all programs on one store share: an exclusive `flock` on a file beside the
/// store. Every commit and every checkpoint runs under it, since SQLite before 3.51.3 can corrupt a
/// WAL store when connections write and checkpoint at the same moment. The file also records the
/// revision that was last committed, so that a journal that was cut or removed is noticed, and so
/// that a watcher of the file learns of every commit. The file is never removed or replaced.
class StoreLock {
public:
    StoreLock(std::filesystem::path file, std::chrono::milliseconds timeout);
    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

    /// Takes the lock; calls nest. Throws StoreError: `busy` after the timeout, `readOnly` or
    /// `unreadable` when the file cannot be opened.
    void acquire();
    /// The same with a patience of its own; false when that was not enough.
    bool acquireWithin(std::chrono::milliseconds patience);
    void release() noexcept;
    /// How long `acquire` waits from now on.
    void setTimeout(std::chrono::milliseconds timeout) { m_timeout = timeout; }
    bool isHeld() const { return m_depth > 0; }

    struct Record {
        base::Uuid storeID;
        std::int64_t revision = 0;
    };
    /// What the last commit left; absent in a new or foreign file. The lock must be held.
    std::optional<Record> record() const;
    /// Writes what `record` reads. It is not synced: after a power loss it may be older than the
    /// store, never newer. Whether it was written: a failure only costs a notice that may never be
    /// needed.
    bool setRecord(const Record& record) noexcept;

    /// Holds the lock for a scope.
    class Guard {
    public:
        explicit Guard(StoreLock* lock) : m_lock(lock) {
            if (m_lock) {
                m_lock->acquire();
            }
        }
        /// Releases a lock that is held already.
        Guard(StoreLock& lock, std::adopt_lock_t) : m_lock(&lock) {}
        ~Guard() {
            if (m_lock) {
                m_lock->release();
            }
        }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        StoreLock* m_lock;
    };

private:
    void openFile();
    bool tryLock();

    std::filesystem::path m_file;
    std::chrono::milliseconds m_timeout;
    int m_descriptor = -1;
    int m_depth = 0;
};

/// Says in the store's lock file, for as long as this lives, that whoever holds the write lock must
/// be alone with the store: programs that only show it let go of it meanwhile, and whoever watches
/// the file is told at once. It is void when nobody holds the lock, so that of a killed program
/// nothing is left. One that is made within another leaves that one as it is. The write lock must
/// be held all the time; any thread.
class SoleRequest {
public:
    /// A failure costs the notice: others are then waited for in vain, as for those that do not
    /// look.
    explicit SoleRequest(const std::filesystem::path& lockFile);
    ~SoleRequest();
    SoleRequest(const SoleRequest&) = delete;
    SoleRequest& operator=(const SoleRequest&) = delete;

    /// Whether another program asks so now. Waits for nobody.
    static bool stands(const std::filesystem::path& lockFile);

private:
    base::FileDescriptor m_file;
    bool m_stoodBefore;
};

} // namespace korvex::store
