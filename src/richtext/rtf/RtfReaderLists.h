#pragma once

#include "richtext/rtf/RtfBudget.h"
#include "richtext/rtf/RtfDialect.h"
#include "richtext/rtf/RtfKeywords.h"
#include "richtext/text/ParagraphStyle.h"

#include <tsl/robin_map.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::richtext::rtf {

/// The lists of a document: the table of lists, the table that gives paragraphs their numbers, and
/// the numberings that old writers put into the paragraphs.
class ListTable {
public:
    explicit ListTable(Budget& budget) : m_budget(budget) {}

    /// Native documents name each list by its level's template number; in others equal numbers
    /// mean no more than a common origin.
    void setDialect(RtfDialect dialect) { m_dialect = dialect; }

    /// These four take what stands in the groups of the tables, of which `destination` is the
    /// innermost.
    void begin(Destination destination);
    void word(const Keyword& keyword, std::int32_t parameter);
    void text(Destination destination, std::u16string_view text);
    void end(Destination destination);

    /// The lists of a paragraph with \ls and \ilvl, from the outermost, as deep as the table goes;
    /// none for a number that is not in it. Valid until the next call.
    std::span<const TextListRef> chain(std::int32_t number, std::int32_t level);
    /// The numbering whose group has just ended.
    TextList numbering() const;

private:
    struct Level {
        TextList list;
        std::int32_t templateNumber = 0;
        /// The list as paragraphs share it, made when the first one asks for it.
        TextListRef identity;
    };
    struct LevelText {
        std::optional<std::u16string> marker;
        std::u16string text;
        std::int32_t kind = 0;
        std::optional<std::int32_t> start;
        std::int32_t templateNumber = 0;

        TextList list() const;
    };
    /// What is said of one level of a list for some of its paragraphs.
    struct OverrideLevel {
        /// A format of its own, with its start.
        std::optional<TextList> list;
        std::optional<std::int32_t> start;
    };
    struct Override {
        std::int32_t listId = 0;
        std::int32_t number = 0;
        std::vector<OverrideLevel> levels;
    };
    /// What a paragraph's number leads to.
    struct Numbered {
        std::size_t list = 0;
        std::vector<OverrideLevel> overrides;
        std::vector<TextListRef> chain;
    };

    void endList();
    void endOverride();
    TextListRef identity(Level& level);

    Budget& m_budget;
    RtfDialect m_dialect = RtfDialect::office;
    std::vector<std::vector<Level>> m_lists;
    tsl::robin_map<std::int32_t, std::size_t> m_listsById;
    tsl::robin_map<std::int32_t, Numbered> m_numbered;
    tsl::robin_map<std::int32_t, TextListRef> m_byTemplate;

    // What is being read.
    std::vector<Level> m_levels;
    LevelText m_level;
    std::int32_t m_listId = 0;
    Override m_override;
    OverrideLevel m_overrideLevel;
    bool m_isInOverride = false;
    bool m_overridesStart = false;
    std::u16string m_textBefore;
    std::u16string m_textAfter;
};

} // namespace korvex::richtext::rtf
