#include "richtext/text/TextMerge.h"

#include "richtext/text/TextUnits.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <unordered_map>
#include <utility>

namespace korvex::richtext {

namespace {

using Changes = std::vector<SequenceChange>;

/// A part of the base that one side has changed, or both have.
struct Region {
    IndexRange base;
    Changes mine;
    Changes theirs;

    bool isBoth() const { return !mine.empty() && !theirs.empty(); }
};

/// The changes of two sides in the order of the base; those that meet are one region. `touch` says
/// whether changes of the two sides meet that leave just these units of the base between them.
std::vector<Region> regionsOf(const Changes& mine, const Changes& theirs,
                              const std::function<bool(IndexRange)>& touch) {
    std::vector<Region> regions;
    const auto add = [&](const SequenceChange& change, Changes Region::*side,
                         Changes Region::*otherSide) {
        const auto meets = [&](const Region& last) {
            const IndexRange between{last.base.end, change.before.begin};
            return between.begin > between.end ||
                   (last.base.isEmpty() && change.before.isEmpty() && between.isEmpty()) ||
                   (!(last.*otherSide).empty() && touch(between));
        };
        if (regions.empty() || !meets(regions.back())) {
            regions.push_back({.base = change.before});
        }
        auto& region = regions.back();
        region.base.end = std::max(region.base.end, change.before.end);
        (region.*side).push_back(change);
    };
    auto left = mine.begin();
    auto right = theirs.begin();
    const auto place = [](const SequenceChange& change) {
        return std::pair(change.before.begin, change.before.end);
    };
    while (left != mine.end() || right != theirs.end()) {
        if (right == theirs.end() || (left != mine.end() && place(*left) <= place(*right))) {
            add(*left++, &Region::mine, &Region::theirs);
        } else {
            add(*right++, &Region::theirs, &Region::mine);
        }
    }
    return regions;
}

/// The units of the base between two regions, in a sequence with these changes.
IndexRange unchangedIn(const Changes& changes, IndexRange base) {
    auto begin = base.begin;
    for (const auto& change : changes) {
        if (change.before.end > base.begin) {
            break;
        }
        begin = change.after.end + (base.begin - change.before.end);
    }
    return {begin, begin + base.size()};
}

/// What stands for a region's base in a sequence that has changed there.
IndexRange regionIn(const Changes& changes, IndexRange base) {
    const auto& first = changes.front();
    const auto& last = changes.back();
    return {first.after.begin - (first.before.begin - base.begin),
            last.after.end + (base.end - last.before.end)};
}

/// Three versions of one paragraph, word by word; absent where both have changed the same words.
std::optional<AttributedString> mergedWords(const AttributedString& base,
                                            const AttributedString& mine,
                                            const AttributedString& theirs) {
    const auto baseWords = TextUnits::wordsOf(base);
    const auto myWords = TextUnits::wordsOf(mine);
    const auto theirWords = TextUnits::wordsOf(theirs);
    // A sentence in which both have changed neighbouring words is nobody's sentence any more.
    const auto touch = [&](IndexRange between) {
        for (auto i = between.begin; i < between.end; ++i) {
            if (baseWords.isSpecial(i)) {
                return false;
            }
        }
        return true;
    };
    AttributedString result;
    std::size_t done = 0;
    for (const auto& region : regionsOf(changesBetween(baseWords, myWords),
                                        changesBetween(baseWords, theirWords), touch)) {
        const auto isMine = !region.mine.empty();
        const auto& changes = isMine ? region.mine : region.theirs;
        const auto here = regionIn(changes, region.base);
        if (region.isBoth() &&
            !TextUnits::areEqual(myWords, here, theirWords, regionIn(region.theirs, region.base))) {
            return std::nullopt;
        }
        result.append(baseWords.slice({done, region.base.begin}));
        result.append((isMine ? myWords : theirWords).slice(here));
        done = region.base.end;
    }
    result.append(baseWords.slice({done, baseWords.size()}));
    const auto feedOf = [](const AttributedString& paragraph) {
        AttributedString feed;
        feed.append(u"\n", {}, paragraph.styleAt(0));
        return feed;
    };
    const auto& style = (feedOf(mine).isEquivalentTo(feedOf(base)) ? theirs : mine).styleAt(0);
    result.editStyles({0, result.length()}, [&](ParagraphStyle& own) { own = style; });
    return result;
}

AttributedString withFeedAtEnd(AttributedString text) {
    text.append(u"\n", text.attributesAt(text.length()), text.styleAt(text.length()));
    return text;
}

/// Leaves out what two different paragraphs of one style have in common at their ends.
void narrow(const AttributedString& before, const AttributedString& after,
            TextDifference& difference) {
    auto& [old, now] = difference;
    const auto paragraphs = [](const AttributedString& text, TextRange range) {
        const auto units = std::u16string_view(text.text()).substr(range.location, range.length);
        return std::count(units.begin(), units.end(), u'\n');
    };
    const auto feed = [](const AttributedString& text, std::size_t place) {
        return AttributedString(u"\n", {}, text.styleAt(place));
    };
    if (old.length == 0 || now.length == 0 || paragraphs(before, old) > 1 ||
        paragraphs(after, now) > 1 ||
        !feed(before, old.location).isEquivalentTo(feed(after, now.location))) {
        return;
    }
    const auto isSame = [&](std::size_t left, std::size_t right) {
        return before.text()[left] == after.text()[right] &&
               before.attributesAt(left) == after.attributesAt(right);
    };
    constexpr char16_t kSurrogates = 0xf800;
    const auto isHalf = [&](std::size_t place) {
        return (before.text()[place] & kSurrogates) == 0xd800;
    };
    while (old.length > 0 && now.length > 0 && isSame(old.location, now.location) &&
           !isHalf(old.location)) {
        old = {old.location + 1, old.length - 1};
        now = {now.location + 1, now.length - 1};
    }
    while (old.length > 0 && now.length > 0 && isSame(old.end() - 1, now.end() - 1) &&
           !isHalf(old.end() - 1)) {
        --old.length;
        --now.length;
    }
}

class Merger {
public:
    Merger(const AttributedString& base, const AttributedString& mine,
           const AttributedString& theirs)
        : m_base(TextUnits::paragraphsOf(base)),
          m_mine(TextUnits::paragraphsOf(mine)),
          m_theirs(TextUnits::paragraphsOf(theirs)),
          m_myChanges(changesBetween(m_base, m_mine)),
          m_theirChanges(changesBetween(m_base, m_theirs)) {
        pairLists(mine, theirs);
    }

    TextMerge run() {
        std::size_t done = 0;
        for (const auto& region : regions()) {
            appendUnchanged({done, region.base.begin});
            if (region.isBoth()) {
                appendBoth(region);
            } else {
                appendChanged(region);
            }
            done = region.base.end;
        }
        appendUnchanged({done, m_base.size()});
        m_result.text.remove({m_result.text.length() - 1, 1});
        return std::move(m_result);
    }

private:
    /// Neighbouring paragraphs are apart.
    std::vector<Region> regions() const {
        return regionsOf(m_myChanges, m_theirChanges, [](IndexRange) { return false; });
    }

    /// Paragraphs that both have kept show which lists are the same.
    void pairLists(const AttributedString& mine, const AttributedString& theirs) {
        std::size_t done = 0;
        const auto pair = [&](IndexRange base) {
            const auto myStart = m_mine.start(unchangedIn(m_myChanges, base).begin);
            const auto kept = theirs.slice(m_theirs.range(unchangedIn(m_theirChanges, base)));
            kept.forEachParagraph([&](const AttributedString::ParagraphRun& each) {
                const auto& myLists = mine.styleAt(myStart + each.range.location).lists;
                const auto& theirLists = each.style.lists;
                for (std::size_t i = 0; i < std::min(myLists.size(), theirLists.size()); ++i) {
                    m_lists.try_emplace(theirLists[i].get(), myLists[i]);
                }
            });
        };
        for (const auto& region : regions()) {
            pair({done, region.base.begin});
            done = region.base.end;
        }
        pair({done, m_base.size()});
    }

    void appendUnchanged(IndexRange base) {
        m_result.text.append(m_mine.slice(unchangedIn(m_myChanges, base)));
    }

    void appendChanged(const Region& region) {
        for (const auto& change : region.mine) {
            m_result.text.append(m_mine.slice(change.after));
        }
        for (const auto& change : region.theirs) {
            m_result.text.append(theirSlice(change.after));
        }
    }

    /// A part of `theirs`, its lists those of `mine` where they are the same.
    AttributedString theirSlice(IndexRange units) const {
        auto slice = m_theirs.slice(units);
        slice.editStyles({0, slice.length()}, [&](ParagraphStyle& style) {
            for (auto& list : style.lists) {
                if (const auto known = m_lists.find(list.get()); known != m_lists.end()) {
                    list = known->second;
                }
            }
        });
        return slice;
    }

    void appendBoth(const Region& region) {
        const auto mine = regionIn(region.mine, region.base);
        const auto theirs = regionIn(region.theirs, region.base);
        const auto count = region.base.size();
        if (TextUnits::areEqual(m_mine, mine, m_theirs, theirs)) {
            m_result.text.append(m_mine.slice(mine));
        } else if (count > 0 && mine.size() == count && theirs.size() == count) {
            for (std::size_t i = 0; i < count; ++i) {
                appendParagraph(region.base.begin + i, mine.begin + i, theirs.begin + i);
            }
        } else {
            appendBothChanged(region);
        }
    }

    /// Nothing is left of a paragraph that one has deleted or emptied and the other has changed but
    /// the change.
    void appendBothChanged(const Region& region) {
        const auto hasWords = [](const TextUnits& side, const Changes& changes) {
            return std::any_of(changes.begin(), changes.end(), [&](const SequenceChange& change) {
                return side.slice(change.after).text().find_first_not_of(u'\n') !=
                       std::u16string::npos;
            });
        };
        const auto isMine = hasWords(m_mine, region.mine);
        const auto isTheirs = hasWords(m_theirs, region.theirs);
        appendChanged({.base = region.base,
                       .mine = isMine || !isTheirs ? region.mine : Changes(),
                       .theirs = isTheirs ? region.theirs : Changes()});
        // What both have added at one place stands there as it would have anyway.
        m_result.hasBoth |= !region.base.isEmpty() && isMine && isTheirs;
    }

    void appendParagraph(std::size_t base, std::size_t mine, std::size_t theirs) {
        const auto mySlice = m_mine.slice({mine, mine + 1});
        const auto theirOwn = theirSlice({theirs, theirs + 1});
        if (TextUnits::areEqual(m_base, base, m_theirs, theirs) ||
            TextUnits::areEqual(m_mine, mine, m_theirs, theirs)) {
            m_result.text.append(mySlice);
            return;
        }
        if (TextUnits::areEqual(m_base, base, m_mine, mine)) {
            m_result.text.append(theirOwn);
            return;
        }
        const auto areWords =
            !m_base.isSpecial(base) && !m_mine.isSpecial(mine) && !m_theirs.isSpecial(theirs);
        const auto words = areWords ? mergedWords(m_base.slice({base, base + 1}), mySlice, theirOwn)
                                    : std::nullopt;
        m_result.text.append(words ? *words : mySlice);
        if (!words) {
            m_result.text.append(theirOwn);
            m_result.hasBoth = true;
        }
    }

    TextUnits m_base;
    TextUnits m_mine;
    TextUnits m_theirs;
    std::vector<SequenceChange> m_myChanges;
    std::vector<SequenceChange> m_theirChanges;
    std::unordered_map<const TextList*, TextListRef> m_lists;
    TextMerge m_result;
};

} // namespace

TextMerge merged(const AttributedString& base, const AttributedString& mine,
                 const AttributedString& theirs) {
    if (mine.isEquivalentTo(base)) {
        return {.text = theirs};
    }
    if (theirs.isEquivalentTo(base)) {
        return {.text = mine};
    }
    const auto endedBase = withFeedAtEnd(base);
    const auto endedMine = withFeedAtEnd(mine);
    const auto endedTheirs = withFeedAtEnd(theirs);
    return Merger(endedBase, endedMine, endedTheirs).run();
}

std::vector<TextDifference> differences(const AttributedString& before,
                                        const AttributedString& after) {
    const auto endedBefore = withFeedAtEnd(before);
    const auto endedAfter = withFeedAtEnd(after);
    const auto left = TextUnits::paragraphsOf(endedBefore);
    const auto right = TextUnits::paragraphsOf(endedAfter);
    std::vector<TextDifference> result;
    for (const auto& change : changesBetween(left, right)) {
        TextDifference difference{left.range(change.before), right.range(change.after)};
        auto& [old, now] = difference;
        if (old.end() > before.length()) {
            // The last line feed is none of theirs. A paragraph more or less at the end begins with
            // the feed of the one before it.
            const std::size_t shift = old.length == 0 || now.length == 0 ? 1 : 0;
            old = {old.location - shift, before.length() - old.location + shift};
            now = {now.location - shift, after.length() - now.location + shift};
        }
        narrow(before, after, difference);
        result.push_back(difference);
    }
    return result;
}

} // namespace korvex::richtext
