#include "richtext/rtf/RtfRowDefinition.h"

#include <algorithm>

namespace korvex::richtext::rtf {

namespace {

Twips limited(std::int32_t length) {
    return std::clamp(length, -kMaximumLength, kMaximumLength);
}

/// The side whose padding a word means: office suites write the top one's word for the left side,
/// and the left one's for the top.
std::size_t paddedSide(Side named, RtfDialect dialect) {
    if (dialect == RtfDialect::office && named == Side::top) {
        return static_cast<std::size_t>(Side::left);
    }
    if (dialect == RtfDialect::office && named == Side::left) {
        return static_cast<std::size_t>(Side::top);
    }
    return static_cast<std::size_t>(named);
}

} // namespace

void RowDefinition::word(const Keyword& keyword, std::int32_t parameter, RtfDialect dialect) {
    const auto length = limited(parameter);
    switch (keyword.action) {
    case Action::rowDefault:
        *this = {};
        break;
    case Action::rowLeft:
        m_left = length;
        break;
    case Action::rowGap:
        // The native dialect writes a gap that means nothing.
        if (dialect != RtfDialect::native) {
            m_padding[static_cast<std::size_t>(Side::left)] = length;
            m_padding[static_cast<std::size_t>(Side::right)] = length;
        }
        break;
    case Action::rowPadding:
        m_padding[static_cast<std::size_t>(keyword.value)] = length;
        break;
    case Action::cellEdge:
        m_next.edge = length;
        if (m_cells.size() < static_cast<std::size_t>(kMaximumColumns)) {
            m_cells.push_back(m_next);
        }
        m_next = {};
        m_border.reset();
        break;
    case Action::cellWidth:
        m_next.width = length;
        break;
    case Action::cellWidthUnit: {
        constexpr std::int32_t kTwips = 3;
        m_next.isWidthInTwips = parameter == kTwips;
        break;
    }
    case Action::cellPadding:
        m_next.padding[paddedSide(static_cast<Side>(keyword.value), dialect)] = length;
        break;
    case Action::cellBorder:
        m_border = static_cast<std::size_t>(keyword.value);
        break;
    case Action::otherBorder:
        m_border.reset();
        break;
    case Action::borderLine:
        if (m_border) {
            m_next.borders[*m_border].hasLine = keyword.value != 0;
        }
        break;
    case Action::borderWidth:
        if (m_border) {
            m_next.borders[*m_border].width = length;
        }
        break;
    case Action::borderColor:
        if (m_border) {
            m_next.borders[*m_border].color = static_cast<std::uint32_t>(parameter);
        }
        break;
    case Action::cellFill:
        m_next.fill = static_cast<std::uint32_t>(parameter);
        break;
    case Action::cellAlignment:
        m_next.alignment = static_cast<VerticalAlignment>(keyword.value);
        break;
    case Action::mergeStart:
        m_next.startsColumns = true;
        break;
    case Action::merged:
        m_next.isMerged = true;
        break;
    case Action::verticalMergeStart:
        m_next.startsRows = true;
        break;
    case Action::verticallyMerged:
        m_next.isVerticallyMerged = true;
        break;
    case Action::absentCell:
        m_next.isAbsent = true;
        break;
    default:
        break;
    }
}

} // namespace korvex::richtext::rtf
