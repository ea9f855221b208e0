#include "store/SoleHold.h"

#include "store/Statement.h"
#include "store/StoreError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

namespace korvex::store {

namespace {

constexpr std::chrono::milliseconds kWait{2};
/// Of a copy, in one go.
constexpr std::size_t kPiece = 1 << 20;

void check(bool isDone) {
    if (!isDone) {
        throwSystemError(errno);
    }
}

/// All of an open file into a new one that is not synced.
void copyFile(const base::FileDescriptor& source, const std::filesystem::path& copy) {
    check(source.isOpen());
    const base::FileDescriptor target(
        ::open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    check(target.isOpen());
    std::vector<char> piece(kPiece);
    const auto isInterrupted = [](ssize_t result) { return result < 0 && errno == EINTR; };
    for (;;) {
        const auto size = ::read(source.get(), piece.data(), piece.size());
        check(size >= 0 || isInterrupted(size));
        if (size == 0) {
            return;
        }
        for (ssize_t done = 0; done < size;) {
            const auto written =
                ::write(target.get(), piece.data() + done, static_cast<std::size_t>(size - done));
            check(written > 0 || isInterrupted(written));
            done += std::max<ssize_t>(written, 0);
        }
    }
}

/// As the system's list of locks names a file.
std::string nameInList(const struct stat& status) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "%02x:%02x:%lu", major(status.st_dev),
                  minor(status.st_dev), static_cast<unsigned long>(status.st_ino));
    return name.data();
}

/// Those with a lock on the file, which SQLite keeps there for as long as it has the file open.
std::set<pid_t> lockersOf(const std::string& file) {
    std::set<pid_t> lockers;
    std::ifstream list("/proc/locks");
    for (std::string line; std::getline(list, line);) {
        std::istringstream words(line);
        std::string number;
        std::string kind;
        std::string isBinding;
        std::string access;
        pid_t process = 0;
        std::string locked;
        if (words >> number >> kind >> isBinding >> access >> process >> locked && process > 0 &&
            process != ::getpid() && locked == file) {
            lockers.insert(process);
        }
    }
    return lockers;
}

} // namespace

std::string holdersOf(const std::filesystem::path& store) {
    struct stat status {};
    if (::stat(store.c_str(), &status) != 0) {
        return {};
    }
    std::string holders;
    for (const auto process : lockersOf(nameInList(status))) {
        const auto number = std::to_string(process);
        std::string name;
        std::getline(std::ifstream("/proc/" + number + "/comm"), name);
        if (!name.empty()) {
            holders += (holders.empty() ? "it is open in " : " and ") + name;
            holders += ", process " + number;
        }
    }
    return holders;
}

SoleHold::SoleHold(const StoreFile& file, std::chrono::milliseconds patience)
    : m_file(file), m_request(file.lockFile()) {
    try {
        // One thread at a time uses it.
        m_database = std::make_unique<SQLite::Database>(
            file.path().string(), SQLite::OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
    } catch (const SQLite::Exception& error) {
        throwSqliteError(nullptr, error.getExtendedErrorCode());
    }
    // Where it is not taken, the journal stays as it is: that of a damaged store, too.
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!tryToTake()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            throw StoreError(StoreErrorCase::busy, holdersOf(file.path()));
        }
        std::this_thread::sleep_for(kWait);
    }
}

bool SoleHold::tryToTake() {
    try {
        // Leaving the mode with a journal empties and removes it, and works for a sole connection
        // only. What is left to write then are some bytes of the header, in one sector: to undo
        // that no file is needed, which would cost three more waits for the disk. In the exclusive
        // mode the connection keeps the lock of a transaction that has ended: nothing is copied out
        // of one that writes.
        Statement leave(handle(), "PRAGMA journal_mode = MEMORY");
        while (leave.step()) {
            if (leave.text(0) != "memory") {
                return false;
            }
        }
        for (const auto* sql : {"PRAGMA locking_mode = EXCLUSIVE", "BEGIN EXCLUSIVE", "COMMIT"}) {
            Statement(handle(), sql).run();
        }
        return true;
    } catch (const StoreError& error) {
        if (error.which() == StoreErrorCase::busy) {
            return false;
        }
        throw;
    }
}

void SoleHold::copyTo(const std::filesystem::path& copy) {
    m_source = base::FileDescriptor(::open(m_file.path().c_str(), O_RDONLY | O_CLOEXEC));
    copyFile(m_source, copy);
}

} // namespace korvex::store
