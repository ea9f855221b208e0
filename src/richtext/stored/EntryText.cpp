#include "richtext/stored/EntryText.h"

namespace korvex::richtext {

AttributedString richText(const model::Entry& entry, const RichTextSerializer& serializer) {
    return serializer.richText(entry.richTextData(), entry.content());
}

bool allowsAttachments(const model::Entry& entry, const RichTextSerializer& serializer) {
    return entry.isTodo() || !RichTextSerializer::headingLevel(richText(entry, serializer));
}

} // namespace korvex::richtext
