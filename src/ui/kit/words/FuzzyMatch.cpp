#include "ui/kit/words/FuzzyMatch.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace korvex::ui {

namespace {

constexpr qsizetype kLongestName = 256;
constexpr qsizetype kLongestTyped = 64;
constexpr int kUnreachable = std::numeric_limits<int>::max() / 2;
/// What it costs to go on at the beginning of a word, or in the middle of one.
constexpr int kWordJump = 2;
constexpr int kInnerJump = 8;

bool beginsWord(const QString& name, qsizetype at) {
    return at == 0 || (!name[at - 1].isLetterOrNumber() && !name[at].isSpace());
}

} // namespace

std::optional<int> fuzzyDistance(const QString& name, const QString& typed) {
    const auto length = std::min(name.size(), kLongestName);
    // The least cost of having found the letters so far with the last of them at each place.
    std::vector<int> before;
    bool mustBeginWord = false;
    qsizetype letters = 0;
    for (const auto letter : typed.left(kLongestTyped)) {
        if (letter.isSpace()) {
            mustBeginWord = letters > 0;
            continue;
        }
        std::vector<int> now(static_cast<std::size_t>(length), kUnreachable);
        auto best = kUnreachable; // of all places but the one directly before
        for (qsizetype i = 0; i < length; ++i) {
            const auto place = static_cast<std::size_t>(i);
            if (!before.empty() && i >= 2) {
                best = std::min(best, before[place - 2]);
            }
            if (name[i] != letter) {
                continue;
            }
            const auto isWord = beginsWord(name, i);
            if (mustBeginWord && !isWord) {
                continue;
            }
            const auto jump = isWord ? kWordJump : kInnerJump;
            if (before.empty()) {
                now[place] = i == 0 ? 0 : jump;
                continue;
            }
            const auto next = i == 0 ? kUnreachable : before[place - 1];
            now[place] = std::min({next, best + jump, kUnreachable});
        }
        before = std::move(now);
        mustBeginWord = false;
        ++letters;
    }
    if (before.empty()) {
        return 0;
    }
    const auto least = *std::min_element(before.begin(), before.end());
    if (least >= kUnreachable) {
        return std::nullopt;
    }
    return least + (letters == name.size() ? 0 : 1);
}

} // namespace korvex::ui
