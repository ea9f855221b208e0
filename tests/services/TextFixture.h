#pragma once

#include "ServiceFixture.h"

#include "richtext/stored/RichTextSerializer.h"

#include <memory>

namespace korvex::tests {

/// The services with texts to work on.
class TextFixture : public ServiceFixture {
protected:
    static constexpr base::Instant kLater{2000};

    static richtext::AttributedString plain(std::string_view text) {
        return richtext::RichTextSerializer::plainRichText(text);
    }

    /// With "bold" in bold and a list, so that there is something to lose.
    static richtext::AttributedString formatted() {
        richtext::AttributedString text(u"some bold words\n");
        text.editAttributes({5, 4}, [](auto& attributes) { attributes.font.isBold = true; });
        const auto list = std::make_shared<const richtext::TextList>(
            richtext::TextList{.marker = u"{decimal}.", .start = 1});
        text.append(u"first\nsecond", {}, {.lists = {list}});
        return text;
    }

    /// Ten thousand characters whose links need more room than a stored text has.
    static richtext::AttributedString tooLongWhenEncoded() {
        richtext::AttributedString text;
        for (int i = 0; i < 2'000; ++i) {
            text.append(u"link ", {.link = "https://" + std::to_string(i) + std::string(600, 'x')},
                        {});
        }
        return text;
    }

    model::Entry& note(std::string_view text) {
        return entries->createText({.rich = plain(text), .board = *board, .now = kNow});
    }

    richtext::AttributedString storedText(const model::Entry& entry) {
        EXPECT_TRUE(entry.richTextData());
        return serializer.decode(entry.richTextData().value_or(base::Bytes()));
    }

    /// What a second program sees of the board, all fields that these operations touch.
    std::string storedBoard() {
        store::ModelContext fresh(*container);
        auto all = fresh.find<model::Board>(board->id())->entries();
        std::sort(all.begin(), all.end(), [](const model::Entry* left, const model::Entry* right) {
            return services::ordered(*left, *right);
        });
        std::string text;
        for (const model::Entry* entry : all) {
            text += entry->id().text() + ' ' + std::to_string(entry->sortOrder()) +
                    entry->typeRawValue() + '|' + entry->content() + '|' +
                    std::to_string(entry->richTextData().value_or(base::Bytes()).size()) + '|' +
                    std::to_string(entry->updatedAt().seconds) +
                    (entry->isCompleted() ? "x" : "-") + (entry->completedAt() ? "x" : "-") +
                    (entry->schedule().isEmpty() ? "-" : "x") + '\n';
        }
        return text;
    }

    richtext::RichTextSerializer serializer{log};
};

} // namespace korvex::tests
