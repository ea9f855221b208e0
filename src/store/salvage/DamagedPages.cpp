#include "store/salvage/DamagedPages.h"

#include "store/StoreError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>

namespace korvex::store {

namespace {

constexpr std::size_t kSizeInHeader = 16;
constexpr std::size_t kFirstFreeInHeader = 32;
constexpr std::size_t kUsual = 4'096;
/// To tell the size of pages from their look, so much is looked at.
constexpr std::size_t kEnoughBytes = 4 << 20;

// The first byte of a page in a tree says what it is of.
constexpr std::uint8_t kIndexInner = 2;
constexpr std::uint8_t kTableInner = 5;
constexpr std::uint8_t kIndexLeaf = 10;
constexpr std::size_t kCellCount = 3;
constexpr std::size_t kContentStart = 5;
constexpr std::size_t kLastChild = 8;
constexpr std::size_t kLeafHead = 8;
constexpr std::size_t kInnerHead = 12;

bool isInner(std::uint8_t kind) {
    return kind == kIndexInner || kind == kTableInner;
}

/// Whether a page looks like one of a tree: its cells fit between its head and its end.
bool isOfTree(const base::Bytes& page) {
    const auto kind = page[0];
    if (!isInner(kind) && kind != kIndexLeaf && kind != kTableLeaf) {
        return false;
    }
    const auto cells = numberAt(page, kCellCount, 2);
    const auto start = numberAt(page, kContentStart, 2);
    const auto content = start == 0 ? kLargestPage : std::size_t{start};
    return (isInner(kind) ? kInnerHead : kLeafHead) + std::size_t{2} * cells <= content &&
           content <= page.size();
}

std::vector<std::uint32_t> childrenOf(const base::Bytes& page) {
    std::vector<std::uint32_t> children{numberAt(page, kLastChild, 4)};
    for (std::size_t i = 0; i < numberAt(page, kCellCount, 2); ++i) {
        const auto cell = std::size_t{numberAt(page, kInnerHead + 2 * i, 2)};
        if (cell + 4 <= page.size()) {
            children.push_back(numberAt(page, cell, 4));
        }
    }
    return children;
}

} // namespace

DamagedPages::DamagedPages(const std::filesystem::path& file, std::optional<std::size_t> size)
    : m_file(::open(file.c_str(), O_RDWR | O_CLOEXEC)) {
    if (!m_file.isOpen()) {
        throwSystemError(errno);
    }
    m_size = size ? *size : sizeByLook();
    if (m_size == 0) {
        m_size = kUsual;
        const auto inHeader = numberAt(read(1), kSizeInHeader, 2);
        m_size = std::has_single_bit(inHeader) && inHeader >= kSmallestPage ? inHeader : kUsual;
    }
}

std::size_t DamagedPages::sizeByLook() {
    std::array<std::size_t, 8> ofTrees{};
    for (std::size_t i = 0; i < ofTrees.size(); ++i) {
        m_size = kSmallestPage << i;
        const auto last = std::min<std::size_t>(count(), kEnoughBytes / m_size);
        for (std::uint32_t number = 2; number <= last; ++number) {
            ofTrees[i] += isOfTree(read(number)) ? m_size : 0;
        }
    }
    // Of twice the size about as many bytes look like it, since every other page is met; of half
    // the size, half of them.
    const auto most = *std::max_element(ofTrees.begin(), ofTrees.end());
    for (std::size_t i = 0; most > 0; ++i) {
        if (ofTrees[i] >= most - most / 4) {
            return kSmallestPage << i;
        }
    }
    return 0;
}

std::uint32_t DamagedPages::count() const {
    struct stat status {};
    if (::fstat(m_file.get(), &status) != 0) {
        throwSystemError(errno);
    }
    const auto bytes = static_cast<std::uint64_t>(status.st_size);
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>((bytes + m_size - 1) / m_size, UINT32_MAX - 2));
}

base::Bytes DamagedPages::read(std::uint32_t number) const {
    base::Bytes page(m_size);
    for (std::size_t done = 0; done < page.size();) {
        const auto offset = std::uint64_t{number - 1} * m_size + done;
        const auto got = ::pread(m_file.get(), page.data() + done, page.size() - done,
                                 static_cast<off_t>(offset));
        if (got < 0) {
            throwSystemError(errno);
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return page;
}

void DamagedPages::write(std::uint32_t number, const base::Bytes& bytes) const {
    const auto offset = static_cast<off_t>(std::uint64_t{number - 1} * m_size);
    const auto written = ::pwrite(m_file.get(), bytes.data(), bytes.size(), offset);
    if (written != static_cast<ssize_t>(bytes.size())) {
        throwSystemError(written < 0 ? errno : ENOSPC);
    }
}

void DamagedPages::growTo(std::uint32_t wanted) const {
    if (count() < wanted &&
        ::ftruncate(m_file.get(), static_cast<off_t>(std::uint64_t{wanted} * m_size)) != 0) {
        throwSystemError(errno);
    }
}

std::vector<std::uint32_t> DamagedPages::roots(const Ticker& ticker) const {
    const auto last = count();
    std::vector<bool> isNamed(std::size_t{last} + 1);
    std::vector<std::uint32_t> tables;
    std::vector<std::uint32_t> leaves;
    for (std::uint32_t number = 2; number <= last; ++number) {
        ticker.tick();
        const auto page = read(number);
        if (!isOfTree(page)) {
            continue;
        }
        if (page[0] == kTableLeaf) {
            leaves.push_back(number);
        }
        if (page[0] == kTableInner) {
            tables.push_back(number);
            for (const auto child : childrenOf(page)) {
                if (child <= last) {
                    isNamed[child] = true;
                }
            }
        }
    }
    // What has pages below it is the likeliest; a single one may have been given up long ago.
    tables.insert(tables.end(), leaves.begin(), leaves.end());
    std::erase_if(tables, [&](std::uint32_t number) { return isNamed[number]; });
    return tables;
}

std::set<std::uint32_t> DamagedPages::freePages() const {
    std::set<std::uint32_t> pages;
    const auto last = count();
    auto list = numberAt(read(1), kFirstFreeInHeader, 4);
    while (list > 1 && list <= last && pages.insert(list).second) {
        const auto page = read(list);
        const auto most = static_cast<std::uint32_t>(m_size / 4 - 2);
        for (std::uint32_t i = 0; i < std::min(numberAt(page, 4, 4), most); ++i) {
            pages.insert(numberAt(page, 8 + std::size_t{4} * i, 4));
        }
        list = numberAt(page, 0, 4);
    }
    return pages;
}

std::uint32_t numberAt(const base::Bytes& page, std::size_t offset, std::size_t bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        number = number << 8U | page[offset + i];
    }
    return number;
}

base::Bytes emptyTablePage(std::size_t size) {
    base::Bytes page(size);
    page[0] = kTableLeaf;
    page[kContentStart] = static_cast<std::uint8_t>(size >> 8U);
    page[kContentStart + 1] = static_cast<std::uint8_t>(size);
    return page;
}

} // namespace korvex::store
