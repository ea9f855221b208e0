#include "store/StoreLock.h"

#include "store/StoreError.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <thread>

namespace korvex::store {

namespace {

constexpr std::array<char, 8> kMagic{'K', 'V', 'X', 'L', 'O', 'C', 'K', '1'};

/// The file's bytes: the magic, the store's identifier, the revision in host order. One machine
/// writes and reads it.
struct FileForm {
    std::array<char, 8> magic = kMagic;
    std::array<std::uint8_t, 16> storeID{};
    std::int64_t revision = 0;
    /// What a killed program has left of its `SoleRequest` ends with the next commit.
    std::array<char, 8> soleRequest{};
};
static_assert(sizeof(FileForm) == 40);
/// Older programs write no more.
constexpr std::size_t kRecordBytes = offsetof(FileForm, soleRequest);

using Request = std::array<char, 8>;
constexpr Request kNotAsked{};
constexpr Request kAsked{1};

Request readRequest(const base::FileDescriptor& file) {
    auto what = kNotAsked;
    static_cast<void>(::pread(file.get(), what.data(), what.size(), kRecordBytes));
    return what;
}

void writeRequest(const base::FileDescriptor& file, const Request& what) {
    static_cast<void>(::pwrite(file.get(), what.data(), what.size(), kRecordBytes));
}

constexpr std::chrono::microseconds kShortestWait{20};
constexpr std::chrono::microseconds kLongestWait{2000};

} // namespace

StoreLock::StoreLock(std::filesystem::path file, std::chrono::milliseconds timeout)
    : m_file(std::move(file)), m_timeout(timeout) {}

StoreLock::~StoreLock() {
    assert(m_depth == 0);
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

void StoreLock::openFile() {
    m_descriptor = ::open(m_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_descriptor < 0) {
        if (errno == EACCES || errno == EROFS || errno == EPERM) {
            throw StoreError(StoreErrorCase::readOnly, std::strerror(errno));
        }
        if (errno == ENOENT) {
            throw StoreError(StoreErrorCase::incomplete, std::strerror(errno));
        }
        throwSystemError(errno);
    }
}

bool StoreLock::tryLock() {
    if (m_descriptor < 0) {
        openFile();
    }
    if (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            throw StoreError(StoreErrorCase::inputOutput, std::strerror(errno));
        }
        return false;
    }
    // A lock on a file that someone removed excludes nobody: take the one that stands there now.
    struct stat status {};
    if (::fstat(m_descriptor, &status) == 0 && status.st_nlink == 0) {
        ::close(m_descriptor);
        m_descriptor = -1;
        return false;
    }
    return true;
}

void StoreLock::acquire() {
    if (!acquireWithin(m_timeout)) {
        throw StoreError(StoreErrorCase::busy);
    }
}

bool StoreLock::acquireWithin(std::chrono::milliseconds patience) {
    if (m_depth == 0) {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        auto wait = kShortestWait;
        while (!tryLock()) {
            if (std::chrono::steady_clock::now() >= deadline) {
                return false;
            }
            std::this_thread::sleep_for(wait);
            wait = std::min(wait * 2, kLongestWait);
        }
    }
    ++m_depth;
    return true;
}

void StoreLock::release() noexcept {
    assert(m_depth > 0);
    if (--m_depth == 0) {
        ::flock(m_descriptor, LOCK_UN);
    }
}

std::optional<StoreLock::Record> StoreLock::record() const {
    assert(isHeld());
    FileForm form;
    if (::pread(m_descriptor, &form, kRecordBytes, 0) != static_cast<ssize_t>(kRecordBytes) ||
        form.magic != kMagic) {
        return std::nullopt;
    }
    return Record{.storeID = {form.storeID}, .revision = form.revision};
}

bool StoreLock::setRecord(const Record& record) noexcept {
    assert(isHeld());
    const FileForm form{.storeID = record.storeID.bytes, .revision = record.revision};
    return ::pwrite(m_descriptor, &form, sizeof form, 0) == static_cast<ssize_t>(sizeof form);
}

SoleRequest::SoleRequest(const std::filesystem::path& lockFile)
    : m_file(::open(lockFile.c_str(), O_RDWR | O_CLOEXEC)),
      m_stoodBefore(readRequest(m_file) == kAsked) {
    writeRequest(m_file, kAsked);
}

SoleRequest::~SoleRequest() {
    writeRequest(m_file, m_stoodBefore ? kAsked : kNotAsked);
}

bool SoleRequest::stands(const std::filesystem::path& lockFile) {
    const base::FileDescriptor file(::open(lockFile.c_str(), O_RDONLY | O_CLOEXEC));
    return readRequest(file) == kAsked && ::flock(file.get(), LOCK_SH | LOCK_NB) != 0 &&
           errno == EWOULDBLOCK;
}

} // namespace korvex::store
