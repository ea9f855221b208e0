#pragma once

#include "base/Bytes.h"
#include "base/Error.h"
#include "base/Log.h"
#include "richtext/text/AttributedString.h"
#include "richtext/text/HeadingLevel.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvex::richtext {

enum class RichTextSerializationErrorCase { encodingFailed };
std::string descriptionOf(RichTextSerializationErrorCase which);
std::string domainOf(RichTextSerializationErrorCase which);
using RichTextSerializationError = base::TypedError<RichTextSerializationErrorCase>;

/// Turns formatted text into the bytes that an entry keeps, and back. What is stored is always
/// normalised, so it is a small and predictable part of what an AttributedString can hold. A value
/// over its log, which must outlive it; free of shared state.
class RichTextSerializer {
public:
    explicit RichTextSerializer(base::LogSink& log);

    /// Throws EntryServiceError `contentTooLong` for a text or a stored form over the limits, and
    /// `encodingFailed`.
    base::Bytes encode(const AttributedString& text) const;
    /// Throws `contentTooLong` or RtfError.
    AttributedString decode(std::span<const std::uint8_t> data) const;
    /// Never fails: damaged, missing or too long data gives the fallback, or its preview, as plain
    /// text. `fallbackPlainText` is UTF-8.
    AttributedString richText(const std::optional<base::Bytes>& data,
                              std::string_view fallbackPlainText) const;

    /// The text in the system font at the base size. `text` is UTF-8.
    static AttributedString plainRichText(std::string_view text);
    /// The text as it may be stored: with complete tables and the system's fonts, without
    /// attachments and colours.
    static AttributedString normalized(const AttributedString& text);
    /// Applies a heading to every run and paragraph as `applyHeading` does.
    static AttributedString applyingHeading(std::optional<HeadingLevel> level,
                                            const AttributedString& text);
    /// The level that all of a text's characters share, line feeds aside.
    static std::optional<HeadingLevel> headingLevel(const AttributedString& text);

    /// Whether a text is within an entry's limits of characters and UTF-8 bytes.
    static bool isWithinLimits(std::u16string_view text);

private:
    base::Logger m_log;
};

/// Whether a link may be handed to the system: only "http", "https" and "mailto". `link` is any
/// text that claims to be a URL; no URL has blanks and control characters in it.
bool canOpenLink(std::string_view link);

} // namespace korvex::richtext
