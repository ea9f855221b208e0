#pragma once

#include "model/Entry.h"
#include "richtext/stored/RichTextSerializer.h"
#include "richtext/text/AttributedString.h"

namespace korvex::richtext {

/// The formatted text of an entry, from what it has stored, else from its content.
AttributedString richText(const model::Entry& entry, const RichTextSerializer& serializer);

/// Whether new files may be attached: to todos and to texts that are no headings.
bool allowsAttachments(const model::Entry& entry, const RichTextSerializer& serializer);

} // namespace korvex::richtext
