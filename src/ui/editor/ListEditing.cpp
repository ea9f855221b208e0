#include "ui/editor/ListEditing.h"

#include "richtext/text/ListIndents.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/text/TextDocument.h"

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>

namespace korvex::ui {

namespace {

using richtext::ParagraphStyle;
using richtext::TextList;
using richtext::TextListRef;

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

/// The list that an item goes into when it moves in below an item of the lists `above`: the one
/// that this item is in already, else a new one.
TextListRef listInside(const std::vector<TextListRef>& above,
                       const std::vector<TextListRef>& outer) {
    return isInside(above, outer)
               ? above[outer.size()]
               : std::make_shared<TextList>(TextList{markerInside(*outer.back(), outer.size())});
}

/// The lists of the paragraph above, if it stands in the same cell.
std::vector<TextListRef> listsAbove(const QTextBlock& block) {
    const auto above = block.previous();
    return above.isValid() && isSameCell(above, block) ? listsOf(above)
                                                       : std::vector<TextListRef>();
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

/// A paragraph that gets other lists.
struct EditedItem {
    QTextBlock block;
    ParagraphStyle style;
};

/// Where all items of a drawn list go to one that is not drawn yet, it becomes that one: one change
/// instead of one for each item.
void renameWholeLists(const std::vector<EditedItem>& items, DrawnLists& drawn) {
    struct Move {
        const std::vector<TextListRef>* lists = nullptr;
        int items = 0;
        bool isOne = true;
    };
    std::unordered_map<QTextList*, Move> moves;
    for (const auto& [block, style] : items) {
        if (auto* const list = block.textList()) {
            auto& move = moves[list];
            move.isOne = move.isOne && (!move.lists || *move.lists == style.lists);
            move.lists = &style.lists;
            ++move.items;
        }
    }
    for (const auto& [list, move] : moves) {
        if (move.isOne && move.items == itemCountOf(*list) && !move.lists->empty() &&
            !drawn.of(*move.lists)) {
            drawn.rename(*list, *move.lists);
        }
    }
}

/// Gives each paragraph of the range the lists that `edit` leaves in its style.
void editLists(const QTextCursor& range, const TextLook& look,
               const std::function<void(const QTextBlock&, ParagraphStyle&)>& edit) {
    auto editing = range;
    editing.beginEditBlock();
    std::vector<EditedItem> items;
    for (const auto& block : blocksOf(range)) {
        auto style = paragraphStyleOf(block);
        const auto before = style.lists;
        edit(block, style);
        if (style.lists != before) {
            richtext::setListIndents(style);
            items.push_back({block, std::move(style)});
        }
    }
    DrawnLists drawn(*range.document());
    renameWholeLists(items, drawn);
    for (const auto& [block, style] : items) {
        setParagraphStyle(block, style, look, drawn);
    }
    editing.endEditBlock();
}

} // namespace

std::vector<TextListRef> listsOf(const QTextBlock& block) {
    const auto* const list = block.textList();
    return list ? listsOf(*list) : std::vector<TextListRef>();
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

void setParagraphStyle(const QTextBlock& block, const ParagraphStyle& style, const TextLook& look,
                       DrawnLists& drawn) {
    const auto kind = kindOf({.isCode = isCodeBlock(block),
                              .isItem = !style.lists.empty(),
                              .heading = headingOf(block)});
    auto format = blockFormatOf(style, kind, look);
    // What is below asks for it, and it is no change of the paragraph's own.
    format.setBottomMargin(block.blockFormat().bottomMargin());
    const auto* const list = style.lists.empty() ? nullptr : drawn.of(style.lists);
    if (list) {
        format.setObjectIndex(list->objectIndex());
    }
    QTextCursor cursor(block);
    if (format != block.blockFormat()) {
        cursor.setBlockFormat(format);
    }
    if (!list && !style.lists.empty()) {
        drawn.add(style.lists, *cursor.createList(listFormatOf(style.lists)));
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
    std::map<TextListRef, TextListRef> renamed;
    const auto inPlaceOf = [&](const TextListRef& former) {
        const auto [place, isNew] = renamed.try_emplace(former);
        if (isNew) {
            place->second = std::make_shared<TextList>(TextList{wanted});
        }
        return place->second;
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
    // What an item moves in below has been moved before it.
    QTextBlock last;
    std::vector<TextListRef> lastLists;
    editLists(range, look, [&](const QTextBlock& block, ParagraphStyle& style) {
        if (nesting == Nesting::shallower && !style.lists.empty()) {
            style.lists.pop_back();
        } else if (nesting == Nesting::deeper && !style.lists.empty() &&
                   style.lists.size() < richtext::kMaximumListDepth) {
            const auto isGoingOn = last.isValid() && isSameCell(last, block);
            style.lists.push_back(
                listInside(isGoingOn ? lastLists : listsAbove(block), style.lists));
        }
        last = block;
        lastLists = style.lists;
    });
    return true;
}

void leaveLists(const QTextCursor& range, const TextLook& look) {
    editLists(range, look, [](const QTextBlock&, ParagraphStyle& style) { style.lists.clear(); });
}

} // namespace korvex::ui
