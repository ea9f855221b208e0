#pragma once

#include "base/Needle.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::services {

/// Texts under numbers, side by side in a few large blocks, so that all of them can be searched
/// from end to end. One thread.
class TextArena {
public:
    using Number = std::uint32_t;

    /// Where to write a text, which `close` takes in then. Up to `expectedBytes` cost no move.
    std::string& open(std::size_t expectedBytes);
    /// What was appended to the opened block since is the text of `number`, instead of what it was.
    void close(Number number);
    void remove(Number number);
    void clear();

    bool contains(Number number) const {
        return number < m_places.size() && m_places[number].block != kNowhere;
    }
    /// Valid until the next call that changes anything.
    std::string_view text(Number number) const;
    /// In bytes, of all texts and what is left of former ones.
    std::size_t size() const;

    /// Appends the numbers of the texts that contain all of `needles`, in no order. No needle may
    /// have white space in it, and the longest should come first.
    void find(std::span<const base::Needle> needles, std::vector<Number>& to) const;

private:
    static constexpr std::uint32_t kNowhere = std::numeric_limits<std::uint32_t>::max();
    static constexpr std::size_t kBlockBytes = 256 * 1024;

    struct Region {
        std::uint32_t offset;
        /// It is `kNowhere` for a text that is gone.
        Number number;
    };
    struct Block {
        std::string bytes;
        std::vector<Region> regions;
        std::size_t goneBytes = 0;
    };
    struct Place {
        std::uint32_t block = kNowhere;
        std::uint32_t region = 0;
    };

    static std::string_view text(const Block& block, std::size_t region);
    static bool isMostlyGone(const Block& block);
    /// Calls `visit` with the number of each text of the block that contains the needle, and the
    /// text.
    template <typename Visitor>
    static void find(const Block& block, const base::Needle& needle, Visitor&& visit);
    std::size_t rarest(std::span<const base::Needle> needles) const;
    void compact(std::uint32_t block);

    std::vector<Block> m_blocks;
    /// The one that new texts go to.
    std::uint32_t m_open = kNowhere;
    std::size_t m_openedAt = 0;
    std::vector<Place> m_places;
};

} // namespace korvex::services
