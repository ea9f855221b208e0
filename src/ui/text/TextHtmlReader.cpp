#include "richtext/code/CodeSyntax.h"
#include "richtext/text/AttributedStringBuilder.h"
#include "richtext/text/HeadingLevel.h"
#include "richtext/text/ListIndents.h"
#include "ui/text/TextDocumentReader.h"
#include "ui/text/TextHtml.h"
#include "ui/text/TextHtmlSource.h"

#include <QTextDocument>

#include <algorithm>
#include <optional>

namespace korvex::ui {

namespace {

using namespace richtext;

/// What a page's text is set in unless it says otherwise.
constexpr double kUsualPointSize = 12;

/// Loads nothing.
class IsolatedDocument final : public QTextDocument {
protected:
    QVariant loadResource(int, const QUrl&) override { return QByteArray(); }
};

std::optional<HeadingLevel> levelOf(const QTextBlockFormat& block) {
    const auto level = block.headingLevel();
    return level < 1
               ? std::nullopt
               : std::optional(kHeadingLevels[static_cast<std::size_t>(std::min(level, 3) - 1)]);
}

/// Office suites say "18 points and bold" as well as "heading".
std::optional<HeadingLevel> levelOf(const QTextCharFormat& format) {
    if (format.fontWeight() < QFont::DemiBold) {
        return std::nullopt;
    }
    if (format.hasProperty(QTextFormat::FontSizeAdjustment)) {
        // What <font size> became; 3 is what a first heading has.
        const auto steps = format.intProperty(QTextFormat::FontSizeAdjustment);
        return steps < 1 ? std::nullopt
                         : std::optional(
                               kHeadingLevels[static_cast<std::size_t>(3 - std::min(steps, 3))]);
    }
    constexpr double kPointsPerPixel = 0.75;
    const auto size = format.hasProperty(QTextFormat::FontPixelSize)
                          ? format.intProperty(QTextFormat::FontPixelSize) * kPointsPerPixel
                          : format.fontPointSize();
    const auto ratio = size / kUsualPointSize;
    if (ratio >= 1.5) {
        return HeadingLevel::level1;
    }
    if (ratio >= 1.25) {
        return HeadingLevel::level2;
    }
    return ratio >= 1.12 ? std::optional(HeadingLevel::level3) : std::nullopt;
}

bool isMonospaced(const QTextCharFormat& format) {
    if (format.fontFixedPitch()) {
        return true;
    }
    const auto families = format.fontFamilies().toStringList();
    return std::any_of(families.begin(), families.end(), [](const QString& family) {
        return family.contains(QLatin1String("mono"), Qt::CaseInsensitive) ||
               family.contains(QLatin1String("courier"), Qt::CaseInsensitive) ||
               family.contains(QLatin1String("consolas"), Qt::CaseInsensitive);
    });
}

/// What Qt makes of the line break that most pages have before the end of preformatted text, which
/// browsers do not show as a line.
bool isBehindCode(const QTextBlock& block) {
    const auto isCode = [](const QTextBlock& each) {
        return each.isValid() && each.blockFormat().nonBreakableLines();
    };
    return isCode(block) && isCode(block.previous()) && !isCode(block.next());
}

class HtmlReader final : public TextDocumentReader {
public:
    using TextDocumentReader::TextDocumentReader;

protected:
    CharacterAttributes attributes(const QTextCharFormat& format,
                                   const QTextBlockFormat& block) const override {
        CharacterAttributes result;
        if (format.isImageFormat()) {
            result.isAttachment = true;
            return result;
        }
        if (block.nonBreakableLines()) {
            return CodeSyntax::attributes(CodeSyntax::kAutomatic, CodeKind::block);
        }
        result = attributesOf(format);
        if (isMonospaced(format)) {
            // In a heading it is bold by what stands around it.
            const auto isBold = result.font.isBold && !levelOf(block);
            auto code = CodeSyntax::attributes(CodeSyntax::kPlainText, CodeKind::inlineCode);
            code.font.isBold = isBold;
            code.font.isItalic = result.font.isItalic;
            code.link = std::move(result.link);
            return code;
        }
        if (!result.link.empty()) {
            result.underline = LineStyle::none; // every link has one
        }
        const auto level = levelOf(block) ? levelOf(block) : levelOf(format);
        if (level) {
            applyHeading(level, result);
        }
        return result;
    }

    TextList list(const QTextListFormat& format) const override {
        auto shown = format;
        const auto start = takeListStart(shown);
        return {.marker = markerOf(shown), .start = start};
    }

    bool isLeftOut(const QTextBlock& block) const override {
        return block.length() == 1 &&
               (block.blockFormat().boolProperty(kGapProperty) || isBehindCode(block));
    }

    ParagraphStyle style(const QTextBlockFormat& format) const override {
        const auto read = styleOf(format);
        ParagraphStyle result{.alignment = read.alignment};
        if (read.direction == WritingDirection::rightToLeft) {
            result.direction = read.direction;
        }
        if (const auto level = levelOf(format)) {
            applyHeading(level, result, {});
        }
        return result;
    }
};

/// The empty blocks that Qt put before and after tables are no paragraphs of the page.
void markGaps(QTextDocument& document) {
    for (const auto& block : blocksBesideTables(document)) {
        if (block.length() == 1) {
            auto format = block.blockFormat();
            format.setProperty(kGapProperty, true);
            QTextCursor(block).setBlockFormat(format);
        }
    }
}

bool isBlank(char16_t unit) {
    return unit == u' ' || unit == u'\n' || unit == u'\u00a0' || unit == u'\u2028';
}

/// A page's blanks as a text has them: none around a paragraph, where they lay out the page's
/// source, and no break at its end, which a browser does not show either. A space that does not
/// break is meant between two words; beside another blank it only keeps that one.
AttributedString withSaneBlanks(const AttributedString& text) {
    auto units = text.text();
    for (std::size_t i = 1; i + 1 < units.size(); ++i) {
        if (units[i] == u'\u00a0' && (isBlank(units[i - 1]) || isBlank(units[i + 1]))) {
            units[i] = u' ';
        }
    }
    AttributedString::Builder builder;
    builder.reserve(units.size());
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        auto start = paragraph.range.location;
        auto end = paragraph.range.end();
        const auto hasFeed = units[end - 1] == u'\n';
        end -= hasFeed ? 1 : 0;
        if (!text.attributesAt(start).korvexCodeBlock) {
            while (start < end && isBlank(units[start])) {
                ++start;
            }
            while (start < end && isBlank(units[end - 1])) {
                --end;
            }
        }
        const auto append = [&](TextRange range) {
            text.forEachRun(range, [&](const AttributedString::CharacterRun& run) {
                builder.append(
                    std::u16string_view(units).substr(run.range.location, run.range.length),
                    builder.idOf(run.attributes));
            });
        };
        append({start, end - start});
        if (hasFeed) {
            append({paragraph.range.end() - 1, 1});
        }
        if (builder.length() > builder.paragraphStart()) {
            builder.endParagraph(builder.idOf(paragraph.style));
        }
    });
    return builder.take();
}

} // namespace

AttributedString textOfHtml(const QString& html) {
    if (isTooDeep(html)) {
        return {};
    }
    IsolatedDocument document;
    document.setUndoRedoEnabled(false);
    QFont usual;
    usual.setPointSizeF(kUsualPointSize);
    document.setDefaultFont(usual);
    // As browsers have them: Qt gives all lists the bullets of the first.
    document.setDefaultStyleSheet(
        QStringLiteral("ul ul, ol ul { list-style-type: circle }"
                       "ul ul ul, ul ol ul, ol ul ul, ol ol ul { list-style-type: square }"));
    document.setHtml(sourceForQt(html));
    markGaps(document);
    auto text = withSaneBlanks(HtmlReader(document).read());
    text.editStyles({0, text.length()}, [](richtext::ParagraphStyle& style) {
        if (!style.lists.empty()) {
            richtext::setListIndents(style);
        }
    });
    return text;
}

} // namespace korvex::ui
