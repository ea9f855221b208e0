#include "services/EntryContent.h"

#include "base/Text.h"
#include "base/Utf16.h"
#include "model/EntryContentLimit.h"
#include "model/ServiceErrors.h"

#include <utility>

namespace korvex::services {

using model::EntryServiceError;
using model::EntryServiceErrorCase;
using richtext::AttributedString;
using richtext::RichTextSerializer;

std::string normalized(std::string_view content) {
    if (!model::EntryContentLimit::allows(content)) {
        throw EntryServiceError(EntryServiceErrorCase::contentTooLong);
    }
    const auto trimmed = base::trimmed(content);
    if (trimmed.empty()) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    return std::string(trimmed);
}

void validate(const model::TodoSchedule& schedule,
              const std::optional<base::Instant>& previousReminder, base::Instant now) {
    if (!schedule.isValid()) {
        throw EntryServiceError(EntryServiceErrorCase::invalidSchedule);
    }
    if (schedule.reminderDate && *schedule.reminderDate <= now &&
        schedule.reminderDate != previousReminder) {
        throw EntryServiceError(EntryServiceErrorCase::pastReminder);
    }
}

void validateChanged(const model::Entry& entry) {
    using model::Entry;
    const auto isChanged = [&](auto... fields) { return (entry.isChanged(fields) || ...); };
    const auto isOfOtherState =
        isChanged(Entry::typeRawValueField, Entry::isCompletedField, Entry::completedAtField);
    if (isOfOtherState && (entry.isCompleted() != entry.completedAt().has_value() ||
                           (entry.isCompleted() && !entry.isTodo()))) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
    if (entry.isTodo() &&
        (isOfOtherState || isChanged(Entry::dueDayField, Entry::dueDateField,
                                     Entry::dueStartDateField, Entry::reminderDateField)) &&
        !entry.schedule().isValid()) {
        throw EntryServiceError(EntryServiceErrorCase::invalidSchedule);
    }
    if (isChanged(Entry::typeRawValueField, Entry::richTextDataField) && entry.isTodo() &&
        entry.richTextData()) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
    if (isChanged(Entry::contentField)) {
        static_cast<void>(normalized(entry.content()));
    }
}

std::optional<AttributedString> accepted(const AttributedString& rich) {
    auto text = RichTextSerializer::normalized(rich);
    if (!RichTextSerializer::isWithinLimits(text.text())) {
        throw EntryServiceError(EntryServiceErrorCase::contentTooLong);
    }
    if (base::trimmed(base::utf8(text.text())).empty()) {
        return std::nullopt;
    }
    return text;
}

StoredText encoded(const AttributedString& text, const RichTextSerializer& serializer) {
    return {.content = base::utf8(text.text()), .richTextData = serializer.encode(text)};
}

std::optional<StoredText> stored(const AttributedString& rich,
                                 const RichTextSerializer& serializer) {
    const auto text = accepted(rich);
    return text ? std::optional(encoded(*text, serializer)) : std::nullopt;
}

void setText(model::Entry& entry, StoredText text, base::Instant now) {
    entry.setContent(std::move(text.content));
    entry.setRichTextData(std::move(text.richTextData));
    entry.setUpdatedAt(now);
}

} // namespace korvex::services
