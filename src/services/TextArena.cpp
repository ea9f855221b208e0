#include "services/TextArena.h"

#include <algorithm>
#include <utility>

namespace korvex::services {

namespace {

/// Stands behind each text: no needle has white space, so none is found across it.
constexpr char kSeparator = '\n';

} // namespace

std::string& TextArena::open(std::size_t expectedBytes) {
    const auto isFull = [&] {
        const auto& block = m_blocks[m_open];
        return !block.bytes.empty() && block.bytes.size() + expectedBytes >= kBlockBytes;
    };
    if (m_open != kNowhere && isFull() && isMostlyGone(m_blocks[m_open])) {
        compact(m_open);
    }
    if (m_open == kNowhere || isFull()) {
        m_open = static_cast<std::uint32_t>(m_blocks.size());
        m_blocks.emplace_back().bytes.reserve(std::max(kBlockBytes, expectedBytes + 1));
    }
    auto& block = m_blocks[m_open];
    m_openedAt = block.bytes.size();
    return block.bytes;
}

void TextArena::close(Number number) {
    remove(number);
    if (number >= m_places.size()) {
        m_places.resize(number + 1);
    }
    auto& block = m_blocks[m_open];
    m_places[number] = {m_open, static_cast<std::uint32_t>(block.regions.size())};
    block.regions.push_back({static_cast<std::uint32_t>(m_openedAt), number});
    block.bytes.push_back(kSeparator);
}

void TextArena::remove(Number number) {
    if (!contains(number)) {
        return;
    }
    const auto place = std::exchange(m_places[number], {});
    auto& block = m_blocks[place.block];
    block.goneBytes += text(block, place.region).size() + 1;
    block.regions[place.region].number = kNowhere;
    if (place.block != m_open && isMostlyGone(block)) {
        compact(place.block);
    }
}

void TextArena::clear() {
    m_blocks.clear();
    m_places.clear();
    m_open = kNowhere;
}

std::string_view TextArena::text(Number number) const {
    const auto& place = m_places[number];
    return text(m_blocks[place.block], place.region);
}

std::size_t TextArena::size() const {
    std::size_t bytes = 0;
    for (const auto& block : m_blocks) {
        bytes += block.bytes.size();
    }
    return bytes;
}

bool TextArena::isMostlyGone(const Block& block) {
    return block.goneBytes > block.bytes.size() / 2;
}

std::string_view TextArena::text(const Block& block, std::size_t region) {
    const std::size_t start = block.regions[region].offset;
    const auto end =
        region + 1 < block.regions.size() ? block.regions[region + 1].offset : block.bytes.size();
    return std::string_view(block.bytes).substr(start, end - start - 1);
}

void TextArena::compact(std::uint32_t index) {
    auto& block = m_blocks[index];
    Block compacted;
    compacted.bytes.reserve(index == m_open ? kBlockBytes : block.bytes.size() - block.goneBytes);
    for (std::size_t i = 0; i < block.regions.size(); ++i) {
        const auto number = block.regions[i].number;
        if (number == kNowhere) {
            continue;
        }
        m_places[number].region = static_cast<std::uint32_t>(compacted.regions.size());
        compacted.regions.push_back({static_cast<std::uint32_t>(compacted.bytes.size()), number});
        compacted.bytes += text(block, i);
        compacted.bytes.push_back(kSeparator);
    }
    block = std::move(compacted);
}

template <typename Visitor>
void TextArena::find(const Block& block, const base::Needle& needle, Visitor&& visit) {
    const std::string_view bytes = block.bytes;
    auto region = block.regions.begin();
    for (std::size_t position = 0; position < bytes.size();) {
        const auto hit = needle.find(bytes, position);
        if (hit == std::string_view::npos) {
            break;
        }
        // Mostly it is in this one or the next, or else far away.
        if (region + 1 != block.regions.end() && (region + 1)->offset <= hit) {
            ++region;
            if (region + 1 != block.regions.end() && (region + 1)->offset <= hit) {
                region = std::upper_bound(region, block.regions.end(), hit,
                                          [](std::size_t offset, const Region& each) {
                                              return offset < each.offset;
                                          }) -
                         1;
            }
        }
        const auto found = text(block, static_cast<std::size_t>(region - block.regions.begin()));
        if (region->number != kNowhere) {
            visit(region->number, found);
        }
        position = region->offset + found.size() + 1;
    }
}

/// Judged by a block in the middle, among the longest.
std::size_t TextArena::rarest(std::span<const base::Needle> needles) const {
    constexpr std::size_t kJudged = 8;
    std::size_t best = 0;
    auto fewest = std::numeric_limits<std::size_t>::max();
    for (std::size_t i = 0; i < std::min(needles.size(), kJudged); ++i) {
        std::size_t count = 0;
        find(m_blocks[m_blocks.size() / 2], needles[i], [&](auto, auto) { ++count; });
        if (count < fewest) {
            best = i;
            fewest = count;
        }
    }
    return best;
}

void TextArena::find(std::span<const base::Needle> needles, std::vector<Number>& to) const {
    if (m_blocks.empty()) {
        return;
    }
    const auto first = needles.size() > 1 ? rarest(needles) : 0;
    for (const auto& block : m_blocks) {
        find(block, needles[first], [&](Number number, std::string_view found) {
            for (std::size_t i = 0; i < needles.size(); ++i) {
                if (i != first && !needles[i].isIn(found)) {
                    return;
                }
            }
            to.push_back(number);
        });
    }
}

} // namespace korvex::services
