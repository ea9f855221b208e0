#include "store/salvage/JournalPages.h"

#include "store/StoreError.h"
#include "store/salvage/DamagedPages.h"

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>

namespace korvex::store {

namespace {

// The head of the journal. Its sum is over what stands before that.
constexpr std::size_t kHead = 32;
constexpr std::size_t kFormInHead = 4;
constexpr std::size_t kPageSizeInHead = 8;
constexpr std::size_t kSaltInHead = 16;
constexpr std::size_t kSumInHead = 24;
/// The last bit says in which order the bytes are that are summed.
constexpr std::uint32_t kMagic = 0x377f0682;
constexpr std::uint32_t kForm = 3'007'000;
constexpr std::size_t kSalt = 8;

// The head of each page in it: its number, of the last one of a commit how many pages the database
// has, the salt, and the sum, which is over the first two and the page.
constexpr std::size_t kFrameHead = 24;
constexpr std::size_t kCommitInFrame = 4;
constexpr std::size_t kSaltInFrame = 8;
constexpr std::size_t kSumInFrame = 16;

} // namespace

JournalPages::JournalPages(const base::FileDescriptor& journal, const Ticker& ticker)
    : m_journal(journal) {
    if (m_journal.isOpen() && readHead()) {
        readFrames(ticker);
    }
}

std::optional<std::size_t> JournalPages::pageSize() const {
    return m_pageSize > 0 ? std::optional(m_pageSize) : std::nullopt;
}

bool JournalPages::read(off_t from, base::Bytes& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const auto got = ::pread(m_journal.get(), bytes.data() + done, bytes.size() - done,
                                 from + static_cast<off_t>(done));
        if (got < 0 && errno != EIO && errno != EINTR) {
            throwSystemError(errno);
        }
        m_isWhole = m_isWhole && (got >= 0 || errno != EIO);
        if (got == 0 || !m_isWhole) {
            return false;
        }
        done += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    }
    return true;
}

bool JournalPages::readHead() {
    base::Bytes head(kHead);
    if (!read(0, head)) {
        return false;
    }
    const auto magic = numberAt(head, 0, 4);
    const auto pageSize = numberAt(head, kPageSizeInHead, 4);
    if ((magic & ~1U) != kMagic || numberAt(head, kFormInHead, 4) != kForm ||
        !std::has_single_bit(pageSize) || pageSize < kSmallestPage || pageSize > kLargestPage) {
        return false;
    }
    m_isHighestFirst = (magic & 1U) != 0;
    m_sum = sum({}, head, 0, kSumInHead);
    if (m_sum != sumAt(head, kSumInHead)) {
        return false;
    }
    m_salt.assign(head.begin() + kSaltInHead, head.begin() + kSaltInHead + kSalt);
    m_pageSize = pageSize;
    return true;
}

void JournalPages::readFrames(const Ticker& ticker) {
    base::Bytes frame(kFrameHead + m_pageSize);
    std::map<std::uint32_t, off_t> uncommitted;
    for (off_t at = kHead; read(at, frame); at += static_cast<off_t>(frame.size())) {
        ticker.tick();
        const auto number = numberAt(frame, 0, 4);
        m_sum = sum(sum(m_sum, frame, 0, kSaltInFrame), frame, kFrameHead, m_pageSize);
        if (number == 0 || m_sum != sumAt(frame, kSumInFrame) ||
            !std::equal(m_salt.begin(), m_salt.end(), frame.begin() + kSaltInFrame)) {
            return;
        }
        uncommitted[number] = at + off_t{kFrameHead};
        if (const auto count = numberAt(frame, kCommitInFrame, 4); count != 0) {
            m_pageCount = count;
            for (const auto& [page, place] : uncommitted) {
                m_places[page] = place;
            }
            uncommitted.clear();
        }
    }
}

JournalPages::Sum JournalPages::sum(Sum before, const base::Bytes& bytes, std::size_t from,
                                    std::size_t size) const {
    const auto word = [&](std::size_t at) {
        const auto number = numberAt(bytes, at, 4);
        return m_isHighestFirst ? number : __builtin_bswap32(number);
    };
    for (auto at = from; at < from + size; at += 8) {
        before.first += word(at) + before.second;
        before.second += word(at + 4) + before.first;
    }
    return before;
}

JournalPages::Sum JournalPages::sumAt(const base::Bytes& bytes, std::size_t offset) {
    return {numberAt(bytes, offset, 4), numberAt(bytes, offset + 4, 4)};
}

void JournalPages::writeTo(const DamagedPages& pages) const {
    base::Bytes page(m_pageSize);
    for (const auto& [number, place] : m_places) {
        if (::pread(m_journal.get(), page.data(), page.size(), place) !=
            static_cast<ssize_t>(page.size())) {
            throwSystemError(EIO); // it was there a moment ago
        }
        pages.write(number, page);
    }
    // SQLite refuses tables that begin behind the end, and with them all others.
    pages.growTo(m_pageCount);
}

} // namespace korvex::store
