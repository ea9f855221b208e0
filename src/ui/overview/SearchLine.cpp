#include "ui/overview/SearchLine.h"

#include "ui/kit/words/Text.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace korvex::ui {

namespace {

/// An entry within its limit is shorter; of others the marks are sought in the beginning only.
constexpr std::size_t kSearchedBytes = 64 * 1024;
/// Bytes of a line before and after its first match: more than a window shows.
constexpr std::size_t kShownBefore = 600;
constexpr std::size_t kShownAfter = 2'400;
constexpr std::string_view kLineEnds = "\n\r";

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The nearest place at or before `at` where a character begins.
std::size_t characterStart(std::string_view text, std::size_t at) {
    while (at > 0 && at < text.size() && continuesCharacter(text[at])) {
        --at;
    }
    return std::min(at, text.size());
}

/// The first place of a line with something in it.
std::size_t firstWritten(std::string_view text) {
    return std::min(text.find_first_not_of(" \t\n\r"), text.size());
}

const QString& ellipsis() {
    static const QString sign(QChar(0x2026));
    return sign;
}

} // namespace

SearchLine SearchLine::of(std::string_view text, const std::vector<std::string>& foldedTerms,
                          const base::TextFolding& folding) {
    const auto searched = text.substr(0, characterStart(text, kSearchedBytes));
    const auto found = folding.ranges(searched, foldedTerms);
    const auto first = found.empty() ? firstWritten(searched) : found.front().offset;

    const auto lineEnd = std::min(text.find_first_of(kLineEnds, first), text.size());
    const auto before =
        first == 0 ? std::string_view::npos : text.find_last_of(kLineEnds, first - 1);
    auto start = before == std::string_view::npos ? 0 : before + 1;
    start += std::min(text.substr(start, first - start).find_first_not_of(" \t"), first - start);
    bool isCut = false;
    if (first - start > kShownBefore) {
        start = characterStart(text, first - kShownBefore);
        isCut = true;
    }
    const auto end = characterStart(text, std::min(lineEnd, first + kShownAfter));

    SearchLine line;
    line.text = isCut ? ellipsis() : QString();
    auto done = start;
    for (const auto& range : found) {
        const auto rangeEnd = std::min(range.offset + range.length, end);
        if (range.offset < done || rangeEnd <= range.offset) {
            continue;
        }
        line.text += toQString(text.substr(done, range.offset - done));
        const auto mark = line.text.size();
        line.text += toQString(text.substr(range.offset, rangeEnd - range.offset));
        line.marks.push_back({mark, line.text.size() - mark});
        done = rangeEnd;
    }
    line.text += toQString(text.substr(done, end - done));
    line.text += end < lineEnd ? ellipsis() : QString();
    line.text.replace(QLatin1Char('\t'), QLatin1Char(' '));
    return line;
}

SearchLine SearchLine::fitted(const QFontMetrics& metrics, int width) const {
    auto line = *this;
    const auto elided = [&] { return metrics.elidedText(line.text, Qt::ElideRight, width); };
    const auto hidesMatch = [&] {
        const auto& mark = line.marks.front();
        const auto shown = elided();
        return shown != line.text && shown.size() - ellipsis().size() < mark.start + mark.length;
    };
    if (!marks.empty() && hidesMatch()) {
        // A third of the room shows what stands before the match.
        const auto& first = marks.front();
        auto start = first.start;
        QTextBoundaryFinder places(QTextBoundaryFinder::Grapheme, text);
        places.setPosition(start);
        const auto markWidth = metrics.horizontalAdvance(text.mid(first.start, first.length));
        int room =
            std::min(width / 3, width - markWidth - 2 * metrics.horizontalAdvance(ellipsis()));
        while (start > 0 && room > 0) {
            const auto previous = std::max<qsizetype>(places.toPreviousBoundary(), 0);
            room -= metrics.horizontalAdvance(text.mid(previous, start - previous));
            start = room > 0 ? previous : start;
        }
        line = from(start);
        // Together, characters may take more room than each of them does alone.
        places.setPosition(start);
        while (start < first.start && hidesMatch()) {
            start = std::min(places.toNextBoundary(), first.start);
            line = from(start);
        }
    }
    if (const auto shown = elided(); shown != line.text) {
        const auto kept = std::max<qsizetype>(shown.size() - ellipsis().size(), 0);
        std::erase_if(line.marks, [kept](const Mark& mark) { return mark.start >= kept; });
        for (auto& mark : line.marks) {
            mark.length = std::min(mark.length, kept - mark.start);
        }
        line.text = shown;
    }
    return line;
}

SearchLine SearchLine::from(qsizetype start) const {
    if (start == 0) {
        return *this;
    }
    SearchLine line{ellipsis() + text.mid(start), {}};
    for (const auto& mark : marks) {
        if (mark.start >= start) {
            line.marks.push_back({mark.start - start + ellipsis().size(), mark.length});
        }
    }
    return line;
}

} // namespace korvex::ui
