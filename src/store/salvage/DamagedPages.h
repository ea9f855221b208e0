#pragma once

#include "base/Bytes.h"
#include "base/FileDescriptor.h"
#include "store/salvage/Ticker.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <vector>

namespace korvex::store {

/// The pages of a database's file that SQLite does not open, one by one. Nobody else has it open.
/// Throws StoreError where the file cannot be read or written.
class DamagedPages {
public:
    /// `size`: of a page, where something else than the file tells.
    explicit DamagedPages(const std::filesystem::path& file, std::optional<std::size_t> size = {});

    /// Where nothing else tells, as most of the pages look; what the header says, where none does.
    std::size_t size() const { return m_size; }
    /// The last one may have been cut.
    std::uint32_t count() const;
    /// Counted from 1. What the file does not have is zero.
    base::Bytes read(std::uint32_t number) const;
    /// Also a part of a page.
    void write(std::uint32_t number, const base::Bytes& bytes) const;
    /// So many at least; those that it did not have are zero.
    void growTo(std::uint32_t count) const;
    /// Where trees of table pages begin: what no other page names as one below it. The likeliest
    /// first.
    std::vector<std::uint32_t> roots(const Ticker& ticker) const;
    /// Those that the header, which must be the file's own, leads to as in use no more. What stands
    /// in them was deleted, or is elsewhere by now.
    std::set<std::uint32_t> freePages() const;

private:
    /// 0 where nothing tells.
    std::size_t sizeByLook();

    base::FileDescriptor m_file;
    std::size_t m_size = 0;
};

/// What pages may measure.
inline constexpr std::size_t kSmallestPage = 512;
inline constexpr std::size_t kLargestPage = 65'536;

/// The first byte of a page of a table that has no pages below it.
inline constexpr std::uint8_t kTableLeaf = 13;

/// A number of the header or of a page, the highest byte first.
std::uint32_t numberAt(const base::Bytes& page, std::size_t offset, std::size_t bytes);
/// A page of a table that has no rows.
base::Bytes emptyTablePage(std::size_t size);

} // namespace korvex::store
