#include "richtext/text/Formatting.h"
#include "richtext/text/ListMarker.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextHtml.h"

#include <QStringList>

#include <algorithm>
#include <vector>

namespace korvex::ui {

namespace {

using namespace richtext;

template <typename T>
std::size_t commonLength(const std::vector<T>& one, const std::vector<T>& other) {
    return static_cast<std::size_t>(
        std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first - one.begin());
}

/// Opens and closes what the paragraphs stand in, from one to the next.
class HtmlWriter {
public:
    explicit HtmlWriter(const AttributedString& text) : m_text(text) {}

    QString html() {
        m_text.forEachParagraph(
            [this](const AttributedString::ParagraphRun& run) { write(run.range, run.style); });
        leaveLists(0);
        leaveCode();
        leaveCells({});
        return m_html;
    }

private:
    void write(TextRange range, const ParagraphStyle& style) {
        const auto isCode = isCodeBlock(m_text, range);
        if (m_text.text()[range.end() - 1] == u'\n') {
            --range.length;
        }
        if (m_cells != style.cells) {
            leaveLists(0);
            leaveCode();
            leaveCells(style.cells);
            enterCells(style.cells);
        }
        if (!isCode) {
            leaveCode();
        }
        enterItem(style.lists);
        if (isCode) {
            m_html += m_isInCode ? QStringLiteral("\n") : QStringLiteral("<pre><code>");
            m_isInCode = true;
            m_html += units(range).toHtmlEscaped();
            return;
        }
        const auto tag = tagOf(range, style);
        if (!tag.isEmpty()) {
            m_html += QLatin1Char('<') + tag + QLatin1Char('>');
        }
        if (range.length == 0) {
            m_html += QStringLiteral("<br>");
        }
        m_text.forEachRun(range, [this](const AttributedString::CharacterRun& run) {
            writeRun(units(run.range), run.attributes);
        });
        if (!tag.isEmpty()) {
            m_html += QStringLiteral("</") + tag + QStringLiteral(">\n");
        }
    }

    void writeRun(const QString& text, const CharacterAttributes& attributes) {
        QStringList tags;
        if (countsAsCode(attributes)) {
            tags.append(QStringLiteral("code"));
        }
        if (attributes.font.isBold && !headingLevel(attributes.font)) {
            tags.append(QStringLiteral("b"));
        }
        if (attributes.font.isItalic) {
            tags.append(QStringLiteral("i"));
        }
        if (attributes.underline != LineStyle::none) {
            tags.append(QStringLiteral("u"));
        }
        if (attributes.strikethrough != LineStyle::none) {
            tags.append(QStringLiteral("s"));
        }
        if (!attributes.link.empty()) {
            m_html +=
                QStringLiteral("<a href=\"%1\">").arg(toQString(attributes.link).toHtmlEscaped());
        }
        for (const auto& tag : tags) {
            m_html += QLatin1Char('<') + tag + QLatin1Char('>');
        }
        auto escaped = text.toHtmlEscaped();
        escaped.replace(QChar(QChar::LineSeparator), QStringLiteral("<br>"));
        m_html += escaped;
        for (auto tag = tags.crbegin(); tag != tags.crend(); ++tag) {
            m_html += QStringLiteral("</") + *tag + QLatin1Char('>');
        }
        if (!attributes.link.empty()) {
            m_html += QStringLiteral("</a>");
        }
    }

    void leaveCode() {
        if (m_isInCode) {
            m_html += QStringLiteral("</code></pre>\n");
            m_isInCode = false;
        }
    }

    void leaveLists(std::size_t depth) {
        for (; m_lists.size() > depth; m_lists.pop_back()) {
            m_html += QStringLiteral("</li></") + listTag(*m_lists.back()) + QStringLiteral(">\n");
        }
    }

    void enterItem(const std::vector<TextListRef>& lists) {
        const auto common = commonLength(m_lists, lists);
        if (m_lists.size() != common || lists.size() != common) {
            leaveCode();
        }
        leaveLists(common);
        if (common > 0 && common == lists.size()) {
            m_html += QStringLiteral("</li><li>");
        }
        for (auto depth = common; depth < lists.size(); ++depth) {
            m_lists.push_back(lists[depth]);
            m_html += QLatin1Char('<') + listTag(*lists[depth]);
            if (const auto type = typeOf(*lists[depth]); !type.isEmpty()) {
                m_html += QStringLiteral(" type=\"") + type + QLatin1Char('"');
            }
            if (lists[depth]->start != 1) {
                m_html += QStringLiteral(" start=\"%1\"").arg(lists[depth]->start);
            }
            m_html += QStringLiteral("><li>");
        }
    }

    void leaveCells(const std::vector<TextTableCellRef>& next) {
        const auto common = commonLength(m_cells, next);
        while (m_cells.size() > common) {
            const auto cell = m_cells.back();
            m_cells.pop_back();
            m_html += QStringLiteral("</td>");
            const auto depth = m_cells.size();
            const auto isSameTable =
                depth == common && depth < next.size() && next[depth]->table == cell->table;
            if (!isSameTable || next[depth]->row != cell->row) {
                m_html += QStringLiteral("</tr>");
            }
            if (!isSameTable) {
                m_html += QStringLiteral("</table>\n");
            } else if (next[depth]->row != cell->row) {
                m_html += QStringLiteral("<tr>");
            }
            m_leftTable = isSameTable ? cell->table : nullptr;
        }
    }

    void enterCells(const std::vector<TextTableCellRef>& cells) {
        for (auto depth = m_cells.size(); depth < cells.size(); ++depth) {
            const auto& cell = *cells[depth];
            if (cell.table != m_leftTable) {
                m_html += QStringLiteral("<table border=\"1\"><tr>");
            }
            m_leftTable = nullptr;
            m_html += QStringLiteral("<td");
            if (cell.columnSpan > 1) {
                m_html += QStringLiteral(" colspan=\"%1\"").arg(cell.columnSpan);
            }
            if (cell.rowSpan > 1) {
                m_html += QStringLiteral(" rowspan=\"%1\"").arg(cell.rowSpan);
            }
            m_html += QLatin1Char('>');
            m_cells.push_back(cells[depth]);
        }
        m_leftTable = nullptr;
    }

    QString tagOf(TextRange range, const ParagraphStyle& style) const {
        if (const auto level = headingLevel(m_text.attributesAt(range.location).font);
            level && range.length > 0) {
            return QStringLiteral("h%1").arg(static_cast<int>(*level));
        }
        return style.lists.empty() ? QStringLiteral("p") : QString();
    }
    QString units(TextRange range) const {
        return toQString(std::u16string_view(m_text.text()).substr(range.location, range.length));
    }
    static QString listTag(const TextList& list) {
        return isCounting(partsOf(list.marker).format) ? QStringLiteral("ol")
                                                       : QStringLiteral("ul");
    }

    /// The kind of a list's markers; empty for numbers, and for bullets that HTML does not know.
    static QString typeOf(const TextList& list) {
        switch (partsOf(list.marker).format) {
        case MarkerFormat::disc:
            return QStringLiteral("disc");
        case MarkerFormat::circle:
            return QStringLiteral("circle");
        case MarkerFormat::square:
            return QStringLiteral("square");
        case MarkerFormat::lowerAlpha:
            return QStringLiteral("a");
        case MarkerFormat::upperAlpha:
            return QStringLiteral("A");
        case MarkerFormat::lowerRoman:
            return QStringLiteral("i");
        case MarkerFormat::upperRoman:
            return QStringLiteral("I");
        case MarkerFormat::none:
        case MarkerFormat::hyphen:
        case MarkerFormat::check:
        case MarkerFormat::decimal:
            break;
        }
        return {};
    }

    const AttributedString& m_text;
    QString m_html;
    std::vector<TextTableCellRef> m_cells;
    std::vector<TextListRef> m_lists;
    /// The table whose next cell follows.
    TextTableRef m_leftTable;
    bool m_isInCode = false;
};

} // namespace

QString htmlOf(const AttributedString& text) {
    return QStringLiteral("<meta charset=\"utf-8\">") + HtmlWriter(text).html();
}

} // namespace korvex::ui
