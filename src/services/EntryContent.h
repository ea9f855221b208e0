#pragma once

#include "base/Bytes.h"
#include "base/Instant.h"
#include "model/Entry.h"
#include "model/TodoSchedule.h"
#include "richtext/stored/RichTextSerializer.h"
#include "richtext/text/AttributedString.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvex::services {

// What may be written into an entry, and the form in which the entry keeps it. All of it throws
// EntryServiceError.

/// A todo's text, trimmed; throws `contentTooLong` (judged before trimming) or `emptyContent`. Text
/// that is not UTF-8 is refused before by whoever read it.
std::string normalized(std::string_view content);

/// Throws `invalidSchedule` or `pastReminder`; a reminder equal to `previousReminder` may have
/// passed.
void validate(const model::TodoSchedule& schedule,
              const std::optional<base::Instant>& previousReminder, base::Instant now);

/// What every operation leaves, of those fields that are changed and not saved yet: for what is put
/// together of former fields and of what others have set since. Throws `contentTooLong`,
/// `emptyContent` or `invalidSchedule`, and `entryUnavailable` for a completion without its moment
/// or of a text, and for a todo with formatting.
void validateChanged(const model::Entry& entry);

/// A formatted text as an entry keeps it.
struct StoredText {
    std::string content;
    base::Bytes richTextData;
};

/// The text with only the formatting that is stored; absent when nothing but white space is left of
/// it. Throws `contentTooLong`.
std::optional<richtext::AttributedString> accepted(const richtext::AttributedString& rich);
/// The stored form of an accepted text. May throw RichTextSerializationError.
StoredText encoded(const richtext::AttributedString& text,
                   const richtext::RichTextSerializer& serializer);
/// Both in one.
std::optional<StoredText> stored(const richtext::AttributedString& rich,
                                 const richtext::RichTextSerializer& serializer);
void setText(model::Entry& entry, StoredText text, base::Instant now);

} // namespace korvex::services
