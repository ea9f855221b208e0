#include "richtext/rtf/RtfReaderFields.h"

#include "base/Utf16.h"

#include <algorithm>

namespace korvex::richtext::rtf {

namespace {

/// The words of an instruction: bare, in quotes, or a backslash with a letter.
class Instruction {
public:
    struct Word {
        std::u16string text;
        bool isSwitch = false;
    };

    explicit Instruction(std::u16string_view text) : m_rest(text) {}

    bool isAtEnd() {
        const auto start = m_rest.find_first_not_of(u" \t\r\n");
        m_rest.remove_prefix(std::min(start, m_rest.size()));
        return m_rest.empty();
    }
    /// Not at the end.
    Word next() {
        if (m_rest.front() == u'"') {
            return {quoted()};
        }
        if (m_rest.front() == u'\\') {
            const auto word = m_rest.substr(0, 2);
            m_rest.remove_prefix(word.size());
            return {std::u16string(word.substr(1)), true};
        }
        const auto word = m_rest.substr(0, m_rest.find_first_of(u" \t\r\n\""));
        m_rest.remove_prefix(word.size());
        return {std::u16string(word)};
    }

private:
    std::u16string quoted() {
        std::u16string text;
        m_rest.remove_prefix(1);
        while (!m_rest.empty() && m_rest.front() != u'"') {
            const auto isEscape = m_rest.front() == u'\\' && m_rest.size() > 1 &&
                                  (m_rest[1] == u'"' || m_rest[1] == u'\\');
            text.push_back(m_rest[isEscape ? 1 : 0]);
            m_rest.remove_prefix(isEscape ? 2 : 1);
        }
        m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
        return text;
    }

    std::u16string_view m_rest;
};

bool isHyperlink(std::u16string_view word) {
    constexpr std::u16string_view kName = u"HYPERLINK";
    return std::equal(
        word.begin(), word.end(), kName.begin(), kName.end(),
        [](char16_t unit, char16_t upper) { return unit == upper || unit == upper - u'A' + u'a'; });
}

} // namespace

std::string linkOf(std::u16string_view text) {
    Instruction instruction(text);
    if (instruction.isAtEnd() || !isHyperlink(instruction.next().text)) {
        return {};
    }
    std::u16string target;
    std::u16string place;
    bool hasTarget = false;
    while (!instruction.isAtEnd()) {
        auto word = instruction.next();
        if (!word.isSwitch) {
            target = hasTarget ? target : std::move(word.text);
            hasTarget = true;
            continue;
        }
        // A place in the target, a tip and a frame have a word of their own.
        const auto hasWord = word.text == u"l" || word.text == u"o" || word.text == u"t";
        if (hasWord && !instruction.isAtEnd()) {
            auto value = instruction.next();
            place = word.text == u"l" ? std::move(value.text) : place;
        }
    }
    if (!place.empty()) {
        target += u'#';
        target += place;
    }
    return base::utf8(target);
}

} // namespace korvex::richtext::rtf
