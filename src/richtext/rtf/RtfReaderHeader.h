#pragma once

#include "richtext/rtf/RtfBudget.h"
#include "richtext/rtf/RtfKeywords.h"
#include "richtext/text/Attributes.h"

#include <tsl/robin_map.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvex::richtext::rtf {

/// What a document's font comes to here.
struct FontEntry {
    FontFamily family = FontFamily::system;
    bool isBold = false;
    bool isItalic = false;
    std::int32_t codePage = 0;
};

/// The fonts of a document, in entries with or without a group of their own.
class FontTable {
public:
    explicit FontTable(Budget& budget) : m_budget(budget) {}

    void setDocumentCodePage(std::int32_t codePage) { m_documentCodePage = codePage; }
    /// These take control words and text of the table.
    void word(const Keyword& keyword, std::int32_t parameter);
    void text(char byte);
    /// Ends an entry that does not say its end itself.
    void endEntry();

    /// A font that is not there is the system's, in the document's code page.
    FontEntry font(std::int32_t number) const;

private:
    /// Longer names are cut; this is enough for those of variable fonts.
    static constexpr std::size_t kMaximumName = 256;
    static constexpr std::int32_t kUnknownCharset = 1;

    struct Entry {
        std::optional<std::int32_t> number;
        bool isFixedPitch = false;
        std::int32_t charset = kUnknownCharset;
        std::int32_t codePage = 0;
        std::string name;
    };

    Budget& m_budget;
    tsl::robin_map<std::int32_t, FontEntry> m_fonts;
    std::int32_t m_documentCodePage = 0;
    Entry m_entry;
};

/// The colours of a document. The second table says more exactly, and by name, what the first does.
class ColorTable {
public:
    void word(const Keyword& keyword, std::int32_t parameter);
    void text(char byte);
    void extendedWord(const Keyword& keyword, std::int32_t parameter);
    void extendedText(char byte);

    /// A colour of the table; absent for 0 and for what is not in it.
    std::optional<Color> color(std::uint32_t index) const;

private:
    static constexpr std::size_t kMaximumName = 64;
    /// A colour has red, green, blue and its opacity.
    static constexpr std::size_t kComponents = 4;

    struct Extended {
        /// How many of the components tell red, green and blue: 3, or 1 for all of them; 0 where
        /// the first table's colour holds.
        std::size_t standardComponents = 0;
        std::array<std::int32_t, kComponents> components{};
        std::size_t componentCount = 0;
        bool isNamed = false;
        std::string name;
    };

    std::vector<std::optional<Color>> m_colors;
    std::optional<Color> m_color;
    std::size_t m_extendedIndex = 0;
    Extended m_extended;
};

} // namespace korvex::richtext::rtf
