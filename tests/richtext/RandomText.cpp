#include "RandomText.h"

#include <algorithm>
#include <array>
#include <limits>

namespace korvex::richtext {

namespace {

constexpr std::size_t kDeepestTable = 3;

} // namespace

AttributedString RandomText::next(int paragraphs) {
    preparePools();
    AttributedString text;
    appendBlock(text, {}, paragraphs);
    if (oneIn(3) && !text.isEmpty()) {
        text.remove({text.length() - 1, 1});
    }
    return text;
}

int RandomText::below(int limit) {
    return static_cast<int>(m_random() % static_cast<std::uint64_t>(limit));
}

/// Few values, so that they come again.
void RandomText::preparePools() {
    static const std::vector<std::u16string> kMarkers{u"{disc}",
                                                      u"{circle}",
                                                      u"{square}",
                                                      u"{hyphen}",
                                                      u"{check}",
                                                      u"{decimal}.",
                                                      u"({lower-alpha})",
                                                      u"{upper-alpha})",
                                                      u"\u00A7{lower-roman}",
                                                      u"{upper-roman}",
                                                      u"{none}",
                                                      u"{box}",
                                                      u"",
                                                      u"plain",
                                                      u" \\}; {decimal}\u2028"};
    m_lists.clear();
    for (int count = 1 + below(6); count > 0; --count) {
        const auto start = oneIn(2) ? 1 : oneIn(2) ? below(50) : -below(5);
        m_lists.push_back(std::make_shared<TextList>(TextList{oneOf(kMarkers), start}));
    }
    if (m_kind == Kind::broken) {
        m_lists.push_back(nullptr);
        m_lists.push_back(std::make_shared<TextList>(
            TextList{std::u16string(100, u'm'), std::numeric_limits<std::int32_t>::max()}));
    }
    m_attributes.clear();
    for (int count = 1 + below(8); count > 0; --count) {
        m_attributes.push_back(attributes());
    }
    m_styles.clear();
    for (int count = 1 + below(4); count > 0; --count) {
        m_styles.push_back(style({}));
    }
}

Twips RandomText::length() {
    if (m_kind == Kind::broken && oneIn(5)) {
        return oneOf(std::vector{std::numeric_limits<Twips>::min(), Twips{-2'000'000},
                                 std::numeric_limits<Twips>::max(), Twips{1'000'001}});
    }
    return oneIn(3) ? -below(1000) : below(5000);
}

Color RandomText::color() {
    if (oneIn(2)) {
        const auto name = oneUpTo(SystemColor::red);
        return Color::named(name == SystemColor::none ? SystemColor::label : name);
    }
    const auto component = [this] { return static_cast<std::uint8_t>(below(256)); };
    return {.red = component(), .green = component(), .blue = component()};
}

CharacterAttributes RandomText::attributes() {
    static const std::vector<std::string> kLinks{
        "https://example.org/",   "mailto:a@example.org", "#place", "a \"quoted\" \\\\path\\",
        "ht\u00fcps://\u20AC/{}", "spaces and\ttabs\n",   "\\l",    "\U0001F600"};
    static const std::vector<MilliPoints> kSizes{13'000, 13'000, 20'000, 17'500, 9'250, 333, 1};
    CharacterAttributes attributes;
    attributes.font = {.family = oneUpTo(FontFamily::monospaced),
                       .isBold = oneIn(3),
                       .isItalic = oneIn(4),
                       .size = oneOf(kSizes)};
    if (oneIn(3)) {
        attributes.underline = oneUpTo(LineStyle::dashDotDotted);
        attributes.strikethrough = oneUpTo(LineStyle::dashDotDotted);
    }
    if (oneIn(4)) {
        attributes.link = oneOf(kLinks);
    }
    if (oneIn(4)) {
        attributes.foreground = color();
    }
    if (oneIn(5)) {
        attributes.background = color();
    }
    if (m_kind == Kind::broken) {
        attributes.korvexCodeLanguage = oneIn(4) ? "swift" : "";
        attributes.isAttachment = oneIn(5);
        if (oneIn(5)) {
            attributes.font.size = oneIn(2) ? -1 : std::numeric_limits<MilliPoints>::max();
        }
        if (oneIn(8)) {
            attributes.link = oneIn(2) ? "not UTF-8: \xFF" : "not UTF-8: \xFE";
        }
    }
    return attributes;
}

ParagraphStyle RandomText::style(const Cells& cells) {
    ParagraphStyle style;
    if (!m_styles.empty() && !oneIn(8)) {
        style = oneOf(m_styles);
    } else if (!oneIn(4)) {
        style.alignment = oneUpTo(TextAlignment::justified);
        style.direction = oneUpTo(WritingDirection::rightToLeft);
        for (auto* const field :
             {&style.leftIndent, &style.firstLineIndent, &style.rightIndent, &style.spacingBefore,
              &style.spacingAfter, &style.lineSpacing, &style.lineHeight}) {
            *field = oneIn(3) ? length() : 0;
        }
        style.lineHeightMultiple = oneIn(3) ? below(600) : 0;
        for (int stops = oneIn(3) ? below(70) : 0; stops > 0; --stops) {
            style.tabStops.push_back(length());
        }
        if (m_kind == Kind::sound) {
            std::sort(style.tabStops.begin(), style.tabStops.end());
            style.tabStops.erase(std::unique(style.tabStops.begin(), style.tabStops.end()),
                                 style.tabStops.end());
            style.tabStops.resize(std::min<std::size_t>(style.tabStops.size(), 64));
        }
    }
    style.lists.clear();
    if (oneIn(3)) {
        for (int depth = 1 + below(oneIn(8) ? 9 : 3); depth > 0; --depth) {
            style.lists.push_back(oneOf(m_lists));
        }
        if (m_kind == Kind::broken && oneIn(4)) {
            style.lists.resize(12, m_lists.front());
        }
    }
    style.cells = cells;
    if (m_kind == Kind::broken && oneIn(12)) {
        style.cells.push_back(nullptr);
    }
    return style;
}

CellGeometry RandomText::geometry() {
    CellGeometry geometry;
    if (oneIn(2)) {
        geometry.width = m_kind == Kind::broken ? length() : below(9000);
    }
    for (std::size_t side = 0; side < geometry.borders.size(); ++side) {
        geometry.padding[side] = oneIn(2) ? 160 : below(400);
        geometry.borders[side].width = oneIn(2) ? 10 : below(80);
        if (oneIn(2)) {
            geometry.borders[side].color = color();
        }
        if (m_kind == Kind::broken) {
            geometry.padding[side] = length();
            geometry.borders[side].width = length();
        }
    }
    if (oneIn(3)) {
        geometry.background = color();
    }
    geometry.verticalAlignment = oneUpTo(VerticalAlignment::bottom);
    return geometry;
}

std::u16string RandomText::words() {
    static const std::vector<std::u16string> kWords{
        u"word",
        u" ",
        u"  ",
        u"\t",
        u"b0",
        u"{",
        u"}",
        u"\\",
        u"\\par ",
        u"-1",
        u"'e4",
        u"\u00E4\u00DF",
        u"\u00A0",
        u"\u0080",
        u"\u2028",
        u"\u2029",
        u"\r",
        u"\u20AC",
        u"\U0001F600",
        u"\uFFFC",
        u"\uFFFF",
        u"\uFEFF",
        u"\u65E5",
        u"\u007F",
        u"\u001B",
        u";",
        u"\u00AD",
        u"\u2011",
        u"A longer stretch of plain text, as most of a text is, over several of them. "};
    std::u16string text;
    for (int count = below(6); count > 0; --count) {
        switch (below(12)) {
        case 0:
            text.push_back(u'\0');
            break;
        case 1:
            text.push_back(static_cast<char16_t>(0xD800 + below(0x800)));
            break;
        default:
            text += oneOf(kWords);
            break;
        }
    }
    return text;
}

void RandomText::appendParagraph(AttributedString& text, const Cells& cells) {
    const auto paragraph = style(cells);
    for (int runs = below(4); runs > 0; --runs) {
        text.append(words(), oneOf(m_attributes), paragraph);
    }
    text.append(u"\n", oneOf(m_attributes), paragraph);
}

void RandomText::appendBlock(AttributedString& text, const Cells& cells, int paragraphs) {
    for (int count = below(paragraphs + 1); count > 0; --count) {
        if (cells.size() < kDeepestTable && oneIn(4)) {
            appendTable(text, cells);
        } else {
            appendParagraph(text, cells);
        }
    }
}

void RandomText::fillCell(AttributedString& text, const Cells& cells) {
    const auto before = text.length();
    appendBlock(text, cells, 2);
    if (text.length() == before) {
        appendParagraph(text, cells);
    }
}

void RandomText::appendTable(AttributedString& text, const Cells& outer) {
    const bool isBroken = m_kind == Kind::broken;
    const int rows = 1 + below(4);
    const int columns = 1 + below(4);
    const auto table = std::make_shared<TextTable>();
    table->columns = isBroken && oneIn(3) ? below(400) - 20 : columns;
    std::array<std::array<bool, 8>, 16> isTaken{};
    bool isFirst = true;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            // The first place of a table is never missing.
            if (isTaken.at(static_cast<std::size_t>(row)).at(static_cast<std::size_t>(column)) ||
                (!isFirst && oneIn(8))) {
                continue;
            }
            isFirst = false;
            const auto cell = std::make_shared<TextTableCell>();
            cell->table = table;
            cell->row = row;
            cell->column = column;
            cell->rowSpan = oneIn(5) ? 1 + below(4) : 1;
            while (oneIn(4) && column + cell->columnSpan < columns &&
                   !isTaken.at(static_cast<std::size_t>(row))
                        .at(static_cast<std::size_t>(column + cell->columnSpan))) {
                ++cell->columnSpan;
            }
            for (int down = 0; down < cell->rowSpan; ++down) {
                for (int right = 0; right < cell->columnSpan; ++right) {
                    isTaken.at(static_cast<std::size_t>(row + down))
                        .at(static_cast<std::size_t>(column + right)) = true;
                }
            }
            cell->geometry = geometry();
            if (isBroken && oneIn(4)) {
                cell->row = oneIn(9) ? std::numeric_limits<std::int32_t>::min() : below(7) - 1;
                cell->column = oneIn(9) ? std::numeric_limits<std::int32_t>::max() : below(300) - 5;
                cell->rowSpan = oneIn(9) ? std::numeric_limits<std::int32_t>::max() : below(4);
                cell->columnSpan = oneIn(9) ? std::numeric_limits<std::int32_t>::max() : below(4);
            }
            auto cells = outer;
            if (isBroken && oneIn(30)) {
                // As deep as it takes to be too deep.
                cells.resize(20, cell);
            }
            cells.push_back(cell);
            fillCell(text, cells);
            if (isBroken && oneIn(6)) {
                appendParagraph(text, outer);
            }
            if (isBroken && oneIn(6)) {
                appendParagraph(text, cells);
            }
        }
    }
}

} // namespace korvex::richtext
