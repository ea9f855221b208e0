#include "cli/terminal/DisplayText.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>

namespace korvex::cli {

namespace {

constexpr UChar32 kReplacement = 0xFFFD;
constexpr UChar32 kZeroWidthJoiner = 0x200D;
constexpr UChar32 kEmojiVariation = 0xFE0F;

enum class LineBreaks { keep, replace };

bool isPlainAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// ICU's macro narrows where the compiler sees it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
UChar32 nextCodePoint(std::string_view text, std::size_t& position) {
    UChar32 codePoint = 0;
    U8_NEXT(text.data(), position, text.size(), codePoint);
    return codePoint < 0 ? kReplacement : codePoint;
}
#pragma GCC diagnostic pop

/// What stands for a character that a terminal must not get as it is; empty for one that it may.
std::string standIn(UChar32 codePoint, LineBreaks lineBreaks) {
    switch (codePoint) {
    case '\n':
        return lineBreaks == LineBreaks::keep ? "\n" : " ";
    case '\t':
    case '\v':
    case '\f':
    case '\r':
    case 0x85:
    case 0x2028:
    case 0x2029:
        return " ";
    case 0x7F:
        return "\u2421"; // the picture of DELETE
    case kReplacement:
        return "\uFFFD"; // also for bytes that are no character
    default:
        break;
    }
    if (codePoint < ' ') {
        // The picture of that control character, U+2400 and up.
        return {'\xE2', '\x90', static_cast<char>(0x80 + codePoint)};
    }
    return codePoint >= 0x80 && codePoint < 0xA0 ? "\uFFFD" : "";
}

std::string displayed(std::string_view text, LineBreaks lineBreaks) {
    if (isPlainAscii(text)) {
        return std::string(text);
    }
    std::string result;
    result.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const auto begin = position;
        const auto codePoint = nextCodePoint(text, position);
        if (codePoint == '\r' && position < text.size() && text[position] == '\n') {
            continue; // one line break, not two
        }
        const auto instead = standIn(codePoint, lineBreaks);
        result.append(instead.empty() ? text.substr(begin, position - begin)
                                      : std::string_view(instead));
    }
    return result;
}

/// Zero for what is drawn over or joined to the character before it.
std::size_t columns(UChar32 codePoint, UChar32 previous) {
    if (codePoint >= ' ' && codePoint < 0x300) {
        return 1;
    }
    if (previous == kZeroWidthJoiner &&
        u_hasBinaryProperty(codePoint, UCHAR_EXTENDED_PICTOGRAPHIC)) {
        return 0;
    }
    switch (u_getIntPropertyValue(codePoint, UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_EXTEND:
    case U_GCB_CONTROL:
    case U_GCB_ZWJ:
    case U_GCB_V:
    case U_GCB_T:
        return 0;
    default:
        break;
    }
    const auto width = u_getIntPropertyValue(codePoint, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

/// A character with all that is drawn over it.
struct Cell {
    std::size_t begin;
    std::size_t end;
    std::size_t width;
    bool isSpace;
};

Cell nextCell(std::string_view line, std::size_t begin) {
    auto position = begin;
    auto codePoint = nextCodePoint(line, position);
    Cell cell{begin, position, columns(codePoint, 0), codePoint == ' '};
    auto previous = codePoint;
    while (position < line.size()) {
        codePoint = nextCodePoint(line, position);
        if (columns(codePoint, previous) > 0) {
            break;
        }
        if (codePoint == kEmojiVariation) {
            cell.width = 2;
        }
        cell.end = position;
        previous = codePoint;
    }
    return cell;
}

} // namespace

std::string onOneLine(std::string_view text) {
    return displayed(text, LineBreaks::replace);
}

std::string inLines(std::string_view text) {
    return displayed(text, LineBreaks::keep);
}

std::size_t displayWidth(std::string_view line) {
    if (isPlainAscii(line)) {
        return line.size();
    }
    std::size_t width = 0;
    for (std::size_t position = 0; position < line.size();) {
        const auto cell = nextCell(line, position);
        width += cell.width;
        position = cell.end;
    }
    return width;
}

std::vector<std::string_view> wrapped(std::string_view line, std::size_t width) {
    std::vector<std::string_view> pieces;
    std::size_t begin = 0;
    std::size_t used = 0;
    // The last place to break: where the piece ends, where the next one begins, and the width so
    // far.
    std::size_t breakEnd = 0;
    std::size_t breakNext = 0;
    std::size_t usedAtBreak = 0;
    for (std::size_t position = 0; position < line.size();) {
        const auto cell = nextCell(line, position);
        position = cell.end;
        if (cell.isSpace) {
            breakEnd = cell.begin;
            breakNext = cell.end;
            usedAtBreak = used + cell.width;
        } else if (used + cell.width > width && cell.begin > begin) {
            const auto breaksAtSpace = breakNext > begin;
            pieces.push_back(line.substr(begin, (breaksAtSpace ? breakEnd : cell.begin) - begin));
            begin = breaksAtSpace ? breakNext : cell.begin;
            used = breaksAtSpace ? used - usedAtBreak : 0;
        }
        used += cell.width;
    }
    pieces.push_back(line.substr(begin));
    return pieces;
}

} // namespace korvex::cli
