#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace korvex::richtext::rtf {

/// Text that stands beside a paragraph in its document, and within it here.
enum class Inset : std::uint8_t {
    /// A note, in brackets behind its mark.
    note,
    /// What is written in a drawing, on lines of its own.
    box,
};

/// Which insets the text that comes is in, and whether a line ends before it. What opens an inset
/// and what separates lines is written only with the words that follow, so that nothing is left of
/// empty ones.
class Insets {
public:
    bool isEmpty() const { return m_insets.empty(); }
    /// Whether something must be written before the next unit.
    bool isPending() const { return m_isBroken || m_opened < m_insets.size(); }
    /// Whether the innermost inset has no words yet; blanks before them mean nothing.
    bool isAtStart() const { return m_opened < m_insets.size(); }

    void begin(Inset inset) { m_insets.push_back(inset); }
    /// What stands behind the innermost inset, which ends.
    std::u16string_view end() {
        const auto inset = m_insets.back();
        m_insets.pop_back();
        if (m_opened <= m_insets.size()) {
            return {};
        }
        --m_opened;
        m_isBroken = inset == Inset::box;
        return inset == Inset::note ? u"]" : u"";
    }

    /// The line ends, if words have come in this inset.
    void breakLine() { m_isBroken = m_isBroken || !isAtStart(); }
    /// The paragraph has ended, and with it its lines.
    void forgetBreak() { m_isBroken = false; }

    /// Where the next unit stands in its paragraph.
    enum class Place { atStart, behindText };
    /// Calls `put` with what stands before the next unit.
    template <typename Put>
    void open(Place place, Put&& put) {
        constexpr std::u16string_view kBreak = u"\u2028";
        auto isAtLineStart = place == Place::atStart;
        if (m_isBroken && !isAtLineStart) {
            put(kBreak);
            isAtLineStart = true;
        }
        m_isBroken = false;
        for (; m_opened < m_insets.size(); ++m_opened) {
            if (m_insets[m_opened] == Inset::note) {
                put(isAtLineStart ? std::u16string_view(u"[") : std::u16string_view(u" ["));
                isAtLineStart = false;
            } else if (!isAtLineStart) {
                put(kBreak);
                isAtLineStart = true;
            }
        }
    }

private:
    std::vector<Inset> m_insets;
    /// Of the insets, how many have words already.
    std::size_t m_opened = 0;
    bool m_isBroken = false;
};

} // namespace korvex::richtext::rtf
