#include "richtext/stored/EntryText.h"

#include "model/EntryContentLimit.h"

namespace korvex::richtext {

AttributedString richText(const model::Entry& entry, const RichTextSerializer& serializer) {
    return serializer.richText(entry.richTextData(), entry.content());
}

std::optional<AttributedString> wholeRichText(const model::Entry& entry,
                                              const RichTextSerializer& serializer) {
    return model::EntryContentLimit::allows(entry.content())
               ? std::optional(richText(entry, serializer))
               : std::nullopt;
}

bool allowsAttachments(const model::Entry& entry, const RichTextSerializer& serializer) {
    return entry.isTodo() || !RichTextSerializer::headingLevel(richText(entry, serializer));
}

} // namespace korvex::richtext
