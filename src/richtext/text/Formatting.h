#pragma once

#include "richtext/text/AttributedString.h"
#include "richtext/text/HeadingLevel.h"

#include <cstdint>
#include <optional>
#include <string_view>

/// What headings, code and body text make of one run of characters and of one paragraph. These are
/// the rules behind an editor's commands and behind what is stored: an editor applies them to a
/// selection, `RichTextSerializer` to a whole text.
namespace korvex::richtext {

/// Code inside a line of text, or whole paragraphs of code.
enum class CodeKind : std::uint8_t { inlineCode, block };

/// The distance between the lines of a code block.
inline constexpr Twips kCodeBlockLineSpacing = 3 * kTwipsPerPoint;

/// Whether a run is treated as code: text in a monospaced font is, even without a language.
bool countsAsCode(const CharacterAttributes& attributes);
/// The same, but code blocks do not count.
bool isInlineCode(const CharacterAttributes& attributes);
/// Whether all characters of a paragraph belong to a code block. Its line feed counts only when it
/// is all that the paragraph has.
bool isCodeBlock(const AttributedString& text, TextRange paragraph);

/// What a paragraph's characters make of it, its line feed among them. Only what is a heading, or a
/// code block, has spacing that is taken away with it.
struct ParagraphKind {
    bool isHeading = false;
    bool isCodeBlock = false;

    void add(const CharacterAttributes& attributes);
};
ParagraphKind kindOf(const AttributedString& text, TextRange paragraph);

/// Makes a run part of a heading or, without a level, of body text; italics stay. A run of inline
/// code keeps its font, the only one in which it can be stored; a code block is one no longer.
void applyHeading(std::optional<HeadingLevel> level, CharacterAttributes& attributes);
/// The paragraph gets the level's space before it, or loses a heading's, and loses what made it a
/// code block. `former` is what it was.
void applyHeading(std::optional<HeadingLevel> level, ParagraphStyle& style, ParagraphKind former);

/// Ends a heading or a code block; what else is bold, a link or inline code stays so.
void applyBodyText(CharacterAttributes& attributes);
void applyBodyText(ParagraphStyle& style, ParagraphKind former);

/// Takes all formats away except where the run leads to.
void clearFormats(CharacterAttributes& attributes);
/// Takes all formats away except the writing direction and the table that the paragraph stands in.
void clearFormats(ParagraphStyle& style);

/// Makes a run code in the look that code has, regular and without colours of its own, since those
/// are computed when it is shown. Links and lines through or under the text stay, and what is code
/// already stays bold or italic.
void applyCode(CharacterAttributes& attributes, std::string_view language, CodeKind kind);
/// Makes a paragraph part of a code block, which has no other formats: only the direction and the
/// table's cells stay.
void applyCodeBlock(ParagraphStyle& style);
/// Turns code back into text: of the heading that the paragraph is, or else of the body.
void removeCode(CharacterAttributes& attributes, std::optional<HeadingLevel> heading);

} // namespace korvex::richtext
