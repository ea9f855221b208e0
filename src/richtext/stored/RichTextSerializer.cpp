#include "richtext/stored/RichTextSerializer.h"

#include "base/Text.h"
#include "base/Utf16.h"
#include "model/EntryContentLimit.h"
#include "model/ServiceErrors.h"
#include "richtext/code/CodeSyntax.h"
#include "richtext/rtf/RtfReader.h"
#include "richtext/rtf/RtfWriter.h"
#include "richtext/stored/CodeMetadata.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/Formatting.h"

#include <algorithm>
#include <exception>
#include <vector>

namespace korvex::richtext {

namespace {

using model::EntryContentLimit;

void requireWithinLimits(bool isWithin) {
    if (!isWithin) {
        throw model::EntryServiceError(model::EntryServiceErrorCase::contentTooLong);
    }
}

AttributedString withoutAttachments(const AttributedString& text) {
    std::vector<TextRange> kept;
    bool hasAttachment = false;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        if (run.attributes.isAttachment) {
            hasAttachment = true;
        } else if (!kept.empty() && kept.back().end() == run.range.location) {
            kept.back().length += run.range.length;
        } else {
            kept.push_back(run.range);
        }
    });
    if (!hasAttachment) {
        return text;
    }
    AttributedString result;
    for (const auto& range : kept) {
        result.append(text.slice(range));
    }
    return result;
}

Font normalizedFont(const Font& font) {
    Font result{.family = font.family, .isBold = font.isBold, .isItalic = font.isItalic};
    if (const auto level = headingLevel(font); level && font.family == FontFamily::system) {
        result.size = fontOf(*level).size;
    }
    return result;
}

void normalize(CharacterAttributes& attributes) {
    attributes.foreground.reset();
    attributes.background.reset();
    if (!attributes.isCode()) {
        attributes.korvexCodeBlock = false;
        attributes.font = normalizedFont(attributes.font);
        return;
    }
    // A single unknown language would cost a stored text all of its code runs.
    const auto isKnown = CodeSyntax::isKnownLanguage(attributes.korvexCodeLanguage);
    applyCode(attributes, isKnown ? attributes.korvexCodeLanguage : CodeSyntax::kAutomatic,
              attributes.korvexCodeBlock ? CodeKind::block : CodeKind::inlineCode);
}

/// Whether a paragraph that has characters of code blocks lacks a block's line spacing. This is
/// asked first: of nearly every text that is saved the answer is no, and then its styles stay.
bool hasUnspacedCodeBlock(const AttributedString& text) {
    bool isFound = false;
    // The end of the last paragraph looked at: long ones may have many runs.
    std::size_t seen = 0;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        if (isFound || !run.attributes.korvexCodeBlock) {
            return;
        }
        for (seen = std::max(seen, run.range.location); !isFound && seen < run.range.end();) {
            isFound = text.styleAt(seen).lineSpacing != kCodeBlockLineSpacing;
            seen = text.paragraphAt(seen).end();
        }
    });
    return isFound;
}

void spaceCodeBlocks(AttributedString& text) {
    if (!hasUnspacedCodeBlock(text)) {
        return;
    }
    text.editEachStyle([&](TextRange paragraph, ParagraphStyle& style) {
        if (kindOf(text, paragraph).isCodeBlock) {
            style.lineSpacing = kCodeBlockLineSpacing;
        }
    });
}

} // namespace

std::string descriptionOf(RichTextSerializationErrorCase which) {
    switch (which) {
    case RichTextSerializationErrorCase::encodingFailed:
        return "The formatted text could not be encoded.";
    }
    return {};
}

std::string domainOf(RichTextSerializationErrorCase) {
    return "Korvex.RichTextSerialization";
}

RichTextSerializer::RichTextSerializer(base::LogSink& log) : m_log(log, "RichText") {}

base::Bytes RichTextSerializer::encode(const AttributedString& text) const {
    requireWithinLimits(isWithinLimits(text.text()));
    const auto stored = normalized(text);
    requireWithinLimits(isWithinLimits(stored.text()));
    auto rtf = writeRtf(stored);
    if (rtf.empty()) {
        m_log.error("Unable to encode rich text as RTF");
        throw RichTextSerializationError(RichTextSerializationErrorCase::encodingFailed);
    }
    auto data = storingMetadata(std::move(rtf), stored);
    requireWithinLimits(data.size() <= EntryContentLimit::kMaximumBytes);
    return data;
}

AttributedString RichTextSerializer::decode(std::span<const std::uint8_t> data) const {
    requireWithinLimits(data.size() <= EntryContentLimit::kMaximumBytes);
    auto text = normalized(restoringMetadata(data, readRtf(data)));
    requireWithinLimits(isWithinLimits(text.text()));
    return text;
}

AttributedString RichTextSerializer::richText(const std::optional<base::Bytes>& data,
                                              std::string_view fallbackPlainText) const {
    if (!EntryContentLimit::allows(fallbackPlainText) || !data || data->empty() ||
        data->size() > EntryContentLimit::kMaximumBytes) {
        return plainRichText(EntryContentLimit::preview(fallbackPlainText));
    }
    const auto fallback = [&](std::string_view domain, int code) {
        m_log.error("Unable to decode stored rich text; using plain-text fallback: " +
                    std::string(domain) + " (" + std::to_string(code) + ")");
        return plainRichText(fallbackPlainText);
    };
    try {
        return decode(*data);
    } catch (const base::Error& error) {
        return fallback(error.domain(), error.code());
    } catch (const std::exception& error) {
        return fallback(error.what(), 0);
    }
}

AttributedString RichTextSerializer::plainRichText(std::string_view text) {
    return AttributedString(base::utf16(text));
}

AttributedString RichTextSerializer::normalized(const AttributedString& text) {
    // Attachments go first: with one the end of a table's cell may go.
    auto result = RichTextTable::repairingIncompleteTables(withoutAttachments(text)).text;
    result.editAttributes({0, result.length()}, normalize);
    spaceCodeBlocks(result);
    return result;
}

AttributedString RichTextSerializer::applyingHeading(std::optional<HeadingLevel> level,
                                                     const AttributedString& text) {
    auto result = text;
    result.editEachStyle([&](TextRange paragraph, ParagraphStyle& style) {
        applyHeading(level, style, kindOf(text, paragraph));
    });
    result.editAttributes({0, result.length()}, [&](CharacterAttributes& attributes) {
        applyHeading(level, attributes);
    });
    return result;
}

std::optional<HeadingLevel> RichTextSerializer::headingLevel(const AttributedString& text) {
    std::optional<HeadingLevel> shared;
    bool isFirst = true;
    bool isShared = true;
    const std::u16string_view units = text.text();
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        const auto part = units.substr(run.range.location, run.range.length);
        if (!isShared || part.find_first_not_of(u'\n') == std::u16string_view::npos) {
            return;
        }
        const auto level = richtext::headingLevel(run.attributes.font);
        isShared = level && (isFirst || level == shared);
        isFirst = false;
        shared = level;
    });
    return isShared ? shared : std::nullopt;
}

bool RichTextSerializer::isWithinLimits(std::u16string_view text) {
    // A character has at least one unit, and a unit needs at most three bytes.
    if (text.size() <= EntryContentLimit::kMaximumCharacters) {
        return true;
    }
    return text.size() <= EntryContentLimit::kMaximumBytes &&
           base::utf8Length(text) <= EntryContentLimit::kMaximumBytes &&
           base::characterCount(text, EntryContentLimit::kMaximumCharacters + 1) <=
               EntryContentLimit::kMaximumCharacters;
}

bool canOpenLink(std::string_view link) {
    const auto isForbidden = [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte <= ' ' || byte == 0x7F;
    };
    if (std::any_of(link.begin(), link.end(), isForbidden)) {
        return false;
    }
    const auto colon = link.find(':');
    std::string scheme(link.substr(0, colon == std::string_view::npos ? 0 : colon));
    std::transform(scheme.begin(), scheme.end(), scheme.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return scheme == "http" || scheme == "https" || scheme == "mailto";
}

} // namespace korvex::richtext
