#pragma once

#include "model/Entry.h"
#include "richtext/stored/RichTextSerializer.h"
#include "richtext/text/AttributedString.h"

#include <optional>

namespace korvex::richtext {

/// The formatted text of an entry, from what it has stored, else from its content.
AttributedString richText(const model::Entry& entry, const RichTextSerializer& serializer);

/// The same, but absent for a text over the limits, of which only a preview would come: what takes
/// the place of the text, or gives it away, must have all of it.
std::optional<AttributedString> wholeRichText(const model::Entry& entry,
                                              const RichTextSerializer& serializer);

/// Whether new files may be attached: to todos and to texts that are no headings.
bool allowsAttachments(const model::Entry& entry, const RichTextSerializer& serializer);

} // namespace korvex::richtext
