#pragma once

#include "richtext/rtf/RtfWriterOutput.h"
#include "richtext/text/ParagraphStyle.h"

#include <tsl/robin_map.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korvex::richtext::rtf {

/// Numbers fonts as they are first used, and writes the table of them.
class FontNumbers {
public:
    std::int32_t of(const Font& font);
    void write(Output& output) const;

private:
    /// One number for each combination of family, bold and italic.
    std::array<std::optional<std::int32_t>, 8> m_numbers;
    std::vector<std::size_t> m_used;
};

/// Numbers colours as they are first used, and writes the tables of them; 0 stands for none.
class ColorNumbers {
public:
    std::uint32_t of(const std::optional<Color>& color);
    void write(Output& output) const;

private:
    tsl::robin_map<std::uint32_t, std::uint32_t> m_numbers;
    std::vector<Color> m_colors;
};

/// Numbers lists, and writes the tables of them. RTF knows lists of up to nine levels; each of our
/// chains of nested lists is a path through one of them, and an identity that stands in several
/// keeps its template number in all.
class ListNumbers {
public:
    struct Place {
        std::int32_t list = 0;
        std::int32_t level = 0;
    };

    /// Where the chain, which is not empty, ends. No list of it is null.
    Place of(std::span<const TextListRef> chain);
    /// The text of the next item's marker.
    std::u16string nextMarker(const TextListRef& list);
    void write(Output& output) const;

private:
    /// A chain is known by the node of its parent and its last list.
    struct Step {
        std::size_t parent;
        const TextList* list;

        bool operator==(const Step&) const = default;
    };
    struct StepHash {
        std::size_t operator()(const Step& step) const noexcept;
    };
    struct Identity {
        std::int64_t templateNumber = 0;
        std::int64_t itemsSoFar = 0;
    };

    void writeLevel(Output& output, const TextList& list, std::size_t level) const;

    std::vector<std::vector<TextListRef>> m_lists;
    std::vector<Place> m_nodes;
    tsl::robin_map<Step, std::size_t, StepHash> m_steps;
    tsl::robin_map<const TextList*, Identity> m_identities;
};

} // namespace korvex::richtext::rtf
