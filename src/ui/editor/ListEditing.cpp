#include "ui/editor/ListEditing.h"

#include "richtext/text/ListIndents.h"
#include "ui/editor/RichTextRuns.h"

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <utility>

namespace korvex::ui {

namespace {

using richtext::ParagraphStyle;
using richtext::TextList;
using richtext::TextListRef;

constexpr std::size_t kDeepest = 9;
constexpr int kLongestMarker = 64;

/// What a list inside a list begins with; deeper ones go round.
constexpr std::array<std::u16string_view, 3> kBullets{u"{disc}", u"{circle}", u"{square}"};
constexpr std::array<std::u16string_view, 3> kNumbers{u"{decimal}.", u"{lower-alpha}.",
                                                      u"{lower-roman}."};

bool isOneOf(std::u16string_view marker, std::initializer_list<std::u16string_view> names) {
    return std::any_of(names.begin(), names.end(), [&](std::u16string_view name) {
        return marker.find(name) != std::u16string_view::npos;
    });
}

ListKind kindOf(std::u16string_view marker) {
    if (isOneOf(marker, {u"{disc}", u"{circle}", u"{square}", u"{hyphen}"})) {
        return ListKind::bulleted;
    }
    if (isOneOf(marker, {u"{decimal}", u"-alpha}", u"-roman}"})) {
        return ListKind::numbered;
    }
    return ListKind::other;
}

std::u16string markerInside(const TextList& outer, std::size_t depth) {
    switch (kindOf(outer.marker)) {
    case ListKind::bulleted:
        return std::u16string(kBullets[depth % kBullets.size()]);
    case ListKind::numbered:
        return std::u16string(kNumbers[depth % kNumbers.size()]);
    case ListKind::none:
    case ListKind::other:
        break;
    }
    return outer.marker;
}

bool isInside(const std::vector<TextListRef>& lists, const std::vector<TextListRef>& outer) {
    return lists.size() > outer.size() && std::equal(outer.begin(), outer.end(), lists.begin());
}

/// The list that an item goes into when it moves in below the item above it: one that an item there
/// is in already, else a new one.
TextListRef listInside(const QTextBlock& item, const std::vector<TextListRef>& outer) {
    for (auto above = item.previous(); above.isValid() && isSameCell(above, item);
         above = above.previous()) {
        const auto lists = listsOf(above);
        if (isInside(lists, outer)) {
            return lists[outer.size()];
        }
        if (lists.size() < outer.size() || lists.back() == outer.back()) {
            break;
        }
    }
    return std::make_shared<TextList>(TextList{markerInside(*outer.back(), outer.size())});
}

/// A list that stands right above or below and can be gone on with.
TextListRef neighbouringList(const QTextBlock& first, const QTextBlock& last,
                             std::u16string_view marker) {
    for (const auto& [neighbour, block] :
         {std::pair(first.previous(), first), std::pair(last.next(), last)}) {
        if (neighbour.isValid() && isSameCell(neighbour, block)) {
            if (const auto lists = listsOf(neighbour);
                !lists.empty() && lists.front()->marker == marker) {
                return lists.front();
            }
        }
    }
    return nullptr;
}

QTextList* drawnList(const QTextDocument& document, const std::vector<TextListRef>& lists) {
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        if (block.textList() && listsOf(block) == lists) {
            return block.textList();
        }
    }
    return nullptr;
}

/// Gives each paragraph of the range the lists that `edit` leaves in its style.
void editLists(const QTextCursor& range, const TextLook& look,
               const std::function<void(const QTextBlock&, ParagraphStyle&)>& edit) {
    auto editing = range;
    editing.beginEditBlock();
    for (const auto& block : blocksOf(range)) {
        auto style = paragraphStyleOf(block);
        const auto before = style.lists;
        edit(block, style);
        if (style.lists != before) {
            richtext::setListIndents(style);
            setParagraphStyle(block, style, look);
        }
    }
    editing.endEditBlock();
}

} // namespace

std::vector<TextListRef> listsOf(const QTextBlock& block) {
    const auto* const list = block.textList();
    if (!list) {
        return {};
    }
    auto lists = list->format().property(kListsProperty).value<std::vector<TextListRef>>();
    if (lists.empty()) {
        lists.push_back(std::make_shared<TextList>(TextList{markerOf(list->format())}));
    }
    return lists;
}

ListKind listKindOf(const QTextBlock& block) {
    const auto lists = listsOf(block);
    return lists.empty() ? ListKind::none : kindOf(lists.back()->marker);
}

ParagraphStyle paragraphStyleOf(const QTextBlock& block) {
    auto style = styleOf(block.blockFormat());
    style.lists = listsOf(block);
    return style;
}

void setParagraphStyle(const QTextBlock& block, const ParagraphStyle& style, const TextLook& look) {
    const auto ground = isCodeBlock(block) ? Ground::code : Ground::plain;
    auto format = blockFormatOf(style, ground, look);
    auto* const list = style.lists.empty() ? nullptr : drawnList(*block.document(), style.lists);
    if (list) {
        format.setObjectIndex(list->objectIndex());
    }
    QTextCursor cursor(block);
    if (format != block.blockFormat()) {
        cursor.setBlockFormat(format);
    }
    if (!list && !style.lists.empty()) {
        cursor.createList(listFormatOf(style.lists));
    }
}

void toggleList(const QTextCursor& range, const QString& marker, const TextLook& look) {
    const auto wanted = marker.left(kLongestMarker).toStdU16String();
    const auto blocks = blocksOf(range);
    const auto isOn = std::all_of(blocks.begin(), blocks.end(), [&](const QTextBlock& block) {
        const auto lists = listsOf(block);
        return !lists.empty() && lists.back()->marker == wanted;
    });
    if (isOn) {
        leaveLists(range, look);
        return;
    }
    auto list = neighbouringList(blocks.front(), blocks.back(), wanted);
    if (!list) {
        list = std::make_shared<TextList>(TextList{wanted});
    }
    // Where the selection goes through several levels, each keeps its depth.
    std::vector<std::pair<TextListRef, TextListRef>> renamed;
    const auto inPlaceOf = [&](const TextListRef& former) {
        for (const auto& [old, now] : renamed) {
            if (old == former) {
                return now;
            }
        }
        renamed.emplace_back(former, std::make_shared<TextList>(TextList{wanted}));
        return renamed.back().second;
    };
    editLists(range, look, [&](const QTextBlock& block, ParagraphStyle& style) {
        if (isCodeBlock(block)) {
            return;
        }
        if (style.lists.empty()) {
            style.lists = {list};
        } else if (style.lists.back()->marker != wanted) {
            style.lists.back() = inPlaceOf(style.lists.back());
        }
    });
}

bool nestLists(const QTextCursor& range, Nesting nesting, const TextLook& look) {
    const auto blocks = blocksOf(range);
    if (std::all_of(blocks.begin(), blocks.end(),
                    [](const QTextBlock& block) { return !block.textList(); })) {
        return false;
    }
    editLists(range, look, [&](const QTextBlock& block, ParagraphStyle& style) {
        if (style.lists.empty()) {
            return;
        }
        if (nesting == Nesting::shallower) {
            style.lists.pop_back();
        } else if (style.lists.size() < kDeepest) {
            style.lists.push_back(listInside(block, style.lists));
        }
    });
    return true;
}

void leaveLists(const QTextCursor& range, const TextLook& look) {
    editLists(range, look, [](const QTextBlock&, ParagraphStyle& style) { style.lists.clear(); });
}

} // namespace korvex::ui
