#include "richtext/text/AttributedString.h"

#include <gtest/gtest.h>

#include <random>

namespace korvex::tests {

namespace {

using namespace richtext;

/// The same text the slow and plain way: attributes for each unit, a style for each unit.
struct PlainModel {
    struct Unit {
        char16_t unit;
        CharacterAttributes attributes;
        ParagraphStyle style;
    };
    std::vector<Unit> units;

    std::size_t paragraphStart(std::size_t offset) const {
        while (offset > 0 && units[offset - 1].unit != u'\n') {
            --offset;
        }
        return offset;
    }
    /// Every paragraph takes the style of its first unit.
    void settle() {
        for (std::size_t i = 1; i < units.size(); ++i) {
            if (units[i - 1].unit != u'\n') {
                units[i].style = units[i - 1].style;
            }
        }
    }
    PlainModel slice(TextRange range) const {
        PlainModel result;
        const auto from = std::min(range.location, units.size());
        const auto to = std::min(range.end(), units.size());
        result.units.assign(units.begin() + static_cast<std::ptrdiff_t>(from),
                            units.begin() + static_cast<std::ptrdiff_t>(to));
        return result;
    }
    void replace(TextRange range, const PlainModel& other) {
        auto result = slice({0, range.location});
        const auto tail = slice({range.end(), units.size()});
        result.units.insert(result.units.end(), other.units.begin(), other.units.end());
        result.units.insert(result.units.end(), tail.units.begin(), tail.units.end());
        result.settle();
        *this = std::move(result);
    }
};

void expectSame(const AttributedString& text, const PlainModel& model) {
    ASSERT_EQ(text.length(), model.units.size());
    std::size_t covered = 0;
    const CharacterAttributes* last = nullptr;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        ASSERT_EQ(run.range.location, covered);
        ASSERT_GT(run.range.length, 0U);
        ASSERT_FALSE(last && *last == run.attributes) << "not coalesced at " << covered;
        last = &run.attributes;
        for (; covered < run.range.end(); ++covered) {
            ASSERT_EQ(text.text()[covered], model.units[covered].unit);
            ASSERT_EQ(run.attributes, model.units[covered].attributes) << covered;
            ASSERT_EQ(text.attributesAt(covered), model.units[covered].attributes);
        }
    });
    ASSERT_EQ(covered, model.units.size());
    covered = 0;
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        ASSERT_EQ(paragraph.range.location, covered);
        ASSERT_EQ(text.paragraphAt(covered), paragraph.range);
        for (; covered < paragraph.range.end(); ++covered) {
            ASSERT_EQ(paragraph.style, model.units[covered].style) << covered;
            ASSERT_EQ(text.styleAt(covered), model.units[covered].style);
            ASSERT_EQ(text.text()[covered] == u'\n' || covered + 1 == text.length(),
                      covered + 1 == paragraph.range.end());
        }
    });
    ASSERT_EQ(covered, model.units.size());
}

class RandomPieces {
public:
    explicit RandomPieces(unsigned seed) : m_random(seed) {}

    std::size_t below(std::size_t limit) { return m_random() % limit; }
    TextRange range(std::size_t length) { return {below(length + 1), below(length / 2 + 2)}; }
    CharacterAttributes attributes() {
        CharacterAttributes result;
        result.font.isBold = below(2) == 0;
        // More values than are searched one by one, so that both ways of interning are taken.
        result.font.size = static_cast<MilliPoints>(10'000 + 1'000 * below(8));
        result.link = below(3) == 0 ? "https://example.org/" : "";
        return result;
    }
    ParagraphStyle style() {
        return {.spacingBefore = static_cast<Twips>(20 * below(9)), .lists = list()};
    }
    std::u16string text() {
        std::u16string result;
        for (auto count = below(9); count > 0; --count) {
            result += u"ab\n\u2028\xD800"[below(5)];
        }
        return result;
    }

private:
    std::vector<TextListRef> list() {
        return below(3) == 0 ? std::vector<TextListRef>{m_lists[below(2)]}
                             : std::vector<TextListRef>{};
    }

    std::mt19937 m_random;
    std::array<TextListRef, 2> m_lists{std::make_shared<TextList>(), std::make_shared<TextList>()};
};

} // namespace

TEST(AttributedString, RandomEditsAgreeWithAListOfUnits) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        RandomPieces random(seed);
        AttributedString text;
        PlainModel model;
        const auto append = [&](AttributedString& to, PlainModel& toModel) {
            const auto units = random.text();
            const auto attributes = random.attributes();
            const auto style = random.style();
            to.append(units, attributes, style);
            for (const char16_t unit : units) {
                toModel.units.push_back({unit, attributes, style});
            }
            toModel.settle();
        };
        for (int step = 0; step < 60; ++step) {
            switch (random.below(6)) {
            case 0:
            case 1:
                append(text, model);
                break;
            case 2: {
                const auto range = random.range(text.length());
                const auto attributes = random.attributes();
                text.editAttributes(
                    range, [&](CharacterAttributes& each) { each.font = attributes.font; });
                for (auto i = range.location; i < std::min(range.end(), text.length()); ++i) {
                    model.units[i].attributes.font = attributes.font;
                }
                break;
            }
            case 3: {
                const auto range = random.range(text.length());
                const auto style = random.style();
                text.editStyles(range, [&](ParagraphStyle& each) { each.lists = style.lists; });
                const auto last = std::max(range.location, range.end() - (range.length > 0));
                for (auto i = model.paragraphStart(std::min(range.location, text.length()));
                     i < text.length() &&
                     (i <= std::min(last, text.length() - 1) || model.units[i - 1].unit != u'\n');
                     ++i) {
                    model.units[i].style.lists = style.lists;
                }
                break;
            }
            case 4: {
                AttributedString other;
                PlainModel otherModel;
                append(other, otherModel);
                append(other, otherModel);
                const auto range = random.range(text.length());
                text.replace(range, other);
                model.replace(range, otherModel);
                break;
            }
            default: {
                const auto range = random.range(text.length());
                expectSame(text.slice(range), model.slice(range));
                break;
            }
            }
            expectSame(text, model);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST(AttributedString, AppendingATextToItselfDoublesIt) {
    AttributedString text(u"one\ntwo", {.font = {.isBold = true}}, {.spacingBefore = 20});
    text.append(u"three\n", {}, {.spacingBefore = 40});
    text.append(text);
    EXPECT_EQ(text.text(), u"one\ntwothree\none\ntwothree\n");
    EXPECT_FALSE(text.attributesAt(20).font.isBold);
    EXPECT_EQ(text.styleAt(13).spacingBefore, 20);
}

TEST(AttributedString, EquivalenceCountsSharingNotObjects) {
    const auto listed = [](const TextListRef& first, const TextListRef& second) {
        AttributedString text(u"a\n", {}, {.lists = {first}});
        text.append(u"b\n", {}, {.lists = {second}});
        return text;
    };
    const auto list = [](std::int32_t start) {
        return std::make_shared<TextList>(TextList{.marker = u"{decimal}.", .start = start});
    };
    const auto one = list(1);
    const auto other = list(1);
    const auto third = list(1);
    EXPECT_TRUE(listed(one, one).isEquivalentTo(listed(other, other)));
    EXPECT_TRUE(listed(one, other).isEquivalentTo(listed(other, third)));
    EXPECT_FALSE(listed(one, one).isEquivalentTo(listed(one, other)));
    EXPECT_FALSE(listed(one, other).isEquivalentTo(listed(third, third)));
    EXPECT_FALSE(listed(one, one).isEquivalentTo(listed(list(2), list(2))));

    const auto cells = [](bool isOneTable, Twips width) {
        const auto table = std::make_shared<TextTable>(TextTable{.columns = 2});
        AttributedString text;
        for (std::int32_t column = 0; column < 2; ++column) {
            auto cell = std::make_shared<TextTableCell>();
            cell->table = isOneTable ? table : std::make_shared<TextTable>(*table);
            cell->column = column;
            cell->geometry.width = width;
            text.append(u"x\n", {}, {.cells = {std::move(cell)}});
        }
        return text;
    };
    EXPECT_TRUE(cells(true, 100).isEquivalentTo(cells(true, 100)));
    EXPECT_FALSE(cells(true, 100).isEquivalentTo(cells(false, 100)));
    EXPECT_FALSE(cells(true, 100).isEquivalentTo(cells(true, 120)));
}

} // namespace korvex::tests
