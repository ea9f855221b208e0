#include "richtext/rtf/RtfReaderDocument.h"
#include "richtext/rtf/RtfReaderFields.h"

#include <utility>

namespace korvex::richtext::rtf {

void DocumentReader::open() {
    m_unitsToSkip = 0;
    m_isOptional = false;
    finishBytes();
    if (m_groups.size() == kMaximumGroups) {
        ++m_uncountedGroups;
        return;
    }
    m_groups.push_back({m_group, m_text.characters()});
    m_group.isField = false;
    m_group.isInset = false;
    m_group.hasChangedParagraph = false;
}

void DocumentReader::close() {
    m_unitsToSkip = 0;
    m_isOptional = false;
    finishBytes();
    if (m_uncountedGroups > 0) {
        --m_uncountedGroups;
        return;
    }
    if (m_groups.size() <= 1) {
        // The last paragraph still has the styles of this group.
        m_isOver = true;
        return;
    }
    if (m_group.isInset) {
        m_text.endInset();
    }
    const auto destination = m_group.destination;
    const auto& outer = m_groups.back();
    if (m_text.characters() != outer.characters) {
        m_text.editCharacters() = outer.characters;
    }
    if (m_group.hasChangedParagraph) {
        m_text.editParagraph() = std::move(m_paragraphs.back());
        m_paragraphs.pop_back();
    }
    m_group = outer.group;
    m_groups.pop_back();
    leave(destination);
}

bool DocumentReader::isExpected(Destination destination) const {
    const auto outer = outerDestination();
    switch (destination) {
    case Destination::fieldInstruction:
        return m_groups.back().group.isField && m_group.destination == Destination::body;
    case Destination::list:
        return outer == Destination::listTable;
    case Destination::listLevel:
        return outer == Destination::list || outer == Destination::overrideLevel;
    case Destination::levelText:
    case Destination::levelNumbers:
    case Destination::levelMarker:
        return outer == Destination::listLevel;
    case Destination::listOverride:
        return outer == Destination::overrideTable;
    case Destination::overrideLevel:
        return outer == Destination::listOverride;
    case Destination::textBeforeNumber:
    case Destination::textAfterNumber:
        return outer == Destination::numbering;
    case Destination::unicodeAlternative:
        return outer == Destination::alternatives;
    case Destination::note:
        return m_group.destination == Destination::body && !m_text.characters().isHidden;
    case Destination::shape:
    case Destination::textBox:
        return m_group.destination == Destination::body ||
               m_group.destination == Destination::shape;
    case Destination::shapeResult:
        return m_group.destination == Destination::shape && m_text.length() == m_group.shapeStart;
    case Destination::objectResult:
        return m_group.destination == Destination::object;
    default:
        return m_group.destination == Destination::body;
    }
}

void DocumentReader::enter(Destination destination) {
    // Of groups that are not told apart all text is kept; and the document's own is no other.
    if (m_uncountedGroups > 0 || m_groups.size() <= 1) {
        return;
    }
    finishBytes();
    switch (destination) {
    case Destination::body:
        return;
    case Destination::field:
        m_group.isField = true;
        return;
    case Destination::graphic:
        if (m_groups.size() > 2) {
            m_groups.back().group.destination = Destination::skipped;
        }
        destination = Destination::skipped;
        break;
    case Destination::unicodeAlternative:
        if (isExpected(destination)) {
            m_group.destination = m_groups[m_groups.size() - 2].group.destination;
            return;
        }
        break;
    default:
        break;
    }
    m_group.destination = isExpected(destination) ? destination : Destination::skipped;
    switch (m_group.destination) {
    case Destination::skipped:
        m_tokens.skipGroup();
        break;
    case Destination::note:
        enterInset(Inset::note);
        break;
    case Destination::textBox:
    case Destination::shapeResult:
        enterInset(Inset::box);
        break;
    case Destination::objectResult:
        m_group.destination = Destination::body;
        break;
    case Destination::shape:
        if (outerDestination() == Destination::body) {
            m_group.shapeStart = m_text.length();
        }
        break;
    case Destination::fieldInstruction:
        m_instruction.clear();
        break;
    default:
        m_lists.begin(m_group.destination);
        break;
    }
}

/// What stands beside the text is no part of a link or a heading in it.
void DocumentReader::enterInset(Inset inset) {
    m_group.destination = Destination::body;
    m_group.isInset = true;
    m_text.beginInset(inset);
    auto& characters = m_text.editCharacters();
    characters.link = 0;
    characters.heading = 0;
}

void DocumentReader::leave(Destination destination) {
    if (m_group.destination == Destination::skipped) {
        m_tokens.skipGroup();
    }
    if (destination == m_group.destination) {
        if (destination == Destination::fontTable) {
            m_fonts.endEntry();
        }
        return;
    }
    switch (destination) {
    case Destination::fontTable:
        m_fonts.endEntry();
        m_text.forgetAttributes();
        break;
    case Destination::colorTable:
    case Destination::extendedColorTable:
        m_text.forgetAttributes();
        break;
    case Destination::fieldInstruction:
        // A field of another kind within a link is a part of it.
        if (auto target = linkOf(m_instruction); !target.empty()) {
            m_text.editCharacters().link = m_text.link(std::move(target));
        }
        m_instruction.clear();
        break;
    case Destination::numbering:
        editParagraph().numbering = m_text.numbering(m_lists.numbering());
        break;
    default:
        m_lists.end(destination);
        break;
    }
}

} // namespace korvex::richtext::rtf
