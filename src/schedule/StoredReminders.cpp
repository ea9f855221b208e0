#include "schedule/StoredReminders.h"

#include "base/Text.h"
#include "model/Entry.h"
#include "model/EntryContentLimit.h"

#include <span>
#include <string>
#include <variant>

namespace korvex::schedule {

namespace {

using model::Entry;

constexpr store::FieldReference kReminder{Entry::reminderDateField};

/// A daemon refuses a notification whose words are no text.
std::string shownText(const std::string& content) {
    auto text = base::repairedUtf8(content);
    std::erase(text, '\0');
    return text;
}

} // namespace

void StoredReminders::forEachAfter(base::Instant after,
                                   const std::function<void(const View&)>& sink) const {
    forEachBetween(after, base::Instant::distantFuture(), sink);
}

void StoredReminders::forEachBetween(base::Instant after, base::Instant until,
                                     const std::function<void(const View&)>& sink) const {
    // The index of reminders has those that are present, and only a comparison says so to SQLite.
    read(kReminder > store::Value{after.seconds} && kReminder <= store::Value{until.seconds}, sink);
}

std::optional<ReminderRequest> StoredReminders::of(const base::Uuid& entryID) const {
    std::optional<ReminderRequest> found;
    read(store::FieldReference{Entry::idField} == store::Value{entryID} &&
             store::Condition::isPresent(Entry::reminderDateField),
         [&](const View& view) { found = view.request(); });
    return found;
}

void StoredReminders::read(const store::Condition& condition,
                           const std::function<void(const View&)>& sink) const {
    m_context->fetchValues<Entry>(
        {Entry::idField, Entry::reminderDateField, Entry::contentField, Entry::updatedAtField},
        condition && Entry::openTodos(), [&](std::span<const store::Value> values) {
            const auto* const id = std::get_if<base::Uuid>(&values[0]);
            const auto* const seconds = std::get_if<double>(&values[1]);
            const auto* const content = std::get_if<std::string>(&values[2]);
            const auto* const updatedAt = std::get_if<double>(&values[3]);
            // A store from elsewhere may hold anything.
            if (id && seconds && content && updatedAt && base::Instant{*seconds}.isValid()) {
                const auto isText =
                    base::isValidUtf8(*content) && content->find('\0') == std::string::npos;
                const auto repaired = isText ? std::string() : shownText(*content);
                sink({.entryID = *id,
                      .date = {*seconds},
                      .body = model::EntryContentLimit::preview(isText ? *content : repaired),
                      .updatedAt = {*updatedAt}});
            }
        });
}

} // namespace korvex::schedule
